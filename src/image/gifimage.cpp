#include "image/gifimage.h"

#include "image/imagescaling.h"

#include <QDataStream>
#include <QIODevice>

#include <gif_lib.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace Ovra {
namespace {

int readFromStream(GifFileType *gif, GifByteType *bytes, int count)
{
    return static_cast<QDataStream *>(gif->UserData)->readRawData(reinterpret_cast<char *>(bytes), count);
}

int writeToStream(GifFileType *gif, const GifByteType *bytes, int count)
{
    return static_cast<QDataStream *>(gif->UserData)->writeRawData(reinterpret_cast<const char *>(bytes), count);
}

struct GifReader
{
    void operator()(GifFileType *gif) const { DGifCloseFile(gif, nullptr); }
};

QVector<RGB> colorsOf(const ColorMapObject *map)
{
    QVector<RGB> colors;
    if (!map || !map->Colors)
        return colors;
    colors.reserve(map->ColorCount);
    for (int i = 0; i < map->ColorCount; ++i)
        colors.append(RGB(map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue));
    return colors;
}

// A colour map object over the colours, padded with black to the power of two that the
// file's size field can tell: a shorter table would leave a reader taking picture data for
// colours.
struct ColorMap
{
    explicit ColorMap(const QVector<RGB> &colors)
    {
        if (colors.isEmpty())
            return;
        const int bits = GifBitSize(colors.size());
        entries.resize(size_t(1) << bits);
        for (int i = 0; i < colors.size() && i < int(entries.size()); ++i)
            entries[size_t(i)] = GifColorType{colors.at(i).red, colors.at(i).green, colors.at(i).blue};
        map.ColorCount = int(entries.size());
        map.BitsPerPixel = bits;
        map.SortFlag = false;
        map.Colors = entries.data();
    }
    const ColorMapObject *object() const { return entries.empty() ? nullptr : &map; }

