// The painting tools: the pens, the picker, the magic wand and the paint bucket, and what
// all the tools share (the current layer, strokes as undo steps, the selection table).
#include "editors/sprite/imagetools.h"

#include "editors/sprite/commands/rasterlayeredit.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagetools_p.h"
#include "editors/sprite/indexpainter.h"
#include "editors/sprite/rasterlayer.h"
#include "editors/sprite/rgbapainter.h"
#include "image/paletteobject.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QSlider>
#include <QUndoStack>

namespace Ovra {

// ---- what the tools share

RasterLayer *currentLayer(ImageCanvas *canvas)
{
    if (!canvas)
        return nullptr;
    ImagePainter *painter = canvas->painter();
    RasterLayer *top = nullptr;
    for (ImageLayer *layer : canvas->layers()->layers()) {
        auto *raster = dynamic_cast<RasterLayer *>(layer);
        if (!raster)
            continue;
        if (painter && raster->imagePointer() == painter->image())
            return raster;
        if (!top)
            top = raster;
    }
    if (top && painter)
        painter->setImage(top->imagePointer());
    return top;
}

LayerStroke::LayerStroke(ImageCanvas *canvas)
    : m_canvas(canvas)
{
}

bool LayerStroke::begin()
{
    m_layer = currentLayer(m_canvas);
    if (!m_layer)
        return false;
    // Shares the pixels until the first write detaches the layer's own picture.
    m_before = m_layer->image();
    return true;
}

void LayerStroke::touched(const QRect &area)
{
    if (layerAlive())
        m_layer->changed(area);
}

void LayerStroke::commit(const QString &text)
{
    if (layerAlive() && m_layer->image() != m_before) {
        auto *command = new RasterLayerEdit(m_layer, m_before, true);
        command->setText(text);
        m_canvas->undoStack()->push(command);
        m_layer->changed();
    }
    m_layer = nullptr;
    m_before = QImage();
}

void LayerStroke::cancel()
{
    if (layerAlive() && m_layer->image() != m_before)
        m_layer->setImage(m_before);
    m_layer = nullptr;
    m_before = QImage();
}

bool LayerStroke::layerAlive() const
{
    return m_layer && m_canvas->layers()->indexOf(m_layer) >= 0;
}

PaintStroke::PaintStroke(ImageCanvas *canvas)
    : m_canvas(canvas)
    , m_stroke(canvas)
{
}

bool PaintStroke::begin(uint color, const QMap<uint, uint> &remap)
{
    if (!m_stroke.begin())
        return false;
    ImagePainter *painter = m_canvas->painter();
    m_savedColor = painter->color();
    m_savedRemap = painter->remap();
    painter->setColor(color);
    painter->setRemap(remap);
    return true;
}

void PaintStroke::lineTo(const QPoint &from, const QPoint &to)
{
    if (!m_stroke.isOpen())
        return;
    ImagePainter *painter = m_canvas->painter();
    painter->drawLine(from, to);
    // Only the pen's squares along the line changed: the views compose that part again.
    const int reach = qMax(1, painter->size()) - 1;
    m_stroke.touched(QRect(QPoint(qMin(from.x(), to.x()), qMin(from.y(), to.y())),
                           QPoint(qMax(from.x(), to.x()) + reach, qMax(from.y(), to.y()) + reach)));
}

void PaintStroke::finish(const QString &text)
{
    if (!m_stroke.isOpen())
        return;
    restorePainter();
    m_stroke.commit(text);
}

void PaintStroke::cancel()
{
    if (!m_stroke.isOpen())
        return;
    restorePainter();
    m_stroke.cancel();
}

void PaintStroke::restorePainter()
{
    ImagePainter *painter = m_canvas->painter();
    painter->setColor(m_savedColor);
    painter->setRemap(m_savedRemap);
}

void combineSelection(ImageCanvas *canvas, const QByteArray &marked, Qt::MouseButton button,
                      Qt::KeyboardModifiers modifiers)
{
    const int count = canvas->size().width() * canvas->size().height();
    if (marked.size() != count || count == 0)
        return;
    // -1 keeps the pixel's present state; otherwise the new state, for a marked pixel and
    // for one that isn't.
    int in = -1;
    int out = -1;
    const bool left = button == Qt::LeftButton;
    if (modifiers & Qt::ShiftModifier) {
        in = left ? 1 : -1;
        out = left ? -1 : 1;
    } else if (modifiers & Qt::AltModifier) {
        in = left ? 0 : -1;
        out = left ? -1 : 0;
    } else {
        in = left ? 1 : 0;
        out = left ? 0 : 1;
    }
    const QByteArray &current = canvas->selection();
    QByteArray mask(count, '\0');
    bool any = false;
    for (int i = 0; i < count; ++i) {
        const int rule = marked.at(i) ? in : out;
        const bool selected = rule < 0 ? (!current.isEmpty() && current.at(i) != 0) : rule == 1;
        mask[i] = selected ? '\1' : '\0';
        any = any || selected;
    }
    canvas->setSelection(any ? mask : QByteArray());
}

void drawPickerCross(QPainter &painter, int x, int y, double scale)
{
    const int half = int(scale / 2);
    const int cx = x + half;
    const int cy = y + half;
    const int gap = half + 2;
    const QRect bars[] = {QRect(cx - gap - 5, cy, 5, 1), QRect(cx + gap + 1, cy, 5, 1),
                          QRect(cx, cy - gap - 5, 1, 5), QRect(cx, cy + gap + 1, 1, 5)};
    for (const QRect &bar : bars)
        painter.fillRect(bar.translated(1, 1), Qt::white);
    for (const QRect &bar : bars)
        painter.fillRect(bar, Qt::black);
}

void drawPenSquare(QPainter &painter, int x, int y, double scale, int size)
{
    // The pen covers size pixels from the one under the mouse; the square stands one view
    // pixel outside of them all round, with a white line outside it for dark pictures.
    const int side = int(size * scale) + 2;
    const auto frame = [&painter](const QRect &box, const QColor &color) {
        painter.fillRect(QRect(box.left(), box.top(), box.width(), 1), color);
        painter.fillRect(QRect(box.left(), box.bottom(), box.width(), 1), color);
        painter.fillRect(QRect(box.left(), box.top(), 1, box.height()), color);
        painter.fillRect(QRect(box.right(), box.top(), 1, box.height()), color);
    };
    frame(QRect(x - 2, y - 2, side + 2, side + 2), Qt::white);
    frame(QRect(x - 1, y - 1, side, side), Qt::black);
}

QCheckBox *contiguousBox(bool checked, QWidget *parent)
{
    auto *box = new QCheckBox(QCoreApplication::translate("Ovra::ImageTool", "Contiguous"), parent);
    box->setObjectName(QStringLiteral("contiguous"));
    box->setChecked(checked);
    return box;
}

// ---- the pens

BasePenTool::BasePenTool(ImageCanvas *canvas, QObject *parent)
    : ImageTool(canvas, parent)
{
}

BasePenTool::~BasePenTool() = default;

PaintStroke &BasePenTool::paintStroke()
{
    if (!m_paint)
        m_paint = std::make_unique<PaintStroke>(canvas());
    return *m_paint;
}

void BasePenTool::strokeTo(const QPoint &from, const QPoint &to)
{
    paintStroke().lineTo(from, to);
}

void BasePenTool::finishStroke()
{
    paintStroke().finish(label());
}

void BasePenTool::cancelStroke()
{
    paintStroke().cancel();
}

int BasePenTool::penSize() const
{
    return canvas()->painter()->size();
}

void BasePenTool::setPenSize(int size)
{
    const int bounded = qBound(1, size, 128);
    if (bounded == penSize())
        return;
    canvas()->painter()->setSize(bounded);
    emit penSizeChanged(bounded);
    emit updateRequested();
}

bool BasePenTool::keyPress(int key)
{
    if (key == Qt::Key_Plus) {
        setPenSize(penSize() + 1);
        return true;
    }
    if (key == Qt::Key_Minus) {
        setPenSize(penSize() - 1);
        return true;
    }
    return false;
}

void BasePenTool::mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (m_stroking)
        return;
    ImageTool::mousePress(pixel, button, modifiers);
    if (!startStroke(pixel))
        return;
    m_stroking = true;
    m_last = pixel;
    strokeTo(pixel, pixel);
    emit updateRequested();
}

