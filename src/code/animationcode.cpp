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
    for (int i = 0; i < m_frames.size(); ++i) {
        if (static_cast<const CodeNode *>(m_frames.at(i)) == child)
            return i;
    }
    return -1;
}

CodeNode *AnimationCode::childAt(uint index) const
{
    return frameAt(index);
}

void AnimationCode::insertChild(CodeNode *child, uint row)
{
    if (child->type() != Frame)
        return;
    if (ParentCode *old = child->parent())
        old->removeChild(child);
    const int at = qMin(int(row), m_frames.size());
    beginInsert(this, at);
    m_frames.insert(at, static_cast<FrameCode *>(child));
    setParentOf(child, this);
    endInsert();
}

void AnimationCode::removeChild(CodeNode *child)
{
    const int row = childIndex(child);
    if (row < 0)
        return;
    beginRemove(this, row);
    m_frames.removeAt(row);
    setParentOf(child, nullptr);
    endRemove();
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
