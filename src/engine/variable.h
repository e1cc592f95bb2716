#pragma once

// One observed value of a running program: a name, a value, and the members of a
// compound value below it.
#include "foundation/global.h"

#include <QList>
#include <QObject>
#include <QVariant>

namespace Ovra {

class OVRA_EXPORT Variable : public QObject
{
    Q_OBJECT
public:
    // A member is owned by the variable it belongs to.
    explicit Variable(const QString &name, const QVariant &value = QVariant(), Variable *owner = nullptr);
    // Leaves its owner's members, and tells ending() while it is still a variable.
    ~Variable() override;

    QString name() const { return m_name; }
    QVariant value() const { return m_value; }
    // Tells valueChanged() when the value is another.
    void setValue(const QVariant &value);

    Variable *owner() const { return m_owner; }
    const QList<Variable *> &members() const { return m_members; }
    int indexOf(const Variable *member) const { return m_members.indexOf(const_cast<Variable *>(member)); }

signals:
    void valueChanged();
    // From the destructor, before the variable's members end; views drop its rows here
    // (QObject::destroyed comes too late: the variable is no more than a QObject then).
    void ending(Ovra::Variable *variable);

private:
    QString m_name;
    QVariant m_value;
    Variable *m_owner;
    QList<Variable *> m_members;
};

} // namespace Ovra
