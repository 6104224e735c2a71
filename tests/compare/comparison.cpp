// Comparing records, and making programs smaller.
#include "compare/comparison.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <numeric>
#include <optional>
#include <set>
#include <stdexcept>
#include <vector>

#include "compare/coverage.h"
#include "compare/generator.h"
#include "compare/record.h"
#include "compare/worker.h"

namespace qumel::compare {

namespace {

constexpr unsigned kSeconds = 5, kSecondsWhileReducing = 1;
constexpr int kMostEndings = 12;      // of processes, before the comparison gives up
constexpr int kMostTries = 400;       // of making one program smaller
constexpr std::size_t kReduced = 12;  // kinds of differences whose first program is made smaller

struct Records {
  std::string records[2];
};

struct Difference {
  std::string kind;
  std::string_view lines[2];
};

/** How the process ended while it ran a program; empty when it did not. */
std::string_view EndingIn(std::string_view record) {
  std::size_t const line = record.rfind("crash\t");
  bool const isLine = line == 0 || (line != std::string_view::npos && record[line - 1] == '\n');
  return isLine ? LineAt(record, line + 6) : std::string_view();
}

/** The first difference of two records, or that a process ended. Its kind names the place and the field. */
std::optional<Difference> Differ(Records const& pair) {
  std::string_view rest[2] = {pair.records[0], pair.records[1]};
  std::string_view const endings[2] = {EndingIn(rest[0]), EndingIn(rest[1])};
  if (!endings[0].empty() || !endings[1].empty())
    return Difference{"processes that end: " + std::string(endings[0]) + " / " + std::string(endings[1]),
                      {endings[0], endings[1]}};
  if (rest[0] == rest[1]) return std::nullopt;
  std::string_view lines[2];
  do {
    for (int i = 0; i < 2; ++i) {
      lines[i] = LineAt(rest[i], 0);
      rest[i].remove_prefix(std::min(rest[i].size(), lines[i].size() + 1));
    }
  } while (lines[0] == lines[1]);
  Difference difference{"", {lines[0], lines[1]}};
  std::string_view fields[2] = {lines[0], lines[1]}, left[2] = {TakeField(fields[0]), TakeField(fields[1])};
  difference.kind = left[0];
  if (left[0] != left[1]) {
    difference.kind += " / " + std::string(left[1]);
    return difference;
  }
  do {
    for (int i = 0; i < 2; ++i) left[i] = TakeField(fields[i]);
  } while (left[0] == left[1]);
  difference.kind += ": " + std::string(left[0].substr(0, left[0].find('=')));
  return difference;
}

/** Makes all not-a-numbers of a record alike, in bits and in texts. */
void UnifyNans(std::string& record) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kBits = 16;
  for (std::size_t at = record.find("ff"); at != std::string::npos; at = record.find("ff", at + 1)) {
    std::size_t const end = std::min(record.find_first_not_of(kDigits, at), record.size());
    bool const isNumber = at > 0 && (record[at - 1] == '7' || record[at - 1] == 'f') && end - at == kBits - 1;
    bool const isNan = isNumber && record.find_first_not_of('0', at + 2) < end;
    if (isNan) record.replace(at - 1, kBits, "7ff8000000000000");
  }
  for (std::size_t at = record.find("-nan"); at != std::string::npos; at = record.find("-nan", at))
    record.erase(at, 1);
}

class Comparison {
 public:
  explicit Comparison(ComparisonOrder const& order) : m_order(order) {}

  bool Run() {
    for (int i = 0; i < 2; ++i) {
      if (!Worker(OrderFor(i, 0, 0)).Finish().empty())
        throw std::runtime_error(m_order.libraries[i] + " cannot be used");
    }
    std::uint64_t number = 0;
    for (int endings = 0; number < m_order.count && endings < kMostEndings; ++endings)
      number = RunFrom(number);
    m_compared = std::min(number, m_order.count);
    Report();
    return m_kinds.empty() && m_compared == m_order.count;
  }

 private:
  struct Kind {
    std::uint64_t count = 0, first = 0;
    Records records;
  };

  WorkerOrder OrderFor(int library, std::uint64_t first, std::uint64_t last) const {
    return {m_order.libraries[library], m_order.seed, first, last, kSeconds, {}};
  }

  /** Compares from a number on until both workers are through or one has ended before; returns where to go
   * on. */
  std::uint64_t RunFrom(std::uint64_t number) {
    Worker workers[2] = {Worker(OrderFor(0, number, m_order.count)),
                         Worker(OrderFor(1, number, m_order.count))};
    for (; number < m_order.count; ++number) {
      Records pair;
      for (int i = 0; i < 2; ++i) pair.records[i] = workers[i].Next();
      Prepare(pair);
      if (m_order.showsCoverage) m_coverage.Add(pair.records[0]);
      bool const hasEnded = workers[0].HasEnded() || workers[1].HasEnded();
      if (auto const difference = Differ(pair)) Note(difference->kind, number, std::move(pair));
      // a context that programs share is lost with the process
      if (hasEnded) return SharesContext(m_order.seed, number) ? BlockStart(number) + kBlock : number + 1;
    }
    // what sanitizers find at the end of a process, leaks above all, belongs to no program
    Records pair{{workers[0].Finish(), workers[1].Finish()}};
    if (pair.records[0] != pair.records[1] || !pair.records[0].empty())
      Note("end of the process: " + pair.records[0] + " / " + pair.records[1], number - 1, std::move(pair));
    return number;
  }

