#include "gimppalette.h"

#include "image/imagedata.h"

#include <QIODevice>
#include <QRegularExpression>

using namespace Ovra;

bool GimpPaletteLoader::load(QIODevice *device, RGBA (&palette)[256])
{
    if (!device || !device->isReadable())
        return false;
    // Text palettes are small; a longer file is none.
    const QByteArray bytes = device->read(1 << 20);
    const QList<QByteArray> lines = bytes.split('\n');
    if (lines.isEmpty() || lines.first().trimmed() != "GIMP Palette")
        return false;
    static const QRegularExpression colour(QStringLiteral("^\\s*(\\d{1,3})\\s+(\\d{1,3})\\s+(\\d{1,3})(\\s.*)?$"));
    RGBA read[256];
    int count = 0;
    for (int i = 1; i < lines.size(); ++i) {
        const QString line = QString::fromUtf8(lines.at(i)).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')) || line.startsWith(QLatin1String("Name:"))
            || line.startsWith(QLatin1String("Columns:")))
            continue;
        const QRegularExpressionMatch match = colour.match(line);
        if (!match.hasMatch())
            return false;
        const int red = match.captured(1).toInt();
        const int green = match.captured(2).toInt();
        const int blue = match.captured(3).toInt();
        if (red > 255 || green > 255 || blue > 255)
            return false;
        if (count < 256)
            read[count++] = RGBA(quint8(red), quint8(green), quint8(blue), 255);
    }
    if (count == 0)
        return false;
    for (int i = 0; i < count; ++i)
        palette[i] = read[i];
    return true;
}

bool GimpPaletteSaver::save(QIODevice *device, const RGBA (&palette)[256])
{
    if (!device || !device->isWritable())
        return false;
    QByteArray text("GIMP Palette\nName: Ovra palette\nColumns: 16\n#\n");
    for (int i = 0; i < 256; ++i) {
        text += QStringLiteral("%1 %2 %3\tIndex %4\n")
                    .arg(palette[i].red, 3)
                    .arg(palette[i].green, 3)
                    .arg(palette[i].blue, 3)
                    .arg(i)
                    .toUtf8();
    }
    return device->write(text) == text.size();
}