    std::vector<GifColorType> entries;
    ColorMapObject map{};
};

// Where the rows of an interlaced picture come in the file: four passes over the rows.
std::vector<int> rowOrder(int height, bool interlaced)
{
    std::vector<int> order;
    order.reserve(size_t(qMax(height, 0)));
    if (!interlaced) {
        for (int y = 0; y < height; ++y)
            order.push_back(y);
        return order;
    }
    static const int offsets[] = {0, 4, 2, 1};
    static const int jumps[] = {8, 8, 4, 2};
    for (int pass = 0; pass < 4; ++pass) {
        for (int y = offsets[pass]; y < height; y += jumps[pass])
            order.push_back(y);
    }
    return order;
}

// An extension block read ahead of the picture it belongs to.
struct PendingExtension
{
    int function;
    QByteArray data;
};

// One extension record: its first data block carries the function, the blocks after it
// continue it. False where the file fails inside the record.
bool readExtension(GifFileType *gif, QVector<PendingExtension> &pending)
{
    int function = 0;
    GifByteType *block = nullptr;
    if (DGifGetExtension(gif, &function, &block) == GIF_ERROR)
        return false;
    for (bool first = true; block; first = false) {
        pending.append({first ? function : CONTINUE_EXT_FUNC_CODE,
                        QByteArray(reinterpret_cast<const char *>(block + 1), block[0])});
        if (DGifGetExtensionNext(gif, &block) == GIF_ERROR)
            return false;
    }
    return true;
}

// What the extensions before a picture say: its transparent index, and whether the file
// loops.
void applyExtensions(const QVector<PendingExtension> &pending, GIFImage::SubImage &sub, bool &loop)
{
    for (const PendingExtension &extension : pending) {
        if (extension.function == GRAPHICS_EXT_FUNC_CODE) {
            GraphicsControlBlock control;
            if (DGifExtensionToGCB(size_t(extension.data.size()),
                                   reinterpret_cast<const GifByteType *>(extension.data.constData()),
                                   &control) == GIF_OK)
                sub.transparentIndex = qint16(control.TransparentColor);
        } else if (extension.function == APPLICATION_EXT_FUNC_CODE && extension.data.startsWith("NETSCAPE2.0")) {
            loop = true;
        }
    }
}

// The lines of the picture just described, in the file's order, into `image`; false where
// the file ends inside them, the rest of the picture then transparent (0). A monochrome
// picture is made where the header's colour resolution is 1, unless `alwaysIndexed`: that
// field tells of the colours the maker had, not of the table's size, and some writers
// leave it 0 for pictures of any number of colours.
bool readPixels(GifFileType *gif, QImage &image, bool alwaysIndexed)
{
    const GifImageDesc &desc = gif->Image;
    std::vector<GifPixelType> raster(size_t(qint64(desc.Width) * desc.Height), 0);
    bool rasterOk = true;
    for (int y : rowOrder(desc.Height, desc.Interlace)) {
        if (DGifGetLine(gif, raster.data() + size_t(y) * size_t(desc.Width), desc.Width) == GIF_ERROR) {
            rasterOk = false;
            break;
        }
    }
    const bool indexed = alwaysIndexed || gif->SColorResolution > 1;
    image = QImage(desc.Width, desc.Height, indexed ? QImage::Format_Indexed8 : QImage::Format_Mono);
    if (!image.isNull()) {
        image.fill(0);
        for (int y = 0; y < desc.Height; ++y) {
            const GifPixelType *row = raster.data() + size_t(y) * size_t(desc.Width);
            uchar *line = image.scanLine(y);
            if (indexed) {
                memcpy(line, row, size_t(desc.Width));
            } else {
                for (int x = 0; x < desc.Width; ++x)
                    line[x >> 3] |= uchar(row[x] << (7 - (x & 7)));
            }
        }
    }
    return rasterOk;
}

// The records of the file to its end; false where one fails or the file ends first.
// The records are read one by one rather than slurped, so that a picture the file
// ends inside keeps what was decoded and is transparent (0) below it, and so that a
// picture larger than the rest of the file could possibly encode is refused before
// its pixels are allocated (LZW gives at most 4096 pixels for 12 bits).
bool readRecords(GifFileType *gif, QIODevice *device, QList<GIFImage::SubImage> &images, bool &loop,
                 CodecRules rules)
{
    const bool complete = rules == CodecRules::Complete;
    const bool sized = !device->isSequential();
    QVector<PendingExtension> pending;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif, &type) == GIF_ERROR)
            return false;
        if (type == TERMINATE_RECORD_TYPE)
            return true;
        if (type == EXTENSION_RECORD_TYPE) {
            if (!readExtension(gif, pending))
                return false;
            continue;
        }
        if (type != IMAGE_DESC_RECORD_TYPE || DGifGetImageDesc(gif) == GIF_ERROR)
            return false;

        const GifImageDesc &desc = gif->Image;
        const qint64 pixels = qint64(desc.Width) * desc.Height;
        if (sized && pixels > (device->bytesAvailable() + 1) * 2731 + 4096)
            return false;
        GIFImage::SubImage sub;
        sub.left = qint16(desc.Left);
        sub.top = qint16(desc.Top);
        // The background colour is what shows around the pictures, not transparency; only
        // the designed rule takes it as the transparent index (single pictures of old saves
        // carry it there).
        sub.transparentIndex = gif->SColorMap && !complete ? qint16(gif->SBackGroundColor) : qint16(-1);
        applyExtensions(pending, sub, loop);
        pending.clear();
        sub.colorMap = colorsOf(desc.ColorMap);
        const bool whole = readPixels(gif, sub.image, complete);
        images.append(sub);
        if (!whole)
            return false;
    }
}

} // namespace

GIFImage::GIFImage(unsigned short width, unsigned short height, bool loop)
    : m_loop(loop)
    , m_width(width)
    , m_height(height)
{
}

bool GIFImage::load(QIODevice *device)
{
    return load(device, CodecRules::Designed);
}

