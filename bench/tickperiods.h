#pragma once

// The period of a clock that should tick 60 times a second, from the moments of its ticks:
// the mean and the 99th percentile of each period's deviation from 1000/60 ms.
#include <QString>

#include <algorithm>
#include <cmath>
#include <vector>

constexpr double IdealTickMs = 1000.0 / 60.0;

struct TickPeriods
{
    double mean = 0.0;
    double p99 = 0.0;
    size_t ticks = 0;
};

// From the moments of the ticks, in nanoseconds.
inline TickPeriods measureTicks(const std::vector<qint64> &moments)
{
    TickPeriods result;
    if (moments.size() < 2)
        return result;
    result.ticks = moments.size() - 1;
    result.mean = double(moments.back() - moments.front()) / 1e6 / double(result.ticks);
    std::vector<double> deviations;
    deviations.reserve(result.ticks);
    for (size_t i = 1; i < moments.size(); ++i)
        deviations.push_back(std::abs(double(moments[i] - moments[i - 1]) / 1e6 - IdealTickMs));
    std::sort(deviations.begin(), deviations.end());
    result.p99 = deviations[std::min(deviations.size() - 1, size_t(double(deviations.size()) * 0.99))];
    return result;
}

// How long a run plays: 10 s, or the seconds the environment variable gives.
inline double runSeconds(const char *variable)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariable(variable).toDouble() : 10.0;
}
