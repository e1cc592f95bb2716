#pragma once

#include "foundation/global.h"

#include <QStringList>
#include <QVariant>

namespace Ovra {

// Something with named properties: animation frames, contact boxes, sprites,
// palettes. Searches and property editors work through it.
class OVRA_EXPORT PropertyItem
{
public:
    virtual ~PropertyItem() = default;
    virtual QStringList propertyNames() const = 0;
    virtual QVariant property(const QString &name) const = 0;
    virtual void setProperty(const QString &name, const QVariant &value) = 0;
};

} // namespace Ovra
