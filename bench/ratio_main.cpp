// The main function of all benchmarks: runs them and prints the ratios. Benchmarks are named "operation/who", where
// "ours" is the library and any other name a peer. The ratio is our time divided by the peer's, so 1.00 or less means
// no slower.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace
{

class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (!run.error_occurred && run.run_type == Run::RT_Iteration)
                Note(run.benchmark_name(), run.GetAdjustedRealTime());
    }

    void PrintRatios() const
    {
        std::puts("\nratios (our time in the peer's; the best repetition of each)");
        for (const auto& [operation, times] : _times)
            if (const auto ours = times.find("ours"); ours != times.end())
                for (const auto& [who, time] : times)
                    if (who != "ours")
                        std::printf("%-32s %6.2f of %s\n", operation.c_str(), ours->second / time, who.c_str());
    }

private:
    // "operation/who/options of the run"
    void Note(const std::string& name, double time)
    {
        const std::size_t slash = name.find('/');
        if (slash == std::string::npos)
            return;
        const std::size_t end = std::min(name.find('/', slash + 1), name.size());
        auto [best, isNew] = _times[name.substr(0, slash)].try_emplace(name.substr(slash + 1, end - slash - 1), time);
        if (!isNew)
            best->second = std::min(best->second, time);
    }

    std::map<std::string, std::map<std::string, double>> _times;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatios();
    return 0;
}
