#include "mediafiles.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/file.h"

#include <QFileInfo>

using namespace Ovra;

namespace MediaFiles {

namespace {

// The library's own formats. Palettes come from the colour tables of indexed pictures
// too; RIFF and text palettes (.pal), swatch exchange (.ase) and swatch lists (.txt) are
// told apart by their first bytes. A .pal palette is written as RIFF.
QStringList ownFormats(Kind kind, Direction direction)
{
    switch (kind) {
    case Image:
        return {QStringLiteral("PNG"), QStringLiteral("PCX"), QStringLiteral("GIF"), QStringLiteral("BMP")};
    case Palette:
        if (direction == Write)
            return {QStringLiteral("ACT"), QStringLiteral("PAL"), QStringLiteral("ASE")};
        return {QStringLiteral("ACT"), QStringLiteral("PAL"), QStringLiteral("ACO"), QStringLiteral("ASE"),
                QStringLiteral("TXT"), QStringLiteral("PNG"), QStringLiteral("PCX"), QStringLiteral("GIF"),
                QStringLiteral("BMP")};
    case Sound:
        if (direction == Write)
            return {QStringLiteral("WAV"), QStringLiteral("OGG"), QStringLiteral("FLAC")};
        return {QStringLiteral("WAV"), QStringLiteral("OGG"), QStringLiteral("FLAC"), QStringLiteral("MP3")};
    }
    return {};
}

Extension::Type extensionType(Kind kind, Direction direction)
{
    switch (kind) {
    case Image:
        return direction == Read ? Extension::ImageLoader : Extension::ImageSaver;
    case Palette:
        return direction == Read ? Extension::PaletteLoader : Extension::PaletteSaver;
    case Sound:
        break;
    }
    return direction == Read ? Extension::SoundLoader : Extension::SoundSaver;
}

QString kindName(Kind kind)
{
    switch (kind) {
    case Image:
        return QStringLiteral("picture");
    case Palette:
        return QStringLiteral("palette");
    case Sound:
        break;
    }
    return QStringLiteral("sound");
}

} // namespace

QStringList formats(Kind kind, Direction direction)
{
    QStringList list = ownFormats(kind, direction);
    for (Extension *extension : ExtensionManager::list(extensionType(kind, direction))) {
        const QString name = QString::fromLatin1(extension->format()).toUpper();
        if (!name.isEmpty() && !list.contains(name))
            list << name;
    }
    return list;
}

QByteArray formatOfName(const QString &fileName)
{
    return QFileInfo(fileName).suffix().toUpper().toLatin1();
}

QByteArray checkedFormat(Cli::Context &context, const QString &command, const QString &fileName, Kind kind,
                         Direction direction)
{
    const QByteArray format = formatOfName(fileName);
    const QStringList known = formats(kind, direction);
    if (!format.isEmpty() && known.contains(QString::fromLatin1(format)))
        return format;
    const QString which = direction == Read ? QStringLiteral("read") : QStringLiteral("write");
    const QString text = format.isEmpty()
                             ? QStringLiteral("%1: no suffix to tell the %2 format by").arg(fileName, kindName(kind))
                             : QStringLiteral("%1: can't %2 %3 files as a %4 (formats: %5)")
                                   .arg(fileName, which, QString::fromLatin1(format).toLower(), kindName(kind),
                                        known.join(QStringLiteral(", ")).toLower());
    context.usageError(command, text);
    return QByteArray();
}

QString pictureRefusal(const QByteArray &format, const QImage &image)
{
    if (format != "PCX" || image.format() == QImage::Format_Indexed8 || !image.hasAlphaChannel())
        return QString();
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x) {
            if (qAlpha(row[x]) != 255)
                return QStringLiteral("PCX holds no transparency; write the picture as PNG, BMP or GIF");
        }
    }
    return QString();
}

QString counted(int count, const QString &one, const QString &many)
{
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? one : many);
}

bool sameFile(const QString &a, const QString &b)
{
    const QFileInfo first(a);
    const QFileInfo second(b);
    if (first.exists() && second.exists())
        return first.canonicalFilePath() == second.canonicalFilePath();
    return first.absoluteFilePath() == second.absoluteFilePath();
}

bool checkInput(Cli::Context &context, const QString &command, const QString &fileName)
{
    const QFileInfo info(fileName);
    QString reason;
    if (!info.exists())
        reason = QStringLiteral("no such file");
    else if (info.isDir())
        reason = QStringLiteral("is a directory");
    else if (!info.isReadable())
        reason = QStringLiteral("can't be read (permission denied)");
    if (reason.isEmpty())
        return true;
    context.inputError(command, fileName, reason);
    return false;
}

int checkOutput(Cli::Context &context, const QString &command, const QString &output, const QStringList &inputs,
                bool inPlace)
{
    if (inPlace)
        return -1;
    for (const QString &input : inputs) {
        if (sameFile(output, input)) {
            return context.usageError(command, QStringLiteral("%1: the output would replace the input; "
                                                              "give another output, or --in-place to replace it")
                                                   .arg(output));
        }
    }
    return -1;
}

bool openInput(QIODevice &device, QString *error)
{
    if (device.open(QIODevice::ReadOnly))
        return true;
    *error = device.errorString();
    return false;
}

int writeOutput(Cli::Context &context, const QString &command, const QString &output,
                const std::function<bool(QIODevice *device)> &write, const QString &what)
{
    if (QFileInfo(output).isDir())
        return context.inputError(command, output, QStringLiteral("is a directory"));
    {
        File file(output);
        if (!file.open(QIODevice::WriteOnly))
            return context.inputError(command, output, QStringLiteral("can't be written: %1").arg(file.errorString()));
        const bool written = write(&file) && file.flush() && file.error() == QFileDevice::NoError;
        if (!written) {
            const QString reason = file.error() == QFileDevice::NoError
                                       ? QStringLiteral("the %1 can't be written").arg(what)
                                       : file.errorString();
            file.discard();
            return context.inputError(command, output, reason);
        }
    } // the old file, if any, is replaced here
    if (!QFileInfo::exists(output))
        return context.inputError(command, output, QStringLiteral("the new file couldn't take the old one's place"));
    return Cli::Success;
}

} // namespace MediaFiles
