#include "shortcutseditor.h"

#include "studiohost.h"

#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

enum Column { TextColumn, NameColumn, ShortcutColumn, ColumnCount };

// A menu text without its mnemonic marks; a doubled mark stands for the character itself.
QString plainText(const QString &text)
{
    QString plain;
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('&')) {
            if (i + 1 < text.size() && text.at(i + 1) == QLatin1Char('&'))
                plain += text.at(++i);
            continue;
        }
        plain += text.at(i);
    }
    return plain;
}

} // namespace

ShortcutsEditor::ShortcutsEditor(StudioHost *host, QWidget *parent)
    : OptionsPage(host, tr("Shortcuts"), parent)
    , m_filter(new QLineEdit(this))
    , m_table(new QTableWidget(this))
    , m_edit(new QKeySequenceEdit(this))
    , m_clear(new QPushButton(tr("Clear"), this))
    , m_resetOne(new QPushButton(tr("Reset"), this))
    , m_message(new QLabel(this))
{
    m_filter->setObjectName(QStringLiteral("filter"));
    m_filter->setPlaceholderText(tr("Filter by action, name or shortcut"));
    m_filter->setClearButtonEnabled(true);
    m_table->setObjectName(QStringLiteral("shortcuts"));
    m_table->setColumnCount(ColumnCount);
    m_table->setHorizontalHeaderLabels({tr("Action"), tr("Name"), tr("Shortcut")});
    m_table->verticalHeader()->hide();
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->horizontalHeader()->setSectionResizeMode(TextColumn, QHeaderView::Stretch);
    m_edit->setObjectName(QStringLiteral("sequence"));
    m_clear->setObjectName(QStringLiteral("clear_shortcut"));
    m_resetOne->setObjectName(QStringLiteral("reset_shortcut"));
    auto *resetAll = new QPushButton(tr("Reset all"), this);
    resetAll->setObjectName(QStringLiteral("reset_all_shortcuts"));
    m_message->setObjectName(QStringLiteral("message"));
    m_message->setWordWrap(true);

    auto *editRow = new QHBoxLayout;
    editRow->addWidget(new QLabel(tr("Shortcut:"), this));
    editRow->addWidget(m_edit, 1);
    editRow->addWidget(m_clear);
    editRow->addWidget(m_resetOne);
    editRow->addWidget(resetAll);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_filter);
    layout->addWidget(m_table, 1);
    layout->addLayout(editRow);
    layout->addWidget(m_message);

    connect(m_filter, &QLineEdit::textChanged, this, &ShortcutsEditor::filter);
    connect(m_table, &QTableWidget::itemSelectionChanged, this, &ShortcutsEditor::selectionChanged);
    connect(m_edit, &QKeySequenceEdit::editingFinished, this, &ShortcutsEditor::commit);
    connect(m_clear, &QPushButton::clicked, this, &ShortcutsEditor::clearCurrent);
    connect(m_resetOne, &QPushButton::clicked, this, &ShortcutsEditor::resetCurrent);
    connect(resetAll, &QPushButton::clicked, this, &ShortcutsEditor::restoreDefaults);
}

void ShortcutsEditor::load()
{
    m_actions.clear();
    m_pending.clear();
    m_reset.clear();
    // Only actions with a name can keep a shortcut in the settings.
    const QList<QAction *> actions = host()->actions();
    for (QAction *action : actions) {
        if (action && !action->objectName().isEmpty() && !m_pending.contains(action->objectName())) {
            m_actions.append(action);
            m_pending.insert(action->objectName(), action->shortcut());
        }
    }
    std::stable_sort(m_actions.begin(), m_actions.end(), [](QAction *a, QAction *b) {
        return plainText(a->text()).compare(plainText(b->text()), Qt::CaseInsensitive) < 0;
    });
    fillTable();
    showMessage(QString(), false);
}

void ShortcutsEditor::fillTable()
{
    m_table->clearContents();
    m_table->setRowCount(m_actions.size());
    for (int row = 0; row < m_actions.size(); ++row) {
        QAction *action = m_actions.at(row);
        auto *text = new QTableWidgetItem(action->icon(), plainText(action->text()));
        text->setData(Qt::UserRole, action->objectName());
        m_table->setItem(row, TextColumn, text);
        m_table->setItem(row, NameColumn, new QTableWidgetItem(action->objectName()));
        m_table->setItem(row, ShortcutColumn, new QTableWidgetItem);
    }
    for (int row = 0; row < m_actions.size(); ++row)
        updateRow(row);
    m_table->resizeColumnToContents(NameColumn);
    m_table->resizeColumnToContents(ShortcutColumn);
    filter(m_filter->text());
    selectionChanged();
}

