#pragma once

#include "foundation/global.h"

#include <QAbstractListModel>
#include <QList>
#include <QString>

namespace Ovra {

// The installations of an engine that the user has set up (a game's executable with
// its parameters and icon), as a list model for the options dialog.
class OVRA_EXPORT EngineInstances : public QAbstractListModel
{
    Q_OBJECT
public:
    struct Info
    {
        QString name;
        QString exe;
        QString params;
        QString icon;
    };

    explicit EngineInstances(const QString &engineName, QObject *parent = nullptr);
    ~EngineInstances() override;

    int count() const;
    Info at(int index) const;
    void add(const QString &name, const QString &exe, const QString &params, const QString &icon);
    void edit(int index, const QString &name, const QString &exe, const QString &params,
              const QString &icon);
    void remove(int index);
    void move(int from, int to);
    void clear();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    // "/engines/<name>": the engine's place below the host's data directories.
    QString path() const { return m_path; }
    // "<config>/<name>_config.xml", or empty without a host.
    QString configFileName() const { return m_configFileName; }
    // The user's and the installed data of the engine; the current directory stands in
    // for the host's directories when there is no host.
    QString userDataDirectory() const;
    QString installDirectory() const;

private:
    QString m_path;
    QString m_configFileName;
    QList<Info *> m_instances;
};

} // namespace Ovra
