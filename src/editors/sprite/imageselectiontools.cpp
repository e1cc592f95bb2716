// The tools that move the view or the selection, and the two that draw a selection.
#include "editors/sprite/imagetools.h"

#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagetools_p.h"
#include "editors/sprite/indexpainter.h"
#include "editors/sprite/rasterlayer.h"
#include "image/paletteobject.h"

#include <QPainter>

namespace Ovra {

CanvasMoveTool::CanvasMoveTool(ImageCanvas *canvas, QObject *parent)
    : ImageTool(canvas, parent)
{
}

QString CanvasMoveTool::label() const
{
    return tr("Move canvas");
}

const char *CanvasMoveTool::actionName() const
{
    return "spr_tool_canvasmove";
}

bool CanvasMoveTool::dragsView() const
{
    return true;
}

// ---- moving the selection

namespace {

// The half-way mix of each channel, towards the colour laid over.
RGBA halfway(const RGBA &under, const RGBA &over)
{
    const auto mix = [](int low, int high) { return quint8(low + ((high - low) >> 1)); };
    return RGBA(mix(under.red, over.red), mix(under.green, over.green), mix(under.blue, over.blue),
                mix(under.alpha, over.alpha));
}

// Lays the indexed `floating` (index 0 where nothing was lifted: `mask` tells the lifted
// pixels) onto `target` at `offset`, by the alpha of each lifted colour.
void layIndexed(QImage &target, const QImage &floating, const QByteArray &mask, const QPoint &offset,
                const PaletteObject &palette)
{
    const int width = floating.width();
    const QRect area = QRect(offset, floating.size()) & target.rect();
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const uchar *from = floating.constScanLine(y - offset.y());
        uchar *to = target.scanLine(y);
        for (int x = area.left(); x <= area.right(); ++x) {
            const int sourceX = x - offset.x();
            if (!mask.isEmpty() && !mask.at((y - offset.y()) * width + sourceX))
                continue;
            const uchar index = from[sourceX];
            const RGBA over = palette.at(index);
            if (over.alpha == 0)
                continue;
            if (over.alpha == 255)
                to[x] = index;
            else
                to[x] = palette.index(halfway(palette.at(to[x]), over));
        }
    }
}

// A mask of the canvas's size shifted by `offset`, the part pushed out dropped.
QByteArray shiftedMask(const QByteArray &mask, const QSize &size, const QPoint &offset)
{
    QByteArray shifted(mask.size(), '\0');
    const QRect area = QRect(offset, size) & QRect(QPoint(), size);
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            shifted[y * size.width() + x] = mask.at((y - offset.y()) * size.width() + x - offset.x());
    }
    return shifted;
}

} // namespace

SelMoveTool::SelMoveTool(ImageCanvas *canvas, QObject *parent)
    : ImageTool(canvas, parent)
    , m_stroke(new LayerStroke(canvas))
{
}

SelMoveTool::~SelMoveTool() = default;

QString SelMoveTool::label() const
{
    return tr("Move selection");
}

const char *SelMoveTool::actionName() const
{
    return "spr_tool_selmove";
}

// The press lifts the selected pixels: the layer keeps the rest with clear pixels in the
// hole, and the lifted ones float over it wherever the mouse takes them.
void SelMoveTool::mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (m_stroke->isOpen() || button != Qt::LeftButton)
        return;
    ImageTool::mousePress(pixel, button, modifiers);
    if (!m_stroke->begin())
        return;
    const QImage &image = m_stroke->before();
    if (image.size() != canvas()->size()) {
        m_stroke->cancel();
        return;
    }
    m_mask = canvas()->selection();
    m_lifted = image.copy();
    m_floating = image.copy();
    const int bytes = image.depth() / 8;
    for (int y = 0; y < image.height(); ++y) {
        uchar *hole = m_lifted.scanLine(y);
        uchar *kept = m_floating.scanLine(y);
        for (int x = 0; x < image.width(); ++x) {
            const bool selected = m_mask.isEmpty() || m_mask.at(y * image.width() + x);
            memset((selected ? hole : kept) + x * bytes, 0, size_t(bytes));
        }
    }
    m_grab = pixel;
    m_offset = QPoint();
}

void SelMoveTool::mouseMove(const QPoint &pixel, Qt::KeyboardModifiers modifiers)
{
    ImageTool::mouseMove(pixel, modifiers);
    if (m_stroke->isOpen() && pixel - m_grab != m_offset)
        showAt(pixel - m_grab);
}

void SelMoveTool::mouseRelease(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (m_stroke->isOpen() && button == this->button()) {
        if (pixel - m_grab != m_offset)
            showAt(pixel - m_grab);
        apply();
    }
    ImageTool::mouseRelease(pixel, button, modifiers);
}

void SelMoveTool::showAt(const QPoint &offset)
{
    RasterLayer *layer = m_stroke->layer();
    m_offset = offset;
    QImage shown = m_lifted.copy();
    if (shown.format() == QImage::Format_Indexed8) {
        layIndexed(shown, m_floating, m_mask, offset, *canvas()->palette());
    } else {
        QPainter painter(&shown);
        painter.drawImage(offset, m_floating);
    }
    layer->setImage(shown);
    if (!m_mask.isEmpty())
        canvas()->setSelection(shiftedMask(m_mask, canvas()->size(), offset));
    emit updateRequested();
}

