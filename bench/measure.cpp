// Time is that of the thread's own work (CLOCK_THREAD_CPUTIME_ID): time in which others had the CPU does not
// count.
#include "bench/measure.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <numeric>

namespace bench {
namespace {

constexpr double kNanosecondsOfSecond = 1e9;
constexpr double kNanosecondsOfRun = 4e5;  // some thousand times the cost of reading the clock

double Now() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * kNanosecondsOfSecond + static_cast<double>(now.tv_nsec);
}

/** So many turns that a run takes its time. Finding out warms the subject up. */
long TurnsOfRun(Subject const& subject) {
  for (long turns = 1;; turns *= 2) {
    double const start = Now();
    subject(turns);
    double const taken = Now() - start;
    if (taken >= kNanosecondsOfRun / 2)
      return std::max(1L, std::lround(static_cast<double>(turns) * kNanosecondsOfRun / taken));
  }
}

double Quantile(std::vector<double> const& sorted, double part) {
  return sorted[static_cast<std::size_t>(std::lround(part * static_cast<double>(sorted.size() - 1)))];
}

}  // namespace

std::vector<Timing> Measure(std::vector<Subject> const& subjects, int rounds) {
  std::vector<long> turns;
  for (Subject const& subject : subjects) turns.push_back(TurnsOfRun(subject));
  std::vector<std::vector<double>> taken(subjects.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < subjects.size(); ++i) {
      double const start = Now();
      subjects[i](turns[i]);
      taken[i].push_back((Now() - start) / static_cast<double>(turns[i]));
    }
  }
  std::vector<Timing> timings;
  for (auto& values : taken) {
    std::sort(values.begin(), values.end());
    double const median = Quantile(values, 0.5);
    timings.push_back({median, (Quantile(values, 0.75) - Quantile(values, 0.25)) / 2 / median});
  }
  return timings;
}

double TimeOnce(std::function<void()> const& run) {
  double const start = Now();
  run();
  return Now() - start;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return Quantile(values, 0.5);
}

double GeometricMean(std::vector<double> const& values) {
  double const sum = std::accumulate(values.begin(), values.end(), 0.0,
                                     [](double total, double value) { return total + std::log(value); });
  return std::exp(sum / static_cast<double>(values.size()));
}

}  // namespace bench
