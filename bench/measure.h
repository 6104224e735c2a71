// Interleaved measurement: the subjects take turns in rounds, and each is judged by the median of its rounds,
// so that whatever else the machine does at some time falls on all of them alike.
#pragma once

#include <functional>
#include <vector>

namespace bench {

/** What is measured: a function that repeats something so many times. */
using Subject = std::function<void(long turns)>;

struct Timing {
  double nanoseconds = 0;  // a turn, in the median round
  double spread = 0;       // half the distance of the outer quarters of the rounds, as a part of the median
};

/** Runs of the subjects in turn, each long enough to be measured, after a run that is not counted. */
std::vector<Timing> Measure(std::vector<Subject> const& subjects, int rounds);

/** The time of one run that cannot be repeated, in nanoseconds of this thread's work. */
double TimeOnce(std::function<void()> const& run);

double Median(std::vector<double> values);
double GeometricMean(std::vector<double> const& values);

/** Keeps a value from being optimised away. */
inline void Keep(double value) { asm volatile("" : : "x"(value)); }
inline void Keep(unsigned long long value) { asm volatile("" : : "r"(value)); }

}  // namespace bench
