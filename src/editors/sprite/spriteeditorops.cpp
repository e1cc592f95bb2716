// The sprite editor's operations on whole sprites and pictures: the import of picture
// files on worker threads, the export, the dialogs of the image menu, the import from
// another project and the layers laid from sprites of the explorer.
#include "editors/sprite/spriteeditor.h"
#include "editors/sprite/spriteeditor_p.h"

#include "editors/organizer/thumbnailseditor.h"
#include "editors/palette/paletteeditor.h"
#include "editors/sprite/commands/rasterlayerinsert.h"
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imginfodlg.h"
#include "editors/sprite/imgresizedlg.h"
#include "editors/sprite/paldlg.h"
#include "editors/sprite/rasterlayer.h"
#include "editors/sprite/rotimgdlg.h"
#include "editors/sprite/sprimport.h"
#include "foundation/filedialogs.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"
#include "foundation/utilities.h"
#include "image/imagecodecs.h"
#include "image/imagescaling.h"
#include "project/project.h"

#include <QCheckBox>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QListView>
#include <QMutex>
#include <QRegularExpression>
#include <QUndoStack>
#include <QtConcurrent/QtConcurrentRun>

#include <cmath>

namespace Ovra {
namespace {

QMutex hookLock;
std::function<void(const QString &)> &loadHook()
{
    static std::function<void(const QString &)> hook;
    return hook;
}

void readPicture(const QString &path, QImage *image, bool crop)
{
    {
        QMutexLocker locker(&hookLock);
        if (loadHook())
            loadHook()(path);
    }
    *image = QImage();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QImage read;
    if (!loadImage(&file, fileExtension(path).constData(), read, CodecRules::Complete) || read.isNull())
        return;
    if (crop)
        cropImage(read, nullptr, 0);
    *image = read;
}

Palette *paletteAt(Sprites *sprites, int row)
{
    Palettes *list = sprites ? sprites->palettes() : nullptr;
    return list && row >= 0 ? list->at(uint(row)) : nullptr;
}

} // namespace

void loadSpritePicture(const QString &path, QImage *image)
{
    readPicture(path, image, false);
}

void loadSpritePictureCropped(const QString &path, QImage *image)
{
    readPicture(path, image, true);
}

void setSpritePictureLoadHook(std::function<void(const QString &)> hook)
{
    QMutexLocker locker(&hookLock);
    loadHook() = std::move(hook);
}

QString spriteIdentifierText(const QVariant &identifier)
{
    if (identifier.type() == QVariant::Point) {
        const QPoint point = identifier.toPoint();
        return QStringLiteral("%1_%2").arg(point.x()).arg(point.y());
    }
    return identifier.toString();
}

QVariant spriteIdentifierOfFile(const QString &path)
{
    static const QRegularExpression tail(QStringLiteral("(?:^|_)(\\d{1,5})_(\\d{1,5})$"));
    const QRegularExpressionMatch match = tail.match(QFileInfo(path).completeBaseName());
    if (!match.hasMatch())
        return QVariant();
    const int group = match.captured(1).toInt();
    const int number = match.captured(2).toInt();
    if (group > 0xFFFF || number > 0xFFFF)
        return QVariant();
    return QPoint(group, number);
}

// ---- helpers ---------------------------------------------------------------------------------

QString SpriteEditorPrivate::imageFolder() const
{
    if (!interface)
        return QString();
    const QString fallback = interface->option(QStringLiteral("project_path"), QString()).toString();
    return interface->option(QStringLiteral("spr_path"), fallback).toString();
}

void SpriteEditorPrivate::rememberFolder(const QString &path)
{
    if (interface && !path.isEmpty())
        interface->setOption(QStringLiteral("spr_path"), QFileInfo(path).absolutePath());
}

QStringList SpriteEditorPrivate::paletteNames() const
{
    QStringList names;
    Palettes *list = sprites ? sprites->palettes() : nullptr;
    for (int row = 0; list && row < list->rowCount(); ++row)
        names << list->data(list->index(row), Qt::DisplayRole).toString();
    return names;
}

int SpriteEditorPrivate::rowOfIdentifier(const QVariant &identifier) const
{
    for (uint row = 0; sprites && row < sprites->count(); ++row) {
        if (sprites->at(row)->identifier() == identifier)
            return int(row);
    }
    return -1;
}

// The group of the sprite shown, and the number after the highest of that group.
QVariant SpriteEditorPrivate::nextFreeIdentifier(const QList<QVariant> &taken) const
{
    const QVariant shown = sprite ? sprite->identifier() : QVariant();
    const int group = shown.type() == QVariant::Point ? shown.toPoint().x() : 0;
    int highest = -1;
    const auto see = [&](const QVariant &identifier) {
        if (identifier.type() == QVariant::Point && identifier.toPoint().x() == group)
            highest = qMax(highest, identifier.toPoint().y());
    };
    for (uint row = 0; sprites && row < sprites->count(); ++row)
        see(sprites->at(row)->identifier());
    for (const QVariant &identifier : taken)
        see(identifier);
    return QPoint(group, qMin(highest + 1, 0xFFFF));
}

bool SpriteEditorPrivate::writePicture(const QString &path, const QImage &image)
{
    QFile file(path);
    if (image.isNull() || !file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray format = fileExtension(path);
    return saveImage(&file, format.isEmpty() ? "PNG" : format.constData(), image, CodecRules::Complete);
}

// ---- the import of pictures ------------------------------------------------------------------

QList<QImage> SpriteEditorPrivate::loadPictures(const QStringList &files, bool crop)
{
    QVector<QImage> results(files.size());
    void (*const loader)(const QString &, QImage *) = crop ? &loadSpritePictureCropped : &loadSpritePicture;
    QEventLoop loop;
    int pending = files.size();
    QList<QFutureWatcher<void> *> watchers;
    // Each watcher reports its file; the loop waits for all of them without taking a
    // file onto this thread, as waiting on a future that hasn't started would.
    for (int i = 0; i < files.size(); ++i) {
        auto *watcher = new QFutureWatcher<void>;
        watchers << watcher;
        connect(watcher, &QFutureWatcherBase::finished, &loop, [&pending, &loop] {
            if (--pending == 0)
                loop.quit();
        });
        watcher->setFuture(QtConcurrent::run(loader, files.at(i), &results[i]));
    }
    if (pending > 0)
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    qDeleteAll(watchers);
    return results.toList();
}

int SpriteEditorPrivate::importPictures(const QStringList &files, const QList<QImage> &images,
                                        Sprite::PaletteMode mode, Palette *palette)
{
    struct Step
    {
        int file;
        QVariant identifier;
        int row;
    };
    // Every question first, so that no box stands open over a half-made change.
    QList<Step> steps;
    QList<QVariant> taken;
    QStringList unreadable;
    for (int i = 0; i < files.size(); ++i) {
        if (images.at(i).isNull()) {
            unreadable << QFileInfo(files.at(i)).fileName();
            continue;
        }
        QVariant identifier = spriteIdentifierOfFile(files.at(i));
        if (!identifier.isValid() || taken.contains(identifier))
            identifier = nextFreeIdentifier(taken);
        const int row = rowOfIdentifier(identifier);
        if (row >= 0) {
            Prompt prompt;
            prompt.icon = QMessageBox::Question;
            prompt.title = tr("Replace sprite");
            prompt.text = tr("The sprite %1 already exists. Do you want to replace it?")
                              .arg(spriteIdentifierText(identifier));
            prompt.buttons = QMessageBox::Yes | QMessageBox::No;
            prompt.parent = dialogParent();
            if (ask(prompt) != QMessageBox::Yes)
                continue;
        }
        taken << identifier;
        steps.append({i, identifier, row});
    }
    if (!unreadable.isEmpty())
        tell(QMessageBox::Warning, tr("Import"),
             tr("These files couldn't be read as pictures and were skipped:\n%1").arg(unreadable.join(QLatin1Char('\n'))),
             dialogParent());
    if (steps.isEmpty())
        return 0;
    int count = 0;
    int last = -1;
    ++updating;
    // One step of the file's history: one undo takes every picture back out ("addSprs").
    static_cast<ProjectFile *>(sprites)->beginChange();
    for (const Step &step : qAsConst(steps)) {
        const QImage &image = images.at(step.file);
        Sprite *made = step.row >= 0 ? sprites->at(uint(step.row))
                                     : sprites->add(step.identifier, image, Archive::NoShare);
        if (!made)
            continue;
        if (step.row >= 0 || mode != Sprite::OwnPalette)
            made->setImage(image, false, mode, palette, Archive::NoShare);
        last = int(made->index());
        ++count;
    }
    static_cast<ProjectFile *>(sprites)->endChange();
    --updating;
    showSprite(last >= 0 ? last : index);
    emit q->spriteCountChanged();
    if (thumbnails)
        thumbnails->filesChanged(sprites);
    return count;
}

void SpriteEditorPrivate::add()
{
    makeActive();
    if (!sprites || !q->canDiscardChanges())
        return;
    const QStringList files = getOpenFileNames(dialogParent(), tr("Import sprites"), imageFolder(),
                                               QString::fromLatin1(imageFileExtension(ImageFiltersPngFirst)));
    if (files.isEmpty())
        return;
    rememberFolder(files.first());
    PalDlg colours(files, paletteNames(), dialogParent());
    colours.reversedBox()->hide();
    if (colours.exec() != QDialog::Accepted)
        return;
    QStringList chosen;
    for (int row : colours.checkedRows())
        chosen << files.at(row);
    if (chosen.isEmpty())
        return;
    Prompt prompt;
    prompt.icon = QMessageBox::Question;
    prompt.title = tr("Crop");
    prompt.text = tr("Do you want to crop the image?");
    prompt.buttons = QMessageBox::Yes | QMessageBox::No;
    prompt.parent = dialogParent();
    const bool crop = ask(prompt) == QMessageBox::Yes;
    const QList<QImage> images = loadPictures(chosen, crop);
    const int count = importPictures(chosen, images, colours.mode(), paletteAt(sprites, colours.palette()));
    tell(QMessageBox::Information, tr("Import"),
         count ? tr("%n new sprite(s) were imported!", nullptr, count) : tr("No new sprite imported!"),
         dialogParent());
}

// ---- sprites ---------------------------------------------------------------------------------

void SpriteEditorPrivate::del()
{
    makeActive();
    if (!sprite)
        return;
    if (!interface || interface->option(QStringLiteral("confirm_delete"), true).toBool()) {
        Prompt prompt;
        prompt.icon = QMessageBox::Question;
        prompt.title = tr("Delete");
        prompt.text = tr("Do you really want to delete the sprite?");
        prompt.buttons = QMessageBox::Yes | QMessageBox::No;
        prompt.parent = dialogParent();
        if (ask(prompt) != QMessageBox::Yes)
            return;
    }
    const int row = index;
    ++updating;
    sprites->remove(uint(row));
    --updating;
    showSprite(qMin(row, int(sprites->count()) - 1));
    emit q->spriteCountChanged();
}

void SpriteEditorPrivate::duplicate()
{
    makeActive();
    if (!sprite || !q->canDiscardChanges())
        return;
    ++updating;
    Sprite *copy = sprite->duplicate();
    --updating;
    if (copy)
        showSprite(int(copy->index()));
    emit q->spriteCountChanged();
}

// The picture of a file replaces the sprite's.
void SpriteEditorPrivate::openImg()
{
    makeActive();
    if (!sprite || !q->canDiscardChanges())
        return;
    const QString path = getOpenFileName(dialogParent(), tr("Change image"), imageFolder(),
                                         QString::fromLatin1(imageFileExtension(ImageFiltersPngFirst)));
    if (path.isEmpty())
        return;
    rememberFolder(path);
    QImage image;
    loadSpritePicture(path, &image);
    if (image.isNull()) {
        tell(QMessageBox::Warning, tr("Change image"), tr("The file %1 can't be read as a picture.").arg(path),
             dialogParent());
        return;
    }
    ++updating;
    sprite->setImage(image, true);
    --updating;
    showSprite(index);
}

// What the canvas holds goes into the sprite.
void SpriteEditorPrivate::saveImg()
{
    makeActive();
    if (sprite)
        q->setSpriteImage(canvas->composed());
}

// One sprite to a named file, or the sprites chosen in the explorer each to a file of
// their own in a folder.
void SpriteEditorPrivate::saveImgAs()
{
    makeActive();
    if (!sprite)
        return;
    const QList<Sprite *> chosen = thumbnails ? thumbnails->selected() : QList<Sprite *>();
    const QString filter = QString::fromLatin1(imageFileExtension(ImageFiltersPngFirst));
    if (chosen.size() < 2) {
        const QString path = getSaveFileName(dialogParent(), tr("Save image"), imageFolder(), filter);
        if (path.isEmpty())
            return;
        rememberFolder(path);
        if (!writePicture(path, canvas->composed()))
            tell(QMessageBox::Warning, tr("Save image"), tr("The file %1 can't be written.").arg(path), dialogParent());
        return;
    }
    const QString path = getSaveFileName(dialogParent(), tr("Save images"), imageFolder(), filter);
    if (path.isEmpty())
        return;
    rememberFolder(path);
    const QFileInfo info(path);
    const QString extension = info.suffix().isEmpty() ? QStringLiteral("png") : info.suffix();
    QStringList failed;
    for (Sprite *each : chosen) {
        const QString name = QStringLiteral("%1/%2_%3.%4")
                                 .arg(info.absolutePath(), info.completeBaseName(),
                                      spriteIdentifierText(each->identifier()), extension);
        if (!writePicture(name, each->image()))
            failed << name;
    }
    if (!failed.isEmpty())
        tell(QMessageBox::Warning, tr("Save images"),
             tr("These files can't be written:\n%1").arg(failed.join(QLatin1Char('\n'))), dialogParent());
}

void SpriteEditorPrivate::splitRGB()
{
    makeActive();
    if (!sprite || !q->canDiscardChanges())
        return;
    ++updating;
    sprite->splitRGB();
    --updating;
    showSprite(index);
    emit q->spriteCountChanged();
}

// The visible layers become sprites of their own, after the current one.
void SpriteEditorPrivate::layerSave()
{
    makeActive();
    if (!sprite)
        return;
    QList<QImage> pictures;
    for (ImageLayer *layer : canvas->layers()->layers()) {
        const auto *raster = dynamic_cast<RasterLayer *>(layer);
        if (raster && layer->isVisible())
            pictures << raster->image();
    }
    if (pictures.isEmpty() || !q->canDiscardChanges())
        return;
    QList<QVariant> taken;
    ++updating;
    static_cast<ProjectFile *>(sprites)->beginChange();
    int row = index;
    for (const QImage &picture : qAsConst(pictures)) {
        const QVariant identifier = nextFreeIdentifier(taken);
        taken << identifier;
        if (Sprite *made = sprites->insert(uint(++row), identifier, picture, Archive::NoShare))
            made->setAxis(sprite->axis());
    }
    static_cast<ProjectFile *>(sprites)->endChange();
    --updating;
    showSprite(index);
    emit q->spriteCountChanged();
}

// ---- the image menu --------------------------------------------------------------------------

void SpriteEditorPrivate::imgProps()
{
    makeActive();
    if (!sprite)
        return;
    ImgInfoDlg dialog(canvas->format(), canvas->size(), dialogParent());
    if (dialog.exec() != QDialog::Accepted)
        return;
    QUndoStack *history = canvas->undoStack();
    history->beginMacro(tr("Properties"));
    if (dialog.format() != canvas->format())
        canvas->setFormat(dialog.format(), true);
    const QSize size = dialog.imageSize();
    if (size != canvas->size()) {
        const QSize old = canvas->size();
        canvas->setSize(size, QPoint(-65536, 0), 0);
        shiftAxis(QPoint((size.width() - old.width()) / 2, (size.height() - old.height()) / 2));
    }
    history->endMacro();
}

void SpriteEditorPrivate::imgRotate()
{
    makeActive();
    if (!sprite)
        return;
    RotImgDlg dialog(dialogParent());
    if (dialog.exec() != QDialog::Accepted || dialog.angle() == 0.0)
        return;
    canvas->rotate(float(dialog.angle() * M_PI / 180.0), 0);
}

void SpriteEditor::resize()
{
    if (!d->sprite)
        return;
    ImgResizeDlg dialog(d->canvas->size(), d->dialogParent());
    if (dialog.exec() != QDialog::Accepted || dialog.imageSize() == d->canvas->size())
        return;
    d->canvas->resize(dialog.imageSize(), dialog.filter());
}

// ---- layers from pictures and sprites --------------------------------------------------------

void SpriteEditorPrivate::addImageAsLayer(const QImage &picture)
{
    if (picture.isNull())
        return;
    QUndoStack *history = canvas->undoStack();
    history->beginMacro(tr("Add layer"));
    const QSize old = canvas->size();
    const QSize grown = old.expandedTo(picture.size());
    if (grown != old) {
        canvas->setSize(grown, QPoint(-65536, 0), 0);
        shiftAxis(QPoint((grown.width() - old.width()) / 2, (grown.height() - old.height()) / 2));
    }
    QImage image = picture;
    if (canvas->format() == 1) {
        if (image.format() != QImage::Format_ARGB32)
            image = image.convertToFormat(QImage::Format_ARGB32);
    } else if (image.format() != QImage::Format_Indexed8) {
        // The sprite's colours, opaque black where it has none.
        RGBA table[256];
        for (RGBA &entry : table)
            entry = RGBA(0, 0, 0, 255);
        if (!(sprite && sprite->palette() && sprite->palette()->colorTable(table)))
            canvas->palette()->toPalette(table);
        image = image.convertToFormat(QImage::Format_ARGB32);
        adaptImageToPalette(image, table);
    }
    QImage layerImage(grown, image.format());
    if (image.format() == QImage::Format_Indexed8)
        layerImage.setColorTable(image.colorTable());
    layerImage.fill(0);
    for (int y = 0; y < image.height(); ++y)
        memcpy(layerImage.scanLine(y), image.constScanLine(y), size_t(image.bytesPerLine()));
    auto *layer = new RasterLayer(canvas, layerImage);
    layer->setName(tr("Layer %1").arg(canvas->layers()->count() + 1));
    history->push(new RasterLayerInsert(canvas, layer, 0, false));
    history->endMacro();
    if (layerList)
        layerList->setCurrentIndex(canvas->layers()->index(0));
}

// Each sprite a layer; aligned, each stands on the shown sprite's axis.
void SpriteEditorPrivate::addSpritesAsLayers(const QList<Sprite *> &list, bool aligned)
{
    makeActive();
    if (!sprite || list.isEmpty())
        return;
    canvas->undoStack()->beginMacro(tr("Add layers"));
    for (Sprite *each : list) {
        if (!aligned) {
            addImageAsLayer(each->image());
            continue;
        }
        // The picture placed so that its axis meets the canvas's axis.
        const QPoint axis = sprite->axis() + axisShift;
        const QPoint place = axis - each->axis();
        const QImage image = each->image();
        const QRect need = QRect(QPoint(), canvas->size()) | QRect(place, image.size());
        if (need.topLeft() != QPoint() || need.size() != canvas->size()) {
            canvas->setSize(need.size(), -need.topLeft(), 0);
            shiftAxis(-need.topLeft());
        }
        const QPoint at = sprite->axis() + axisShift - each->axis();
        QImage padded(canvas->size(), image.format());
        if (image.format() == QImage::Format_Indexed8)
            padded.setColorTable(image.colorTable());
        padded.fill(0);
        for (int y = 0; y < image.height(); ++y)
            memcpy(padded.scanLine(y + at.y()) + at.x() * image.depth() / 8, image.constScanLine(y),
                   size_t(image.width() * image.depth() / 8));
        addImageAsLayer(padded);
    }
    canvas->undoStack()->endMacro();
}

void SpriteEditorPrivate::addSel()
{
    addSpritesAsLayers(thumbnails ? thumbnails->selected() : QList<Sprite *>(), false);
}

void SpriteEditorPrivate::addAll()
{
    addSpritesAsLayers(thumbnails ? thumbnails->all() : QList<Sprite *>(), false);
}

void SpriteEditorPrivate::addSelAligned()
{
    addSpritesAsLayers(thumbnails ? thumbnails->selected() : QList<Sprite *>(), true);
}

void SpriteEditorPrivate::addAllAligned()
{
    addSpritesAsLayers(thumbnails ? thumbnails->all() : QList<Sprite *>(), true);
}

// ---- the import from another project ---------------------------------------------------------

// Copies the sprites of those rows of another file in, each over its namesake, as one
// step of the file's history; how many went in.
int SpriteEditorPrivate::copySprites(Sprites *from, const QList<int> &rows, Sprite::PaletteMode mode, Palette *palette)
{
    int count = 0;
    ++updating;
    static_cast<ProjectFile *>(sprites)->beginChange();
    for (int row : qAsConst(rows)) {
        const Sprite *source = from->at(uint(row));
        const QImage image = source->image();
        const int existing = rowOfIdentifier(source->identifier());
        Sprite *made = existing >= 0 ? sprites->at(uint(existing))
                                     : sprites->add(source->identifier(), image, Archive::NoShare);
        if (!made)
            continue;
        if (existing >= 0 || mode != Sprite::OwnPalette)
            made->setImage(image, false, mode, palette, Archive::NoShare);
        made->setAxis(source->axis());
        ++count;
    }
    static_cast<ProjectFile *>(sprites)->endChange();
    --updating;
    return count;
}

void SpriteEditorPrivate::projImport()
{
    makeActive();
    if (!sprites || !interface || !q->canDiscardChanges())
        return;
    QStringList names;
    QList<Project *> open;
    for (uint row = 0; row < interface->projectCount(); ++row) {
        if (Project *project = interface->project(row)) {
            open << project;
            names << project->name();
        }
    }
    ProjImportDlg projects(names, dialogParent());
    projects.setWindowTitle(tr("Import from another project"));
    projects.clearSelection();
    if (projects.exec() != QDialog::Accepted || projects.checkedRows().isEmpty())
        return;
    Project *source = open.at(projects.checkedRows().first());
    if (source == sprites->project()) {
        tell(QMessageBox::Warning, tr("Warning"), tr("You can't import from the destination project!"),
             dialogParent());
        return;
    }
    auto *from = dynamic_cast<Sprites *>(source->file(Project::Sprites));
    QStringList offered;
    for (uint row = 0; from && row < from->count(); ++row)
        offered << from->data(from->index(int(row)), Qt::DisplayRole).toString();
    if (offered.isEmpty()) {
        tell(QMessageBox::Information, tr("Import"), tr("No new sprite imported!"), dialogParent());
        return;
    }
    SprImport dialog(offered, paletteNames(), dialogParent());
    if (dialog.exec() != QDialog::Accepted)
        return;
    const Sprite::PaletteMode mode = dialog.mode();
    Palette *palette = paletteAt(sprites, dialog.palette());
    QList<int> rows;
    for (int row : dialog.checkedRows()) {
        const QVariant identifier = from->at(uint(row))->identifier();
        if (rowOfIdentifier(identifier) >= 0) {
            Prompt prompt;
            prompt.icon = QMessageBox::Question;
            prompt.title = tr("Conflict resolution!");
            prompt.text = tr("Sprite '%1' already exists, do you want to replace it?")
                              .arg(spriteIdentifierText(identifier));
            prompt.buttons = QMessageBox::Yes | QMessageBox::No;
            prompt.parent = dialogParent();
            if (ask(prompt) != QMessageBox::Yes)
                continue;
        }
        rows << row;
    }
    const int count = copySprites(from, rows, mode, palette);
    showSprite(index >= 0 ? index : 0);
    emit q->spriteCountChanged();
    tell(QMessageBox::Information, tr("Import"),
         count ? tr("%n new sprite(s) were imported!", nullptr, count) : tr("No new sprite imported!"),
         dialogParent());
}

} // namespace Ovra