void BasePenTool::mouseRelease(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (m_stroking && button == this->button()) {
        if (pixel != m_last)
            strokeTo(m_last, pixel);
        m_stroking = false;
        finishStroke();
        emit updateRequested();
    }
    ImageTool::mouseRelease(pixel, button, modifiers);
}

void BasePenTool::mouseMove(const QPoint &pixel, Qt::KeyboardModifiers modifiers)
{
    ImageTool::mouseMove(pixel, modifiers);
    if (m_stroking && pixel != m_last) {
        strokeTo(m_last, pixel);
        m_last = pixel;
    }
    emit updateRequested();
}

void BasePenTool::paintOverlay(QPainter &painter, int x, int y, double scale)
{
    drawPenSquare(painter, x, y, scale, penSize());
}

QWidget *BasePenTool::createToolBar(QWidget *parent)
{
    auto *bar = new QWidget(parent);
    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *slider = new QSlider(Qt::Horizontal, bar);
    slider->setObjectName(QStringLiteral("pen_size"));
    slider->setRange(1, 128);
    slider->setValue(penSize());
    auto *value = new QLabel(QString::number(penSize()), bar);
    value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QStringLiteral("0000")));
    layout->addWidget(new QLabel(tr("Size:"), bar));
    layout->addWidget(slider, 1);
    layout->addWidget(value);
    connect(slider, &QSlider::valueChanged, this, &BasePenTool::setPenSize);
    connect(this, &BasePenTool::penSizeChanged, slider, &QSlider::setValue);
    connect(slider, &QSlider::valueChanged, value, [value](int size) { value->setNum(size); });
    return bar;
}

