#include "editors/code/snippetmanager.h"

#include "editors/code/snipform.h"
#include "editors/code/snippet.h"
#include "foundation/prompt.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <QVBoxLayout>

namespace Ovra {

class SnippetManagerPrivate
{
public:
    QString directory;
    QStringList names;
};

SnippetManager::SnippetManager(QObject *parent)
    : QAbstractListModel(parent)
    , d(new SnippetManagerPrivate)
{
}

SnippetManager::~SnippetManager() = default;

void SnippetManager::load(const QString &directory)
{
    beginResetModel();
    d->directory = directory;
    d->names.clear();
    const QStringList files = QDir(directory).entryList({QStringLiteral("*.xml")}, QDir::Files, QDir::Name);
    for (const QString &file : files)
        d->names << file.chopped(4);
    endResetModel();
}

QString SnippetManager::directory() const
{
    return d->directory;
}

int SnippetManager::count() const
{
    return d->names.size();
}

QString SnippetManager::name(int row) const
{
    return d->names.value(row);
}

QString SnippetManager::title(int row) const
{
    const QString key = name(row);
    return key.isEmpty() ? key : Snippet::translated(key, key);
}

QString SnippetManager::fileName(int row) const
{
    return row >= 0 && row < d->names.size()
               ? d->directory + QLatin1Char('/') + d->names.at(row) + QLatin1String(".xml")
               : QString();
}

QString SnippetManager::fillIn(int row, QWidget *parent)
{
    if (row < 0 || row >= d->names.size())
        return QString();
    Snippet snippet;
    QString error;
    if (!snippet.read(fileName(row), &error)) {
        tell(QMessageBox::Critical, title(row), error, parent);
        return QString();
    }
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("snippetForm"));
    dialog.setWindowTitle(title(row));
    auto *form = new SnipForm(&dialog);
    form->setObjectName(QStringLiteral("form"));
    form->setFields(snippet.fields, name(row));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addWidget(form, 1);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    form->setFocus();
    if (dialog.exec() != QDialog::Accepted)
        return QString();
    QString code = snippet.filled(form->values());
    // An empty snippet still went in: the caller tells apart only cancel and success.
    if (code.isNull())
        code = QLatin1String("");
    return code;
}

int SnippetManager::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->names.size();
}

QVariant SnippetManager::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= d->names.size())
        return QVariant();
    if (role == Qt::DisplayRole)
        return title(index.row());
    if (role == Qt::ToolTipRole)
        return fileName(index.row());
    return QVariant();
}

} // namespace Ovra
