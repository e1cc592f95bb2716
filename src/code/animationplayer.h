#pragma once

#include "foundation/global.h"

#include <memory>

namespace Ovra {

class Animations;
class FrameCode;

// Steps through one animation in ticks (60 a second in the editor). A frame with delay
// n is shown for n ticks; after the last frame the animation goes on from its loop
// frame, unless a frame's delay is negative, which holds that frame for ever.
class OVRA_EXPORT AnimationPlayer
{
public:
    AnimationPlayer();
    ~AnimationPlayer();
    AnimationPlayer(const AnimationPlayer &) = delete;
    AnimationPlayer &operator=(const AnimationPlayer &) = delete;

    // Loads animation `index` from the start. A second call for the animation already
    // loaded, without `force`, stops the player instead: the play button's toggle.
    // False when stopped.
    bool change(Animations *animations, int index, bool force);
    // One tick on; the time the tick stood for, or 0 with nothing to play.
    uint tick();
    // Back to the first frame.
    void reset();

    FrameCode *currentFrame() const { return m_currentFrame; }
    FrameCode *nextFrame() const { return m_nextFrame; }
    // Ticks the current frame has been on.
    uint frameTime() const { return m_frameTime; }

    Animations *animations() const;
    int animationIndex() const;
    // Ticks of all frames; -1 when a frame holds for ever.
    int totalTime() const;
    // Ticks before the loop frame.
    int loopTime() const;
    uint time() const;

private:
    struct Private;
    void clear();
    void update();

    FrameCode *m_currentFrame = nullptr;
    FrameCode *m_nextFrame = nullptr;
    uint m_frameTime = 0;
    std::unique_ptr<Private> d;
};

} // namespace Ovra