void BasePenTool::deactivate()
{
    if (m_stroking) {
        m_stroking = false;
        finishStroke();
    }
    ImageTool::deactivate();
}

void BasePenTool::canvasChanged()
{
    cancel();
    ImageTool::canvasChanged();
}

void BasePenTool::cancel()
{
    if (!m_stroking)
        return;
    m_stroking = false;
    cancelStroke();
}

PenTool::PenTool(ImageCanvas *canvas, QObject *parent)
    : BasePenTool(canvas, parent)
{
}

PenTool::~PenTool() = default;

QString PenTool::label() const
{
    return tr("Pen");
}

const char *PenTool::actionName() const
{
    return "spr_tool_pen";
}

bool PenTool::startStroke(const QPoint &)
{
    // A remap meant for the remap pen would turn this pen into one: it paints plainly.
    return button() == Qt::LeftButton && paintStroke().begin(canvas()->painter()->color(), {});
}

EraserTool::EraserTool(ImageCanvas *canvas, QObject *parent)
    : BasePenTool(canvas, parent)
{
}

EraserTool::~EraserTool() = default;

QString EraserTool::label() const
{
    return tr("Eraser");
}

const char *EraserTool::actionName() const
{
    return "spr_tool_eraser";
}

bool EraserTool::startStroke(const QPoint &)
{
    // Index 0 on an indexed picture, the clear word on a true-colour one.
    return button() == Qt::LeftButton && paintStroke().begin(0, {});
}

ReplaceTool::ReplaceTool(ImageCanvas *canvas, QObject *parent)
    : BasePenTool(canvas, parent)
{
}

ReplaceTool::~ReplaceTool() = default;

QString ReplaceTool::label() const
{
    return tr("Remap pen");
}

const char *ReplaceTool::actionName() const
{
    return "spr_tool_remap_pen";
}

bool ReplaceTool::keyPress(int key)
{
    if (key != Qt::Key_I)
        return BasePenTool::keyPress(key);
    ImagePainter *painter = canvas()->painter();
    const QMap<uint, uint> remap = painter->remap();
    if (canvas()->format() != 0 || remap.isEmpty() || isStroking())
        return false;
    // Where two colours went to one, the lower of them comes back.
    QMap<uint, uint> inverse;
    for (auto it = remap.constBegin(); it != remap.constEnd(); ++it) {
        if (!inverse.contains(it.value()))
            inverse.insert(it.value(), it.key());
    }
    painter->setRemap(inverse);
    return true;
}

bool ReplaceTool::startStroke(const QPoint &)
{
    const QMap<uint, uint> remap = canvas()->painter()->remap();
    return button() == Qt::LeftButton && !remap.isEmpty() && paintStroke().begin(canvas()->painter()->color(), remap);
}

// ---- the picker and its kin

PickerTool::PickerTool(ImageCanvas *canvas, QObject *parent)
    : ImageTool(canvas, parent)
{
}

QString PickerTool::label() const
{
    return tr("Color picker");
}

const char *PickerTool::actionName() const
{
    return "spr_tool_picker";
}

void PickerTool::mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    ImageTool::mousePress(pixel, button, modifiers);
    const RasterLayer *layer = currentLayer(canvas());
    if (!layer || !layer->image().valid(pixel) || (button != Qt::LeftButton && button != Qt::RightButton))
        return;
    const QImage &image = layer->image();
    const uint color = image.format() == QImage::Format_Indexed8 ? uint(image.pixelIndex(pixel)) : image.pixel(pixel);
    emit colorPicked(color, button);
}

void PickerTool::paintOverlay(QPainter &painter, int x, int y, double scale)
{
    drawPickerCross(painter, x, y, scale);
}

MagicWandTool::MagicWandTool(ImageCanvas *canvas, QObject *parent)
    : PickerTool(canvas, parent)
{
}

