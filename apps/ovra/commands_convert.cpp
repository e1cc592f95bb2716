// The commands on single files: palettes, pictures and sounds from one format, size or
// shape into another, and a sound played.
#include "commands.h"
#include "enginehost.h"
#include "mediafiles.h"
#include "terminal.h"

#include "image/imagecodecs.h"
#include "image/imagescaling.h"
#include "image/paletteobject.h"
#include "sound/soundcodecs.h"
#include "sound/soundplayer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QtMath>

using namespace Ovra;

namespace {

// The filters of resizeImage by the names the command line takes.
struct FilterName
{
    const char *name;
    ImageResizeFilter filter;
};

const QList<FilterName> &filterNames()
{
    static const QList<FilterName> names{
        {"nearest", NearestNeighborFilter}, {"bilinear", BilinearFilter},
        {"epx-nearest", EpxNearestFilter},  {"epx-bilinear", EpxBilinearFilter},
        {"hq-nearest", HqNearestFilter},    {"hq-bilinear", HqBilinearFilter},
    };
    return names;
}

QString filterHelp()
{
    QStringList lines;
    for (const FilterName &entry : filterNames())
        lines << QStringLiteral("  %1  %2").arg(QLatin1String(entry.name), -13).arg(QLatin1String(imageResizeFilterName(entry.filter)));
    return lines.join(QLatin1Char('\n'));
}

// What every one-file conversion does first: IN and OUT (OUT may be left out with
// --in-place), the formats by suffix, the input readable and the output not on it.
struct Conversion
{
    QString input;
    QString output;
    QByteArray inputFormat;
    QByteArray outputFormat;
};

void addInPlace(Cli::Parser &parser)
{
    parser.addOption({QStringLiteral("in-place"), QStringLiteral("Allow OUT to be IN (or leave OUT out) and replace it.")});
}

// -1 to go on, else the exit code.
int prepare(Cli::Context &context, const Cli::Parser &parser, MediaFiles::Kind kind, Conversion *conversion)
{
    const QStringList positional = parser.positional();
    const bool inPlace = parser.isSet(QStringLiteral("in-place"));
    if (positional.size() < 2 && !inPlace)
        return context.usageError(parser.name(), QStringLiteral("missing OUT (or --in-place to replace IN)"));
    conversion->input = positional.at(0);
    conversion->output = positional.value(1, conversion->input);
    conversion->inputFormat = MediaFiles::checkedFormat(context, parser.name(), conversion->input, kind, MediaFiles::Read);
    if (conversion->inputFormat.isEmpty())
        return Cli::UsageError;
    conversion->outputFormat = MediaFiles::checkedFormat(context, parser.name(), conversion->output, kind, MediaFiles::Write);
    if (conversion->outputFormat.isEmpty())
        return Cli::UsageError;
    const int refused = MediaFiles::checkOutput(context, parser.name(), conversion->output, {conversion->input}, inPlace);
    if (refused >= 0)
        return refused;
    return MediaFiles::checkInput(context, parser.name(), conversion->input) ? -1 : Cli::InputError;
}

// Reads the picture of a conversion; false with the input error said.
bool readPicture(Cli::Context &context, const QString &command, const Conversion &conversion, QImage *image)
{
    QFile file(conversion.input);
    QString error;
    if (!MediaFiles::openInput(file, &error)) {
        context.inputError(command, conversion.input, error);
        return false;
    }
    if (loadImage(&file, conversion.inputFormat.constData(), *image, CodecRules::Complete))
        return true;
    context.inputError(command, conversion.input,
                       QStringLiteral("not a readable %1 picture").arg(QString::fromLatin1(conversion.inputFormat)));
    return false;
}

int writePicture(Cli::Context &context, const QString &command, const Conversion &conversion, const QImage &image)
{
    const QString refusal = MediaFiles::pictureRefusal(conversion.outputFormat, image);
    if (!refusal.isEmpty())
        return context.inputError(command, conversion.output, refusal);
    const int code = MediaFiles::writeOutput(
        context, command, conversion.output,
        [&](QIODevice *device) {
            return saveImage(device, conversion.outputFormat.constData(), image, CodecRules::Complete);
        },
        QStringLiteral("picture"));
    if (code == Cli::Success)
        context.say(QStringLiteral("Wrote %1: %2 x %3.").arg(conversion.output).arg(image.width()).arg(image.height()));
    return code;
}

// The 256 entries resizeImage matches against: the picture's own colours, if it has them.
void paletteOf(const QImage &image, RGBA (&palette)[256])
{
    const QVector<QRgb> table = image.colorTable();
    for (int i = 0; i < 256; ++i)
        palette[i] = i < table.size() ? RGBA(table.at(i)) : RGBA();
}

bool parseSize(const QString &text, QSize *size)
{
    const QStringList parts = text.toLower().split(QLatin1Char('x'));
    if (parts.size() != 2)
        return false;
    bool okWidth = false;
    bool okHeight = false;
    *size = QSize(parts.at(0).toInt(&okWidth), parts.at(1).toInt(&okHeight));
    return okWidth && okHeight && size->width() > 0 && size->height() > 0 && size->width() <= 16384
           && size->height() <= 16384;
}

bool readSound(Cli::Context &context, const QString &command, const QString &fileName, const QByteArray &format,
               SoundSample *sample)
{
    QFile file(fileName);
    QString error;
    if (!MediaFiles::openInput(file, &error)) {
        context.inputError(command, fileName, error);
        return false;
    }
    if (loadSound(&file, format.constData(), *sample, CodecRules::Complete) && sample->channels > 0)
        return true;
    context.inputError(command, fileName, QStringLiteral("not a readable %1 sound").arg(QString::fromLatin1(format)));
    return false;
}

// To the target's rate and channels through the library's converter, then to its depth.
// The converter reads three-byte values as four, so a 24-bit sound goes through it at 32.
bool convertSound(SoundSample &sample, const SampleInfo &target)
{
    if (target.frequency != sample.frequency || target.channels != sample.channels) {
        if (sample.bits == 24 && !changeSampleDepth(sample, 32))
            return false;
        SampleInfo shape = target;
        shape.bits = sample.bits;
        if (!resampleSound(sample, shape))
            return false;
    }
    return changeSampleDepth(sample, target.bits);
}

// "1 channel", "2 channels".
QString counted(qint64 count, const QString &one, const QString &many)
{
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? one : many);
}

