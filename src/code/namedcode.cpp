#include "code/namedcode.h"

namespace Ovra {

QString NamedCode::name() const
{
    return QString();
}

QString NamedCode::displayName() const
{
    return name();
}

QStringList NamedCode::propertyNames() const
{
    return {QStringLiteral("DisplayName"), QStringLiteral("Name")};
}

QVariant NamedCode::property(const QString &key) const
{
    switch (propertyNames().indexOf(key)) {
    case 0:
        return displayName();
    case 1:
        return name();
    default:
        return QVariant();
    }
}

void NamedCode::setProperty(const QString &key, const QVariant &value)
{
    if (key == QLatin1String("Name"))
        setName(value.toString());
}

} // namespace Ovra
