// The command qumel: evaluates its arguments, files, or the lines of standard input.
#include <qumel/qumel.h>
#include <unistd.h>

#include <exception>
#include <iostream>

#include "arguments.h"
#include "session.h"

namespace {

using qumel::cli::CQMSession;
using qumel::cli::SQMRequest;
using qumel::cli::SQMTask;

enum ExitStatus { kSuccess = 0, kFailure = 1, kWrongUsage = 2 };

constexpr char kHelp[] =
    R"(usage: qumel [EXPRESSION | -f FILE]...

Evaluates expressions one after another in one context, so that variables and the last result (last) carry
over, and prints the result of each on a line. Without arguments the lines of standard input are evaluated.

  -f FILE     evaluate the file as one program: many lines, statements, // comments
  --          everything that follows is an expression
  --help      show this help
  --version   show the version

An error goes to standard error, with the place in the expression where it is known. The exit status is 0 when
every expression had a result, 1 when one failed, and 2 when the arguments make no sense.

examples:
  qumel '2*pi+1'
  qumel 'x = 3' 'x^2' 'last + 1'
  qumel -- -x
)";

int Run(SQMRequest const& request) {
  CQMSession session(std::cout, std::cerr);
  for (SQMTask const& task : request.tasks) {
    if (task.kind == SQMTask::Kind::File) {
      session.EvaluateFile(task.text);
    } else {
      session.Evaluate(task.text);
    }
  }
  if (request.tasks.empty()) session.EvaluateLines(std::cin, isatty(STDIN_FILENO) != 0 ? "> " : "");
  return session.HasFailed() ? kFailure : kSuccess;
}

int Answer(SQMRequest const& request) {
  switch (request.kind) {
    case SQMRequest::Kind::ShowHelp: std::cout << kHelp; return kSuccess;
    case SQMRequest::Kind::ShowVersion: std::cout << "qumel " << qmVersion() << '\n'; return kSuccess;
    case SQMRequest::Kind::Refuse:
      std::cerr << "qumel: " << request.complaint << "\nTry qumel --help.\n";
      return kWrongUsage;
    case SQMRequest::Kind::Evaluate: break;
  }
  return Run(request);
}

}  // namespace

int main(int count, char* values[]) {
  try {
    int const status = Answer(qumel::cli::ReadArguments({values + (count > 0 ? 1 : 0), values + count}));
    qmUnloadQumel();
    if (!std::cout.flush()) {
      std::cerr << "qumel: cannot write the results\n";
      return kFailure;
    }
    return status;
  } catch (std::exception const& error) {
    std::cerr << "qumel: " << error.what() << '\n';
    return kFailure;
  }
}
