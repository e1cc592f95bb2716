#pragma once

#include "engine/engineinstances.h"

#include <QMap>
#include <QVariant>

class QWidget;
class QXmlStreamReader;
class QXmlStreamWriter;

namespace Ovra {

class Debugger;
class Emulator;
class Engine;
namespace Script {
class State;
}

// The base of every engine: its installations and its options, kept together in one
// configuration file, "<name>_config.xml" in the host's configuration directory.
class OVRA_EXPORT EnginePrivate : public EngineInstances
{
    Q_OBJECT
public:
    // Reads the configuration at once.
    explicit EnginePrivate(const QString &engineName, QObject *parent = nullptr);
    ~EnginePrivate() override;

    // Adds the engine's page to the host's options dialog.
    virtual void registerCustomOptions(QWidget *page);
    // Adds the engine's own classes to a script state.
    virtual void registerScriptClasses(Script::State &state);
    virtual Debugger *debugger() const;
    virtual Emulator *emulator() const;

    Engine *publicEngine();

    // A missing file is no error; a file that can't be read or parsed is reported to
    // the user, and what was read before the error stays.
    bool load();
    bool load(QXmlStreamReader *reader);
    bool save();
    void save(QXmlStreamWriter *writer) const;

    // The engine's own value when it has the key at all, even an invalid one; else the host's.
    QVariant option(const QString &name, const QVariant &defaultValue = QVariant()) const;
    void setOption(const QString &name, const QVariant &value);
    const QMap<QString, QVariant> &options() const { return m_options; }

private:
    QMap<QString, QVariant> m_options;
};

} // namespace Ovra