void SelMoveTool::apply()
{
    if (!m_stroke->isOpen())
        return;
    // A press without a move lays nothing down: half-clear pixels would mix with the hole.
    if (m_offset.isNull()) {
        m_stroke->cancel();
        canvas()->setSelection(m_mask);
    } else {
        m_stroke->commit(label());
    }
    m_lifted = QImage();
    m_floating = QImage();
    m_mask.clear();
    emit updateRequested();
}

void SelMoveTool::canvasChanged()
{
    m_stroke->cancel();
    m_lifted = QImage();
    m_floating = QImage();
    m_mask.clear();
    ImageTool::canvasChanged();
}

// ---- the box

RectSelTool::RectSelTool(ImageCanvas *canvas, QObject *parent)
    : ImageTool(canvas, parent)
{
}

QString RectSelTool::label() const
{
    return tr("Rectangle selection");
}

const char *RectSelTool::actionName() const
{
    return "spr_tool_rectsel";
}

void RectSelTool::mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (m_dragging || (button != Qt::LeftButton && button != Qt::RightButton))
        return;
    ImageTool::mousePress(pixel, button, modifiers);
    m_dragging = true;
    m_anchor = pixel;
    emit updateRequested();
}

void RectSelTool::mouseMove(const QPoint &pixel, Qt::KeyboardModifiers modifiers)
{
    ImageTool::mouseMove(pixel, modifiers);
    emit updateRequested();
}

void RectSelTool::mouseRelease(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (!m_dragging || button != this->button()) {
        ImageTool::mouseRelease(pixel, button, modifiers);
        return;
    }
    const Qt::KeyboardModifiers pressed = this->modifiers();
    ImageTool::mouseRelease(pixel, button, modifiers);
    m_dragging = false;
    const QSize size = canvas()->size();
    const QRect box = dragged() & QRect(QPoint(), size);
    QByteArray marked(size.width() * size.height(), '\0');
    for (int y = box.top(); y <= box.bottom(); ++y)
        memset(marked.data() + y * size.width() + box.left(), 1, size_t(box.width()));
    combineSelection(canvas(), marked, button, pressed);
    emit updateRequested();
}

void RectSelTool::paintOverlay(QPainter &painter, int x, int y, double scale)
{
    if (!m_dragging)
        return;
    // The view point of the picture's corner, from the pixel under the mouse.
    const QPointF corner = QPointF(x, y) - QPointF(position()) * scale;
    const QRect box = dragged();
    const QRectF shown(corner + QPointF(box.topLeft()) * scale, QSizeF(box.size()) * scale);
    painter.save();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, 1));
    painter.drawRect(shown.adjusted(0, 0, -1, -1));
    painter.setPen(QPen(Qt::black, 1, Qt::DashLine));
    painter.drawRect(shown.adjusted(0, 0, -1, -1));
    painter.restore();
}

void RectSelTool::canvasChanged()
{
    m_dragging = false;
    ImageTool::canvasChanged();
}

QRect RectSelTool::dragged() const
{
    return QRect(m_anchor, position()).normalized();
}

// ---- the free selection

PenSelTool::PenSelTool(ImageCanvas *canvas, QObject *parent)
    : BasePenTool(canvas, parent)
{
}

QString PenSelTool::label() const
{
    return tr("Free selection");
}

const char *PenSelTool::actionName() const
{
    return "spr_tool_freesel";
}

bool PenSelTool::startStroke(const QPoint &)
{
    if ((button() != Qt::LeftButton && button() != Qt::RightButton) || canvas()->size().isEmpty())
        return false;
    m_marks = QImage(canvas()->size(), QImage::Format_Indexed8);
    if (m_marks.isNull())
        return false;
    // Drawn as it is over the view: the marked pixels half-covered in blue.
    m_marks.setColorTable({qRgba(0, 0, 0, 0), qRgba(40, 110, 255, 110)});
    m_marks.fill(0);
    return true;
}

void PenSelTool::strokeTo(const QPoint &from, const QPoint &to)
{
    IndexPainter marker;
    marker.setImage(&m_marks);
    marker.setColor(1);
    marker.setSize(penSize());
    marker.drawLine(from, to);
    emit updateRequested();
}

void PenSelTool::finishStroke()
{
    const QSize size = m_marks.size();
    QByteArray marked(size.width() * size.height(), '\0');
    for (int y = 0; y < size.height(); ++y)
        memcpy(marked.data() + y * size.width(), m_marks.constScanLine(y), size_t(size.width()));
    m_marks = QImage();
    if (size == canvas()->size())
        combineSelection(canvas(), marked, button(), modifiers());
}

void PenSelTool::cancelStroke()
{
    m_marks = QImage();
}

void PenSelTool::paintOverlay(QPainter &painter, int x, int y, double scale)
{
    if (isStroking() && !m_marks.isNull()) {
        const QPointF corner = QPointF(x, y) - QPointF(position()) * scale;
        painter.drawImage(QRectF(corner, QSizeF(m_marks.size()) * scale), m_marks);
    }
    BasePenTool::paintOverlay(painter, x, y, scale);
}

} // namespace Ovra
