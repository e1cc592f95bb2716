#include "code/animationcode.h"

#include "code/codedocument.h"
#include "code/framecode.h"

namespace Ovra {

AnimationCode::AnimationCode(const QTextBlock &block, CodeNode *previous)
    : ParentCode(Animation, block, previous)
{
    insertRootChild(this);
    adoptFollowing(Frame, Value);
}

AnimationCode::~AnimationCode()
{
    releaseLines();
}

int AnimationCode::lastLine() const
{
    const QTextDocument *text = block().document();
    if (!text)
        return -1;
    for (CodeNode *node = next(); node; node = node->next()) {
        if (node->type() == Group || node->type() == Animation)
            return node->lineNo() - 1;
    }
    return text->lineCount();
}

uint AnimationCode::childCount() const
{
    return frameCount();
}

int AnimationCode::childIndex(const CodeNode *child) const
{
    return listedIndex(m_frames, child);
}

CodeNode *AnimationCode::childAt(uint index) const
{
    return frameAt(index);
}

void AnimationCode::insertChild(CodeNode *child, uint row)
{
    if (child->type() == Frame)
        insertListed(m_frames, child, row);
}

void AnimationCode::removeChild(CodeNode *child)
{
    removeListed(m_frames, child);
}

int AnimationCode::indexOfFrame(const FrameCode *frame) const
{
    return m_frames.indexOf(const_cast<FrameCode *>(frame));
}

void AnimationCode::removeFrame(uint index)
{
    if (FrameCode *frame = frameAt(index))
        frame->remove(true);
}

QString AnimationCode::code() const
{
    return CodeNode::code().trimmed();
}

void AnimationCode::setCode(const QString &text)
{
    if (CodeDocument *owner = document()) {
        QTextCursor cursor = selectAll();
        owner->insertOnCursor(text.trimmed() + QLatin1String("\n\n"), cursor);
    }
}

QStringList AnimationCode::propertyNames() const
{
    return NamedCode::propertyNames() << QStringLiteral("Identifier");
}

} // namespace Ovra
