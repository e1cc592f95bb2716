#pragma once

#include "code/codenodefile.h"
#include "project/organizable.h"

#include <QList>
#include <memory>

namespace Ovra {

class AnimationCode;
class AnimationsPrivate;

// The animations of a code document as a list: a model for the organizer and the
// animation editor, and a project file of its own. Every operation edits the text; the
// parse brings the list up to date. The engine's subclass registers the list with its
// document (registerNodeFile(this, CodeNode::Animation, 0)).
class OVRA_EXPORT Animations : public OrganizableObject, public CodeNodeFile
{
    Q_OBJECT

public:
    explicit Animations(CodeDocument *document);
    ~Animations() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    // The display name of each animation; nothing while a change of the code is open,
    // when the list may be half way through an edit.
    QVariant data(const QModelIndex &index, int role) const override;

    QAbstractItemModel *model() override;
    void beginChange() override;
    void endChange() override;
    void insertChild(CodeNode *node, uint index) override;
    void removeChild(CodeNode *node) override;
    void childChanged(CodeNode *node) override;

    // Moves the animation's text; one undo step.
    void move(uint from, uint to) override;
    // By "Identifier": numbers by value, before names, names ignoring case.
    int compare(uint a, uint b) override;

    uint count() const;
    AnimationCode *at(uint index) const;
    const QList<AnimationCode *> &animations() const;
    int indexOf(const AnimationCode *animation) const;
    // From row `from` on, the first animation whose "Identifier" reads as `id`, or -1.
    int find(uint from, const QVariant &id) const;
    uint selected() const { return m_selected; }
    void setSelected(uint index) { m_selected = index; }

    AnimationCode *add(const QString &name);
    AnimationCode *insert(uint index, const QString &name);
    // A copy of the animation right behind it, with `name` as its identifier unless
    // that is empty.
    AnimationCode *duplicate(uint index, const QString &name);
    void remove(uint index);

    // An identifier that no animation of the list has yet.
    virtual QVariant newIdentifier() const = 0;
    // The text of a new animation, with "%1" for its identifier.
    virtual QString animationTemplate() const = 0;

private:
    std::unique_ptr<AnimationsPrivate> d;
    uint m_selected = 0;
};

} // namespace Ovra