QString MagicWandTool::label() const
{
    return tr("Magic Wand");
}

const char *MagicWandTool::actionName() const
{
    return "spr_tool_magicwand";
}

void MagicWandTool::setContiguous(bool contiguous)
{
    if (contiguous == m_contiguous)
        return;
    m_contiguous = contiguous;
    emit contiguousChanged(contiguous);
}

QWidget *MagicWandTool::createToolBar(QWidget *parent)
{
    QCheckBox *box = contiguousBox(m_contiguous, parent);
    connect(box, &QCheckBox::toggled, this, &MagicWandTool::setContiguous);
    connect(this, &MagicWandTool::contiguousChanged, box, &QCheckBox::setChecked);
    return box;
}

namespace {

// The first entry from 0 to 254 that a fill can tell from `picked`: a different colour,
// where two clear colours count as the same. -1 when there is none.
int markerIndex(const PaletteObject &palette, const RGBA &picked)
{
    for (int i = 0; i < 255; ++i) {
        const RGBA color = palette.at(uchar(i));
        if (color != picked && !(color.alpha == 0 && picked.alpha == 0))
            return i;
    }
    return -1;
}

} // namespace

// The region is found by a fill with a colour that the picked one can't be mistaken for,
// on a copy of the layer; the pixels that the fill changed are the region.
void MagicWandTool::mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    ImageTool::mousePress(pixel, button, modifiers);
    const RasterLayer *layer = currentLayer(canvas());
    if (!layer || !layer->image().valid(pixel) || (button != Qt::LeftButton && button != Qt::RightButton))
        return;
    const QImage &original = layer->image();
    const PaletteObject &palette = *canvas()->palette();
    const bool indexed = original.format() == QImage::Format_Indexed8;
    const RGBA picked = indexed ? palette.at(uchar(original.pixelIndex(pixel))) : RGBA(original.pixel(pixel));
    const int marker = markerIndex(palette, picked);
    if (marker < 0)
        return;
    QImage copy = original.copy();
    std::unique_ptr<ImagePainter> painter;
    if (indexed)
        painter.reset(new IndexPainter);
    else
        painter.reset(new RGBAPainter);
    painter->setPalette(canvas()->palette());
    painter->setImage(&copy);
    painter->setColor(indexed ? uint(marker) : palette.at(uchar(marker)).toQRgb());
    painter->floodFill(pixel, m_contiguous);
    const int width = original.width();
    const int bytes = indexed ? 1 : 4;
    QByteArray changed(width * original.height(), '\0');
    for (int y = 0; y < original.height(); ++y) {
        const uchar *before = original.constScanLine(y);
        const uchar *after = copy.constScanLine(y);
        for (int x = 0; x < width; ++x)
            changed[y * width + x] = memcmp(before + x * bytes, after + x * bytes, size_t(bytes)) ? '\1' : '\0';
    }
    combineSelection(canvas(), changed, button, modifiers);
    emit updateRequested();
}

FloodFillTool::FloodFillTool(ImageCanvas *canvas, QObject *parent)
    : PickerTool(canvas, parent)
{
}

FloodFillTool::~FloodFillTool() = default;

QString FloodFillTool::label() const
{
    return tr("Paint bucket");
}

const char *FloodFillTool::actionName() const
{
    return "spr_tool_paintbucket";
}

void FloodFillTool::setContiguous(bool contiguous)
{
    if (contiguous == m_contiguous)
        return;
    m_contiguous = contiguous;
    emit contiguousChanged(contiguous);
}

QWidget *FloodFillTool::createToolBar(QWidget *parent)
{
    QCheckBox *box = contiguousBox(m_contiguous, parent);
    connect(box, &QCheckBox::toggled, this, &FloodFillTool::setContiguous);
    connect(this, &FloodFillTool::contiguousChanged, box, &QCheckBox::setChecked);
    return box;
}

void FloodFillTool::mousePress(const QPoint &pixel, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    ImageTool::mousePress(pixel, button, modifiers);
    if (button != Qt::LeftButton)
        return;
    LayerStroke stroke(canvas());
    if (!stroke.begin() || !stroke.layer()->image().valid(pixel))
        return;
    ImagePainter *painter = canvas()->painter();
    // The fill over every pixel of a colour doesn't look at the protection itself; a fill
    // of the protected index is refused here for both kinds.
    const bool *protect = painter->protectFirst();
    if (protect && *protect && painter->pixel(pixel.x(), pixel.y()) < 1)
        return;
    painter->floodFill(pixel, m_contiguous);
    stroke.commit(label());
    emit updateRequested();
}

} // namespace Ovra
