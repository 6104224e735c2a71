// Printing, and the comparison of results that decides whether a figure is printed at all.
#include "bench/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace bench {

void Table::Print() const {
  std::vector<std::size_t> widths;
  for (auto const& row : m_rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  for (auto const& row : m_rows) {
    for (std::size_t i = 0; i < row.size(); ++i)
      std::printf(i == 0 ? "| %-*s" : " | %*s", static_cast<int>(widths[i]), row[i].c_str());
    std::printf(" |\n");
    if (&row != &m_rows.front()) continue;
    for (std::size_t i = 0; i < row.size(); ++i) std::printf(i == 0 ? "|---" : "|---:");
    std::printf("|\n");
  }
  std::fflush(stdout);
}

void PrintTitle(std::string const& title) {
  std::printf("\n%s\n\n", title.c_str());
  std::fflush(stdout);
}

std::string Show(double value) {
  constexpr int kDigits = 3;
  int const before = value == 0 ? 1 : static_cast<int>(std::floor(std::log10(std::abs(value)))) + 1;
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", std::clamp(kDigits - before, 0, kDigits), value);
  return text;
}

std::string ShowPercent(double part) { return Show(part * 100) + " %"; }

bool Agree(double value, double reference) {
  constexpr double kLastDigits = 1e-12;
  return std::abs(value - reference) <= kLastDigits * std::max(1.0, std::abs(reference));
}

}  // namespace bench
