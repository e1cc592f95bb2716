#include "testinterface.h"

#include <QAction>
#include <QColor>
#include <QPixmap>
#include <QTextCharFormat>

TestInterface::TestInterface()
    : m_previous(Ovra::Interface::instance())
{
    Ovra::setGlobalInterface(this);
}

TestInterface::~TestInterface()
{
    Ovra::setGlobalInterface(m_previous);
}

QString TestInterface::text(uint id)
{
    return QStringLiteral("host text %1").arg(id);
}

QIcon TestInterface::icon(const QString &name)
{
    iconRequests.append(name);
    // Copies of an icon share its cache key, which tells the tests which one they got.
    QPixmap pixmap(1, 1);
    pixmap.fill(Qt::transparent);
    const QIcon icon(pixmap);
    m_iconNames.insert(icon.cacheKey(), name);
    return icon;
}

QString TestInterface::iconName(const QIcon &icon) const
{
    return m_iconNames.value(icon.cacheKey());
}

QColor TestInterface::color(const QString &, const QColor &defaultColor)
{
    return defaultColor;
}

QTextCharFormat TestInterface::textFormat(const QString &, const QTextCharFormat &defaultFormat)
{
    return defaultFormat;
}

QVariant TestInterface::option(const QString &name, const QVariant &defaultValue)
{
    const QVariant value = options.value(name);
    return value.isValid() ? value : defaultValue;
}

void TestInterface::setOption(const QString &name, const QVariant &value)
{
    optionWrites.append(name);
    if (value.isNull())
        options.remove(name);
    else
        options.insert(name, value);
}

void TestInterface::setStatusText(int field, const QString &text)
{
    statusTexts.insert(field, text);
}

QWidget *TestInterface::addControl(const QString &name, const Ovra::ControlSpec &request)
{
    QVariant payload;
    if (request.kind == Ovra::ActionControlSpec::Kind)
        payload = QVariant::fromValue(static_cast<QObject *>(
            static_cast<const Ovra::ActionControlSpec &>(request).action));
    controlRequests.append({name, payload});
    return nullptr;
}

void TestInterface::registerControl(const QString &name, QObject *object)
{
    controls.insert(name, object);
}

QObject *TestInterface::control(const QString &name)
{
    return controls.value(name);
}
