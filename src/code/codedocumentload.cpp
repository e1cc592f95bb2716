// Loading a code document: its codec, its text from a file or a string, reloading,
// and the name the file watcher knows it by.

#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codedocumenthelpers_p.h"
#include "code/codetext.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "foundation/textcodecs.h"

namespace Ovra {

QString CodeDocument::watchedFileName() const
{
    return d->watchedName;
}

void CodeDocument::watchLoaded(Archive &archive, const QString &name, bool isCopy)
{
    fileLoaded(archive, name, isCopy);
    if (!isCopy && &archive == &FileSystemArchive::instance())
        d->watchedName = name;
}

int CodeDocument::codecId() const
{
    return codecData(this)->codec;
}

void CodeDocument::setCodecId(int codec)
{
    d->waitForSave();
    codecData(this)->codec = codec;
}

void CodeDocument::setCodec(const char *name)
{
    setCodecId(TextCodecs::index(name));
}

QString CodeDocument::codecName() const
{
    return TextCodecs::name(codecId());
}

bool CodeDocument::fromFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    watchLoaded(archive, name, flags & Foreign);
    return load(archive, name, -1, flags, stats);
}

void CodeDocument::reloadFile()
{
    if (hasArchive() && !fileName().isEmpty())
        load(archive(), fileName(), codecId(), 0, nullptr);
}

void CodeDocument::setText(const QString &text)
{
    const QString expanded = option(QStringLiteral("open_tabToSpace"), false).toBool() ? expandTabs(text) : text;
    d->freezeModel();
    ++d->notifyLock;
    d->loadingText = expanded;
    setPlainText(expanded);
    d->loadingText = QString();
    if (--d->notifyLock == 0)
        d->notifyUpdate();
    d->modelEnabled = optionOn(this, "modelCode");
    d->unfreezeModel();
}

bool CodeDocument::load(Archive &archive, const QString &name, int codec, uint flags, JobStats *stats)
{
    QIODevice *device = archive.openFile(name, QIODevice::ReadOnly);
    if (!device)
        return false;
    d->waitForSave();
    const QByteArray bytes = device->readAll();
    const QString text = TextCodecs::stringFromData(bytes, &codec);
    codecData(this)->codec = codec;
    setText(text);
    if (!(flags & Foreign)) {
        setFileName(name);
        d->takeRevision();
    }
    setModified(flags & Foreign);
    archive.closeFile(device);
    ProjectFile::fromFile(archive, name, flags, stats);
    return true;
}

void CodeDocument::fromString(const QString &text)
{
    d->waitForSave();
    watchLoaded(FileSystemArchive::instance(), QString(), false);
    setText(text);
    setFileName(QString());
    d->takeRevision();
    setModified(false);
    codecData(this)->codec = TextCodecs::index("UTF-8");
}

void CodeDocument::reset()
{
    d->waitForSave();
    watchLoaded(FileSystemArchive::instance(), QString(), false);
    d->freezeModel();
    setFileName(QString());
    QTextDocument::clear();
    d->takeRevision();
    setModified(false);
    // A document that was not modified wouldn't say so by itself.
    emit modificationChanged(false);
    codecData(this)->codec = TextCodecs::index("UTF-8");
    d->modelEnabled = optionOn(this, "modelCode");
    d->unfreezeModel();
}

void CodeDocumentPrivate::takeRevision()
{
    revision = document->QTextDocument::revision();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        block.setRevision(revision);
}

} // namespace Ovra
