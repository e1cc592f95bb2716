// Checksum throughput on 64 MiB, against zlib's crc32 on the same buffer.
#include "foundation/utilities.h"

#include "ratioreporter.h"

#include <zlib.h>

#include <cstdint>
#include <vector>

namespace {

constexpr size_t BufferSize = 64u << 20;

const std::vector<unsigned char> &buffer()
{
    static const std::vector<unsigned char> data = [] {
        std::vector<unsigned char> bytes(BufferSize);
        uint32_t state = 2463534242u; // xorshift: cheap, repeatable noise
        for (auto &byte : bytes) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            byte = static_cast<unsigned char>(state);
        }
        return bytes;
    }();
    return data;
}

void zlibCrc32(benchmark::State &state)
{
    const auto &data = buffer();
    for (auto _ : state)
        benchmark::DoNotOptimize(crc32(0L, data.data(), uInt(data.size())));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(data.size()));
}

void ovraCrc32(benchmark::State &state)
{
    const auto &data = buffer();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            Ovra::CRC32(reinterpret_cast<const char *>(data.data()), int(data.size())));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(data.size()));
}

void ovraCrc64(benchmark::State &state)
{
    auto &data = const_cast<std::vector<unsigned char> &>(buffer());
    for (auto _ : state)
        benchmark::DoNotOptimize(Ovra::CRC64(data.data(), uint(data.size())));
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(data.size()));
}

} // namespace

BENCHMARK(zlibCrc32)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(ovraCrc32)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(ovraCrc64)->Unit(benchmark::kMillisecond)->Repetitions(5);

int main(int argc, char **argv)
{
    RatioReporter reporter;
    reporter.addRatio("ovraCrc32", "zlibCrc32");
    reporter.addRatio("ovraCrc64", "zlibCrc32");
    return runWithRatios(argc, argv, reporter);
}
