// The commands of the palette editor that read and write palette files, and the one
// that gives the sprites a palette.
#include "editors/palette/paletteeditor.h"
#include "editors/palette/paletteeditor_p.h"

#include "editors/palette/paladddlg.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/filedialogs.h"
#include "foundation/interface.h"
#include "foundation/itemsdialog.h"
#include "foundation/progress.h"
#include "foundation/prompt.h"
#include "foundation/translator.h"
#include "foundation/utilities.h"
#include "image/paletteobject.h"
#include "image/sprite.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QPoint>
#include <QRegularExpression>
#include <QSaveFile>

#include <memory>

namespace Ovra {
namespace {

const uint SaveAsText = 40;
const uint ApplyText = 46;
const uint OpenText = 49;
const uint SaveCurrentText = 50;
const uint SpritesText = 101;

QWidget *dialogParent()
{
    Interface *host = Interface::instance();
    return host ? host->mainWidget() : nullptr;
}

// The formats that extensions read or write, as filters and as patterns.
void extensionFilters(Extension::Type type, QStringList *filters, QStringList *patterns)
{
    for (Extension *extension : ExtensionManager::list(type)) {
        const QString suffix = QString::fromLatin1(extension->format()).toLower();
        if (suffix.isEmpty())
            continue;
        filters->append(QStringLiteral("%1 (*.%2)").arg(QString::fromUtf8(extension->name()), suffix));
        patterns->append(QStringLiteral("*.") + suffix);
    }
}

bool writePalette(const QString &fileName, const RGBA (&colors)[256])
{
    RGBA copy[256];
    std::copy(colors, colors + 256, copy);
    PaletteObject palette(&copy);
    QSaveFile file(fileName);
    return file.open(QIODevice::WriteOnly)
           && palette.toFile(&file, fileExtension(fileName).constData(), CodecRules::Complete) && file.commit();
}

QVariant identifierOf(const Palette *palette)
{
    return palette ? palette->property(QStringLiteral("Identifier")) : QVariant();
}

} // namespace

void PaletteEditorPrivate::readScratch(const QString &fileName, RGBA (&scratch)[256])
{
    for (RGBA &entry : scratch)
        entry = RGBA(0, 0, 0, 255);
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return;
    PaletteObject palette(&scratch);
    palette.fromFile(&file, fileExtension(fileName).constData(), CodecRules::Complete);
}

QString PaletteEditorPrivate::startDirectory() const
{
    Sprites *sprites = palettes ? palettes->sprites() : nullptr;
    if (sprites)
        return sprites->option(QStringLiteral("project_path")).toString();
    Interface *host = Interface::instance();
    return host ? host->option(QStringLiteral("project_path"), QVariant()).toString() : QString();
}

QString PaletteEditorPrivate::openFilter() const
{
    QStringList filters;
    QStringList patterns;
    extensionFilters(Extension::PaletteLoader, &filters, &patterns);
    // The list of every format goes first, with the formats of the extensions in it.
    QString all = QString::fromLatin1(imageFileExtension(AllPaletteWildcards));
    if (!patterns.isEmpty())
        all.replace(QLatin1Char(')'), QLatin1Char(' ') + patterns.join(QLatin1Char(' ')) + QLatin1Char(')'));
    QString filter = PaletteEditor::tr("All palettes") + all + QString::fromLatin1(imageFileExtension(PaletteReadFilters));
    for (const QString &extra : qAsConst(filters))
        filter += QStringLiteral(";;") + extra;
    return filter;
}

QString PaletteEditorPrivate::saveFilter() const
{
    QStringList filters;
    QStringList patterns;
    extensionFilters(Extension::PaletteSaver, &filters, &patterns);
    filters.prepend(QString::fromLatin1(imageFileExtension(PaletteWriteFilters)));
    return filters.join(QStringLiteral(";;"));
}

QString PaletteEditorPrivate::identifierText(const QVariant &identifier, int at)
{
    QString text;
    if (identifier.type() == QVariant::Point) {
        const QPoint point = identifier.toPoint();
        text = QStringLiteral("%1_%2").arg(point.x()).arg(point.y());
    } else {
        text = identifier.toString().trimmed();
    }
    // Whatever can't stand in a file name becomes a line, so that no palette writes
    // into another folder.
    static const QRegularExpression unfit(QStringLiteral("[\\\\/:*?\"<>|\\x00-\\x1f]"));
    text.replace(unfit, QStringLiteral("_"));
    if (text.isEmpty() || text == QLatin1String(".") || text == QLatin1String(".."))
        text = QString::number(at + 1);
    return text;
}

QStringList PaletteEditorPrivate::defaultIdentifiers(int wanted) const
{
    const QVariant sample = identifierOf(paletteAt(qMax(0, position)));
    QStringList texts;
    if (sample.type() == QVariant::Point) {
        // The next numbers of the group of the palette shown.
        const int group = sample.toPoint().x();
        int last = -1;
        for (int i = 0; i < count(); ++i) {
            const QPoint point = identifierOf(paletteAt(i)).toPoint();
            if (point.x() == group)
                last = qMax(last, point.y());
        }
        for (int i = 0; i < wanted; ++i)
            texts << QStringLiteral("%1, %2").arg(group).arg(last + 1 + i);
        return texts;
    }
    bool numbers = sample.isValid();
    qlonglong last = -1;
    for (int i = 0; numbers && i < count(); ++i) {
        bool number = false;
        last = qMax(last, identifierOf(paletteAt(i)).toLongLong(&number));
        numbers = numbers && number;
    }
    for (int i = 0; i < wanted; ++i)
        texts << QString::number(numbers ? last + 1 + i : qlonglong(count()) + 1 + i);
    return texts;
}

QVariant PaletteEditorPrivate::identifierFromText(const QString &text) const
{
    static const QRegularExpression pair(QStringLiteral("^\\s*(-?\\d+)\\s*[, ]\\s*(-?\\d+)\\s*$"));
    const QRegularExpressionMatch match = pair.match(text);
    if (match.hasMatch())
        return QPoint(match.captured(1).toInt(), match.captured(2).toInt());
    bool number = false;
    const qlonglong value = text.toLongLong(&number);
    return number ? QVariant(value) : QVariant(text);
}

bool PaletteEditor::askIdentifiers(const QStringList &files, QList<QVariant> *identifiers, bool *reversed)
{
    PalAddDlg dialog(dialogParent(), files, d->defaultIdentifiers(files.size()));
    if (Interface *host = Interface::instance())
        dialog.setWindowIcon(host->icon(dialog.objectName()));
    if (dialog.exec() != QDialog::Accepted)
        return false;
    identifiers->clear();
    const QStringList texts = dialog.identifiers();
    for (const QString &text : texts)
        identifiers->append(d->identifierFromText(text));
    *reversed = dialog.isReversed();
    return true;
}

void PaletteEditorPrivate::add()
{
    if (!prepare())
        return;
    int at = count() == 0 ? 0 : position + 1;
    Prompt question;
    question.icon = QMessageBox::Question;
    question.title = PaletteEditor::tr("Add palette");
    question.text = PaletteEditor::tr("Do you want to load the palettes from files?");
    question.buttons = QMessageBox::Yes | QMessageBox::No;
    question.defaultButton = QMessageBox::Yes;
    question.parent = dialogParent();
    if (ask(question) != QMessageBox::Yes) {
        palettes->insert(uint(at), nullptr, identifierFromText(defaultIdentifiers(1).value(0)), Archive::NoShare);
        showPosition(at);
        return;
    }
    if (!Interface::instance())
        return;
    const QStringList files =
        getOpenFileNames(dialogParent(), PaletteEditor::tr("Add palettes"), startDirectory(), openFilter());
    if (files.isEmpty())
        return;
    // Several files are one step of the file, so that one undo takes them all back.
    const bool bracket = files.size() >= 2;
    if (bracket)
        palettes->beginChange();
    QList<QVariant> identifiers;
    bool reversed = false;
    int last = -1;
    if (q->askIdentifiers(files, &identifiers, &reversed) && identifiers.size() == files.size()) {
        for (int i = 0; i < files.size(); ++i) {
            RGBA scratch[256];
            readScratch(files.at(i), scratch);
            if (reversed) {
                PaletteObject turned(&scratch);
                turned.switchColors(nullptr, true);
            }
            palettes->insert(uint(at), scratch, identifiers.at(i), Archive::NoShare);
            last = at++;
        }
    }
    if (bracket)
        palettes->endChange();
    if (last >= 0)
        showPosition(last);
}

void PaletteEditorPrivate::open()
{
    if (!prepare() || !paletteAt(position) || !Interface::instance())
        return;
    const QString name =
        getOpenFileName(dialogParent(), ovraTranslator()->text(OpenText), startDirectory(), openFilter());
    if (name.isEmpty())
        return;
    RGBA before[256];
    object->toPalette(before);
    RGBA scratch[256];
    readScratch(name, scratch);
    object->fromPalette(scratch);
    pushTable(before, QStringLiteral("open"));
}

void PaletteEditorPrivate::save()
{
    Interface *host = Interface::instance();
    if (!prepare() || count() == 0 || !host)
        return;
    std::unique_ptr<ItemsDialog> dialog(
        host->itemsDialog(dialogParent(), QStringLiteral("pal_save"), ovraTranslator()->text(SaveAsText), palettes, 0));
    if (!dialog)
        return;
    dialog->setChecked(position, true);
    if (dialog->exec() != QDialog::Accepted)
        return;
    const QList<int> rows = dialog->checkedRows();
    dialog.reset();
    if (rows.isEmpty())
        return;
    QString name = getSaveFileName(dialogParent(), ovraTranslator()->text(SaveCurrentText), startDirectory(),
                                   saveFilter());
    if (name.isEmpty())
        return;
    QFileInfo chosen(name);
    if (chosen.suffix().isEmpty()) {
        name += QStringLiteral(".act");
        chosen.setFile(name);
    }
    QStringList failed;
    if (rows.size() == 1) {
        RGBA colors[256];
        Palette *palette = paletteAt(rows.first());
        if (!palette || !palette->colorTable(colors) || !writePalette(name, colors))
            failed << name;
    } else {
        // The answer is a base: each palette goes beside it under its identifier.
        ProgressProvider *progress = host->progressProvider();
        Job *job = progress ? progress->start(PaletteEditor::tr("Saving palettes..."), 0) : nullptr;
        if (job)
            job->setMaximum(uint(rows.size()));
        for (int row : rows) {
            Palette *palette = paletteAt(row);
            const QString file = chosen.absoluteDir().filePath(
                QStringLiteral("%1.%3").arg(identifierText(identifierOf(palette), row), chosen.suffix()));
            RGBA colors[256];
            if (!palette || !palette->colorTable(colors) || !writePalette(file, colors))
                failed << file;
            if (job) {
                job->incrementValue();
                if (job->wasCancelled())
                    break;
            }
        }
    }
    if (!failed.isEmpty()) {
        tell(QMessageBox::Critical, PaletteEditor::tr("Save palette"),
             PaletteEditor::tr("The palette couldn't be written to:\n%1").arg(failed.join(QLatin1Char('\n'))),
             dialogParent());
    }
}

void PaletteEditorPrivate::setSprPal()
{
    Interface *host = Interface::instance();
    if (!prepare() || !host)
        return;
    Palette *palette = paletteAt(position);
    Sprites *sprites = palettes->sprites();
    if (!palette || !sprites)
        return;
    std::unique_ptr<ItemsDialog> dialog(host->itemsDialog(dialogParent(), QStringLiteral("pal_apply_sprite"),
                                                          ovraTranslator()->text(SpritesText), sprites, 0));
    if (!dialog)
        return;
    dialog->setLabel(ovraTranslator()->text(ApplyText));
    if (dialog->exec() != QDialog::Accepted)
        return;
    const QList<int> rows = dialog->checkedRows();
    dialog.reset();
    if (rows.isEmpty())
        return;
    // One step of the file for all the sprites chosen.
    ProjectFile *file = sprites;
    file->beginChange();
    for (int row : rows) {
        if (Sprite *sprite = row < int(sprites->count()) ? sprites->at(uint(row)) : nullptr)
            sprite->setPalette(palette);
    }
    file->endChange();
    emit q->paletteChanged();
}

} // namespace Ovra