void ShortcutsEditor::updateRow(int row)
{
    const QString name = m_actions.at(row)->objectName();
    const QKeySequence sequence = m_pending.value(name);
    QTableWidgetItem *item = m_table->item(row, ShortcutColumn);
    item->setText(sequence.toString(QKeySequence::NativeText));
    // Two actions on one sequence (from a settings file edited by hand, or defaults that
    // clash) stay visible until the user settles them.
    QStringList others;
    if (!sequence.isEmpty()) {
        for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it) {
            if (it.key() != name && it.value() == sequence)
                others.append(textOf(it.key()));
        }
    }
    item->setForeground(others.isEmpty() ? m_table->palette().brush(QPalette::Text) : QBrush(Qt::red));
    item->setToolTip(others.isEmpty() ? QString() : tr("Also the shortcut of: %1").arg(others.join(QStringLiteral(", "))));
}

void ShortcutsEditor::filter(const QString &text)
{
    const QString wanted = text.trimmed();
    for (int row = 0; row < m_table->rowCount(); ++row) {
        bool shown = wanted.isEmpty();
        for (int column = 0; column < ColumnCount && !shown; ++column)
            shown = m_table->item(row, column)->text().contains(wanted, Qt::CaseInsensitive);
        m_table->setRowHidden(row, !shown);
    }
}

QString ShortcutsEditor::currentName() const
{
    const QList<QTableWidgetItem *> selected = m_table->selectedItems();
    return selected.isEmpty() ? QString() : m_table->item(selected.first()->row(), TextColumn)->data(Qt::UserRole).toString();
}

QString ShortcutsEditor::textOf(const QString &name) const
{
    for (QAction *action : m_actions) {
        if (action->objectName() == name)
            return plainText(action->text());
    }
    return name;
}

void ShortcutsEditor::selectionChanged()
{
    const QString name = currentName();
    m_edit->setEnabled(!name.isEmpty());
    m_clear->setEnabled(!name.isEmpty());
    m_resetOne->setEnabled(!name.isEmpty());
    m_edit->setKeySequence(m_pending.value(name));
}

bool ShortcutsEditor::assign(const QString &name, const QKeySequence &sequence)
{
    if (!sequence.isEmpty()) {
        for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it) {
            if (it.key() != name && it.value() == sequence) {
                showMessage(tr("%1 is already the shortcut of \"%2\". Give that action another shortcut "
                               "or clear it first.")
                                .arg(sequence.toString(QKeySequence::NativeText), textOf(it.key())),
                            true);
                return false;
            }
        }
    }
    const QKeySequence before = m_pending.value(name);
    m_pending.insert(name, sequence);
    for (int row = 0; row < m_actions.size(); ++row) {
        const QKeySequence rowSequence = m_pending.value(m_actions.at(row)->objectName());
        if (m_actions.at(row)->objectName() == name || rowSequence == before || rowSequence == sequence)
            updateRow(row);
    }
    return true;
}

void ShortcutsEditor::commit()
{
    const QString name = currentName();
    if (name.isEmpty())
        return;
    const QKeySequence sequence = m_edit->keySequence();
    if (sequence == m_pending.value(name))
        return;
    if (assign(name, sequence)) {
        m_reset.remove(name);
        showMessage(tr("\"%1\" now has the shortcut %2.").arg(textOf(name), sequence.toString(QKeySequence::NativeText)),
                    false);
    } else {
        m_edit->setKeySequence(m_pending.value(name));
    }
}

void ShortcutsEditor::clearCurrent()
{
    const QString name = currentName();
    if (name.isEmpty())
        return;
    assign(name, QKeySequence());
    m_reset.remove(name);
    m_edit->setKeySequence(QKeySequence());
    showMessage(tr("\"%1\" has no shortcut now.").arg(textOf(name)), false);
}

void ShortcutsEditor::resetCurrent()
{
    const QString name = currentName();
    if (name.isEmpty())
        return;
    if (!assign(name, host()->defaultShortcut(name)))
        return;
    m_reset.insert(name);
    m_edit->setKeySequence(m_pending.value(name));
    showMessage(tr("\"%1\" has its first shortcut again.").arg(textOf(name)), false);
}

void ShortcutsEditor::restoreDefaults()
{
    for (QAction *action : qAsConst(m_actions)) {
        m_pending.insert(action->objectName(), host()->defaultShortcut(action->objectName()));
        m_reset.insert(action->objectName());
    }
    for (int row = 0; row < m_actions.size(); ++row)
        updateRow(row);
    m_edit->setKeySequence(m_pending.value(currentName()));
    showMessage(tr("Every action has its first shortcut again."), false);
}

void ShortcutsEditor::apply()
{
    for (QAction *action : qAsConst(m_actions)) {
        const QString name = action->objectName();
        const QKeySequence sequence = m_pending.value(name);
        if (m_reset.contains(name) && sequence == host()->defaultShortcut(name))
            host()->resetShortcut(name);
        else if (sequence != action->shortcut())
            host()->setShortcut(name, sequence);
    }
    m_reset.clear();
}

QString ShortcutsEditor::message() const
{
    return m_message->text();
}

void ShortcutsEditor::showMessage(const QString &text, bool error)
{
    m_message->setText(text);
    m_message->setStyleSheet(error ? QStringLiteral("QLabel { color: #c00000; font-weight: bold; }") : QString());
}
