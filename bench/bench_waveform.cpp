// Drawing the waveform of an hour of 44.1 kHz stereo sound 1,920 pixels wide, from the
// min/max summaries and from the raw frames, at a zoom that shows all of it and at one
// that shows a second; building the summaries against a copy of the sound's bytes. And
// the memory an hour-long sound takes after a hundred edits, with the undo data in the
// disk cache: the process's resident size against the sound's own bytes.
#include "ratioreporter.h"

#include "editors/sound/audiodata.h"
#include "editors/sound/audiowaveform.h"
#include "cache/cachebackends.h"

#include <QFile>

#include <QGuiApplication>

#include <cmath>
#include <cstring>
#include <memory>

using namespace Ovra;

namespace {

constexpr quint32 Rate = 44100;
constexpr quint32 Frames = Rate * 3600;
const QSize ViewSize(1920, 200);

struct Fixture
{
    Fixture()
    {
        SoundSample sample;
        sample.channels = 2;
        sample.bits = 16;
        sample.frequency = Rate;
        sample.samples = Frames;
        sample.data.resize(int(Frames * 4));
        auto *values = reinterpret_cast<qint16 *>(sample.data.data());
        // A tone under a slow swell, with a little noise: every column has a real range.
        quint32 noise = 1;
        for (quint32 i = 0; i < Frames; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const double swell = 0.5 + 0.5 * std::sin(i * 2e-6);
            const double tone = std::sin(i * 0.0627) * swell * 20000;
            values[2 * i] = qint16(tone + int(noise >> 28) * 64);
            values[2 * i + 1] = qint16(-tone);
        }
        data.setSample(sample);
        waveform = std::make_unique<AudioWaveform>(&data);
    }
    void showAll() { waveform->setHScale(double(ViewSize.width()) / Frames), waveform->setFirstFrame(0); }
    void showSecond() { waveform->setHScale(double(ViewSize.width()) / Rate), waveform->setFirstFrame(Frames / 2); }

    AudioData data;
    std::unique_ptr<AudioWaveform> waveform;
};

Fixture &fixture()
{
    static Fixture f;
    return f;
}

void draw(benchmark::State &state, bool all, AudioWaveform::Source source)
{
    Fixture &f = fixture();
    all ? f.showAll() : f.showSecond();
    for (auto _ : state)
        benchmark::DoNotOptimize(f.waveform->render(ViewSize, source));
}

void drawAllSummaries(benchmark::State &state) { draw(state, true, AudioWaveform::Summaries); }
void drawAllFrames(benchmark::State &state) { draw(state, true, AudioWaveform::Frames); }
void drawSecondSummaries(benchmark::State &state) { draw(state, false, AudioWaveform::Summaries); }
void drawSecondFrames(benchmark::State &state) { draw(state, false, AudioWaveform::Frames); }

// The summaries of the whole sound made anew, as when a sound is opened.
void buildSummaries(benchmark::State &state)
{
    Fixture &f = fixture();
    for (auto _ : state) {
        AudioWaveform waveform(&f.data);
        benchmark::DoNotOptimize(waveform.render(QSize(1, 1), AudioWaveform::Summaries));
    }
}

// A plain copy of the sound's bytes: the least any pass over them costs.
void copySound(benchmark::State &state)
{
    Fixture &f = fixture();
    QByteArray copy(f.data.sample.data.size(), Qt::Uninitialized);
    for (auto _ : state) {
        std::memcpy(copy.data(), f.data.sample.data.constData(), size_t(copy.size()));
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
}

// One in-place edit of a second of sound and its undo: the summaries follow only that range.
void editSecondInPlace(benchmark::State &state)
{
    Fixture &f = fixture();
    const QByteArray silence(int(Rate * 4), '\0');
    for (auto _ : state) {
        f.data.select(Frames / 3, Frames / 3 + Rate);
        f.data.changeSelectedSamples(silence);
        f.data.undoStack.undo();
    }
    f.data.undoStack.clear();
}

// The resident size of this process, in bytes; 0 where the system doesn't tell.
double residentBytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() * 1024;
    return 0;
}

// Runs first, before the fixture's hour exists, so that the resident size is this
// sound's and its history's alone (and the program's own).
void hourAfterHundredEdits(benchmark::State &state)
{
    constexpr quint32 HourFrames = Rate * 3600;
    for (auto _ : state) {
        AudioData data; // without a host the undo data goes to the disk cache
        {
            SoundSample sample;
            sample.channels = 2;
            sample.bits = 16;
            sample.frequency = Rate;
            sample.samples = HourFrames;
            sample.data.resize(int(qint64(HourFrames) * 4));
            auto *values = reinterpret_cast<qint16 *>(sample.data.data());
            quint32 noise = 7;
            for (quint32 i = 0; i < HourFrames * 2; ++i) {
                noise = noise * 1664525u + 1013904223u;
                values[i] = qint16(std::sin(i * 0.031) * 12000 + int(noise >> 26));
            }
            data.setSample(sample);
        }
        AudioWaveform waveform(&data);
        waveform.setHScale(double(ViewSize.width()) / HourFrames);
        benchmark::DoNotOptimize(waveform.render(ViewSize, AudioWaveform::Summaries));
        QByteArray second(int(Rate * 4), Qt::Uninitialized);
        for (int edit = 0; edit < 100; ++edit) {
            for (int i = 0; i < second.size(); ++i)
                second[i] = char((i * 7 + edit * 13) & 0xff);
            const quint32 at = quint32(edit) * 35 * Rate;
            data.select(at, at + Rate);
            data.changeSelectedSamples(second);
        }
        const double soundBytes = double(data.sample.data.size());
        state.counters["rss_per_sound"] = residentBytes() / soundBytes;
        state.counters["sound_MB"] = soundBytes / 1e6;
        auto *disk = dynamic_cast<DiskCache *>(data.cache);
        state.counters["undo_file_MB"] = disk ? double(disk->fileSize()) / 1e6 : -1;
        state.counters["undo_steps"] = data.undoStack.count();
    }
}

} // namespace

BENCHMARK(hourAfterHundredEdits)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(drawAllSummaries)->Unit(benchmark::kMillisecond);
BENCHMARK(drawAllFrames)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(drawSecondSummaries)->Unit(benchmark::kMillisecond);
BENCHMARK(drawSecondFrames)->Unit(benchmark::kMillisecond);
BENCHMARK(editSecondInPlace)->Unit(benchmark::kMillisecond);
BENCHMARK(buildSummaries)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(copySound)->Unit(benchmark::kMillisecond)->Iterations(3);

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    RatioReporter reporter;
    reporter.addRatio("drawAllSummaries", "drawAllFrames/iterations:3");
    reporter.addRatio("drawSecondSummaries", "drawSecondFrames");
    reporter.addRatio("buildSummaries/iterations:3", "copySound/iterations:3");
    return runWithRatios(argc, argv, reporter);
}