  void Prepare(Records& pair) const {
    if (!m_order.takesAnyNan || pair.records[0] == pair.records[1]) return;
    for (std::string& record : pair.records) UnifyNans(record);
  }

  void Note(std::string const& name, std::uint64_t number, Records pair) {
    ++m_differences;
    Kind& kind = m_kinds[name];
    if (kind.count++ == 0) {
      kind.first = number;
      kind.records = std::move(pair);
      std::fprintf(stderr, "program %llu: %s\n", static_cast<unsigned long long>(number), name.c_str());
    }
  }

  /** The record of the program number in both libraries, run after those from first on and without some
   * parts. */
  Records RunOne(std::uint64_t first, std::uint64_t number, std::set<std::size_t> const& dropped) const {
    Records pair;
    for (int i = 0; i < 2; ++i) {
      WorkerOrder order = OrderFor(i, first, number + 1);
      order.dropped = dropped;
      order.seconds = kSecondsWhileReducing;
      Worker worker(order);
      for (std::uint64_t run = first; run <= number && !worker.HasEnded(); ++run)
        pair.records[i] = worker.Next();
    }
    Prepare(pair);
    return pair;
  }

  /** Leaves out ever smaller groups of parts as long as the kind of the difference stays. Returns the parts
   * that may be missing, and puts the records without them into smallest. */
  std::set<std::size_t> Reduce(std::string const& kind, std::uint64_t first, std::uint64_t number,
                               Records& smallest) const {
    std::vector<std::size_t> kept(GenerateProgram(m_forms, m_order.seed, number).PartCount());
    std::iota(kept.begin(), kept.end(), std::size_t{0});
    std::set<std::size_t> dropped;
    int tries = 0;
    for (std::size_t group = (kept.size() + 1) / 2; group > 0; group = group > 1 ? (group + 1) / 2 : 0) {
      for (std::size_t begin = 0; begin < kept.size() && tries < kMostTries; ++tries) {
        std::size_t const end = std::min(begin + group, kept.size());
        auto const from = kept.begin() + static_cast<std::ptrdiff_t>(begin);
        auto const to = kept.begin() + static_cast<std::ptrdiff_t>(end);
        std::set<std::size_t> candidate = dropped;
        candidate.insert(from, to);
        Records pair = RunOne(first, number, candidate);
        auto const difference = Differ(pair);
        if (!difference || difference->kind != kind) {
          begin = end;
          continue;
        }
        dropped = std::move(candidate);
        smallest = std::move(pair);
        kept.erase(from, to);
      }
    }
    return dropped;
  }

  /** The program in which a difference was seen first, as small as it can be made. */
  void PrintExample(std::string const& name, Kind const& kind) const {
    Records shown = kind.records;
    std::set<std::size_t> dropped;
    bool isFound = false;
    std::uint64_t const number = kind.first;
    for (std::uint64_t const first : {number, BlockStart(number)}) {
      if (first != number && !SharesContext(m_order.seed, number)) break;
      Records pair = RunOne(first, number, {});
      auto const difference = Differ(pair);
      isFound = difference && difference->kind == name;
      if (!isFound) continue;
      shown = std::move(pair);
      dropped = Reduce(name, first, number, shown);
      if (first != number)
        std::printf("  after the programs from %llu on\n", static_cast<unsigned long long>(first));
      break;
    }
    if (!isFound) std::printf("  not seen again when run alone\n");
    Program program = GenerateProgram(m_forms, m_order.seed, number);
    program.Drop(dropped);
    std::fputs(program.Shown().c_str(), stdout);
    if (auto const difference = Differ(shown))
      for (std::string_view const line : difference->lines)
        std::printf("  > %.*s\n", static_cast<int>(line.size()), line.data());
  }

  void Report() const {
    std::vector<std::pair<std::string, Kind const*>> kinds;
    for (auto const& [name, kind] : m_kinds) kinds.emplace_back(name, &kind);
    std::sort(kinds.begin(), kinds.end(),
              [](auto const& a, auto const& b) { return a.second->count > b.second->count; });
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      auto const& [name, kind] = kinds[i];
      std::printf("\n%s: %llu programs, first %llu\n", name.c_str(),
                  static_cast<unsigned long long>(kind->count), static_cast<unsigned long long>(kind->first));
      if (i < kReduced) PrintExample(name, *kind);
      std::fflush(stdout);
    }
    if (m_order.showsCoverage) m_coverage.Print();
    if (m_compared < m_order.count) std::printf("\ngiven up, since too many processes ended\n");
    std::printf("\n%llu programs from seed %llu, %llu differ, %zu kinds of differences\n",
                static_cast<unsigned long long>(m_compared), static_cast<unsigned long long>(m_order.seed),
                static_cast<unsigned long long>(m_differences), m_kinds.size());
  }

  ComparisonOrder const& m_order;
  OperatorForms const m_forms = ReadOperatorForms(QUMEL_OPERATORS_DOCUMENT);
  std::map<std::string, Kind> m_kinds;
  Coverage m_coverage;
  std::uint64_t m_differences = 0, m_compared = 0;
};

}  // namespace

bool Compare(ComparisonOrder const& order) { return Comparison(order).Run(); }

}  // namespace qumel::compare