bool GIFImage::load(QIODevice *device, CodecRules rules)
{
    if (!device || (!device->isReadable() && !device->open(QIODevice::ReadOnly)))
        return false;
    m_globalColorMap.clear();
    m_images.clear();
    m_loop = false;

    QDataStream stream(device);
    stream.setByteOrder(QDataStream::LittleEndian);
    int error = 0;
    std::unique_ptr<GifFileType, GifReader> gif(DGifOpen(&stream, readFromStream, &error));
    if (!gif)
        return false;
    const bool complete = readRecords(gif.get(), device, m_images, m_loop, rules);

    if (m_images.size() == 1) {
        m_width = quint16(m_images.first().image.width());
        m_height = quint16(m_images.first().image.height());
    } else {
        m_width = quint16(gif->SWidth);
        m_height = quint16(gif->SHeight);
    }
    m_globalColorMap = colorsOf(gif->SColorMap);
    return complete;
}

bool GIFImage::save(QIODevice *device) const
{
    return save(device, CodecRules::Designed);
}

namespace {

bool isMonochrome(const QImage &image)
{
    return image.format() == QImage::Format_Mono || image.format() == QImage::Format_MonoLSB;
}

// The graphic control block before a picture: its transparent index, disposal and delay.
// The fraction of a hundredth the file can't hold is carried to the next picture, so
// that the animation as a whole lasts as long as it should.
bool putControlBlock(GifFileType *gif, const GIFImage::SubImage &sub, float &carried)
{
    GraphicsControlBlock control;
    control.DisposalMode = sub.transparentIndex >= 0 ? DISPOSE_BACKGROUND : DISPOSAL_UNSPECIFIED;
    control.UserInputFlag = false;
    const float delay = sub.delay + carried;
    control.DelayTime = int(delay);
    carried = delay - float(control.DelayTime);
    control.TransparentColor = sub.transparentIndex;
    GifByteType extension[4];
    EGifGCBToExtension(&control, extension);
    return EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, extension) == GIF_OK;
}

// The pixels of one picture, by index one at a time or by whole lines. A line goes
// through a copy: the encoder masks the indices in place.
bool putPixels(GifFileType *gif, const QImage &image, bool byIndex)
{
    const int width = image.width();
    std::vector<GifPixelType> line(size_t(qMax(width, 1)));
    bool ok = true;
    for (int y = 0; ok && y < image.height(); ++y) {
        if (byIndex) {
            for (int x = 0; ok && x < width; ++x)
                ok = EGifPutPixel(gif, GifPixelType(image.pixelIndex(x, y))) == GIF_OK;
        } else {
            memcpy(line.data(), image.constScanLine(y), size_t(width));
            ok = EGifPutLine(gif, line.data(), width) == GIF_OK;
        }
    }
    return ok;
}

} // namespace

bool GIFImage::save(QIODevice *device, CodecRules rules) const
{
    const bool complete = rules == CodecRules::Complete;
    if (m_images.isEmpty())
        return false;
    if (complete) {
        for (const SubImage &sub : m_images) {
            if (sub.image.format() != QImage::Format_Indexed8 && !isMonochrome(sub.image))
                return false;
        }
    }
    if (!device || (!device->isWritable() && !device->open(QIODevice::WriteOnly)))
        return false;
    QDataStream stream(device);
    stream.setByteOrder(QDataStream::LittleEndian);
    int error = 0;
    GifFileType *gif = EGifOpen(&stream, writeToStream, &error);
    if (!gif)
        return false;
    EGifSetGifVersion(gif, true);

    const ColorMap global(m_globalColorMap);
    const SubImage &first = m_images.first();
    const bool animated = m_images.size() > 1;
    const int background = animated ? 0 : qMax<int>(first.transparentIndex, 0);
    int resolution = 1;
    if (first.image.format() != QImage::Format_Mono)
        resolution = GifBitSize(m_globalColorMap.isEmpty() ? first.colorMap.size() : m_globalColorMap.size());

    bool ok = EGifPutScreenDesc(gif, m_width, m_height, resolution, background, global.object()) == GIF_OK;
    if (ok && m_loop) {
        static const char application[] = "NETSCAPE2.0";
        static const unsigned char endless[] = {1, 0, 0}; // loop count 0: for ever
        ok = EGifPutExtensionLeader(gif, APPLICATION_EXT_FUNC_CODE) == GIF_OK
             && EGifPutExtensionBlock(gif, 11, application) == GIF_OK
             && EGifPutExtensionBlock(gif, 3, endless) == GIF_OK && EGifPutExtensionTrailer(gif) == GIF_OK;
    }

    float carried = 0;
    for (int i = 0; ok && i < m_images.size(); ++i) {
        const SubImage &sub = m_images.at(i);
        if ((animated || (complete && sub.transparentIndex >= 0)) && !putControlBlock(gif, sub, carried))
            break;
        const ColorMap local(sub.colorMap);
        if (EGifPutImageDesc(gif, sub.left, sub.top, sub.image.width(), sub.image.height(), false, local.object())
            != GIF_OK) {
            ok = false;
            break;
        }
        ok = putPixels(gif, sub.image, complete ? isMonochrome(sub.image) : resolution < 2);
    }
    const bool closed = EGifCloseFile(gif, &error) == GIF_OK;
    return ok && closed;
}

