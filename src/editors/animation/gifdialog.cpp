#include "editors/animation/gifdialog.h"

#include "code/animationcode.h"
#include "code/framecode.h"
#include "image/gifimage.h"
#include "image/sprite.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QVBoxLayout>

namespace Ovra {

GIFDialog::GIFDialog(QWidget *parent)
    : QDialog(parent)
    , m_scale(new QDoubleSpinBox(this))
    , m_velocity(new QDoubleSpinBox(this))
    , m_sharedPalette(new QCheckBox(tr("One palette for all frames"), this))
    , m_loop(new QCheckBox(tr("Loop"), this))
{
    setObjectName(QStringLiteral("anim_save_gif"));
    setWindowTitle(tr("GIF Options"));

    // Below a tenth a frame shrinks to nothing; beyond these the file gets huge or the
    // delays fall under the hundredth a GIF can tell.
    m_scale->setObjectName(QStringLiteral("scale"));
    m_scale->setRange(0.1, 16.0);
    m_scale->setSingleStep(0.5);
    m_scale->setDecimals(2);
    m_scale->setValue(1.0);
    m_velocity->setObjectName(QStringLiteral("velocity"));
    m_velocity->setRange(0.1, 10.0);
    m_velocity->setSingleStep(0.25);
    m_velocity->setDecimals(2);
    m_velocity->setValue(1.0);
    m_sharedPalette->setObjectName(QStringLiteral("sharedPalette"));
    m_loop->setObjectName(QStringLiteral("loop"));
    m_loop->setChecked(true);

    auto *fields = new QFormLayout;
    fields->addRow(tr("Scale:"), m_scale);
    fields->addRow(tr("Speed:"), m_velocity);
    fields->addRow(m_sharedPalette);
    fields->addRow(m_loop);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(buttons);
}

GIFDialog::~GIFDialog() = default;

float GIFDialog::scale() const
{
    return float(m_scale->value());
}

void GIFDialog::setScale(float scale)
{
    m_scale->setValue(double(scale));
}

float GIFDialog::velocity() const
{
    return float(m_velocity->value());
}

void GIFDialog::setVelocity(float velocity)
{
    m_velocity->setValue(double(velocity));
}

bool GIFDialog::sharedPalette() const
{
    return m_sharedPalette->isChecked();
}

void GIFDialog::setSharedPalette(bool shared)
{
    m_sharedPalette->setChecked(shared);
}

bool GIFDialog::loop() const
{
    return m_loop->isChecked();
}

void GIFDialog::setLoop(bool loop)
{
    m_loop->setChecked(loop);
}

QVector<AnimImageFrame> GIFDialog::framesOf(const AnimationCode *animation)
{
    QVector<AnimImageFrame> frames;
    if (!animation)
        return frames;
    for (const FrameCode *frame : animation->frames()) {
        AnimImageFrame shown;
        const int delay = frame->delay();
        shown.ticks = qMax(delay, 0);
        if (const Sprite *sprite = frame->sprite()) {
            const quint8 flip = frame->flipFlags();
            const bool horizontal = flip & FrameCode::Horizontal;
            const bool vertical = flip & FrameCode::Vertical;
            QImage picture = sprite->image();
            QPoint axis = sprite->axis();
            if (!picture.isNull() && (horizontal || vertical)) {
                // Mirrored about the axis, as the canvas shows it.
                picture = picture.mirrored(horizontal, vertical);
                if (horizontal)
                    axis.setX(picture.width() - axis.x());
                if (vertical)
                    axis.setY(picture.height() - axis.y());
            }
            // The offset moves the picture away from the axis: the point of the picture
            // that stands on the axis moves the other way.
            shown.image = picture;
            shown.x = axis.x() - frame->offsetX();
            shown.y = axis.y() - frame->offsetY();
        }
        frames.append(shown);
        if (delay < 0)
            break;
    }
    return frames;
}

} // namespace Ovra
