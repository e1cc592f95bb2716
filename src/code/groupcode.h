#pragma once

#include "code/namedcode.h"
#include "code/parentcode.h"

#include <QList>

namespace Ovra {

class ValueCode;

// A header line with the values below it. Kinds of group are told apart by subType,
// whose meaning is the engine's.
class OVRA_EXPORT GroupCode : public ParentCode, public NamedCode
{
public:
    // Files itself under the root and adopts the values that follow, up to the next
    // header; frames on the way lose their animation. A header typed back after an edit
    // so takes its children back.
    GroupCode(const QTextBlock &block, CodeNode *previous, uint subType);
    // Its values fall to the group above, if no animation stands between; frames
    // below it rejoin the animation above.
    ~GroupCode() override;

    uint subType() const { return m_subType; }

    int lastLine() const override;

    uint childCount() const override;
    int childIndex(const CodeNode *child) const override;
    CodeNode *childAt(uint index) const override;
    void insertChild(CodeNode *child, uint row) override;
    void removeChild(CodeNode *child) override;
    // Write a new value line at `index` (at the end from valueCount() on) in the
    // engine's syntax, and return the node once parsed, or null.
    virtual ValueCode *insertValue(uint index, const QString &name, const QVariant &value) = 0;
    virtual ValueCode *addValue(const QString &name, const QVariant &value) = 0;

    uint valueCount() const { return uint(m_values.size()); }
    ValueCode *valueAt(uint index) const { return m_values.value(int(index)); }
    const QList<ValueCode *> &values() const { return m_values; }
    // The first value of that name, or null.
    ValueCode *valueByName(const QString &name) const;
    // Its value(), or an invalid variant.
    QVariant value(const QString &name) const;
    // Removes the value's line; the parse takes the node away.
    void removeValue(uint index);

private:
    QList<ValueCode *> m_values;
    uint m_subType;
};

} // namespace Ovra