// ---- animated export -------------------------------------------------------------------

namespace {

// 256 opaque black entries with the quantizer's colours in 1..255 and entry 0 transparent:
// index 0 is the transparent colour in exported animations as in sprites.
void quantizedPalette(const ColorQuantizer &quantizer, RGBA (&palette)[256])
{
    RGBA found[256];
    quantizer.getColorTable(found);
    palette[0] = RGBA(0, 0, 0, 0);
    for (int i = 1; i < 256; ++i)
        palette[i] = found[i - 1];
}

// A true-colour picture made indexed over the palette. Alpha decides transparency alone:
// half-transparent and more is index 0, anything more opaque stays off index 0.
QImage mappedToPalette(const QImage &picture, const RGBA (&palette)[256])
{
    QImage mapped = picture;
    adaptImageToPalette(mapped, palette);
    if (picture.format() == QImage::Format_ARGB32) {
        for (int y = 0; y < picture.height(); ++y) {
            const auto *in = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
            uchar *out = mapped.scanLine(y);
            for (int x = 0; x < picture.width(); ++x) {
                if (qAlpha(in[x]) < 128)
                    out[x] = 0;
                else if (out[x] == 0)
                    out[x] = 1;
            }
        }
    }
    return mapped;
}

QVector<RGB> withoutAlpha(const QVector<QRgb> &table)
{
    QVector<RGB> colors;
    colors.reserve(table.size());
    for (QRgb entry : table)
        colors.append(RGB(entry));
    return colors;
}

qint16 firstTransparent(const QVector<QRgb> &table)
{
    for (int i = 0; i < table.size(); ++i) {
        if (qAlpha(table.at(i)) == 0)
            return qint16(i);
    }
    return -1;
}

// The canvas that holds every frame with all axes on one point, and whether every
// picture is true colour.
struct Canvas
{
    int maxX = 0;
    int maxY = 0;
    int maxRight = 0;
    int maxBottom = 0;
    bool allTrueColour = true;
};

Canvas canvasOf(const QVector<AnimImageFrame> &frames)
{
    Canvas canvas;
    bool any = false;
    for (const AnimImageFrame &frame : frames) {
        if (frame.image.isNull())
            continue;
        const int right = frame.image.width() - frame.x;
        const int bottom = frame.image.height() - frame.y;
        canvas.maxX = any ? qMax(canvas.maxX, frame.x) : frame.x;
        canvas.maxY = any ? qMax(canvas.maxY, frame.y) : frame.y;
        canvas.maxRight = any ? qMax(canvas.maxRight, right) : right;
        canvas.maxBottom = any ? qMax(canvas.maxBottom, bottom) : bottom;
        canvas.allTrueColour = canvas.allTrueColour && frame.image.format() != QImage::Format_Indexed8;
        any = true;
    }
    return canvas;
}

// The palettes of one export while its frames are added.
struct ExportPalettes
{
    GIFImage &gif;
    ColorQuantizer &animationColours; // the colours of an all true-colour animation
    bool shared;
    qint16 sharedTransparent = -1;
};

// Where some picture is indexed: each frame's own colours, or the first frame's for all
// where the palette is shared. A true-colour picture among them gets a palette of its own.
void takeFramePalette(ExportPalettes &palettes, GIFImage::SubImage &sub, bool first)
{
    if (!palettes.shared || first) {
        if (sub.image.format() != QImage::Format_Indexed8) {
            ColorQuantizer own(255, 8);
            own.processImage(sub.image);
            RGBA palette[256];
            quantizedPalette(own, palette);
            sub.image = mappedToPalette(sub.image, palette);
        }
        const QVector<QRgb> table = sub.image.colorTable();
        (palettes.shared ? palettes.gif.globalColorMap() : sub.colorMap) = withoutAlpha(table);
        sub.transparentIndex = palettes.sharedTransparent = firstTransparent(table);
    } else {
        // The shared palette's transparent entry holds for every frame.
        sub.transparentIndex = palettes.sharedTransparent;
    }
}

// Where every picture is true colour: one palette over all frames, set at the last one.
void gatherAnimationColours(ExportPalettes &palettes, GIFImage::SubImage &sub, bool last)
{
    palettes.animationColours.processImage(sub.image);
    if (last) {
        RGBA palette[256];
        quantizedPalette(palettes.animationColours, palette);
        QVector<RGB> &global = palettes.gif.globalColorMap();
        global.clear();
        for (const RGBA &entry : palette)
            global.append(entry.toRGB());
    }
    sub.transparentIndex = 0;
}

void scaleFrame(GIFImage::SubImage &sub, float scale)
{
    const QVector<QRgb> table = sub.image.colorTable();
    sub.image = resizeImageNearest(sub.image, QSize(int(std::lround(sub.image.width() * scale)),
                                                    int(std::lround(sub.image.height() * scale))));
    sub.image.setColorTable(table);
}

// True-colour pictures are indexed last, over the palette their frame ended up with. By
// the complete rule entry 0 is clear while matching, as it is in the file: an opaque
// pixel of its colour then goes to its opaque twin and doesn't vanish.
void indexTrueColour(GIFImage &gif, CodecRules rules)
{
    for (GIFImage::SubImage &sub : gif.images()) {
        if (sub.image.format() == QImage::Format_Indexed8)
            continue;
        const QVector<RGB> &colors = gif.globalColorMap().isEmpty() ? sub.colorMap : gif.globalColorMap();
        RGBA palette[256];
        for (int i = 0; i < 256; ++i)
            palette[i] = i < colors.size() ? RGBA(colors.at(i)) : RGBA(0, 0, 0, 255);
        if (rules == CodecRules::Complete)
            palette[0].alpha = 0;
        sub.image = mappedToPalette(sub.image, palette);
    }
}

// Complete rules, animations: the frames that share one palette (the usual case, sprites
// drawn with their work's palette) take it as the global table, written once rather than
// before every frame; a frame with colours of its own keeps its local table.
void shareColourTables(GIFImage &gif)
{
    QList<GIFImage::SubImage> &images = gif.images();
    QVector<RGB> &global = gif.globalColorMap();
    if (global.isEmpty()) {
        QVector<QPair<QVector<RGB>, int>> tables; // each local table, and how many frames have it
        for (const GIFImage::SubImage &sub : qAsConst(images)) {
            auto same = std::find_if(tables.begin(), tables.end(),
                                     [&sub](const QPair<QVector<RGB>, int> &table) { return table.first == sub.colorMap; });
            if (same == tables.end())
                tables.append({sub.colorMap, 1});
            else
                ++same->second;
        }
        const auto most = std::max_element(tables.cbegin(), tables.cend(), [](const auto &a, const auto &b) {
            return a.second < b.second;
        });
        if (most == tables.cend() || most->second < 2 || most->first.isEmpty())
            return;
        global = most->first;
    }
    for (GIFImage::SubImage &sub : images) {
        if (sub.colorMap == global)
            sub.colorMap.clear();
    }
}

// Then each table ends after the last entry its frames use, the transparent one included:
// a shorter table takes fewer bits, in itself and in every code of the pixels. Four
// entries at least, so that no reader takes the file for a two-colour one.
void trimColourTables(GIFImage &gif)
{
    int globalEnd = 0;
    for (GIFImage::SubImage &sub : gif.images()) {
        int end = qMax(4, sub.transparentIndex + 1);
        if (sub.image.format() != QImage::Format_Indexed8)
            end = 256;
        const int width = sub.image.width();
        for (int y = 0; width > 0 && y < sub.image.height() && end < 256; ++y) {
            const uchar *line = sub.image.constScanLine(y);
            end = qMax(end, *std::max_element(line, line + width) + 1);
        }
        if (!sub.colorMap.isEmpty())
            sub.colorMap.resize(qMin(end, sub.colorMap.size()));
        else
            globalEnd = qMax(globalEnd, end);
    }
    QVector<RGB> &global = gif.globalColorMap();
    if (globalEnd > 0 && globalEnd < global.size())
        global.resize(globalEnd);
}

} // namespace

