#include "floor_report.h"

#include <iostream>
#include <vector>

namespace kebench {
namespace {

// The console's progress lines, and the medians kept.
class Collector : public benchmark::ConsoleReporter {
public:
    explicit Collector(std::map<std::string, Median> *out) : ConsoleReporter(OO_Tabular), out_(out)
    {
    }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.error_occurred)
                failed_ = true;
            // One repetition has no aggregates: the run is its own median.
            bool median = run.run_type == Run::RT_Aggregate ? run.aggregate_name == "median"
                                                            : run.repetitions <= 1;
            if (!median)
                continue;
            double unit = benchmark::GetTimeUnitMultiplier(run.time_unit);
            Median &m = (*out_)[run.run_name.function_name];
            m.real = run.GetAdjustedRealTime() / unit;
            m.cpu = run.GetAdjustedCPUTime() / unit;
            m.counters = run.counters;
        }
    }

    bool failed() const { return failed_; }

private:
    std::map<std::string, Median> *out_;
    bool failed_ = false;
};

}  // namespace

std::map<std::string, Median> run_all(int argc, char **argv, int repetitions)
{
    // Defaults first, so that the command line overrides them.
    std::string reps = "--benchmark_repetitions=" + std::to_string(repetitions);
    std::vector<char *> args{argv[0], const_cast<char *>(reps.c_str()),
                             const_cast<char *>("--benchmark_enable_random_interleaving=true"),
                             const_cast<char *>("--benchmark_report_aggregates_only=true")};
    for (int i = 1; i < argc; ++i)
        args.push_back(argv[i]);
    int n = static_cast<int>(args.size());
    args.push_back(nullptr);
    benchmark::Initialize(&n, args.data());

    std::map<std::string, Median> medians;
    Collector collector(&medians);
    collector.SetOutputStream(&std::cerr);
    collector.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::Shutdown();
    if (collector.failed())
        medians.clear();
    if (medians.empty())
        std::cerr << "no figures: a benchmark failed or none ran\n";
    return medians;
}

std::string library_name(const std::string &case_name) { return case_name + "/library"; }
std::string floor_name(const std::string &case_name) { return case_name + "/floor"; }

}  // namespace kebench
