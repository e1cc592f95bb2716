#include "editors/code/snipdlg.h"

#include "editors/code/snipfielddlg.h"
#include "editors/code/snipfieldsmodel.h"
#include "editors/code/snipform.h"
#include "editors/code/snippet.h"
#include "foundation/filedialogs.h"
#include "foundation/prompt.h"

#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QScrollArea>
#include <QTreeView>
#include <QVBoxLayout>

namespace Ovra {

class SnipDlgPrivate
{
public:
    explicit SnipDlgPrivate(SnipDlg *dialog) : q(dialog) {}

    QPushButton *button(const QString &text, const char *name, QWidget *parent);
    QGroupBox *fieldsBox();
    QGroupBox *codeBox();
    QGroupBox *formBox();
    QGroupBox *previewBox();
    QLayout *buttonRow();
    void rebuildForm();
    int selectedRow() const;
    bool write(const QString &fileName, const QByteArray &bytes);
    QString startPath(const QString &suffix) const;

    SnipDlg *q;
    // The snippet as last read or written, to tell whether closing loses anything.
    QByteArray savedXml;
    QString fileName;
    QString directory;
    SnipFieldsModel model;
    QTreeView *fieldList = nullptr;
    QPlainTextEdit *code = nullptr;
    SnipForm *form = nullptr;
    QPlainTextEdit *preview = nullptr;
};

QPushButton *SnipDlgPrivate::button(const QString &text, const char *name, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    return button;
}

QGroupBox *SnipDlgPrivate::fieldsBox()
{
    auto *box = new QGroupBox(SnipDlg::tr("Fields"), q);
    fieldList = new QTreeView(box);
    fieldList->setObjectName(QStringLiteral("fieldList"));
    fieldList->setRootIsDecorated(false);
    fieldList->setAllColumnsShowFocus(true);
    fieldList->setModel(&model);
    // The title takes what the name and the type leave; long titles are elided, not cut.
    fieldList->header()->setStretchLastSection(false);
    fieldList->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    fieldList->header()->setSectionResizeMode(SnipFieldsModel::TitleColumn, QHeaderView::Stretch);
    auto *buttons = new QVBoxLayout;
    QPushButton *add = button(SnipDlg::tr("Add..."), "addField", box);
    QPushButton *edit = button(SnipDlg::tr("Edit..."), "editField", box);
    QPushButton *remove = button(SnipDlg::tr("Remove"), "removeField", box);
    QPushButton *up = button(SnipDlg::tr("Up"), "moveFieldUp", box);
    QPushButton *down = button(SnipDlg::tr("Down"), "moveFieldDown", box);
    for (QPushButton *b : {add, edit, remove, up, down})
        buttons->addWidget(b);
    buttons->addStretch();
    auto *layout = new QHBoxLayout(box);
    layout->addWidget(fieldList, 1);
    layout->addLayout(buttons);
    QObject::connect(add, &QPushButton::clicked, q, &SnipDlg::addField);
    QObject::connect(edit, &QPushButton::clicked, q, &SnipDlg::editField);
    QObject::connect(remove, &QPushButton::clicked, q, &SnipDlg::removeField);
    QObject::connect(up, &QPushButton::clicked, q, &SnipDlg::moveFieldUp);
    QObject::connect(down, &QPushButton::clicked, q, &SnipDlg::moveFieldDown);
    QObject::connect(fieldList, &QTreeView::doubleClicked, q, &SnipDlg::editField);
    return box;
}

QGroupBox *SnipDlgPrivate::codeBox()
{
    auto *box = new QGroupBox(SnipDlg::tr("Code"), q);
    code = new QPlainTextEdit(box);
    code->setObjectName(QStringLiteral("code"));
    code->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    code->setLineWrapMode(QPlainTextEdit::NoWrap);
    code->setPlaceholderText(SnipDlg::tr("The code, with the fields by name and CURSOR where the cursor goes."));
    QPushButton *insert = button(SnipDlg::tr("Insert selected"), "insertSelected", box);
    insert->setToolTip(SnipDlg::tr("Insert the name of the selected field at the cursor"));
    auto *row = new QHBoxLayout;
    row->addWidget(insert);
    row->addStretch();
    auto *layout = new QVBoxLayout(box);
    layout->addWidget(code, 1);
    layout->addLayout(row);
    QObject::connect(insert, &QPushButton::clicked, q, &SnipDlg::insertSelected);
    return box;
}

QGroupBox *SnipDlgPrivate::formBox()
{
    auto *box = new QGroupBox(SnipDlg::tr("Form"), q);
    form = new SnipForm;
    form->setObjectName(QStringLiteral("form"));
    auto *scroll = new QScrollArea(box);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(form);
    auto *layout = new QVBoxLayout(box);
    layout->addWidget(scroll);
    return box;
}

QGroupBox *SnipDlgPrivate::previewBox()
{
    auto *box = new QGroupBox(SnipDlg::tr("Preview"), q);
    preview = new QPlainTextEdit(box);
    preview->setObjectName(QStringLiteral("preview"));
    preview->setReadOnly(true);
    preview->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    preview->setLineWrapMode(QPlainTextEdit::NoWrap);
    auto *layout = new QVBoxLayout(box);
    layout->addWidget(preview);
    return box;
}

QLayout *SnipDlgPrivate::buttonRow()
{
    QPushButton *save = button(SnipDlg::tr("Save"), "save", q);
    QPushButton *show = button(SnipDlg::tr("Preview"), "preview", q);
    QPushButton *translation = button(SnipDlg::tr("Save for translation"), "saveForTranslation", q);
    QPushButton *close = button(SnipDlg::tr("Close"), "close", q);
    auto *row = new QHBoxLayout;
    row->addWidget(save);
    row->addWidget(show);
    row->addWidget(translation);
    row->addStretch();
    row->addWidget(close);
    QObject::connect(save, &QPushButton::clicked, q, QOverload<>::of(&SnipDlg::save));
    QObject::connect(show, &QPushButton::clicked, q, &SnipDlg::preview);
    QObject::connect(translation, &QPushButton::clicked, q, QOverload<>::of(&SnipDlg::saveForTranslation));
    QObject::connect(close, &QPushButton::clicked, q, &SnipDlg::reject);
    return row;
}

void SnipDlgPrivate::rebuildForm()
{
    form->setFields(model.fields(), q->snippetName());
}

int SnipDlgPrivate::selectedRow() const
{
    const QModelIndex index = fieldList->currentIndex();
    return index.isValid() && fieldList->selectionModel()->isSelected(index.siblingAtColumn(0)) ? index.row() : -1;
}

bool SnipDlgPrivate::write(const QString &name, const QByteArray &bytes)
{
    // Written aside and renamed over the old file, so a failed save leaves it whole.
    QSaveFile file(name);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    tell(QMessageBox::Critical, q->windowTitle(), SnipDlg::tr("Can't write %1: %2").arg(QDir::toNativeSeparators(name), file.errorString()), q);
    return false;
}

QString SnipDlgPrivate::startPath(const QString &suffix) const
{
    if (fileName.isEmpty())
        return directory;
    const QFileInfo info(fileName);
    return info.dir().filePath(info.completeBaseName() + suffix);
}

SnipDlg::SnipDlg(const QString &fileName, QWidget *parent)
    : QDialog(parent)
    , d(new SnipDlgPrivate(this))
{
    setWindowTitle(tr("Code snippet editor"));
    auto *grid = new QGridLayout(this);
    grid->addWidget(d->fieldsBox(), 0, 0);
    grid->addWidget(d->codeBox(), 0, 1);
    grid->addWidget(d->formBox(), 1, 0);
    grid->addWidget(d->previewBox(), 1, 1);
    grid->addLayout(d->buttonRow(), 2, 0, 1, 2);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(0, 3);
    grid->setRowStretch(1, 2);
    resize(920, 620);

    auto rebuild = [this] { d->rebuildForm(); };
    connect(&d->model, &QAbstractItemModel::modelReset, this, rebuild);
    connect(&d->model, &QAbstractItemModel::rowsInserted, this, rebuild);
    connect(&d->model, &QAbstractItemModel::rowsRemoved, this, rebuild);
    connect(&d->model, &QAbstractItemModel::rowsMoved, this, rebuild);
    connect(&d->model, &QAbstractItemModel::dataChanged, this, rebuild);

    const QFileInfo info(fileName);
    if (fileName.isEmpty() || info.isDir())
        d->directory = fileName;
    else if (info.exists())
        load(fileName);
    else
        d->fileName = fileName;
    d->savedXml = snippet().toXml();
}

SnipDlg::~SnipDlg() = default;

QString SnipDlg::fileName() const
{
    return d->fileName;
}

QString SnipDlg::snippetName() const
{
    return d->fileName.isEmpty() ? QString() : QFileInfo(d->fileName).completeBaseName();
}

Snippet SnipDlg::snippet() const
{
    Snippet snippet;
    snippet.fields = d->model.fields();
    snippet.code = d->code->toPlainText();
    return snippet;
}

void SnipDlg::setSnippet(const Snippet &snippet)
{
    d->model.setFields(snippet.fields);
    d->code->setPlainText(snippet.code);
    d->preview->clear();
}

bool SnipDlg::load(const QString &fileName)
{
    Snippet snippet;
    QString error;
    if (!snippet.read(fileName, &error)) {
        tell(QMessageBox::Critical, windowTitle(), error, this);
        return false;
    }
    d->fileName = fileName;
    setSnippet(snippet);
    d->savedXml = snippet.toXml();
    return true;
}

bool SnipDlg::saveTo(const QString &fileName)
{
    const QByteArray bytes = snippet().toXml();
    if (!d->write(fileName, bytes))
        return false;
    d->savedXml = bytes;
    const bool renamed = QFileInfo(fileName).completeBaseName() != snippetName();
    d->fileName = fileName;
    // Titles are looked up under the snippet's name.
    if (renamed)
        d->rebuildForm();
    return true;
}

bool SnipDlg::saveTranslationTo(const QString &fileName)
{
    const QString name = d->fileName.isEmpty() ? QFileInfo(fileName).completeBaseName() : snippetName();
    return d->write(fileName, snippet().toTranslationSource(name));
}

void SnipDlg::reject()
{
    if (snippet().toXml() != d->savedXml) {
        Prompt prompt;
        prompt.icon = QMessageBox::Question;
        prompt.title = windowTitle();
        prompt.text = tr("The snippet has changes that aren't saved. Do you want to close it anyway?");
        prompt.buttons = QMessageBox::Yes | QMessageBox::No;
        prompt.defaultButton = QMessageBox::No;
        prompt.parent = this;
        if (ask(prompt) != QMessageBox::Yes)
            return;
    }
    QDialog::reject();
}

void SnipDlg::save()
{
    const QString name = getSaveFileName(this, tr("Save code snippet"), d->startPath(QStringLiteral(".xml")),
                                         tr("Extensible Markup Language (*.xml)"));
    if (!name.isEmpty())
        saveTo(name);
}

void SnipDlg::saveForTranslation()
{
    const QString name = getSaveFileName(this, tr("Save for translation"), d->startPath(QStringLiteral(".ts")),
                                         tr("Qt translation sources (*.ts)"));
    if (!name.isEmpty())
        saveTranslationTo(name);
}

void SnipDlg::preview()
{
    d->preview->setPlainText(snippet().filled(d->form->values()));
}

void SnipDlg::insertSelected()
{
    const int row = d->selectedRow();
    if (row < 0)
        return;
    d->code->insertPlainText(d->model.field(row).name);
    d->code->setFocus();
}

void SnipDlg::addField()
{
    SnipFieldDlg dialog(this);
    QStringList names;
    for (const SnipFieldInfo &field : d->model.fields())
        names << field.name;
    dialog.setTakenNames(names);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const int row = d->model.rowCount();
    d->model.insertField(row, dialog.field());
    d->fieldList->setCurrentIndex(d->model.index(row, 0));
}

void SnipDlg::editField()
{
    const int row = d->selectedRow();
    if (row < 0)
        return;
    SnipFieldDlg dialog(this);
    QStringList names;
    for (int i = 0; i < d->model.rowCount(); ++i) {
        if (i != row)
            names << d->model.field(i).name;
    }
    dialog.setTakenNames(names);
    dialog.setField(d->model.field(row));
    if (dialog.exec() == QDialog::Accepted)
        d->model.setField(row, dialog.field());
}

void SnipDlg::removeField()
{
    const int row = d->selectedRow();
    if (row >= 0)
        d->model.removeField(row);
}

void SnipDlg::moveFieldUp()
{
    const int row = d->selectedRow();
    if (d->model.moveField(row, -1))
        d->fieldList->setCurrentIndex(d->model.index(row - 1, 0));
}

void SnipDlg::moveFieldDown()
{
    const int row = d->selectedRow();
    if (d->model.moveField(row, 1))
        d->fieldList->setCurrentIndex(d->model.index(row + 1, 0));
}

} // namespace Ovra