bool saveGIF(QIODevice *device, const QVector<AnimImageFrame> &frames, float scale, float velocity,
             bool sharedPalette, bool loop)
{
    return saveGIF(device, frames, scale, velocity, sharedPalette, loop, CodecRules::Designed);
}

bool saveGIF(QIODevice *device, const QVector<AnimImageFrame> &frames, float scale, float velocity,
             bool sharedPalette, bool loop, CodecRules rules)
{
    if (frames.isEmpty() || !device)
        return false;
    if (scale <= 0)
        scale = 1;
    if (velocity <= 0)
        velocity = 1; // a stopped animation has no delays to write

    const Canvas canvas = canvasOf(frames);
    GIFImage gif(quint16((canvas.maxRight + canvas.maxX) * scale), quint16((canvas.maxBottom + canvas.maxY) * scale),
                 loop);
    ColorQuantizer animationColours(255, 8);
    ExportPalettes palettes{gif, animationColours, sharedPalette};

    int lastFrame = -1;
    for (int i = 0; i < frames.size(); ++i) {
        if (!frames.at(i).image.isNull())
            lastFrame = i;
    }
    QList<GIFImage::SubImage> &images = gif.images();
    for (int i = 0; i < frames.size(); ++i) {
        const AnimImageFrame &frame = frames.at(i);
        if (frame.image.isNull())
            continue;
        GIFImage::SubImage sub;
        sub.image = frame.image;
        // Opaque true colour is matched as ARGB32 by the complete rule, so that no opaque
        // pixel is sent to the clear entry 0.
        if (rules == CodecRules::Complete && sub.image.format() != QImage::Format_Indexed8)
            sub.image = sub.image.convertToFormat(QImage::Format_ARGB32);
        if (!canvas.allTrueColour)
            takeFramePalette(palettes, sub, images.isEmpty());
        else
            gatherAnimationColours(palettes, sub, i == lastFrame);
        if (scale != 1)
            scaleFrame(sub, scale);
        sub.delay = ((100 / velocity) * float(frame.ticks)) / 60;
        sub.left = qint16((canvas.maxX - frame.x) * scale);
        sub.top = qint16((canvas.maxY - frame.y) * scale);
        images.append(sub);
    }
    indexTrueColour(gif, rules);
    if (rules == CodecRules::Complete && images.size() > 1) {
        shareColourTables(gif);
        trimColourTables(gif);
    }
    return gif.save(device, rules);
}

