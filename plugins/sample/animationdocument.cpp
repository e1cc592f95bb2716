#include "animationdocument.h"

#include "sampleanimationcode.h"
#include "sampleformat.h"
#include "sampleparser.h"

#include <QTextBlock>

using namespace Ovra;

AnimationDocument::AnimationDocument(short fileType)
    : CodeDocument(fileType)
    , m_parser(new SampleParser(SampleParser::Animations))
{
    setParser(m_parser.get());
}

// The base's destructor drops the tree and forgets the parser before it clears the
// text, so the parser may go first.
AnimationDocument::~AnimationDocument() = default;

void AnimationDocument::formatLines(int firstBlock, int lastBlock, bool indentOnly)
{
    SampleFormat::formatLines(this, SampleParser::Animations, firstBlock, lastBlock, indentOnly);
}

SampleAnimations::SampleAnimations(CodeDocument *document)
    : Animations(document)
{
    document->registerNodeFile(this, CodeNode::Animation, 0);
    // The registration holds a reference of its own; the one of the creator is ours now.
    document->release();
}

QVariant SampleAnimations::newIdentifier() const
{
    int id = 0;
    while (find(0, id) >= 0)
        ++id;
    return id;
}

QString SampleAnimations::animationTemplate() const
{
    return QStringLiteral("animation %1\n");
}

namespace {

bool isBlank(const QTextBlock &block)
{
    return block.text().trimmed().isEmpty();
}

// Removes a block with its line end (the one before it, for the last block).
void removeBlock(CodeDocument *document, const QTextBlock &block)
{
    QTextCursor cursor(document);
    if (block.next().isValid()) {
        cursor.setPosition(block.position());
        cursor.setPosition(block.next().position(), QTextCursor::KeepAnchor);
    } else {
        cursor.setPosition(block.previous().position() + block.previous().length() - 1);
        cursor.setPosition(block.position() + block.length() - 1, QTextCursor::KeepAnchor);
    }
    document->insertOnCursor(QString(), cursor);
}

bool mergeable(const SampleFrame *first, const SampleFrame *second)
{
    const SampleFrameData &a = first->data();
    const SampleFrameData &b = second->data();
    return a.looksLike(b) && !a.loop && !b.loop && a.identifier.isEmpty() && b.identifier.isEmpty() && a.delay >= 0
        && b.delay >= 0 && !first->hasBoxes() && !second->hasBoxes();
}

} // namespace

int SampleAnimations::optimize()
{
    CodeDocument *owner = document();
    if (!owner)
        return 0;
    const int before = owner->blockCount();
    owner->beginChange();
    for (AnimationCode *animation : animations()) {
        for (uint i = animation->frameCount(); i-- > 1;) {
            auto *first = static_cast<SampleFrame *>(animation->frameAt(i - 1));
            auto *second = static_cast<SampleFrame *>(animation->frameAt(i));
            if (!mergeable(first, second))
                continue;
            SampleFrameData merged = first->data();
            merged.delay += second->data().delay;
            second->remove(false);
            first->write(merged);
        }
        for (uint i = 0; i < animation->frameCount(); ++i) {
            auto *sample = static_cast<SampleFrame *>(animation->frameAt(i));
            if (sample->data().writesDefaults)
                sample->write(sample->data());
        }
    }
    // Blank lines, from the end so that block numbers ahead stay valid. The last block
    // is the empty one behind the final line end, which stays.
    for (QTextBlock block = owner->lastBlock().previous(); block.isValid();) {
        const QTextBlock above = block.previous();
        const bool atEnd = block.next() == owner->lastBlock() && isBlank(block.next());
        if (isBlank(block) && (!above.isValid() || isBlank(above) || atEnd))
            removeBlock(owner, block);
        block = above;
    }
    owner->endChange();
    return before - owner->blockCount();
}
