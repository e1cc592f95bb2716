// The sound codecs and the rate converter on 60 seconds of stereo at 44.1 kHz, each
// reported as a multiple of real time (how many seconds of sound one second of work
// handles), against copying the same PCM bytes.
#include "sound/soundcodecs.h"

#include "ratioreporter.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cmath>
#include <cstring>

using namespace Ovra;

namespace {

constexpr double Seconds = 60;

// A minute of music-like sound: two voices of changing pitch and a little noise.
const SoundSample &minute()
{
    static const SoundSample sample = [] {
        SoundSample s;
        s.channels = 2;
        s.bits = 16;
        s.frequency = 44100;
        s.samples = quint32(Seconds * 44100);
        s.data.resize(int(s.samples * 4));
        auto *out = reinterpret_cast<qint16 *>(s.data.data());
        quint32 noise = 1;
        for (quint32 i = 0; i < s.samples; ++i) {
            const double t = double(i) / 44100;
            const double pitch = 220 * std::pow(2.0, double((i / 11025) % 12) / 12);
            noise = noise * 1664525u + 1013904223u;
            const double grain = double(int(noise >> 16) - 32768) / 32768 * 0.02;
            out[2 * i] = qint16(9000 * std::sin(2 * M_PI * pitch * t) + 3000 * grain);
            out[2 * i + 1] = qint16(7000 * std::sin(2 * M_PI * pitch * 1.5 * t) + 3000 * grain);
        }
        return s;
    }();
    return sample;
}

QByteArray encoded(bool (*write)(const SoundSample &, QIODevice *))
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    write(minute(), &buffer);
    return bytes;
}

void realTime(benchmark::State &state)
{
    state.counters["x real time"] =
        benchmark::Counter(Seconds * double(state.iterations()), benchmark::Counter::kIsRate);
}

void copyPcm(benchmark::State &state)
{
    const QByteArray &source = minute().data;
    QByteArray target(source.size(), '\0');
    for (auto _ : state) {
        memcpy(target.data(), source.constData(), size_t(source.size()));
        benchmark::DoNotOptimize(target.data());
    }
    realTime(state);
}

void decode(benchmark::State &state, SoundSample (*read)(QIODevice *), QByteArray bytes)
{
    if (bytes.isEmpty()) {
        state.SkipWithError("no input");
        return;
    }
    for (auto _ : state) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        benchmark::DoNotOptimize(read(&buffer).data.size());
    }
    realTime(state);
}

void encode(benchmark::State &state, bool (*write)(const SoundSample &, QIODevice *))
{
    for (auto _ : state)
        benchmark::DoNotOptimize(encoded(write).size());
    realTime(state);
}

void wavDecode(benchmark::State &state)
{
    decode(state, soundFromWAV, encoded(soundToWAV));
}

void flacEncode(benchmark::State &state)
{
    encode(state, soundToFLAC);
}

void flacDecode(benchmark::State &state)
{
    decode(state, soundFromFLAC, encoded(soundToFLAC));
}

// Vorbis takes samples / channels frames: a sound twice as long is given, so that the
// full minute of stereo is encoded.
void vorbisEncode(benchmark::State &state)
{
    SoundSample doubled = minute();
    doubled.samples *= 2;
    for (auto _ : state) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        benchmark::DoNotOptimize(soundToOGG(doubled, &buffer));
    }
    realTime(state);
}

void vorbisDecode(benchmark::State &state)
{
    SoundSample doubled = minute();
    doubled.samples *= 2;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    soundToOGG(doubled, &buffer);
    decode(state, soundFromOGG, bytes);
}

// The MP3 is made by Debian's lame from the same minute; without lame this is skipped.
QByteArray mp3Minute()
{
    static const QByteArray bytes = [] {
        QTemporaryDir directory;
        const QString lame = QStandardPaths::findExecutable(QStringLiteral("lame"));
        if (lame.isEmpty() || !directory.isValid())
            return QByteArray();
        QFile raw(directory.filePath(QStringLiteral("minute.raw")));
        if (!raw.open(QIODevice::WriteOnly) || raw.write(minute().data) != minute().data.size())
            return QByteArray();
        raw.close();
        const QString mp3 = directory.filePath(QStringLiteral("minute.mp3"));
        QProcess process;
        process.start(lame, {QStringLiteral("--quiet"), QStringLiteral("-r"), QStringLiteral("-s"), QStringLiteral("44.1"),
                             QStringLiteral("--bitwidth"), QStringLiteral("16"), QStringLiteral("--signed"),
                             QStringLiteral("--little-endian"), QStringLiteral("-b"), QStringLiteral("192"), raw.fileName(),
                             mp3});
        if (!process.waitForFinished(300000) || process.exitCode() != 0)
            return QByteArray();
        QFile file(mp3);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    return bytes;
}

void mp3Decode(benchmark::State &state)
{
    decode(state, soundFromMP3, mp3Minute());
}

void resampleHalf(benchmark::State &state)
{
    for (auto _ : state) {
        SoundSample sample = minute();
        benchmark::DoNotOptimize(resampleSound(sample, SampleInfo{2, 16, 22050, 0}));
    }
    realTime(state);
}

} // namespace

BENCHMARK(copyPcm)->Unit(benchmark::kMillisecond);
BENCHMARK(wavDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(flacEncode)->Unit(benchmark::kMillisecond);
BENCHMARK(flacDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(vorbisEncode)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(vorbisDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(mp3Decode)->Unit(benchmark::kMillisecond);
BENCHMARK(resampleHalf)->Unit(benchmark::kMillisecond)->Iterations(2);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    RatioReporter reporter;
    for (const char *subject : {"wavDecode", "flacEncode", "flacDecode", "vorbisDecode", "mp3Decode"})
        reporter.addRatio(subject, "copyPcm");
    reporter.addRatio("vorbisEncode/iterations:2", "copyPcm");
    reporter.addRatio("resampleHalf/iterations:2", "copyPcm");
    return runWithRatios(argc, argv, reporter);
}