// ---- the octree -----------------------------------------------------------------------

namespace {

void freeNode(OctreeNode *node)
{
    if (!node)
        return;
    for (OctreeNode *child : node->children)
        freeNode(child);
    delete node;
}

} // namespace

ColorQuantizer::ColorQuantizer(int maxColors, int colorBits)
    : m_maxColors(maxColors)
    , m_colorBits(qBound(0, colorBits, 8))
{
}

ColorQuantizer::~ColorQuantizer()
{
    freeNode(m_root);
}

bool ColorQuantizer::processImage(const QImage &image)
{
    const QImage argb = image.format() == QImage::Format_ARGB32 ? image : image.convertToFormat(QImage::Format_ARGB32);
    // Pictures are mostly runs of one colour: a pixel like the one before ends in the same
    // leaf, as long as no reduction has changed the tree in between.
    OctreeNode *lastLeaf = nullptr;
    QRgb lastPixel = 0;
    for (int y = 0; y < argb.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x) {
            const QRgb pixel = row[x];
            if (lastLeaf && pixel == lastPixel) {
                ++lastLeaf->pixelCount;
                lastLeaf->redSum += qRed(pixel);
                lastLeaf->greenSum += qGreen(pixel);
                lastLeaf->blueSum += qBlue(pixel);
                lastLeaf->alphaSum += qAlpha(pixel);
                continue;
            }
            lastLeaf = insert(m_root, uchar(qRed(pixel)), uchar(qGreen(pixel)), uchar(qBlue(pixel)),
                              uchar(qAlpha(pixel)), m_colorBits, 0, m_leafCount, m_reducible);
            lastPixel = pixel;
            // A fold of a node with one child leaves the count as it was; only a tree
            // folded up to its root has nothing more to give.
            while (m_leafCount > m_maxColors && !m_root->isLeaf) {
                reduceTree(m_colorBits, m_leafCount, m_reducible);
                lastLeaf = nullptr;
            }
        }
    }
    return true;
}

