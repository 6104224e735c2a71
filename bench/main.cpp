// The benchmark: all sections, or those that are named, and what the options say.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <vector>

#include "bench/sections.h"
#include "qumel/qumel.h"

namespace {

struct Section {
  std::string_view name;
  bool (*report)(bench::Options const&);
};

Section const kSections[] = {
    {"expressions", bench::ReportExpressions},
    {"texts", bench::ReportTexts},
    {"loops", bench::ReportLoops},
    {"calls", bench::ReportCalls},
    {"growth", bench::ReportGrowth},
    {"memory", bench::ReportMemory},
};

int Usage() {
  std::fputs("usage: ./dev bench [--rounds N] [--each] [--instructions] [SECTION...]\nsections:", stderr);
  for (Section const& section : kSections) std::fprintf(stderr, " %s", section.name.data());
  std::fputs("\n", stderr);
  return 2;
}

int Run(bench::Options const& options, std::vector<Section> const& sections) {
  bool allAgree = true;
  for (Section const& section : sections) allAgree = section.report(options) && allAgree;
  return allAgree ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  bench::Options options;
  std::vector<Section> sections;
  for (int i = 1; i < count; ++i) {
    std::string_view const argument = arguments[i];
    if (argument == "--each") {
      options.showEach = true;
    } else if (argument == "--rounds" && i + 1 < count) {
      options.rounds = std::atoi(arguments[++i]);
    } else {
      bool isSection = false;
      for (Section const& section : kSections) {
        if (section.name != argument) continue;
        sections.push_back(section);
        isSection = true;
      }
      if (!isSection) return Usage();
    }
  }
  if (options.rounds < 1) return Usage();
  if (sections.empty()) sections.assign(std::begin(kSections), std::end(kSections));
  qmInitialize("");
  try {
    return Run(options, sections);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "qumel_bench: %s\n", error.what());
    return 1;
  }
}
