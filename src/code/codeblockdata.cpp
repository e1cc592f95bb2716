#include "code/codeblockdata.h"

#include "code/codedocument_p.h"
#include "code/codenode.h"

namespace Ovra {

CodeBlockData::CodeBlockData(CodeBlockDataPrivate *data)
    : d(data)
{
}

CodeBlockData::~CodeBlockData()
{
    if (d->extras)
        qDeleteAll(d->extras->links);
    // A line removed from the text takes its node and its messages with it. While the
    // whole document goes, the tree has been taken down already.
    if (d->owner && !d->owner->destroying) {
        d->owner->removeLineMessages(this);
        if (CodeNode *node = d->node) {
            d->node = nullptr;
            d->owner->unseenNodeChange = true;
            node->release();
        }
    }
    // While the whole document goes, marks learn of it from their owners instead.
    if (!d->owner || !d->owner->destroying) {
        const QList<CodeMark *> marks = d->extras ? d->extras->marks : QList<CodeMark *>();
        for (CodeMark *mark : marks)
            mark->blockRemoved();
    }
}

CodeNode *CodeBlockData::node() const
{
    return d->node;
}

bool CodeBlockData::isFolded() const
{
    return d->folded;
}

void CodeBlockData::setFolded(bool folded)
{
    d->folded = folded;
}

bool CodeBlockData::isParsed() const
{
    return d->parsed;
}

uint CodeBlockData::foldingIndent() const
{
    return d->foldingIndent;
}

QTextBlock CodeBlockData::block() const
{
    return d->block;
}

namespace {

const CodeBlockExtras &noExtras()
{
    static const CodeBlockExtras none;
    return none;
}

} // namespace

const QList<CodeMark *> &CodeBlockData::marks() const
{
    return (d->extras ? *d->extras : noExtras()).marks;
}

const QList<CodeLink *> &CodeBlockData::links() const
{
    return (d->extras ? *d->extras : noExtras()).links;
}

const QVector<CodeBlockData::SyntaxMessage> &CodeBlockData::syntaxMessages() const
{
    return d->syntaxMessages;
}

const QVector<CodeBlockData::Parenthesis> &CodeBlockData::parenthesis() const
{
    return d->parenthesis;
}

} // namespace Ovra