QString shapeText(const SampleInfo &info)
{
    return QStringLiteral("%1 Hz, %2, %3, %4")
        .arg(QString::number(info.frequency), counted(info.bits, QStringLiteral("bit"), QStringLiteral("bits")),
             counted(info.channels, QStringLiteral("channel"), QStringLiteral("channels")),
             counted(info.samples, QStringLiteral("frame"), QStringLiteral("frames")));
}

} // namespace

namespace Commands {

int paletteConvert(Cli::Context &context, const QStringList &arguments)
{
    const QString command = QStringLiteral("palette convert");
    EngineHost host(context.pluginDirectory); // plug-ins add palette formats
    Cli::Parser parser(command,
                       QStringLiteral("Convert a palette file to another format, told by the suffixes.\n"
                                      "Reads: %1 (pictures give their colour tables).\nWrites: %2.")
                           .arg(MediaFiles::formats(MediaFiles::Palette, MediaFiles::Read).join(QStringLiteral(", ")).toLower(),
                                MediaFiles::formats(MediaFiles::Palette, MediaFiles::Write).join(QStringLiteral(", ")).toLower()),
                       QStringLiteral("IN OUT"));
    addInPlace(parser);
    const int parsed = parser.parse(context, arguments, 1, 2);
    if (parsed >= 0)
        return parsed;
    Conversion conversion;
    const int prepared = prepare(context, parser, MediaFiles::Palette, &conversion);
    if (prepared >= 0)
        return prepared;

    RGBA table[256];
    PaletteObject palette(&table);
    QFile file(conversion.input);
    QString error;
    if (!MediaFiles::openInput(file, &error))
        return context.inputError(command, conversion.input, error);
    if (!palette.fromFile(&file, conversion.inputFormat.constData(), CodecRules::Complete)) {
        return context.inputError(command, conversion.input, QStringLiteral("not a readable %1 palette")
                                                                 .arg(QString::fromLatin1(conversion.inputFormat)));
    }
    file.close();
    const int code = MediaFiles::writeOutput(
        context, command, conversion.output,
        [&](QIODevice *device) {
            return palette.toFile(device, conversion.outputFormat.constData(), CodecRules::Complete);
        },
        QStringLiteral("palette"));
    if (code == Cli::Success)
        context.say(QStringLiteral("Wrote %1.").arg(conversion.output));
    return code;
}

int imageScale(Cli::Context &context, const QStringList &arguments)
{
    const QString command = QStringLiteral("image scale");
    EngineHost host(context.pluginDirectory);
    Cli::Parser parser(command,
                       QStringLiteral("Scale a picture to a size, or by a factor. Indexed pictures stay indexed "
                                      "over their own colours. Filters:\n%1")
                           .arg(filterHelp()),
                       QStringLiteral("IN OUT"));
    parser.addOption({QStringLiteral("size"), QStringLiteral("The new size, as WIDTHxHEIGHT."), QStringLiteral("WxH")});
    parser.addOption({QStringLiteral("factor"), QStringLiteral("Scale both sides by F."), QStringLiteral("F")});
    parser.addOption({QStringLiteral("filter"), QStringLiteral("One of the filters above (default nearest)."),
                      QStringLiteral("NAME"), QStringLiteral("nearest")});
    addInPlace(parser);
    const int parsed = parser.parse(context, arguments, 1, 2);
    if (parsed >= 0)
        return parsed;
    const bool bySize = parser.isSet(QStringLiteral("size"));
    if (bySize == parser.isSet(QStringLiteral("factor")))
        return context.usageError(command, QStringLiteral("give either --size or --factor"));
    QSize size;
    double factor = 0;
    if (bySize && !parseSize(parser.value(QStringLiteral("size")), &size)) {
        return context.usageError(command, QStringLiteral("--size takes WIDTHxHEIGHT from 1 to 16384, not '%1'")
                                               .arg(parser.value(QStringLiteral("size"))));
    }
    if (!bySize) {
        if (!Cli::number(context, parser, QStringLiteral("factor"), &factor))
            return Cli::UsageError;
        if (factor <= 0 || factor > 64)
            return context.usageError(command, QStringLiteral("--factor must lie above 0 and at most 64"));
    }
    const QString filterName = parser.value(QStringLiteral("filter"));
    const FilterName *filter = nullptr;
    for (const FilterName &entry : filterNames()) {
        if (filterName == QLatin1String(entry.name))
            filter = &entry;
    }
    if (!filter)
        return context.usageError(command, QStringLiteral("no filter '%1'; the filters are:\n%2").arg(filterName, filterHelp()));
    Conversion conversion;
    const int prepared = prepare(context, parser, MediaFiles::Image, &conversion);
    if (prepared >= 0)
        return prepared;

    QImage image;
    if (!readPicture(context, command, conversion, &image))
        return Cli::InputError;
    if (!bySize)
        size = QSize(qMax(1, qRound(image.width() * factor)), qMax(1, qRound(image.height() * factor)));
    if (size.width() > 16384 || size.height() > 16384)
        return context.usageError(command, QStringLiteral("the result would pass 16384 pixels on a side"));
    // The scalers work on indexed pixels or on ARGB32: the nearest filter walks any other
    // true colour (RGB32 too) three bytes a pixel.
    const bool opaque = image.format() != QImage::Format_Indexed8 && !image.hasAlphaChannel();
    if (image.format() != QImage::Format_Indexed8)
        image = image.convertToFormat(QImage::Format_ARGB32);
    RGBA palette[256];
    paletteOf(image, palette);
    QImage scaled = resizeImage(image, size, palette, filter->filter);
    if (scaled.isNull())
        return context.inputError(command, conversion.input, QStringLiteral("the %1 filter can't scale this picture").arg(filterName));
    if (opaque)
        scaled = scaled.convertToFormat(QImage::Format_RGB32); // an opaque picture stays one
    return writePicture(context, command, conversion, scaled);
}

int imageRotate(Cli::Context &context, const QStringList &arguments)
{
    const QString command = QStringLiteral("image rotate");
    EngineHost host(context.pluginDirectory);
    Cli::Parser parser(command,
                       QStringLiteral("Turn a picture clockwise by an angle, into a picture just large enough; "
                                      "the corners it doesn't reach are transparent (index 0 of an indexed "
                                      "picture)."),
                       QStringLiteral("IN OUT"));
    parser.addOption({QStringLiteral("angle"), QStringLiteral("The angle in degrees."), QStringLiteral("DEGREES")});
    addInPlace(parser);
    const int parsed = parser.parse(context, arguments, 1, 2);
    if (parsed >= 0)
        return parsed;
    if (!parser.isSet(QStringLiteral("angle")))
        return context.usageError(command, QStringLiteral("give the angle with --angle"));
    double degrees = 0;
    if (!Cli::number(context, parser, QStringLiteral("angle"), &degrees))
        return Cli::UsageError;
    Conversion conversion;
    const int prepared = prepare(context, parser, MediaFiles::Image, &conversion);
    if (prepared >= 0)
        return prepared;

    QImage image;
    if (!readPicture(context, command, conversion, &image))
        return Cli::InputError;
    if (image.format() != QImage::Format_Indexed8)
        image = image.convertToFormat(QImage::Format_ARGB32);
    // Whole quarter turns by the exact transform: the sine and cosine of a float leave
    // the size a pixel off there.
    const double turns = degrees / 90;
    QImage rotated;
    if (qFuzzyCompare(turns, qRound(turns)) || qFuzzyIsNull(turns))
        rotated = image.transformed(QTransform().rotate(90 * qRound(turns)));
    else
        rotated = rotateImage(image, float(qDegreesToRadians(degrees)), 0);
    if (rotated.isNull())
        return context.inputError(command, conversion.input, QStringLiteral("the picture can't be turned"));
    return writePicture(context, command, conversion, rotated);
}

int soundConvert(Cli::Context &context, const QStringList &arguments)
{
    const QString command = QStringLiteral("sound convert");
    EngineHost host(context.pluginDirectory);
    Cli::Parser parser(command,
                       QStringLiteral("Convert a sound to another format (by the suffixes), rate, depth or number "
                                      "of channels.\nReads: %1.\nWrites: %2.")
                           .arg(MediaFiles::formats(MediaFiles::Sound, MediaFiles::Read).join(QStringLiteral(", ")).toLower(),
                                MediaFiles::formats(MediaFiles::Sound, MediaFiles::Write).join(QStringLiteral(", ")).toLower()),
                       QStringLiteral("IN OUT"));
    parser.addOption({QStringLiteral("rate"), QStringLiteral("Frames a second."), QStringLiteral("HZ")});
    parser.addOption({QStringLiteral("bits"), QStringLiteral("Bits a value: 8, 16, 24 or 32."), QStringLiteral("BITS")});
    parser.addOption({QStringLiteral("channels"), QStringLiteral("Number of channels, 1 to 8."), QStringLiteral("N")});
    addInPlace(parser);
    const int parsed = parser.parse(context, arguments, 1, 2);
    if (parsed >= 0)
        return parsed;
    bool ok = true;
    const int rate = parser.isSet(QStringLiteral("rate")) ? parser.value(QStringLiteral("rate")).toInt(&ok) : 0;
    if (!ok || rate < 0 || (parser.isSet(QStringLiteral("rate")) && (rate < 1000 || rate > 768000)))
        return context.usageError(command, QStringLiteral("--rate takes a number of hertz from 1000 to 768000"));
    const int bits = parser.isSet(QStringLiteral("bits")) ? parser.value(QStringLiteral("bits")).toInt(&ok) : 0;
    if (!ok || (parser.isSet(QStringLiteral("bits")) && bits != 8 && bits != 16 && bits != 24 && bits != 32))
        return context.usageError(command, QStringLiteral("--bits takes 8, 16, 24 or 32"));
    const int channels = parser.isSet(QStringLiteral("channels")) ? parser.value(QStringLiteral("channels")).toInt(&ok) : 0;
    if (!ok || (parser.isSet(QStringLiteral("channels")) && (channels < 1 || channels > 8)))
        return context.usageError(command, QStringLiteral("--channels takes a number from 1 to 8"));
    Conversion conversion;
    const int prepared = prepare(context, parser, MediaFiles::Sound, &conversion);
    if (prepared >= 0)
        return prepared;

    SoundSample sample;
    if (!readSound(context, command, conversion.input, conversion.inputFormat, &sample))
        return Cli::InputError;
    if (sample.bits == 20)
        sample.bits = 24; // stored in three bytes like 24, and written as 24
    SampleInfo target = sample;
    if (rate)
        target.frequency = quint32(rate);
    if (bits)
        target.bits = quint16(bits);
    if (channels)
        target.channels = quint16(channels);
    if (sample.bits != 8 && sample.bits != 16 && sample.bits != 24 && sample.bits != 32)
        return context.inputError(command, conversion.input, QStringLiteral("%1-bit values can't be converted").arg(sample.bits));
    if (!convertSound(sample, target)) {
        return context.inputError(command, conversion.input,
                                  QStringLiteral("can't be converted to %1 Hz").arg(target.frequency));
    }
    const int code = MediaFiles::writeOutput(
        context, command, conversion.output,
        [&](QIODevice *device) {
            return saveSound(device, conversion.outputFormat.constData(), sample, CodecRules::Complete);
        },
        QStringLiteral("sound"));
    if (code == Cli::Success)
        context.say(QStringLiteral("Wrote %1: %2.").arg(conversion.output, shapeText(sample)));
    return code;
}

int soundPlay(Cli::Context &context, const QStringList &arguments)
{
    const QString command = QStringLiteral("sound play");
    EngineHost host(context.pluginDirectory);
    Cli::Parser parser(command, QStringLiteral("Play a sound file to its end."), QStringLiteral("FILE"));
    const int parsed = parser.parse(context, arguments, 1, 1);
    if (parsed >= 0)
        return parsed;
    const QString fileName = parser.positional().at(0);
    const QByteArray format = MediaFiles::checkedFormat(context, command, fileName, MediaFiles::Sound, MediaFiles::Read);
    if (format.isEmpty())
        return Cli::UsageError;
    if (!MediaFiles::checkInput(context, command, fileName))
        return Cli::InputError;
    SoundSample sample;
    if (!readSound(context, command, fileName, format, &sample))
        return Cli::InputError;

    context.err().flush();
    std::unique_ptr<SoundPlayer> player;
    {
        const Terminal::QuietStderr quiet; // the audio libraries look for a device
        player = std::make_unique<SoundPlayer>(1);
    }
    if (!player->hasOutput())
        return context.inputError(command, fileName, QStringLiteral("there is no sound device to play on"));
    const int channel = player->play(sample, false, 100);
    if (channel < 0)
        return context.inputError(command, fileName, QStringLiteral("the audio output doesn't take this sound"));
    const double seconds = sample.frequency ? double(sample.samples) / sample.frequency : 0;
    context.say(QStringLiteral("Playing %1: %2 s.").arg(fileName).arg(seconds, 0, 'f', 2));
    // The output may stall (a device gone away): never wait much beyond the sound's end.
    QElapsedTimer clock;
    clock.start();
    const qint64 limit = qint64(seconds * 1000) + 5000;
    while (player->isPlaying(channel)) {
        if (clock.elapsed() > limit) {
            player->stop(channel);
            return context.inputError(command, fileName, QStringLiteral("the audio output stopped playing"));
        }
        QThread::msleep(20);
    }
    return Cli::Success;
}

} // namespace Commands
