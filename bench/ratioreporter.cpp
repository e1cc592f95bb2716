#include "ratioreporter.h"

#include <cstdio>

void RatioReporter::addRatio(std::string subject, std::string reference)
{
    m_ratios.emplace_back(std::move(subject), std::move(reference));
}

void RatioReporter::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        if (run.error_occurred || run.iterations == 0)
            continue;
        // With repetitions the mean stands for the routine; single runs stand for themselves.
        if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "mean")
            continue;
        // Repetitions add "/repeats:N" to the name; the ratios name the routine without it.
        benchmark::BenchmarkName name = run.run_name;
        name.repetitions.clear();
        // In seconds, whatever unit each benchmark prints in.
        m_times[name.str()] = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
    ConsoleReporter::ReportRuns(runs);
}

void RatioReporter::Finalize()
{
    ConsoleReporter::Finalize();
    for (const auto &[subject, reference] : m_ratios) {
        const auto s = m_times.find(subject);
        const auto r = m_times.find(reference);
        // A pair that was filtered out says so, rather than leaving the reader to wonder.
        if (s == m_times.end() || r == m_times.end() || s->second <= 0) {
            std::printf("ratio %s against %s: not measured in this run\n", subject.c_str(), reference.c_str());
            continue;
        }
        std::printf("ratio %s against %s: %.2fx the speed, %.3gx the time\n", subject.c_str(),
                    reference.c_str(), r->second / s->second, s->second / r->second);
    }
}

int runWithRatios(int argc, char **argv, RatioReporter &reporter)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
