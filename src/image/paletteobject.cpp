#include "image/paletteobject.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/imagecodecs.h"

#include <QDataStream>
#include <QIODevice>
#include <QImage>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Ovra {
namespace {

bool selected(const bool *selection, int index)
{
    return !selection || selection[index];
}

quint8 clamp255(int value)
{
    return quint8(qBound(0, value, 255));
}

void reverse(RGBA (&table)[256])
{
    for (int i = 0; i < 128; ++i)
        std::swap(table[i], table[255 - i]);
}

// Half away from zero, as all float values of palette files are rounded.
int rounded(double value)
{
    return int(std::round(value));
}

bool readAct(QIODevice *device, RGBA (&table)[256])
{
    const QByteArray bytes = device->read(768);
    if (bytes.size() != 768)
        return false;
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(bytes[i * 3]), quint8(bytes[i * 3 + 1]), quint8(bytes[i * 3 + 2]), 255);
    reverse(table);
    return true;
}

bool readAco(QIODevice *device, RGBA (&table)[256])
{
    QDataStream in(device);
    in.setByteOrder(QDataStream::BigEndian);
    quint16 version = 0;
    quint16 count = 0;
    in >> version >> count;
    if (in.status() != QDataStream::Ok || version != 1)
        return false;
    int stored = 0;
    for (int i = 0; i < count && stored < 256 && in.status() == QDataStream::Ok; ++i) {
        quint16 space = 0;
        quint16 w = 0;
        quint16 x = 0;
        quint16 y = 0;
        quint16 z = 0;
        in >> space >> w >> x >> y >> z;
        if (in.status() != QDataStream::Ok)
            break;
        QColor colour;
        switch (space) {
        case 0:
            colour = QColor(w / 257, x / 257, y / 257);
            break;
        case 1:
            colour = QColor::fromHsv(rounded(w / 182.5487f), x / 257, y / 257, 255).toRgb();
            break;
        case 2:
            colour = QColor::fromCmyk(255 - w / 257, 255 - x / 257, 255 - y / 257, 255 - z / 257, 255).toRgb();
            break;
        case 8: {
            const int grey = 255 - rounded(w / 39.2157f);
            colour = QColor(clamp255(grey), clamp255(grey), clamp255(grey));
            break;
        }
        default:
            continue; // another colour space: no entry used up
        }
        table[stored++] = RGBA(quint8(colour.red()), quint8(colour.green()), quint8(colour.blue()), 255);
    }
    return true;
}

bool readRiff(QIODevice *device, RGBA (&table)[256])
{
    if (!device->seek(8) || device->read(8) != "PAL data")
        return false;
    QDataStream in(device);
    in.setByteOrder(QDataStream::LittleEndian);
    quint32 size = 0;
    in >> size;
    size -= 8;
    if (in.status() != QDataStream::Ok || size >= 1025 || !device->seek(24))
        return false;
    const QByteArray bytes = device->read(size);
    if (bytes.size() != int(size))
        return false;
    memcpy(table, bytes.constData(), size);
    for (RGBA &entry : table)
        entry.alpha = 255;
    reverse(table);
    return true;
}

