#pragma once

#include "project/propertyitem.h"

namespace Ovra {

// A node with a name, seen by property editors as "DisplayName" and "Name".
class OVRA_EXPORT NamedCode : public PropertyItem
{
public:
    virtual QString name() const;
    virtual QString displayName() const;
    virtual void setName(const QString &name) = 0;

    QStringList propertyNames() const override;
    QVariant property(const QString &name) const override;
    // Only the name can be set.
    void setProperty(const QString &name, const QVariant &value) override;
};

} // namespace Ovra
