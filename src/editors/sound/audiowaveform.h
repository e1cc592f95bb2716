#pragma once

#include "foundation/global.h"

#include <QColor>
#include <QImage>
#include <QObject>
#include <QSize>
#include <QVector>

namespace Ovra {

class AudioData;

// Turns the sound into a picture at a zoom: a horizontal scale in pixels a frame and a
// vertical one on the height of the values, both 1.0 at the start. Each pixel column
// shows the lowest and highest value of the frames under it, found from min/max
// summaries kept at two block sizes. They are built once for a sound and afterwards
// redone only from the first edited frame, so a picture costs in proportion to its
// pixels, not to the frames it covers.
class OVRA_EXPORT AudioWaveform : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(AudioWaveform)

public:
    static constexpr uint FineBlock = 256;
    static constexpr uint CoarseBlock = 65536;
    enum Source { Summaries, Frames };

    explicit AudioWaveform(AudioData *data, QObject *parent = nullptr);
    ~AudioWaveform() override;

    AudioData *data() const { return m_data; }
    double hScale() const { return m_hScale; }
    double vScale() const { return m_vScale; }
    uint firstFrame() const { return m_firstFrame; }
    void setHScale(double scale);
    void setVScale(double scale);
    void setFirstFrame(uint frame);
    // The size of the view the picture fills; the tools and the fitting zoom need it.
    QSize viewSize() const { return m_viewSize; }
    void setViewSize(const QSize &size) { m_viewSize = size; }
    double framesPerPixel() const { return 1.0 / m_hScale; }
    // The frame under a column of the view, and the column of a frame.
    uint frameAt(int x) const;
    int xOf(uint frame) const;

    // The lowest and highest value of one channel over the frames [from, to), as floats
    // of about -1 to 1; both 0 over no frames.
    void peak(int channel, uint from, uint to, float &lo, float &hi) const;
    // The same read from every frame: what the summaries must always agree with.
    void rawPeak(int channel, uint from, uint to, float &lo, float &hi) const;

    void setColors(const QColor &wave, const QColor &background);
    // The picture of the view at this size, kept until the sound or the view changes.
    QImage picture(const QSize &size);
    // A picture made afresh, from the summaries or from every frame.
    QImage render(const QSize &size, Source source) const;

signals:
    // The picture is out of date.
    void changed();

private:
    struct Level
    {
        uint block = 0;
        QVector<float> lows, highs; // block * channels + channel
    };
    void rebuild();
    void framesReplaced(uint frame, uint removed, uint inserted);
    void buildFine(uint firstBlock, uint endBlock);
    void buildCoarse(uint firstBlock, uint endBlock);
    void invalidate();

    AudioData *m_data;
    Level m_fine, m_coarse;
    double m_hScale = 1.0;
    double m_vScale = 1.0;
    uint m_firstFrame = 0;
    QSize m_viewSize;
    QColor m_wave, m_background;
    QImage m_picture;
    bool m_dirty = true;
};

} // namespace Ovra
