#pragma once

#include "editors/code/snippet.h"

#include <QWidget>

class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QSpinBox;

namespace Ovra {

// The editor of one field in the form of a snippet. Its object name is the field's name.
class OVRA_EXPORT SnipField : public QWidget
{
    Q_OBJECT
public:
    ~SnipField() override;

    // The editor that fits the field's type: a combo box for "items", a plain editor else.
    // Titles are translated under the snippet's name.
    static SnipField *create(const SnipFieldInfo &info, const QString &snippetName, QWidget *parent = nullptr);

    const SnipFieldInfo &info() const { return m_info; }
    QString name() const { return m_info.name; }
    // The text that replaces the field's name in the code.
    virtual QString value() const = 0;
    // The widget that takes the input, for the form's label and for the focus.
    virtual QWidget *editor() const = 0;

signals:
    void valueChanged();

protected:
    SnipField(const SnipFieldInfo &info, QWidget *parent);

private:
    SnipFieldInfo m_info;
};

// "string", "int" and "float": a line editor, or a spin box for the numbers. An unknown
// type takes the line editor.
class OVRA_EXPORT RegularSnipField : public SnipField
{
    Q_OBJECT
public:
    explicit RegularSnipField(const SnipFieldInfo &info, QWidget *parent = nullptr);
    ~RegularSnipField() override;

    QString value() const override;
    QWidget *editor() const override;

private:
    QLineEdit *m_line = nullptr;
    QSpinBox *m_int = nullptr;
    QDoubleSpinBox *m_float = nullptr;
};

// "items": one of the field's values, chosen by its title.
class OVRA_EXPORT ComboSnipField : public SnipField
{
    Q_OBJECT
public:
    ComboSnipField(const SnipFieldInfo &info, const QString &snippetName, QWidget *parent = nullptr);
    ~ComboSnipField() override;

    QString value() const override;
    QWidget *editor() const override;

private:
    QComboBox *m_combo;
};

} // namespace Ovra
