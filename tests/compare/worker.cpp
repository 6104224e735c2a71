// Starting, being and reading worker processes.
#include "compare/worker.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "compare/library.h"
#include "compare/operator_forms.h"
#include "compare/runner.h"

namespace qumel::compare {

namespace {

constexpr int kPipeBytes = 1 << 20;
constexpr char const* kThisProgram = "/proc/self/exe";
constexpr unsigned kPatience = 20;  // seconds for one of processor time, before a program counts as stuck

/** Has the process end after so many seconds of processor time, which a busy machine does not shorten, or
 * when it does nothing for long; 0 lifts the limit. */
void Limit(unsigned seconds) {
  itimerval const limit{{0, 0}, {static_cast<time_t>(seconds), 0}};
  setitimer(ITIMER_PROF, &limit, nullptr);
  alarm(seconds * kPatience);
}

}  // namespace

std::vector<std::string> WorkerOrder::Arguments() const {
  std::string parts;
  for (std::size_t const part : dropped) parts += (parts.empty() ? "" : ",") + std::to_string(part);
  return {"--worker",
          library,
          std::to_string(seed),
          std::to_string(first),
          std::to_string(last),
          std::to_string(seconds),
          parts};
}

WorkerOrder WorkerOrder::FromArguments(std::vector<std::string> const& arguments) {
  if (arguments.size() < 5)
    throw std::runtime_error("a worker wants a library, a seed, two numbers and seconds");
  WorkerOrder order{arguments[0], std::stoull(arguments[1]), std::stoull(arguments[2]),
                    std::stoull(arguments[3]), static_cast<unsigned>(std::stoul(arguments[4]))};
  std::istringstream parts(arguments.size() > 5 ? arguments[5] : "");
  for (std::string part; std::getline(parts, part, ',');) order.dropped.insert(std::stoul(part));
  return order;
}

void Work(WorkerOrder const& order) {
  Library const library = LoadLibrary(order.library);
  OperatorForms const forms = ReadOperatorForms(QUMEL_OPERATORS_DOCUMENT);
  Runner runner(library, forms, order.seed);
  static std::set<std::size_t> const kNothing;
  for (std::uint64_t number = order.first; number < order.last; ++number) {
    Limit(order.seconds);
    std::string const record = runner.Run(number, number + 1 == order.last ? order.dropped : kNothing);
    if (std::fwrite(record.data(), 1, record.size(), stdout) != record.size() || std::fflush(stdout) != 0)
      return;
  }
  Limit(0);
}

Worker::Worker(WorkerOrder const& order) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  fcntl(ends[0], F_SETPIPE_SZ, kPipeBytes);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::vector<std::string> arguments = order.Arguments();
  std::string name = "qumel_compare";
  std::vector<char*> pointers{name.data()};
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  int const failure = posix_spawn(&m_process, kThisProgram, &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  m_output = fdopen(ends[0], "r");
  if (failure != 0 || m_output == nullptr) throw std::runtime_error("no worker process");
}

Worker::~Worker() {
  if (!HasEnded()) {
    kill(m_process, SIGKILL);
    Wait();
  }
  std::fclose(m_output);
}

std::string Worker::Wait() {
  int status = 0;
  waitpid(m_process, &status, 0);
  m_process = 0;
  if (WIFEXITED(status)) return "exit status " + std::to_string(WEXITSTATUS(status));
  if (WTERMSIG(status) == SIGPROF) return "takes too long";
  if (WTERMSIG(status) == SIGALRM) return "is stuck";
  return "signal " + std::to_string(WTERMSIG(status));
}

std::string Worker::Finish() {
  std::string const ending = HasEnded() ? "" : Wait();
  return ending == "exit status 0" ? "" : ending;
}

std::string Worker::Next() {
  std::string record;
  char* line = nullptr;
  std::size_t room = 0;
  bool isComplete = false;
  while (!isComplete) {
    ssize_t const length = getline(&line, &room, m_output);
    if (length < 0) break;
    record.append(line, static_cast<std::size_t>(length));
    isComplete = std::string_view(line, static_cast<std::size_t>(length)) == "end\n";
  }
  std::free(line);
  if (!isComplete && !HasEnded()) record += "crash\t" + Wait() + "\n";
  return record;
}

}  // namespace qumel::compare
