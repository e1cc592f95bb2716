#pragma once

// The shortcuts page: every named action of the host with its shortcut, a filter, and a
// key sequence field to change the chosen one. A sequence another action already has is
// refused with a message naming that action, so that no key does two things at once.
#include "optionspages.h"

#include <QHash>
#include <QKeySequence>
#include <QSet>

class QAction;
class QKeySequenceEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

class ShortcutsEditor : public OptionsPage
{
    Q_OBJECT
public:
    explicit ShortcutsEditor(StudioHost *host, QWidget *parent = nullptr);

    void load() override;
    void apply() override;
    void restoreDefaults() override;

    // The shortcut the page shows for an action, not yet the host's.
    QKeySequence pendingShortcut(const QString &name) const { return m_pending.value(name); }
    // The message of the last refusal or change, as the page shows it.
    QString message() const;

private:
    void fillTable();
    void updateRow(int row);
    void filter(const QString &text);
    void selectionChanged();
    void commit();
    void resetCurrent();
    void clearCurrent();
    // Sets the pending sequence of one action; false, with a message, when another
    // action has it already.
    bool assign(const QString &name, const QKeySequence &sequence);
    QString currentName() const;
    QString textOf(const QString &name) const;
    void showMessage(const QString &text, bool error);

    QList<QAction *> m_actions;
    QHash<QString, QKeySequence> m_pending;
    QSet<QString> m_reset;

    QLineEdit *m_filter;
    QTableWidget *m_table;
    QKeySequenceEdit *m_edit;
    QPushButton *m_clear;
    QPushButton *m_resetOne;
    QLabel *m_message;
};
