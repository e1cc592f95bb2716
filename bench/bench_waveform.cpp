// Drawing the waveform of a ten-minute 44.1 kHz stereo sound, from the min/max summaries
// and from the raw frames, at a zoom that shows all of it and at one that shows a second.
#include "ratioreporter.h"

#include "editors/sound/audiodata.h"
#include "editors/sound/audiowaveform.h"

#include <QGuiApplication>

#include <cmath>
#include <memory>

using namespace Ovra;

namespace {

constexpr quint32 Rate = 44100;
constexpr quint32 Frames = Rate * 600;
const QSize ViewSize(1000, 200);

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

} // namespace

BENCHMARK(drawAllSummaries)->Unit(benchmark::kMillisecond);
BENCHMARK(drawAllFrames)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(drawSecondSummaries)->Unit(benchmark::kMillisecond);
BENCHMARK(drawSecondFrames)->Unit(benchmark::kMillisecond);
BENCHMARK(editSecondInPlace)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    RatioReporter reporter;
    reporter.addRatio("drawAllSummaries", "drawAllFrames/iterations:3");
    reporter.addRatio("drawSecondSummaries", "drawSecondFrames");
    return runWithRatios(argc, argv, reporter);
}
