#include "image/paletteobject.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/palettefiles_p.h"

#include <QDataStream>
#include <QIODevice>
#include <QImage>

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
    return fromFile(device, format, CodecRules::Designed);
}

bool PaletteObject::fromFile(QIODevice *device, const char *format, CodecRules rules)
{
    using namespace PaletteFiles;
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
        ok = readImagePalette(device, format, table, rules);
    } else if (name == "ACT") {
        ok = readAct(device, table, rules);
    } else if (name == "ACO") {
        ok = readAco(device, table);
    } else {
        const QByteArray magic = device->peek(4);
        if (magic == "RIFF") {
            ok = readRiff(device, table, rules);
        } else if (magic == "JASC") {
            ok = readJasc(device, table, rules);
        } else if (magic == "ASEF") {
            ok = readAse(device, table, rules);
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
    return toFile(device, format, CodecRules::Designed);
}

bool PaletteObject::toFile(QIODevice *device, const char *format, CodecRules rules)
{
    using namespace PaletteFiles;
    if (!device || !device->isWritable() || !format)
        return false;
    const QByteArray name(format);
    QByteArray bytes;
    if (name == "ACT") {
        bytes = actBytes(*m_palette, rules);
    } else if (rules == CodecRules::Complete) {
        if (name == "PAL")
            bytes = riffBytes(*m_palette);
        else if (name == "JASC")
            bytes = jascBytes(*m_palette);
        else if (name == "ASE")
            bytes = aseBytes(*m_palette);
    }
    if (!bytes.isEmpty())
        return device->write(bytes) == bytes.size();
    for (Extension *extension : ExtensionManager::list(Extension::PaletteSaver)) {
        if (name == extension->format() && static_cast<PaletteSaverExtension *>(extension)->save(device, *m_palette))
            return true;
    }
    return false;
}

} // namespace Ovra
