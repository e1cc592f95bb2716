#pragma once

#include "editors/code/snippet.h"

#include <QAbstractTableModel>

namespace Ovra {

// The fields of the snippet in the editor, one row each: name, title and type.
class OVRA_EXPORT SnipFieldsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { NameColumn, TitleColumn, TypeColumn, ColumnCount };

    explicit SnipFieldsModel(QObject *parent = nullptr);
    ~SnipFieldsModel() override;

    const QVector<SnipFieldInfo> &fields() const { return m_fields; }
    void setFields(const QVector<SnipFieldInfo> &fields);
    SnipFieldInfo field(int row) const;
    // The row of the field with the name, or -1.
    int rowOf(const QString &name) const;

    // Out-of-range rows are ignored; append with row == rowCount().
    void insertField(int row, const SnipFieldInfo &field);
    void setField(int row, const SnipFieldInfo &field);
    void removeField(int row);
    // Moves a field one row up (-1) or down (+1); false at the ends.
    bool moveField(int row, int step);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QVector<SnipFieldInfo> m_fields;
};

} // namespace Ovra
