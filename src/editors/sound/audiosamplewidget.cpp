#include "audiosamplewidget.h"

#include "editors/sound/audiodata.h"
#include "editors/sound/audiotool.h"
#include "editors/sound/audiowaveform.h"
#include "foundation/interface.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace Ovra {

namespace {
constexpr double ZoomStep = 2.0;
constexpr double MaxPixelsPerFrame = 64.0;
} // namespace

AudioSampleWidget::AudioSampleWidget(AudioData *data, QWidget *parent)
    : QWidget(parent)
    , m_data(data)
    , m_waveform(new AudioWaveform(data, this))
    , m_tools(ToolCount + 1, nullptr)
{
    m_tools[1] = new MoveTool(data, m_waveform, this);
    m_tools[2] = new ZoomTool(data, m_waveform, this);
    m_tools[3] = new SelectionTool(data, m_waveform, this);
    m_tools[4] = new SelectionMoveTool(data, m_waveform, this);
    m_tools[5] = new HResizeTool(data, m_waveform, this);
    m_tools[6] = new VResizeTool(data, m_waveform, this);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(64, 48);
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, &AudioSampleWidget::tick);
    connect(m_waveform, &AudioWaveform::changed, this, qOverload<>(&QWidget::update));
    connect(data, &AudioData::selectionChanged, this, qOverload<>(&QWidget::update));
    connect(data, &AudioData::currentSampleChanged, this, qOverload<>(&QWidget::update));
    reconfig();
}

AudioSampleWidget::~AudioSampleWidget() = default;

AudioTool *AudioSampleWidget::tool(int number) const
{
    return number >= 1 && number <= ToolCount ? m_tools[number] : nullptr;
}

void AudioSampleWidget::setCurrentTool(int number)
{
    if (number < 1 || number > ToolCount || number == m_currentTool)
        return;
    m_currentTool = number;
    unsetCursor();
    emit toolChanged(number);
}

void AudioSampleWidget::reconfig()
{
    Interface *host = Interface::instance();
    const QColor fallback(20, 90, 160);
    // The option holds a colour, or its name as text ("#1e6e3c", "darkgreen").
    const QVariant option = host ? host->option(QStringLiteral("sound_wave"), fallback) : QVariant(fallback);
    m_wave = option.userType() == QMetaType::QColor ? option.value<QColor>() : QColor(option.toString());
    if (!m_wave.isValid())
        m_wave = fallback;
    // The rest follows from the wave's colour, so one option keeps the view readable.
    m_background = m_wave.lightness() > 128 ? QColor(24, 24, 28) : QColor(Qt::white);
    m_selection = m_wave;
    m_selection.setAlpha(60);
    m_cursor = QColor::fromHsv((m_wave.hsvHue() + 180) % 360, 220, 220);
    m_waveform->setColors(m_wave, m_background);
}

void AudioSampleWidget::startCursor(uint from, uint to, bool loop)
{
    m_from = from;
    m_to = std::max(to, from);
    m_loop = loop;
    m_elapsedBefore = 0;
    m_clock.start();
    m_data->setCurrentSample(from);
    m_timer.start();
}

void AudioSampleWidget::pauseCursor()
{
    if (!m_timer.isActive())
        return;
    m_elapsedBefore += m_clock.elapsed();
    m_timer.stop();
}

void AudioSampleWidget::resumeCursor()
{
    if (m_timer.isActive())
        return;
    m_clock.start();
    m_timer.start();
}

void AudioSampleWidget::stopCursor()
{
    m_timer.stop();
    m_elapsedBefore = 0;
}

void AudioSampleWidget::tick()
{
    const quint32 rate = m_data->sample.frequency;
    const qint64 ms = m_elapsedBefore + m_clock.elapsed();
    const qint64 played = rate ? ms * rate / 1000 : 0;
    const qint64 length = qint64(m_to) - m_from;
    if (!m_loop && played >= length) {
        m_data->setCurrentSample(m_to);
        stopCursor();
        emit playbackEnded();
        return;
    }
    m_data->setCurrentSample(uint(m_from + (length ? played % length : 0)));
}

void AudioSampleWidget::zoomIn()
{
    m_waveform->setHScale(std::min(MaxPixelsPerFrame, m_waveform->hScale() * ZoomStep));
}

void AudioSampleWidget::zoomOut()
{
    // No further out than the whole sound in a tenth of the view.
    const double least = m_data->sample.samples ? std::max(1, width() / 10) / double(m_data->sample.samples) : 1.0;
    m_waveform->setHScale(std::max(std::min(least, m_waveform->hScale()), m_waveform->hScale() / ZoomStep));
}

void AudioSampleWidget::zoomFit()
{
    if (m_data->sample.samples == 0)
        return;
    m_waveform->setFirstFrame(0);
    m_waveform->setHScale(double(std::max(1, width())) / m_data->sample.samples);
    m_waveform->setVScale(1.0);
}

void AudioSampleWidget::zoomActual()
{
    m_waveform->setHScale(1.0);
    m_waveform->setVScale(1.0);
}

void AudioSampleWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.drawImage(0, 0, m_waveform->picture(size()));
    uint start, end;
    m_data->selection(start, end);
    auto band = [this](uint a, uint b) {
        const int left = std::max(-1, m_waveform->xOf(a));
        const int right = std::min(width() + 1, std::max(m_waveform->xOf(b), left + 1));
        return QRect(QPoint(left, 0), QPoint(right - 1, height() - 1));
    };
    if (start != end)
        painter.fillRect(band(start, end), m_selection);
    uint from, to;
    if (activeTool() && activeTool()->preview(from, to)) {
        painter.setPen(QPen(m_cursor, 1, Qt::DashLine));
        painter.drawRect(band(from, to).adjusted(0, 0, -1, -1));
    }
    const int x = m_waveform->xOf(m_data->currentSample);
    if (x >= 0 && x < width()) {
        painter.setPen(QPen(m_cursor, 2));
        painter.drawLine(x, 0, x, height());
    }
}

void AudioSampleWidget::resizeEvent(QResizeEvent *event)
{
    m_waveform->setViewSize(size());
    QWidget::resizeEvent(event);
}

void AudioSampleWidget::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !activeTool())
        return;
    activeTool()->mousePress(m_waveform->frameAt(event->pos().x()), event->pos());
    update();
}

void AudioSampleWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (!activeTool()) {
        unsetCursor();
        return;
    }
    setCursor(activeTool()->mouseMove(m_waveform->frameAt(event->pos().x()), event->pos()));
    if (activeTool()->isPressed())
        update();
}

void AudioSampleWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !activeTool())
        return;
    activeTool()->mouseRelease(m_waveform->frameAt(event->pos().x()), event->pos());
    update();
}

void AudioSampleWidget::keyPressEvent(QKeyEvent *event)
{
    if (activeTool())
        activeTool()->key(event);
    QWidget::keyPressEvent(event);
}

} // namespace Ovra
