// Saving a code document, in the background where the caller allows it: the text is
// taken at once and written by a worker, and the document hears of the end queued.

#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codedocumenthelpers_p.h"
#include "code/codetext.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "foundation/progress.h"
#include "foundation/textcodecs.h"

#include <QtConcurrent>

namespace Ovra {

void CodeDocument::watchSaved(Archive &archive, const QString &name, bool isCopy)
{
    fileSaved(archive, name, isCopy);
    if (!isCopy && &archive == &FileSystemArchive::instance())
        d->watchedName = name;
}

bool CodeDocument::toFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    if (!archive.isWritable(name))
        return false;
    QIODevice *device = archive.openFile(name, QIODevice::WriteOnly);
    if (!device)
        return false;
    d->waitForSave();
    if (stats) {
        stats->setMaximum(1);
        stats->setValue(0);
    }
    d->saveInProgress = true;
    watchSaved(archive, name, flags & Foreign);
    if (!(flags & Foreign))
        setFileName(QString());
    const bool spacesToTabs = option(QStringLiteral("save_spaceToTab"), false).toBool();
    const QString text = toPlainText();

    if (!(flags & Asynchronous)) {
        device->write(TextCodecs::stringToData(fileText(text, spacesToTabs), codecId()));
        finishSave(&archive, device, name, flags, stats);
        return true;
    }
    const uint packed = flags | (spacesToTabs ? Internal : 0);
    CodeDocumentUserData *data = codecData(this);
    CodeDocumentPrivate *signaller = d;
    Archive *target = &archive;
    d->saveFuture = QtConcurrent::run([signaller, data, text, target, device, name, packed, stats] {
        const bool fold = packed & Internal;
        device->write(TextCodecs::stringToData(fileText(text, fold), data->codec));
        emit signaller->saveFinished(target, device, name, packed & ~uint(Internal), stats);
    });
    return true;
}

void CodeDocument::finishSave(Archive *archive, QIODevice *device, const QString &name, uint flags,
                              JobStats *stats)
{
    if (!(flags & Foreign)) {
        setFileName(name);
        d->advanceRevision();
    }
    archive->closeFile(device);
    if (!(flags & Foreign) && archive == &FileSystemArchive::instance())
        fileWritten(name);
    ProjectFile::toFile(*archive, name, flags, stats);
    if (stats)
        stats->setValue(1);
    d->saveInProgress = false;
}

void CodeDocumentPrivate::waitForSave()
{
    saveFuture.waitForFinished();
}

int CodeDocument::savedRevision() const
{
    return d->revision;
}

void CodeDocumentPrivate::advanceRevision()
{
    const int current = document->QTextDocument::revision();
    if (current != revision) {
        const int old = revision;
        revision = current;
        for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
            // Changed before this save: marked as saved changes (negative); as loaded:
            // the new saved state.
            if (block.revision() < 0 || block.revision() != old)
                block.setRevision(~current);
            else
                block.setRevision(current);
        }
    }
    document->setModified(false);
}

} // namespace Ovra