void ColorQuantizer::addColor(OctreeNode *&node, unsigned char red, unsigned char green, unsigned char blue,
                              unsigned char alpha, int colorBits, int level, int &leafCount,
                              OctreeNode *(&reducible)[8])
{
    insert(node, red, green, blue, alpha, colorBits, level, leafCount, reducible);
}

OctreeNode *ColorQuantizer::insert(OctreeNode *&node, unsigned char red, unsigned char green, unsigned char blue,
                                   unsigned char alpha, int colorBits, int level, int &leafCount,
                                   OctreeNode *(&reducible)[8])
{
    OctreeNode **place = &node;
    for (;; ++level) {
        if (!*place) {
            *place = new OctreeNode;
            if (level == colorBits) {
                (*place)->isLeaf = true;
                ++leafCount;
            } else {
                (*place)->next = reducible[level];
                reducible[level] = *place;
            }
        }
        OctreeNode *current = *place;
        if (current->isLeaf) {
            ++current->pixelCount;
            current->redSum += red;
            current->greenSum += green;
            current->blueSum += blue;
            current->alphaSum += alpha;
            return current;
        }
        const int shift = 7 - level;
        const int index = (((red >> shift) & 1) << 2) | (((green >> shift) & 1) << 1) | ((blue >> shift) & 1);
        place = &current->children[index];
    }
}

void ColorQuantizer::reduceTree(int colorBits, int &leafCount, OctreeNode *(&reducible)[8])
{
    int level = colorBits - 1;
    while (level > 0 && !reducible[level])
        --level;
    if (level < 0 || !reducible[level])
        return;
    OctreeNode *node = reducible[level];
    reducible[level] = node->next;
    node->next = nullptr;
    int children = 0;
    for (OctreeNode *&child : node->children) {
        if (!child)
            continue;
        node->pixelCount += child->pixelCount;
        node->redSum += child->redSum;
        node->greenSum += child->greenSum;
        node->blueSum += child->blueSum;
        node->alphaSum += child->alphaSum;
        freeNode(child);
        child = nullptr;
        ++children;
    }
    node->isLeaf = true;
    leafCount += 1 - children;
}

void ColorQuantizer::getColorTable(RGBA (&table)[256]) const
{
    for (RGBA &entry : table)
        entry = RGBA();
    int index = 0;
    getPaletteColors(m_root, table, index);
}

void ColorQuantizer::getPaletteColors(const OctreeNode *node, RGBA (&table)[256], int &index) const
{
    if (!node || index >= 256)
        return;
    if (node->isLeaf) {
        if (node->pixelCount == 0) {
            table[index++] = RGBA(0, 0, 0, 255);
            return;
        }
        auto mean = [node](qint64 sum) { return quint8(qBound<qint64>(0, sum / node->pixelCount, 255)); };
        table[index++] = RGBA(mean(node->redSum), mean(node->greenSum), mean(node->blueSum), mean(node->alphaSum));
        return;
    }
    for (const OctreeNode *child : node->children)
        getPaletteColors(child, table, index);
}

} // namespace Ovra
