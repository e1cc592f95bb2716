// Find and replace across the files of the open project: every hit listed as file and
// line, a double click shows it in its editor, and the replacements go through the files
// themselves, so that each edit is one step of their undo.
#include "mainwindow.h"
#include "mainwindow_p.h"
#include "findreplacedialog.h"

#include "studiohost.h"

#include "editors/editor.h"
#include "project/project.h"
#include "project/projectfile.h"
#include "project/regexp.h"
#include "project/searchableprojectfile.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Ovra;

FindReplaceDialog::FindReplaceDialog(MainWindow *window)
    : QDialog(window)
    , m_window(window)
{
    setObjectName(QStringLiteral("studio_find_dialog"));
    setWindowTitle(tr("Find and replace in the project"));
    m_find = new QLineEdit(this);
    m_find->setObjectName(QStringLiteral("find_text"));
    m_replace = new QLineEdit(this);
    m_replace->setObjectName(QStringLiteral("replace_text"));
    m_replace->setPlaceholderText(tr("%1, %2... stand for the groups of a regular expression"));
    m_regExp = new QCheckBox(tr("Regular expression"), this);
    m_regExp->setObjectName(QStringLiteral("find_regexp"));
    m_case = new QCheckBox(tr("Match case"), this);
    m_case->setObjectName(QStringLiteral("find_case"));
    m_words = new QCheckBox(tr("Whole words"), this);
    m_words->setObjectName(QStringLiteral("find_words"));
    m_hits = new QTreeWidget(this);
    m_hits->setObjectName(QStringLiteral("find_hits"));
    m_hits->setColumnCount(2);
    m_hits->setHeaderLabels({tr("Where"), tr("Text")});
    m_hits->setRootIsDecorated(false);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("find_status"));

    auto *buttons = new QDialogButtonBox(this);
    m_findButton = buttons->addButton(tr("Find all"), QDialogButtonBox::ActionRole);
    m_findButton->setObjectName(QStringLiteral("find_all"));
    m_findButton->setDefault(true);
    m_replaceButton = buttons->addButton(tr("Replace"), QDialogButtonBox::ActionRole);
    m_replaceButton->setObjectName(QStringLiteral("replace_one"));
    m_replaceAllButton = buttons->addButton(tr("Replace all"), QDialogButtonBox::ActionRole);
    m_replaceAllButton->setObjectName(QStringLiteral("replace_all"));
    QPushButton *close = buttons->addButton(QDialogButtonBox::Close);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_findButton, &QPushButton::clicked, this, &FindReplaceDialog::findAll);
    connect(m_replaceButton, &QPushButton::clicked, this, &FindReplaceDialog::replaceOne);
    connect(m_replaceAllButton, &QPushButton::clicked, this, &FindReplaceDialog::replaceAll);
    connect(m_hits, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *item) { showHit(m_hits->indexOfTopLevelItem(item)); });

    auto *form = new QFormLayout;
    form->addRow(tr("Find:"), m_find);
    form->addRow(tr("Replace with:"), m_replace);
    auto *flags = new QHBoxLayout;
    flags->addWidget(m_regExp);
    flags->addWidget(m_case);
    flags->addWidget(m_words);
    flags->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(flags);
    layout->addWidget(m_hits, 1);
    layout->addWidget(m_status);
    layout->addWidget(buttons);
    resize(620, 420);
    updateButtons();
}

RegExp FindReplaceDialog::expression() const
{
    QString pattern = m_regExp->isChecked() ? m_find->text() : QRegularExpression::escape(m_find->text());
    if (m_words->isChecked())
        pattern = QStringLiteral("\\b(?:%1)\\b").arg(pattern);
    QRegularExpression::PatternOptions options = QRegularExpression::UseUnicodePropertiesOption;
    if (!m_case->isChecked())
        options |= QRegularExpression::CaseInsensitiveOption;
    return RegExp(QRegularExpression(pattern, options));
}

