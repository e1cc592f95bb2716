#include "editors/code/snipfield.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QSpinBox>

#include <limits>

namespace Ovra {

SnipField::SnipField(const SnipFieldInfo &info, QWidget *parent)
    : QWidget(parent)
    , m_info(info)
{
    setObjectName(info.name);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
}

SnipField::~SnipField() = default;

SnipField *SnipField::create(const SnipFieldInfo &info, const QString &snippetName, QWidget *parent)
{
    if (info.type == QLatin1String("items"))
        return new ComboSnipField(info, snippetName, parent);
    return new RegularSnipField(info, parent);
}

RegularSnipField::RegularSnipField(const SnipFieldInfo &info, QWidget *parent)
    : SnipField(info, parent)
{
    QWidget *input = nullptr;
    if (info.type == QLatin1String("int")) {
        m_int = new QSpinBox(this);
        m_int->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
        connect(m_int, QOverload<int>::of(&QSpinBox::valueChanged), this, &SnipField::valueChanged);
        input = m_int;
    } else if (info.type == QLatin1String("float")) {
        m_float = new QDoubleSpinBox(this);
        // Code wants a point for the decimals, whatever the user's locale.
        m_float->setLocale(QLocale::c());
        m_float->setDecimals(4);
        m_float->setRange(-1e9, 1e9);
        connect(m_float, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &SnipField::valueChanged);
        input = m_float;
    } else {
        m_line = new QLineEdit(this);
        connect(m_line, &QLineEdit::textChanged, this, &SnipField::valueChanged);
        input = m_line;
    }
    layout()->addWidget(input);
    setFocusProxy(input);
}

RegularSnipField::~RegularSnipField() = default;

QString RegularSnipField::value() const
{
    if (m_int)
        return QString::number(m_int->value());
    if (m_float)
        return QString::number(m_float->value(), 'g', 15);
    return m_line->text();
}

QWidget *RegularSnipField::editor() const
{
    if (m_int)
        return m_int;
    if (m_float)
        return m_float;
    return m_line;
}

ComboSnipField::ComboSnipField(const SnipFieldInfo &info, const QString &snippetName, QWidget *parent)
    : SnipField(info, parent)
    , m_combo(new QComboBox(this))
{
    for (int i = 0; i < info.values.size(); ++i)
        m_combo->addItem(Snippet::translated(info.valueTitles.value(i, info.values.at(i)), snippetName), info.values.at(i));
    connect(m_combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SnipField::valueChanged);
    layout()->addWidget(m_combo);
    setFocusProxy(m_combo);
}

ComboSnipField::~ComboSnipField() = default;

QString ComboSnipField::value() const
{
    return m_combo->currentData().toString();
}

QWidget *ComboSnipField::editor() const
{
    return m_combo;
}

} // namespace Ovra
