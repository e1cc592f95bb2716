#pragma once

#include "editors/code/snippet.h"

#include <QWidget>

class QGridLayout;

namespace Ovra {

class SnipField;

// The form of a snippet: a title and an editor for each field, in the field's column.
class OVRA_EXPORT SnipForm : public QWidget
{
    Q_OBJECT
public:
    explicit SnipForm(QWidget *parent = nullptr);
    ~SnipForm() override;

    // Builds the form anew; the values typed before are dropped.
    void setFields(const QVector<SnipFieldInfo> &fields, const QString &snippetName);
    QList<SnipField *> fields() const { return m_fields; }
    SnipField *field(const QString &name) const;
    // The value of each field by its name.
    QHash<QString, QString> values() const;

signals:
    void valueChanged();

private:
    QGridLayout *m_grid;
    QList<QWidget *> m_widgets;
    QList<SnipField *> m_fields;
};

} // namespace Ovra