void FindReplaceDialog::findAll()
{
    m_results.clear();
    m_hits->clear();
    Project *project = m_window->project();
    RegExp pattern = expression();
    if (m_find->text().isEmpty() || !project) {
        m_status->setText(project ? tr("Nothing to find.") : tr("No work is open."));
        updateButtons();
        return;
    }
    if (!pattern.isValid()) {
        m_status->setText(tr("The expression is not valid: %1.").arg(pattern.errorString()));
        updateButtons();
        return;
    }
    int files = 0;
    for (ProjectFile *file : project->files()) {
        const QList<ProjectFile::SearchResult> found = file->search(pattern, ProjectFile::All);
        if (found.isEmpty())
            continue;
        ++files;
        // A list of named items counts items; a text counts lines from 1.
        const bool items = dynamic_cast<SearchableProjectFile *>(file) != nullptr;
        const QString name = QFileInfo(file->fileName()).fileName().isEmpty() ? file->displayName() : QFileInfo(file->fileName()).fileName();
        for (const ProjectFile::SearchResult &result : found) {
            m_results.append({file, result});
            const QString where = items ? tr("%1: item %2").arg(name).arg(result.item + 1)
                                        : QStringLiteral("%1:%2").arg(name).arg(result.item + 1);
            auto *row = new QTreeWidgetItem(m_hits, {where, result.text.section(QLatin1Char('\n'), 0, 0).trimmed()});
            row->setToolTip(1, result.text);
        }
    }
    m_status->setText(tr("%n hit(s)", nullptr, m_results.size()) + tr(" in %n file(s).", nullptr, files));
    if (!m_results.isEmpty())
        m_hits->setCurrentItem(m_hits->topLevelItem(0));
    m_hits->resizeColumnToContents(0);
    updateButtons();
}

void FindReplaceDialog::showHit(int row)
{
    if (row < 0 || row >= m_results.size())
        return;
    const Hit &hit = m_results.at(row);
    if (!m_window->showFile(hit.file))
        return;
    if (dynamic_cast<SearchableProjectFile *>(hit.file))
        return;
    if (auto *editor = dynamic_cast<FileEditor *>(m_window->host()->currentEditor()))
        editor->navigateTo(hit.result.item, uint(hit.result.start));
}

void FindReplaceDialog::replaceOne()
{
    const int row = m_hits->indexOfTopLevelItem(m_hits->currentItem());
    if (row < 0 || row >= m_results.size())
        return;
    Hit hit = m_results.at(row);
    QList<ProjectFile::SearchResult> one{hit.result};
    hit.file->replace(one, m_replace->text());
    // The places after the replaced text have moved: the list is made again, and the
    // hit that now stands in the row is the next one to replace.
    findAll();
    if (m_hits->topLevelItemCount() > 0)
        m_hits->setCurrentItem(m_hits->topLevelItem(qMin(row, m_hits->topLevelItemCount() - 1)));
}

void FindReplaceDialog::replaceAll()
{
    if (m_results.isEmpty())
        findAll();
    // One call a file: each file's replacements are one change of it.
    int count = 0;
    while (!m_results.isEmpty()) {
        ProjectFile *file = m_results.first().file;
        QList<ProjectFile::SearchResult> ofFile;
        for (auto it = m_results.begin(); it != m_results.end();) {
            if (it->file == file) {
                ofFile.append(it->result);
                it = m_results.erase(it);
            } else {
                ++it;
            }
        }
        count += ofFile.size();
        file->replace(ofFile, m_replace->text());
    }
    findAll();
    m_status->setText(tr("%n replacement(s) made.", nullptr, count));
}

void FindReplaceDialog::clear()
{
    m_results.clear();
    m_hits->clear();
    m_status->clear();
    updateButtons();
}

void FindReplaceDialog::updateButtons()
{
    m_replaceButton->setEnabled(!m_results.isEmpty());
    m_replaceAllButton->setEnabled(!m_find->text().isEmpty());
}

QLineEdit *FindReplaceDialog::findEdit() const { return m_find; }
QLineEdit *FindReplaceDialog::replaceEdit() const { return m_replace; }
QTreeWidget *FindReplaceDialog::hits() const { return m_hits; }
QLabel *FindReplaceDialog::status() const { return m_status; }

void MainWindow::findAndReplace()
{
    auto *dialog = findChild<FindReplaceDialog *>();
    if (!dialog)
        dialog = new FindReplaceDialog(this);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
    dialog->findEdit()->setFocus();
}
