#include "editors/code/snipform.h"

#include "editors/code/snipfield.h"

#include <QGridLayout>
#include <QLabel>

namespace Ovra {

SnipForm::SnipForm(QWidget *parent)
    : QWidget(parent)
    , m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(0, 0, 0, 0);
}

SnipForm::~SnipForm() = default;

void SnipForm::setFields(const QVector<SnipFieldInfo> &fields, const QString &snippetName)
{
    qDeleteAll(m_widgets);
    m_widgets.clear();
    m_fields.clear();
    for (int i = 0; i < m_grid->rowCount(); ++i)
        m_grid->setRowStretch(i, 0);

    QVector<int> rows;
    for (const SnipFieldInfo &info : fields) {
        // A column far off would make a form wider than any screen; the file may say anything.
        const int column = qBound(0, info.column, 7);
        if (rows.size() <= column)
            rows.resize(column + 1);
        SnipField *field = SnipField::create(info, snippetName, this);
        const QString title = info.title.isEmpty() ? info.name : Snippet::translated(info.title, snippetName);
        auto *label = new QLabel(title + QLatin1Char(':'), this);
        label->setBuddy(field->editor());
        const int row = rows[column]++;
        m_grid->addWidget(label, row, 2 * column);
        m_grid->addWidget(field, row, 2 * column + 1);
        m_grid->setColumnStretch(2 * column + 1, 1);
        connect(field, &SnipField::valueChanged, this, &SnipForm::valueChanged);
        m_widgets << label << field;
        m_fields << field;
    }
    int last = 0;
    for (int count : qAsConst(rows))
        last = qMax(last, count);
    m_grid->setRowStretch(last, 1);
    if (!m_fields.isEmpty())
        setFocusProxy(m_fields.first());
    else
        setFocusProxy(nullptr);
}

SnipField *SnipForm::field(const QString &name) const
{
    for (SnipField *field : m_fields) {
        if (field->name() == name)
            return field;
    }
    return nullptr;
}

QHash<QString, QString> SnipForm::values() const
{
    QHash<QString, QString> out;
    for (const SnipField *field : m_fields)
        out.insert(field->name(), field->value());
    return out;
}

} // namespace Ovra
