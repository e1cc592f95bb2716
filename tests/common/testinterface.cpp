#include "testinterface.h"

#include <QAction>
#include <QColor>
#include <QMenu>
#include <QPixmap>
#include <QTextCharFormat>

TestInterface::TestInterface()
    : m_previous(Ovra::Interface::instance())
    , m_actionOwner(new QObject)
{
    Ovra::setGlobalInterface(this);
}

TestInterface::~TestInterface()
{
    qDeleteAll(m_menus);
    Ovra::setGlobalInterface(m_previous);
}

QMenu *TestInterface::menu(const QString &name)
{
    QMenu *&menu = m_menus[name];
    if (!menu) {
        menu = new QMenu(name);
        menu->setObjectName(name);
    }
    return menu;
}

QAction *TestInterface::createAction(Ovra::ActionScope scope, const QString &name, Ovra::Translator *translator,
                                     uint textId, bool checkable, QObject *receiver, const char *slot,
                                     const char *enablingSignal, bool checked)
{
    auto *action = new QAction(m_actionOwner.get());
    action->setObjectName(name);
    if (translator) {
        action->setText(translator->text(textId));
        action->setToolTip(translator->tip(textId));
    }
    action->setIcon(icon(name));
    action->setCheckable(checkable);
    action->setChecked(checked);
    if (receiver && slot)
        QObject::connect(action, checkable ? SIGNAL(toggled(bool)) : SIGNAL(triggered()), receiver, slot);
    if (receiver && enablingSignal)
        QObject::connect(receiver, enablingSignal, action, SLOT(setEnabled(bool)));
    actionScopes.insert(name, QStringLiteral("%1/%2").arg(QString::fromLatin1(scope.scope)).arg(scope.index));
    delete m_actions.value(name);
    m_actions.insert(name, action);
    return action;
}

QAction *TestInterface::action(const char *name)
{
    return m_actions.value(QString::fromLatin1(name));
}

QAction *TestInterface::editorAction(const QString &name, Ovra::Translator *translator, uint textId)
{
    if (QAction *known = m_actions.value(name))
        return known;
    auto *action = new QAction(m_actionOwner.get());
    action->setObjectName(name);
    if (translator)
        action->setText(translator->text(textId));
    m_actions.insert(name, action);
    return action;
}

void TestInterface::activateEditor(Ovra::Editor *editor)
{
    activations.append(editor);
    if (editor == activeEditor)
        return;
    if (activeEditor)
        activeEditor->deactivate();
    activeEditor = editor;
    if (editor)
        editor->activate();
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
    if (request.kind == Ovra::ItemSelectorControlSpec::Kind) {
        const auto &selector = static_cast<const Ovra::ItemSelectorControlSpec &>(request);
        payload = QVariant::fromValue(selector.receiver);
        selectorSlots.insert(name, QByteArray(selector.slot ? selector.slot : ""));
    }
    controlRequests.append({name, payload});
    return controlWidgets.value(name);
}

void TestInterface::registerControl(const QString &name, QObject *object)
{
    controls.insert(name, object);
}

QObject *TestInterface::control(const QString &name)
{
    return controls.value(name);
}
