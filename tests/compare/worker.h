// A process that runs programs through one library, so that a crash or an endless run is a finding like
// others.
#pragma once

#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

namespace qumel::compare {

/** What a worker process does. */
struct WorkerOrder {
  std::string library;
  std::uint64_t seed = 1, first = 0, last = 0;  // last is not run any more
  unsigned seconds = 5;                         // of processor time that a program may take
  std::set<std::size_t> dropped{};              // parts that are left out of the last program

  std::vector<std::string> Arguments() const;
  static WorkerOrder FromArguments(std::vector<std::string> const& arguments);
};

/** The body of a worker process: writes the records to the standard output. */
void Work(WorkerOrder const& order);

/** A worker process, seen from the one that started it. */
class Worker {
 public:
  explicit Worker(WorkerOrder const& order);
  ~Worker();
  Worker(Worker const&) = delete;
  Worker& operator=(Worker const&) = delete;

  /** The next record, or what there is of it and a line on how the process ended. */
  std::string Next();
  /** Waits for the process to end by itself, behind the last record; returns how it did, nothing when all is
   * well. */
  std::string Finish();
  bool HasEnded() const { return m_process == 0; }

 private:
  std::string Wait();

  int m_process = 0;
  std::FILE* m_output = nullptr;
};

}  // namespace qumel::compare
