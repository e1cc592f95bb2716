#pragma once

#include "code/namedcode.h"
#include "code/parentcode.h"

#include <QList>

namespace Ovra {

class FrameCode;

// The header of an animation with its frames below it. The syntax of both is the
// engine's; this class keeps the list of frames in step with the text.
class OVRA_EXPORT AnimationCode : public ParentCode, public NamedCode
{
public:
    // Files itself under the root and takes the frames that follow, up to the next
    // header; values on the way lose their group.
    AnimationCode(const QTextBlock &block, CodeNode *previous);
    // Its frames fall to the animation above, if no group stands between; values below
    // it rejoin the group above.
    ~AnimationCode() override;

    int lastLine() const override;

    uint childCount() const override;
    int childIndex(const CodeNode *child) const override;
    CodeNode *childAt(uint index) const override;
    void insertChild(CodeNode *child, uint row) override;
    void removeChild(CodeNode *child) override;

    // The row of the frame the animation returns to after its last one.
    virtual uint loopPoint() const = 0;
    // Writes a new frame into the text at `index` (at the end from frameCount() on) and
    // returns it once parsed, or null.
    virtual FrameCode *insertFrame(uint index) = 0;
    virtual FrameCode *addFrame() = 0;

    const QList<FrameCode *> &frames() const { return m_frames; }
    FrameCode *frameAt(uint index) const { return m_frames.value(int(index)); }
    uint frameCount() const { return uint(m_frames.size()); }
    int indexOfFrame(const FrameCode *frame) const;
    // Removes the frame's text; the parse takes the node away.
    void removeFrame(uint index);

    uint selectedFrame() const { return m_selectedFrame; }
    void setSelectedFrame(uint index) { m_selectedFrame = index; }

    // The whole text of the animation, trimmed, and its replacement.
    QString code() const;
    void setCode(const QString &text);

    // The name properties, then "Identifier", which the engine's subclass answers.
    QStringList propertyNames() const override;

private:
    QList<FrameCode *> m_frames;
    uint m_selectedFrame = 0;
};

} // namespace Ovra
