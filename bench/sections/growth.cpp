// How cost grows: the time an item at three sizes, which should stay the same.
#include <algorithm>
#include <functional>

#include "bench/measure.h"
#include "bench/qumel_context.h"
#include "bench/report.h"
#include "bench/sections.h"

namespace bench {
namespace {

constexpr long kLargest = 100000;
constexpr long kLargestNest = 10000;
constexpr int kMostRounds = 9;
constexpr int kMostRoundsOfLargest = 3;  // which take seconds

std::string Repeat(std::string_view piece, long count) {
  std::string text;
  for (long i = 0; i < count; ++i) text += piece;
  return text;
}

void Parse(std::string const& text) { qmDeleteExp(qmParseExp(text.c_str())); }
std::string Named(char const* name, long number) { return name + std::to_string(number); }

/** What grows: what is made before the clock runs, and what is timed, for a size. */
struct Row {
  std::string name;
  long largest;
  std::function<std::function<void()>(long size)> prepare;
  long items = 0;  // how many items are timed; 0 for as many as the size says
};

/** Times the reading of a text that is made for the size. */
Row TextRow(char const* name, long largest, std::function<std::string(long)> make) {
  return {name, largest, [make = std::move(make)](long size) {
            return [text = make(size)] {
              Parse(text);
              ThrowLastError("a long text");
            };
          }};
}

/** Times the making of objects, one at a time. */
Row MakingRow(char const* name, std::function<void(long)> makeOne) {
  return {name, kLargest, [makeOne = std::move(makeOne)](long size) {
            return [=] {
              for (long i = 0; i < size; ++i) makeOne(i);
              ThrowLastError("one of many");
            };
          }};
}

/** Times the deletion of a few among many, the oldest first. */
Row DeletingRow(char const* name, std::function<void(long)> makeOne, std::function<void(long)> deleteOne) {
  constexpr long kDeleted = 20;
  return {name, kLargest,
          [=](long size) {
            for (long i = 0; i < size; ++i) makeOne(i);
            return [=] {
              for (long i = 0; i < kDeleted; ++i) deleteOne(i);
              ThrowLastError("one of many");
            };
          },
          kDeleted};
}

void MakeVariable(long i) { qmReleaseVarHandle(qmCreateNumVar('L', Named("variable", i).c_str(), 1)); }
void DeleteVariable(long i) { qmDeleteVar('L', Named("variable", i).c_str()); }
void MakeOperator(long i) {
  qmDefineExpOp('L', Named("operator", i).c_str(), "prefix", "number", "number n", "", "2*n");
}
void DeleteOperator(long i) { qmDeleteOp('L', Named("operator", i).c_str()); }
void MakeExpression(long) { Keep(qmParseExp("x + 1")); }

std::vector<Row> Rows() {
  return {
      TextRow("terms of a sum", kLargest, [](long n) { return Repeat("1.5*x + ", n) + "x"; }),
      TextRow("statements", kLargest, [](long n) { return Repeat("x = x + 1; ", n) + "x"; }),
      TextRow("names", kLargest,
              [](long n) {
                std::string text;
                for (long i = 0; i < n; ++i) text += Named("name", i) + " = 1; ";
                return text;
              }),
      TextRow("nested parentheses", kLargestNest,
              [](long n) { return Repeat("(", n) + "x" + Repeat(" + 1)", n); }),
      TextRow("nested calls", kLargestNest, [](long n) { return Repeat("abs(", n) + "x" + Repeat(")", n); }),
      MakingRow("variables made", MakeVariable),
      DeletingRow("variables deleted", MakeVariable, DeleteVariable),
      MakingRow("operators defined", MakeOperator),
      DeletingRow("operators deleted", MakeOperator, DeleteOperator),
      MakingRow("expressions parsed", MakeExpression)};
}

double NanosecondsOfItem(Row const& row, long size) {
  QumelContext const context;
  double x = 1;
  qmLinkNumVar('L', "x", &x);
  auto const run = row.prepare(size);
  return TimeOnce(run) / static_cast<double>(row.items ? row.items : size);
}

}  // namespace

bool ReportGrowth(Options const& options) {
  PrintTitle("Growth, in nanoseconds an item");
  Table table({"items", "first size", "second size", "third size"});
  for (Row const& row : Rows()) {
    std::string sizes, separator = " (";
    std::vector<std::string> cells{""};
    for (long const part : {100, 10, 1}) {
      sizes += separator + std::to_string(row.largest / part);
      separator = ", ";
      std::vector<double> taken;
      int const most = part == 1 ? kMostRoundsOfLargest : kMostRounds;
      for (int round = 0; round < std::min(options.rounds, most); ++round)
        taken.push_back(NanosecondsOfItem(row, row.largest / part));
      cells.push_back(Show(Median(taken)));
    }
    cells.front() = row.name + sizes + ")";
    table.Add(cells);
  }
  table.Print();
  return true;
}

}  // namespace bench
