#pragma once

#include "editors/code/snippet.h"

#include <QDialog>

class QComboBox;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace Ovra {

// Edits one field of a snippet: its name, title, type and, for "items", the choices.
class OVRA_EXPORT SnipFieldDlg : public QDialog
{
    Q_OBJECT
public:
    explicit SnipFieldDlg(QWidget *parent = nullptr);
    ~SnipFieldDlg() override;

    void setField(const SnipFieldInfo &field);
    SnipFieldInfo field() const;
    // Names of the other fields of the snippet, which this one may not take.
    void setTakenNames(const QStringList &names);

public slots:
    // Takes the field only when it can be written and read back as it is.
    void accept() override;

private:
    void addItem();
    void removeItem();
    void typeChanged();
    QString problem() const;

    QLineEdit *m_name;
    QLineEdit *m_title;
    QComboBox *m_type;
    QTableWidget *m_items;
    QPushButton *m_addItem;
    QPushButton *m_removeItem;
    QStringList m_taken;
    int m_column = 0;
};

} // namespace Ovra
