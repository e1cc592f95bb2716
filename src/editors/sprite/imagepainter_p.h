#pragma once

#include "editors/sprite/imagepainter.h"

namespace Ovra {

struct ImagePainterPrivate
{
    int depth = 8;
    QMap<uint, uint> remap;
    PaletteObject *palette = nullptr;
    QImage *image = nullptr;
    uint color = 255;
    bool *protectFirst = nullptr;
    int size = 1;
    const QByteArray *selection = nullptr;

    // While a drawing operation runs, the picture's memory is looked up once (detaching it
    // once) rather than at every pixel; outside of one `bits` is null.
    uchar *bits = nullptr;
    qsizetype stride = 0;
    int width = 0;
    int height = 0;
    int sessions = 0;

    // The pixel's bytes during a drawing operation, null outside the picture.
    uchar *at(int x, int y, int bytes) const
    {
        if (uint(x) >= uint(width) || uint(y) >= uint(height))
            return nullptr;
        return bits + y * stride + x * bytes;
    }
};

// Opens a drawing operation over the painter's picture; nested operations share it.
class PaintSession
{
public:
    explicit PaintSession(ImagePainterPrivate *d)
        : m_d(d)
    {
        if (m_d->sessions++ == 0 && m_d->image) {
            m_d->bits = m_d->image->bits();
            m_d->stride = m_d->image->bytesPerLine();
            m_d->width = m_d->image->width();
            m_d->height = m_d->image->height();
        }
    }
    ~PaintSession()
    {
        if (--m_d->sessions == 0)
            m_d->bits = nullptr;
    }

private:
    Q_DISABLE_COPY(PaintSession)
    ImagePainterPrivate *m_d;
};

} // namespace Ovra
