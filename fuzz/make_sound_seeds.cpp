// Writes small WAV, Ogg Vorbis and FLAC files into the fuzz corpora: the codec libraries
// are not instrumented, so the fuzzer needs valid files to start from.
#include "sound/soundcodecs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cmath>

using namespace Ovra;

static SoundSample tone(quint16 channels, quint16 bits, quint32 frames)
{
    SoundSample sample;
    sample.channels = channels;
    sample.bits = bits;
    sample.frequency = 8000;
    sample.samples = frames;
    sample.data.resize(int(frames * channels * bits / 8));
    for (quint32 i = 0; i < frames * channels; ++i)
        encodeSample(float(0.3 * std::sin(i * 0.2)), sample.data.data() + i * bits / 8, bits);
    return sample;
}

static void write(const QString &path, bool (*encode)(const SoundSample &, QIODevice *), const SoundSample &sample)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        encode(sample, &file);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QString root = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("corpus");
    for (const char *name : {"wav", "ogg", "flac"})
        QDir().mkpath(root + QLatin1Char('/') + QLatin1String(name));
    write(root + "/wav/seed-8-mono", soundToWAV, tone(1, 8, 64));
    write(root + "/wav/seed-16-stereo", soundToWAV, tone(2, 16, 64));
    write(root + "/flac/seed-24-mono", soundToFLAC, tone(1, 24, 300));
    write(root + "/flac/seed-16-stereo", soundToFLAC, tone(2, 16, 300));
    write(root + "/ogg/seed-mono", soundToOGG, tone(1, 16, 65536));
    return 0;
}
