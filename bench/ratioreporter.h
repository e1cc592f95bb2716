#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

// Console output as usual, followed by each measured routine's speed as a ratio to a
// reference measured in the same run. Absolute times vary between machines and runs;
// the ratios are what the figures in notes and issues refer to.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    // ratio = time(reference) / time(subject): above 1 the subject is faster.
    void addRatio(std::string subject, std::string reference);

    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    std::map<std::string, double> m_times;
    std::vector<std::pair<std::string, std::string>> m_ratios;
};

// Runs the registered benchmarks with the reporter; the main() of every benchmark program.
int runWithRatios(int argc, char **argv, RatioReporter &reporter);