bool readJasc(QIODevice *device, RGBA (&table)[256])
{
    const QStringList lines = QString::fromLatin1(device->readAll()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    if (lines.size() < 2 || lines.at(0) != QLatin1String("JASC-PAL") || lines.at(1) != QLatin1String("0100"))
        return false;
    static const QRegularExpression entry(QStringLiteral("^(\\d{1,3})\\s(\\d{1,3})\\s(\\d{1,3})(?:\\s(\\d{1,3}))?$"));
    for (int k = 3; k < lines.size() && k < 259; ++k) {
        const QRegularExpressionMatch match = entry.match(lines.at(k));
        if (!match.hasMatch())
            continue;
        const QString alpha = match.captured(4);
        table[k - 3] = RGBA(clamp255(match.captured(1).toInt()), clamp255(match.captured(2).toInt()),
                            clamp255(match.captured(3).toInt()), alpha.isEmpty() ? 255 : clamp255(alpha.toInt()));
    }
    return true;
}

bool readAse(QIODevice *device, RGBA (&table)[256])
{
    if (!device->seek(4))
        return false;
    QDataStream in(device);
    in.setByteOrder(QDataStream::BigEndian);
    in.setFloatingPointPrecision(QDataStream::SinglePrecision);
    quint16 major = 0;
    quint16 minor = 0;
    quint32 blocks = 0;
    in >> major >> minor >> blocks;
    if (in.status() != QDataStream::Ok || major != 1 || minor != 0)
        return false;
    auto channel = [](float value) { return clamp255(rounded(double(value) * 255.0)); };
    int stored = 0;
    for (quint32 b = 0; b < blocks && stored < 256 && in.status() == QDataStream::Ok; ++b) {
        quint16 type = 0;
        quint32 length = 0;
        in >> type >> length;
        if (type == 1) {
            quint16 nameLength = 0;
            in >> nameLength;
            in.skipRawData(2 * nameLength);
            char model[4] = {};
            in.readRawData(model, 4);
            const QByteArray kind(model, 4);
            QColor colour;
            bool known = true;
            if (kind == "RGB ") {
                float r = 0, g = 0, bl = 0;
                in >> r >> g >> bl;
                colour = QColor(channel(r), channel(g), channel(bl));
            } else if (kind == "CMYK") {
                float c = 0, m = 0, y = 0, k = 0;
                in >> c >> m >> y >> k;
                colour = QColor::fromCmyk(channel(c), channel(m), channel(y), channel(k), 255).toRgb();
            } else if (kind == "Gray") {
                float grey = 0;
                in >> grey;
                colour = QColor(channel(grey), channel(grey), channel(grey));
            } else {
                in.skipRawData(12);
                known = false;
            }
            in.skipRawData(2); // colour type
            if (known && in.status() == QDataStream::Ok)
                table[stored++] = RGBA(quint8(colour.red()), quint8(colour.green()), quint8(colour.blue()), 255);
        } else if (type == 0xC001 || type == 0xC002) {
            quint16 nameLength = 0;
            in >> nameLength;
            in.skipRawData(2 * nameLength);
        } else {
            in.skipRawData(int(qMin<quint32>(length, INT_MAX)));
        }
    }
    return true;
}

bool readRows(QIODevice *device, RGBA (&table)[256])
{
    const QStringList lines = QString::fromLatin1(device->readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    static const QRegularExpression entry(
        QStringLiteral("^R:\\s?(\\d{1,3}),\\s?G:\\s?(\\d{1,3}),\\s?B:\\s?(\\d{1,3})(?:\\s?A:\\s?(\\d{1,3}))?"));
    int stored = 0;
    for (const QString &line : lines) {
        if (stored >= 256)
            break;
        const QRegularExpressionMatch match = entry.match(line);
        if (!match.hasMatch())
            continue;
        const QString alpha = match.captured(4);
        table[stored++] = RGBA(clamp255(match.captured(1).toInt()), clamp255(match.captured(2).toInt()),
                               clamp255(match.captured(3).toInt()), alpha.isEmpty() ? 255 : clamp255(alpha.toInt()));
    }
    return true;
}

bool readImagePalette(QIODevice *device, const char *format, RGBA (&table)[256])
{
    QImage image;
    if (!loadImage(device, format, image) || image.format() != QImage::Format_Indexed8)
        return false;
    const QVector<QRgb> colours = image.colorTable();
    for (int i = 0; i < colours.size() && i < 256; ++i)
        table[i] = RGBA(colours.at(i));
    return true;
}

} // namespace

PaletteObject::PaletteObject(RGBA (*palette)[256])
    : m_palette(palette)
{
}

PaletteObject &PaletteObject::operator=(RGBA (*palette)[256])
{
    m_palette = palette;
    return *this;
}

QColor PaletteObject::colorAt(unsigned char index) const
{
    const RGBA &entry = (*m_palette)[index];
    return QColor(entry.red, entry.green, entry.blue, entry.alpha);
}

void PaletteObject::fromPalette(const RGBA *colors)
{
    emit changing();
    memcpy(*m_palette, colors, sizeof(RGBA) * 256);
    emit changed();
}

void PaletteObject::toPalette(RGBA (&colors)[256]) const
{
    memcpy(colors, *m_palette, sizeof colors);
}

void PaletteObject::empty()
{
    std::fill(std::begin(*m_palette), std::end(*m_palette), RGBA());
}

void PaletteObject::setColor(unsigned char index, const RGBA &color)
{
    emit changing();
    (*m_palette)[index] = color;
    emit changed();
}

void PaletteObject::setColor(const bool *selection, const RGBA &color)
{
    emit changing();
    for (int i = 0; i < 256; ++i) {
        if (selected(selection, i))
            (*m_palette)[i] = color;
    }
    emit changed();
}

void PaletteObject::addRGB(const bool *selection, short red, short green, short blue)
{
    emit changing();
    for (int i = 0; i < 256; ++i) {
        if (!selected(selection, i))
            continue;
        RGBA &entry = (*m_palette)[i];
        entry.red = clamp255(entry.red + red);
        entry.green = clamp255(entry.green + green);
        entry.blue = clamp255(entry.blue + blue);
    }
    emit changed();
}

void PaletteObject::addHueSaturation(const bool *selection, short hue, short saturation)
{
    emit changing();
    for (int i = 0; i < 256; ++i) {
        if (!selected(selection, i))
            continue;
        RGBA &entry = (*m_palette)[i];
        const QColor hsl = QColor(entry.red, entry.green, entry.blue, entry.alpha).toHsl();
        const int newHue = qBound(0, hsl.hslHue() + hue, 359);
        const int newSaturation = qBound(0, hsl.hslSaturation() + saturation, 255);
        const QColor rgb = QColor::fromHsl(newHue, newSaturation, hsl.lightness(), 255).toRgb();
        entry = RGBA(quint8(rgb.red()), quint8(rgb.green()), quint8(rgb.blue()), quint8(rgb.alpha()));
    }
    emit changed();
}

void PaletteObject::applyEffect(RGBPaletteEffect effect, const bool *selection)
{
    emit changing();
    for (int i = 0; i < 256; ++i) {
        if (!selected(selection, i))
            continue;
        RGBA &e = (*m_palette)[i];
        const int avg = (e.red + e.green + e.blue) / 3;
        switch (effect) {
        case SwapRedBlue:
        case SwapBlueRed:
            std::swap(e.red, e.blue);
            break;
        case SwapGreenBlue:
        case SwapBlueGreen:
            std::swap(e.green, e.blue);
            break;
        case SwapRedGreen:
        case SwapGreenRed:
            std::swap(e.red, e.green);
            break;
        case Lighter:
        case MuchLighter: {
            const int step = effect == Lighter ? 32 : 128;
            e.red = clamp255(e.red + step);
            e.green = clamp255(e.green + step);
            e.blue = clamp255(e.blue + step);
            break;
        }
        case Darker:
        case MuchDarker: {
            const int step = effect == Darker ? 32 : 128;
            e.red = clamp255(e.red - step);
            e.green = clamp255(e.green - step);
            e.blue = clamp255(e.blue - step);
            break;
        }
        case GrayScale:
            e.red = e.green = e.blue = quint8(avg);
            break;
        case Warm:
            e.red = clamp255(avg + 100);
            e.green = quint8(avg >> 1);
            e.blue = 0;
            break;
        case Cool:
            e.red = quint8((avg >> 2) + 60);
            e.green = 0;
            e.blue = quint8((avg >> 1) + 60);
            break;
        case Contrast:
            e.red = e.green = e.blue = quint8(avg < 128 ? avg + 50 : avg - 50);
            break;
        default:
            break;
        }
    }
    emit changed();
}

namespace {

quint8 blendChannel(int first, int last, int j, int d)
{
    return quint8(first + (last - first) * j / (d ? d : 1));
}

RGBA blendEntry(const RGBA &first, const RGBA &last, int j, int d)
{
    return RGBA(blendChannel(first.red, last.red, j, d), blendChannel(first.green, last.green, j, d),
                blendChannel(first.blue, last.blue, j, d), blendChannel(first.alpha, last.alpha, j, d));
}

} // namespace

void PaletteObject::gradient(const bool *selection, const RGBA &first, const RGBA &last)
{
    int count = 0;
    for (int i = 0; i < 256; ++i)
        count += selected(selection, i) ? 1 : 0;
    emit changing();
    int j = 0;
    for (int i = 0; i < 256; ++i) {
        if (!selected(selection, i))
            continue;
        (*m_palette)[i] = blendEntry(first, last, j, j == 0 ? count : count - 1);
        ++j;
    }
    emit changed();
}

void PaletteObject::gradient(unsigned char firstIndex, const RGBA &first, unsigned char lastIndex, const RGBA &last)
{
    emit changing();
    if (firstIndex < lastIndex) {
        const int n = lastIndex - firstIndex;
        // From entry 0: the indices give the count alone.
        for (int j = 0; j < n; ++j)
            (*m_palette)[j] = blendEntry(first, last, j, j == 0 ? n : n - 1);
    }
    emit changed();
}

void PaletteObject::addColors(const RGBA *colors)
{
    emit changing();
    int free = 255;
    for (int c = 0; c < 256; ++c) {
        const RGBA &colour = colors[c];
        const bool present = std::any_of(std::begin(*m_palette), std::end(*m_palette),
                                         [&colour](const RGBA &entry) { return entry == colour; });
        if (!present && free >= 0)
            (*m_palette)[free--] = colour;
    }
    emit changed();
}

void PaletteObject::clearDuplicated(const RGB &color)
{
    emit changing();
    RGBA (&table)[256] = *m_palette;
    for (int i = 2; i < 256; ++i) {
        for (int j = i - 1; j >= 1; --j) {
            if (table[j] == table[i]) {
                table[j] = RGBA(color);
                break;
            }
        }
    }
    emit changed();
}

void PaletteObject::sortByTones()
{
    emit changing();
    RGBA (&table)[256] = *m_palette;
    for (int i = 1; i < 255; ++i) {
        const RGBA &reference = table[i - 1];
        int best = i;
        int bestDistance = INT_MAX;
        for (int k = i; k < 256; ++k) {
            const int dr = table[k].red - reference.red;
            const int dg = table[k].green - reference.green;
            const int db = table[k].blue - reference.blue;
            const int distance = dr * dr + dg * dg + db * db;
            if (distance < bestDistance) {
                bestDistance = distance;
                best = k;
            }
        }
        std::swap(table[i], table[best]);
    }
    emit changed();
}

void PaletteObject::switchColors(const bool *selection, bool exchangeAlpha)
{
    emit changing();
    RGBA (&table)[256] = *m_palette;
    int low = 0;
    int high = 255;
    while (true) {
        while (low < 255 && !selected(selection, low))
            ++low;
        while (high > 0 && !selected(selection, high))
            --high;
        if (low == 255 || high == 0 || low >= high)
            break;
        std::swap(table[low], table[high]);
        ++low;
        --high;
    }
    if (exchangeAlpha)
        std::swap(table[0].alpha, table[255].alpha);
    emit changed();
}

unsigned char PaletteObject::index(const RGBA &color) const
{
    int best = 0;
    int bestDistance = INT_MAX;
    quint8 bestAlpha = 255; // kept as an unsigned byte: a negative difference keeps large
    for (int i = 0; i < 256; ++i) {
        const RGBA &entry = (*m_palette)[i];
        const int dr = entry.red - color.red;
        const int dg = entry.green - color.green;
        const int db = entry.blue - color.blue;
        const int d = dr * dr + dg * dg + db * db;
        const int alphaDifference = int(entry.alpha) - int(color.alpha);
        if (d < bestDistance || (d == bestDistance && alphaDifference < int(bestAlpha))) {
            best = i;
            bestDistance = d;
            bestAlpha = quint8(alphaDifference);
        }
    }
    return uchar(best);
}

bool PaletteObject::fromFile(QIODevice *device, const char *format)
{
    if (!device || !device->isReadable() || !format)
        return false;
    const QByteArray name(format);
    RGBA table[256];
    const bool imageOrTable = name == "PNG" || name == "PCX" || name == "BMP" || name == "GIF" || name == "ACT"
                              || name == "ACO";
    for (RGBA &entry : table)
        entry = imageOrTable ? RGBA(0, 0, 0, 255) : RGBA();
    bool ok = false;
    if (name == "PNG" || name == "PCX" || name == "BMP" || name == "GIF") {
        ok = readImagePalette(device, format, table);
    } else if (name == "ACT") {
        ok = readAct(device, table);
    } else if (name == "ACO") {
        ok = readAco(device, table);
    } else {
        const QByteArray magic = device->peek(4);
        if (magic == "RIFF") {
            ok = readRiff(device, table);
        } else if (magic == "JASC") {
            ok = readJasc(device, table);
        } else if (magic == "ASEF") {
            ok = readAse(device, table);
        } else if (magic == "ROWS") {
            ok = readRows(device, table);
        } else {
            for (Extension *extension : ExtensionManager::list(Extension::PaletteLoader)) {
                if (name == extension->format() && static_cast<PaletteLoaderExtension *>(extension)->load(device, table)) {
                    ok = true;
                    break;
                }
            }
        }
    }
    if (!ok)
        return false;
    emit changing();
    table[0].alpha = 0; // index 0 of a palette read from a file is transparent
    memcpy(*m_palette, table, sizeof table);
    emit changed();
    return true;
}

bool PaletteObject::toFile(QIODevice *device, const char *format)
{
    if (!device || !device->isWritable() || !format)
        return false;
    const QByteArray name(format);
    if (name == "ACT") {
        RGBA table[256];
        toPalette(table);
        reverse(table);
        QByteArray bytes;
        for (const RGBA &entry : table)
            bytes.append(char(entry.red)).append(char(entry.green)).append(char(entry.blue));
        return device->write(bytes) == 768;
    }
    for (Extension *extension : ExtensionManager::list(Extension::PaletteSaver)) {
        if (name == extension->format() && static_cast<PaletteSaverExtension *>(extension)->save(device, *m_palette))
            return true;
    }
    return false;
}

} // namespace Ovra
