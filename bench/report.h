// Tables in Markdown, with columns that line up in a terminal too.
#pragma once

#include <string>
#include <vector>

namespace bench {

class Table {
 public:
  explicit Table(std::vector<std::string> heads) : m_rows{std::move(heads)} {}
  void Add(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
  void Print() const;

 private:
  std::vector<std::vector<std::string>> m_rows;
};

void PrintTitle(std::string const& title);

/** The number with three significant digits, or with all digits before the point. */
std::string Show(double value);
std::string ShowPercent(double part);

/** Whether two results are the same but for last digits. */
bool Agree(double value, double reference);

}  // namespace bench
