// What the benchmark programs share: Google Benchmark run with repeated,
// interleaved measurements, and a table of each measured case next to its
// floor, from the medians of the repetitions.
//
// A case is registered as two benchmarks, "<case>/library" (the library or
// the whole bench) and "<case>/floor" (only the unavoidable work).  Both
// run in the same process, their repetitions shuffled together, so that a
// machine busy with other work slows both alike and the ratio holds.
#ifndef KE_BENCH_FLOOR_REPORT_H
#define KE_BENCH_FLOOR_REPORT_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace kebench {

// Median of the repetitions of one benchmark, in seconds per iteration,
// and its user counters (medians too).
struct Median {
    double real = 0;
    double cpu = 0;
    benchmark::UserCounters counters;
};

// Runs every registered benchmark, repeated and interleaved unless the
// command line says otherwise (progress on standard error), and returns
// the medians by benchmark name.  Empty when a benchmark failed.
std::map<std::string, Median> run_all(int argc, char **argv, int repetitions);

// A case timed once a repetition in wall time, in milliseconds: its work
// spans processes, and one run of it is long enough to time alone.
inline void once(benchmark::internal::Benchmark *b)
{
    b->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
}

// "<case>/library" and "<case>/floor".
std::string library_name(const std::string &case_name);
std::string floor_name(const std::string &case_name);

}  // namespace kebench

#endif
