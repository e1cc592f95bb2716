#include "code/animations.h"

#include "code/animationcode.h"
#include "code/codedocument.h"

namespace Ovra {

class AnimationsPrivate
{
public:
    QList<AnimationCode *> animations;
    // While a move runs, its removal and insertion are one announced move of a row.
    bool moving = false;
};

namespace {

// Text that ends with a line end, so that what follows starts a line of its own.
QString asLines(QString text)
{
    if (!text.isEmpty() && !text.endsWith(QLatin1Char('\n')))
        text += QLatin1Char('\n');
    return text;
}

QString selectedText(const QTextCursor &cursor)
{
    return cursor.selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

} // namespace

Animations::Animations(CodeDocument *document)
    : CodeNodeFile(document)
    , d(new AnimationsPrivate)
{
    connect(document, &QTextDocument::modificationChanged, this, &OrganizableObject::changed);
}

Animations::~Animations() = default;

int Animations::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->animations.size();
}

QVariant Animations::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid() || index.row() >= d->animations.size())
        return QVariant();
    if (document() && document()->isCodeBeingChanged())
        return QVariant();
    return d->animations.at(index.row())->displayName();
}

QAbstractItemModel *Animations::model()
{
    return this;
}

void Animations::beginChange()
{
    CodeNodeFile::beginChange();
}

void Animations::endChange()
{
    CodeNodeFile::endChange();
}

void Animations::insertChild(CodeNode *node, uint index)
{
    if (node->type() != CodeNode::Animation)
        return;
    auto *animation = static_cast<AnimationCode *>(node);
    const int row = qMin(int(index), d->animations.size());
    if (!d->moving)
        beginInsertRows(QModelIndex(), row, row);
    d->animations.insert(row, animation);
    if (!d->moving)
        endInsertRows();
}

void Animations::removeChild(CodeNode *node)
{
    // The node may be half way through its destructor: it is compared, never cast.
    // From the end: a document ends its nodes from the last one.
    int row = -1;
    for (int i = d->animations.size() - 1; i >= 0 && row < 0; --i) {
        if (static_cast<CodeNode *>(d->animations.at(i)) == node)
            row = i;
    }
    if (row < 0)
        return;
    if (!d->moving)
        beginRemoveRows(QModelIndex(), row, row);
    d->animations.removeAt(row);
    if (!d->moving)
        endRemoveRows();
}

void Animations::childChanged(CodeNode *node)
{
    // From the end: a document ends its nodes from the last one.
    int row = -1;
    for (int i = d->animations.size() - 1; i >= 0 && row < 0; --i) {
        if (static_cast<CodeNode *>(d->animations.at(i)) == node)
            row = i;
    }
    if (row >= 0 && !d->moving)
        emit dataChanged(index(row), index(row));
}

void Animations::move(uint from, uint to)
{
    const uint total = count();
    if (from >= total || to >= total || from == to || !document())
        return;
    AnimationCode *animation = at(from);
    // The animation's text without the line end of its last line; an animation at the
    // very end of a file that lacks a final line end has none to drop.
    QTextCursor all = animation->selectAll();
    QString text = selectedText(all);
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(1);

    d->moving = true;
    beginMoveRows(QModelIndex(), int(from), int(from), QModelIndex(), int(to > from ? to + 1 : to));
    beginChange();
    d->animations.removeAt(int(from));
    animation->remove(true);
    if (to == count())
        document()->insertAfter(count() ? at(to - 1) : nullptr, text, false);
    else
        document()->insertBefore(at(to), text, false);
    endChange();
    endMoveRows();
    d->moving = false;
}

int Animations::compare(uint a, uint b)
{
    const QString first = at(a) ? at(a)->property(QStringLiteral("Identifier")).toString() : QString();
    const QString second = at(b) ? at(b)->property(QStringLiteral("Identifier")).toString() : QString();
    bool firstNumber = false;
    bool secondNumber = false;
    const int x = first.toInt(&firstNumber, 10);
    const int y = second.toInt(&secondNumber, 10);
    if (firstNumber && secondNumber)
        return x < y ? -1 : 1;
    if (!firstNumber && !secondNumber)
        return QString::compare(first, second, Qt::CaseInsensitive) < 0 ? -1 : 1;
    return 1;
}

uint Animations::count() const
{
    return uint(d->animations.size());
}

AnimationCode *Animations::at(uint index) const
{
    return d->animations.value(int(index));
}

const QList<AnimationCode *> &Animations::animations() const
{
    return d->animations;
}

int Animations::indexOf(const AnimationCode *animation) const
{
    return d->animations.indexOf(const_cast<AnimationCode *>(animation));
}

int Animations::find(uint from, const QVariant &id) const
{
    const QString wanted = id.toString();
    for (int row = int(from); row < d->animations.size(); ++row) {
        if (d->animations.at(row)->property(QStringLiteral("Identifier")).toString() == wanted)
            return row;
    }
    return -1;
}

AnimationCode *Animations::add(const QString &name)
{
    CodeDocument *owner = document();
    if (!owner)
        return nullptr;
    // A last line without a line end would run into the new animation's first.
    const QString text = owner->toString();
    if (!text.isEmpty() && !text.endsWith(QLatin1Char('\n')))
        owner->insert(QStringLiteral("\n"));
    owner->insert(animationTemplate().arg(name));
    return count() ? at(count() - 1) : nullptr;
}

AnimationCode *Animations::insert(uint index, const QString &name)
{
    if (index >= count())
        return add(name);
    document()->insertBefore(at(index), animationTemplate().arg(name), false);
    return at(index);
}

AnimationCode *Animations::duplicate(uint index, const QString &name)
{
    AnimationCode *animation = at(index);
    if (!animation || !document())
        return nullptr;
    QString text = selectedText(animation->selectAll());
    if (!name.isEmpty()) {
        const QString pattern = animationTemplate().trimmed();
        const QString old = animation->property(QStringLiteral("Identifier")).toString();
        text.replace(pattern.arg(old), pattern.arg(name), Qt::CaseInsensitive);
    }
    CodeDocument *owner = document();
    QTextCursor cursor(owner);
    if (CodeNode *next = animation->next(CodeNode::Animation, 0)) {
        cursor.setPosition(owner->findBlockByNumber(next->firstLine()).position());
        owner->insertOnCursor(asLines(text), cursor);
    } else {
        cursor.movePosition(QTextCursor::End);
        const QString all = owner->toString();
        owner->insertOnCursor((all.isEmpty() || all.endsWith(QLatin1Char('\n')) ? QString() : QStringLiteral("\n")) + text,
                              cursor);
    }
    return at(index + 1);
}

void Animations::remove(uint index)
{
    if (AnimationCode *animation = at(index))
        animation->remove(true);
}

} // namespace Ovra
