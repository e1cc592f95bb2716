#pragma once

// The values a debugger shows, as a tree of two columns, name and value: first the
// scopes of the running program (each with its variables and their members), then the
// variables the user watches.
#include "foundation/treemodel.h"

#include <QList>
#include <QVariant>

namespace Ovra {

class Variable;

class OVRA_EXPORT VariablesModel : public TreeModel
{
    Q_OBJECT
public:
    enum Column { NameColumn = 0, ValueColumn = 1 };

    explicit VariablesModel(QObject *parent = nullptr);
    ~VariablesModel() override;

    // A new scope row, owned by the model; its variables come with addVariable.
    Variable *addScope(const QString &name);
    // A new variable of a scope, or a member of a variable, owned by it.
    Variable *addVariable(Variable *owner, const QString &name, const QVariant &value);
    // Watches a variable that stays its owner's (a debugger's); its row goes when it
    // ends. The model's own variables can't be watched: they have their rows.
    void addWatch(Variable *variable);
    void removeWatch(Variable *variable);
    // Ends the scopes and forgets the watches.
    void clear();

    const QList<Variable *> &scopes() const { return m_scopes; }
    const QList<Variable *> &watches() const { return m_watches; }
    // The variable of an index, or null.
    Variable *variable(const QModelIndex &index) const;
    QModelIndex indexOf(const Variable *variable, int column = NameColumn) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    void follow(Variable *variable);
    int topRow(const Variable *variable) const;

    QList<Variable *> m_scopes;
    QList<Variable *> m_watches;
};

} // namespace Ovra
