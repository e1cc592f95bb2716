#pragma once

#include "image/imagedata.h"

#include <QImage>
#include <QList>
#include <QVector>

class QIODevice;

namespace Ovra {

// A GIF file in memory: a logical screen and its sub-images, each with its own place,
// colours, transparent index and delay. Reading and writing go through giflib.
class OVRA_EXPORT GIFImage
{
public:
    struct SubImage
    {
        QImage image;             // Format_Indexed8, or Format_Mono for a two-colour file
        QVector<RGB> colorMap;    // the local colour map; empty for none
        qint16 left = 0;          // place on the logical screen
        qint16 top = 0;
        qint16 transparentIndex = -1;
        float delay = 0;          // hundredths of a second, fractions kept until saved
    };

    GIFImage() = default;
    GIFImage(unsigned short width, unsigned short height, bool loop);

    bool canLoop() const { return m_loop; }
    void setLoop(bool loop) { m_loop = loop; }
    unsigned short width() const { return m_width; }
    unsigned short height() const { return m_height; }
    void setWidth(unsigned short width) { m_width = width; }
    void setHeight(unsigned short height) { m_height = height; }
    QVector<RGB> &globalColorMap() { return m_globalColorMap; }
    QVector<RGB> globalColorMap() const { return m_globalColorMap; }
    QList<SubImage> &images() { return m_images; }
    QList<SubImage> images() const { return m_images; }

    // Reads a whole file. What could be read is kept even when the answer is false.
    bool load(QIODevice *device);
    // Complete: pictures always come in Format_Indexed8 whatever the header's colour
    // resolution says, and only a graphic control block marks a transparent index.
    bool load(QIODevice *device, CodecRules rules);
    // Writes GIF89a; false without images or when the device refuses.
    bool save(QIODevice *device) const;
    // Complete: every picture with a transparent index gets a graphic control block, a
    // single one too, so that other readers see its transparency; each picture is written
    // by its own format, and pictures neither indexed nor monochrome are refused.
    bool save(QIODevice *device, CodecRules rules) const;

private:
    bool m_loop = false;
    quint16 m_width = 0;
    quint16 m_height = 0;
    QVector<RGB> m_globalColorMap;
    QList<SubImage> m_images;
};

// One frame of an animation to export.
struct OVRA_EXPORT AnimImageFrame
{
    QImage image;  // a null picture is passed over
    int x = 0;     // the picture's axis, from its left edge
    int y = 0;     // the picture's axis, from its top edge
    int ticks = 0; // duration in sixtieths of a second at normal speed
};

// Writes the frames as an animated GIF, all axes on one point, scaled by `scale` (0 or
// below counts as 1) and played `velocity` times as fast. Index 0 of every palette is the
// transparent colour; true-colour frames share one palette found by the octree.
OVRA_EXPORT bool saveGIF(QIODevice *device, const QVector<AnimImageFrame> &frames, float scale, float velocity,
                         bool sharedPalette, bool loop);
// The same, writing the file by the given rules (see GIFImage::save). Under the complete
// rules an animation's frames that share a palette have it as the global colour table,
// the others keep local ones, and every table ends after the last entry its frames use.
OVRA_EXPORT bool saveGIF(QIODevice *device, const QVector<AnimImageFrame> &frames, float scale, float velocity,
                         bool sharedPalette, bool loop, CodecRules rules);

// A node of the colour octree: an inner node, or a leaf summing the pixels that end in it.
struct OctreeNode
{
    bool isLeaf = false;
    int pixelCount = 0;
    // Sums over the pixels counted; wide enough for any picture a leaf can take in.
    qint64 redSum = 0;
    qint64 greenSum = 0;
    qint64 blueSum = 0;
    qint64 alphaSum = 0;
    OctreeNode *next = nullptr; // next inner node of the same level waiting for reduction
    OctreeNode *children[8] = {};
};

// Finds at most `maxColors` colours for pictures by an octree of `colorBits` levels: the
// tree grows with every pixel and the newest inner node of the deepest level is folded
// into a leaf whenever there are too many leaves.
class OVRA_EXPORT ColorQuantizer
{
public:
    ColorQuantizer(int maxColors, int colorBits);
    ~ColorQuantizer();
    ColorQuantizer(const ColorQuantizer &) = delete;
    ColorQuantizer &operator=(const ColorQuantizer &) = delete;

    // Adds every pixel of the picture, transparent ones too. Pictures may follow one another.
    bool processImage(const QImage &image);
    // The leaves' mean colours, depth first; unused entries stay zero.
    void getColorTable(RGBA (&table)[256]) const;
    int colorCount() const { return m_leafCount; }

protected:
    void addColor(OctreeNode *&node, unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha,
                  int colorBits, int level, int &leafCount, OctreeNode *(&reducible)[8]);
    void reduceTree(int colorBits, int &leafCount, OctreeNode *(&reducible)[8]);
    void getPaletteColors(const OctreeNode *node, RGBA (&table)[256], int &index) const;

private:
    // addColor's walk, answering the leaf the colour ended in.
    OctreeNode *insert(OctreeNode *&node, unsigned char red, unsigned char green, unsigned char blue,
                       unsigned char alpha, int colorBits, int level, int &leafCount, OctreeNode *(&reducible)[8]);

    OctreeNode *m_root = nullptr;
    int m_leafCount = 0;
    OctreeNode *m_reducible[8] = {};
    int m_maxColors;
    int m_colorBits;
};

} // namespace Ovra
