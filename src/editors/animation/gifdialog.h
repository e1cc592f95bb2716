#pragma once

#include "foundation/global.h"

#include <QDialog>
#include <QVector>

class QCheckBox;
class QDoubleSpinBox;

namespace Ovra {

class AnimationCode;
struct AnimImageFrame;

// The choices of a GIF export: the size, the speed, one palette for all frames, and
// whether the file plays over and over.
class OVRA_EXPORT GIFDialog : public QDialog
{
    Q_OBJECT
public:
    explicit GIFDialog(QWidget *parent = nullptr);
    ~GIFDialog() override;

    float scale() const;
    void setScale(float scale);
    // Playback speed: 2 plays twice as fast.
    float velocity() const;
    void setVelocity(float velocity);
    bool sharedPalette() const;
    void setSharedPalette(bool shared);
    bool loop() const;
    void setLoop(bool loop);

    // The frames of an animation as the GIF writer takes them: each frame's sprite picture,
    // mirrored as the frame flips it, its axis moved by the frame's offset, and the delay.
    // A frame without a sprite stays a null picture. A frame that lasts for ever ends the
    // list, as nothing behind it ever shows.
    static QVector<AnimImageFrame> framesOf(const AnimationCode *animation);

private:
    QDoubleSpinBox *m_scale;
    QDoubleSpinBox *m_velocity;
    QCheckBox *m_sharedPalette;
    QCheckBox *m_loop;
};

} // namespace Ovra
