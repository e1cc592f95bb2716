// The sound codecs and the rate converter on 60 seconds of stereo at 44.1 kHz, each
// reported as a multiple of real time (how many seconds of sound one second of work
// handles), against copying the same PCM bytes. First of all, the memory a WAV to WAV
// conversion takes, as a multiple of the PCM it converts.
#include "sound/soundcodecs.h"

#include "ratioreporter.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char **environ;

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

// ---- peak memory of a conversion ---------------------------------------------------------
//
// A conversion runs in a process of its own, and its peak resident size comes from the
// kernel when it ends (wait4). What the process needs before it touches any sound is
// measured on a sound of a few frames, converted the same way: the difference between the
// two peaks is what the large sound cost, compared with the bytes of its PCM.

constexpr qint64 LargePcmBytes = qint64(200) << 20;
constexpr double PeakGoal = 1.3;

// The ratio of each measured conversion, by what ran it, for the summary after the run.
std::vector<std::pair<std::string, double>> &peakRatios()
{
    static std::vector<std::pair<std::string, double>> ratios;
    return ratios;
}

// A 16-bit stereo WAV of `pcmBytes` of noise, written in pieces.
bool writeNoiseWav(const QString &fileName, qint64 pcmBytes)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QByteArray head;
    QDataStream stream(&head, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream.writeRawData("RIFF", 4);
    stream << quint32(pcmBytes + 36);
    stream.writeRawData("WAVEfmt ", 8);
    stream << quint32(16) << quint16(1) << quint16(2) << quint32(44100) << quint32(44100 * 4) << quint16(4)
           << quint16(16);
    stream.writeRawData("data", 4);
    stream << quint32(pcmBytes);
    if (file.write(head) != head.size())
        return false;
    QByteArray piece(1 << 20, Qt::Uninitialized);
    quint32 noise = 12345;
    for (qint64 left = pcmBytes; left > 0; left -= piece.size()) {
        for (int i = 0; i < piece.size(); ++i) {
            noise = noise * 1664525u + 1013904223u;
            piece[i] = char(noise >> 24);
        }
        const qint64 count = qMin<qint64>(left, piece.size());
        if (file.write(piece.constData(), count) != count)
            return false;
    }
    return true;
}

// Runs the program to its end; its peak resident size in bytes, or -1 where it couldn't
// run or failed.
qint64 peakOfRun(const QStringList &arguments)
{
    std::vector<QByteArray> words;
    for (const QString &argument : arguments)
        words.push_back(QFile::encodeName(argument));
    std::vector<char *> argv;
    for (QByteArray &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    // The tool makes a GUI application: no display is needed for that.
    std::vector<QByteArray> settings{"QT_QPA_PLATFORM=offscreen"};
    for (char **entry = environ; *entry; ++entry) {
        if (strncmp(*entry, "QT_QPA_PLATFORM=", 16) != 0)
            settings.emplace_back(*entry);
    }
    std::vector<char *> envp;
    for (QByteArray &setting : settings)
        envp.push_back(setting.data());
    envp.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawn(&pid, argv.front(), nullptr, nullptr, argv.data(), envp.data()) != 0)
        return -1;
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;
    return qint64(usage.ru_maxrss) * 1024; // kilobytes on Linux
}

// One WAV to WAV conversion of a large and of a tiny sound by the program `command` runs
// (IN and OUT come last), reported as the growth of its peak over the PCM's bytes.
void peakOfConversion(benchmark::State &state, const std::string &label, const QStringList &command)
{
    QTemporaryDir directory;
    const QString large = directory.filePath(QStringLiteral("large.wav"));
    const QString tiny = directory.filePath(QStringLiteral("tiny.wav"));
    if (!directory.isValid() || !writeNoiseWav(large, LargePcmBytes) || !writeNoiseWav(tiny, 4000)) {
        state.SkipWithError("the sounds couldn't be written");
        return;
    }
    qint64 base = -1;
    qint64 peak = -1;
    for (auto _ : state) {
        base = peakOfRun(command + QStringList{tiny, directory.filePath(QStringLiteral("tiny-out.wav"))});
        peak = peakOfRun(command + QStringList{large, directory.filePath(QStringLiteral("large-out.wav"))});
    }
    const QFileInfo out(directory.filePath(QStringLiteral("large-out.wav")));
    if (base < 0 || peak < 0 || out.size() != QFileInfo(large).size()) {
        state.SkipWithError("the conversion failed");
        return;
    }
    const double ratio = double(peak - base) / double(LargePcmBytes);
    state.counters["PCM MB"] = double(LargePcmBytes) / (1 << 20);
    state.counters["peak growth MB"] = double(peak - base) / (1 << 20);
    state.counters["peak / PCM"] = ratio;
    peakRatios().emplace_back(label, ratio);
}

void wavToWavPeakTool(benchmark::State &state)
{
    const QString tool = QCoreApplication::applicationDirPath() + QStringLiteral("/ovra");
    if (!QFileInfo(tool).isExecutable()) {
        state.SkipWithError("the ovra tool isn't built beside this program");
        return;
    }
    peakOfConversion(state, "ovra sound convert", {tool, QStringLiteral("sound"), QStringLiteral("convert")});
}

// The library alone: this program run again to read and write the sound (see main).
void wavToWavPeakLibrary(benchmark::State &state)
{
    peakOfConversion(state, "soundFromWAV and soundToWAV",
                     {QCoreApplication::applicationFilePath(), QStringLiteral("--convert-wav")});
}

int convertWav(const char *input, const char *output)
{
    QFile in(QFile::decodeName(input));
    QFile out(QFile::decodeName(output));
    const SoundSample sample = soundFromWAV(&in, CodecRules::Complete);
    return !sample.data.isEmpty() && soundToWAV(sample, &out, CodecRules::Complete) ? 0 : 1;
}

} // namespace

// Before everything else, so that no earlier work's memory is in the way (each conversion
// has a process of its own all the same).
BENCHMARK(wavToWavPeakTool)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(wavToWavPeakLibrary)->Unit(benchmark::kMillisecond)->Iterations(1);
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
    // Run again by wavToWavPeakLibrary: one conversion and nothing else.
    if (argc == 4 && strcmp(argv[1], "--convert-wav") == 0)
        return convertWav(argv[2], argv[3]);
    QCoreApplication app(argc, argv);
    RatioReporter reporter;
    for (const char *subject : {"wavDecode", "flacEncode", "flacDecode", "vorbisDecode", "mp3Decode"})
        reporter.addRatio(subject, "copyPcm");
    reporter.addRatio("vorbisEncode/iterations:2", "copyPcm");
    reporter.addRatio("resampleHalf/iterations:2", "copyPcm");
    const int code = runWithRatios(argc, argv, reporter);
    bool within = true;
    for (const auto &[label, ratio] : peakRatios()) {
        std::printf("peak memory of a WAV to WAV conversion (%s): %.2fx the PCM (goal: at most %.1fx)\n",
                    label.c_str(), ratio, PeakGoal);
        within = within && ratio <= PeakGoal;
    }
    return code != 0 ? code : within ? 0 : 1;
}
