#include "foundation/filewatcher.h"

#include "foundation/filesystemarchive.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"

#include <QDebug>
#include <QFileInfo>

namespace Ovra {
namespace {
// All file objects live on the GUI thread, so a plain global serves.
FileWatcherManager *manager = nullptr;
} // namespace

FileWatchObject::FileWatchObject()
{
    FileWatcherManager::objectCreated();
}

FileWatchObject::FileWatchObject(const FileWatchObject &)
{
    FileWatcherManager::objectCreated();
}

FileWatchObject &FileWatchObject::operator=(const FileWatchObject &)
{
    return *this; // the registration and the pause stay with the object that has them
}

FileWatchObject::~FileWatchObject()
{
    FileWatcherManager::objectDestroyed(this);
}

void FileWatchObject::pauseWatch(bool pause)
{
    m_paused = pause ? 1 : 0;
}

void FileWatchObject::fileLoaded(Archive &archive, const QString &name, bool isCopy)
{
    registerFile(archive, name, isCopy, false);
}

void FileWatchObject::fileSaved(Archive &archive, const QString &name, bool isCopy)
{
    registerFile(archive, name, isCopy, true);
}

void FileWatchObject::fileWritten(const QString &name)
{
    if (name.isEmpty() || name != watchedFileName())
        return;
    const QFileInfo info(name);
    m_modified = info.exists() ? info.lastModified() : QDateTime();
    m_size = info.exists() ? info.size() : -1;
}

void FileWatchObject::registerFile(Archive &archive, const QString &name, bool isCopy, bool saving)
{
    // Copies are written for someone else, and other archives have no paths the
    // system could watch.
    if (isCopy || &archive != &FileSystemArchive::instance())
        return;
    if (FileWatcherManager *watcher = FileWatcherManager::instance()) {
        const QString old = watchedFileName();
        // Reading or writing the file the object already watches changes nothing, unless
        // the watcher lost the path meanwhile; then registering anew picks it up again.
        if (old != name || !watcher->m_watcher.files().contains(name)) {
            watcher->removeObject(this, old);
            // A save keeps even a nameless object on record, so that it is found under
            // the name it saved to; a load of nothing has nothing to watch.
            if (saving || !name.isEmpty())
                watcher->addObject(this, name);
        }
    }
    const QFileInfo info(name);
    m_modified = info.exists() ? info.lastModified() : QDateTime();
    m_size = info.exists() ? info.size() : -1;
    // Our own write notifies the watcher too; that notification must not ask.
    if (saving)
        m_paused = 1;
}

FileWatcherManager::FileWatcherManager()
{
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileWatcherManager::fileChanged);
}

FileWatcherManager::~FileWatcherManager()
{
    if (manager == this)
        manager = nullptr;
}

FileWatcherManager *FileWatcherManager::instance()
{
    return manager;
}

QStringList FileWatcherManager::watchedPaths() const
{
    return m_watcher.files();
}

QList<FileWatchObject *> FileWatcherManager::objects(const QString &path) const
{
    return m_entries.value(path).objects;
}

void FileWatcherManager::objectCreated()
{
    if (!manager)
        manager = new FileWatcherManager;
    ++manager->m_count;
}

void FileWatcherManager::objectDestroyed(FileWatchObject *object)
{
    FileWatcherManager *self = manager;
    if (!self)
        return;
    // Normally an object is on record under one path only. But a derived class that
    // moved to another archive in between is still listed under its old file-system
    // path, and its next file-system load adds a second entry; every one of them has
    // to forget the object, or a later change would reload a dead object.
    const QStringList paths = self->m_entries.keys();
    for (const QString &path : paths) {
        if (self->m_entries.value(path).objects.contains(object))
            self->removeObject(object, path);
    }
    if (--self->m_count > 0)
        return;
    if (self->m_notifying > 0) {
        // The last object went while a question was open: fileChanged() is still on
        // the stack and ends the manager itself. A new object meanwhile makes a new one.
        manager = nullptr;
        self->m_orphaned = true;
        return;
    }
    delete self;
}

void FileWatcherManager::removeObject(FileWatchObject *object, const QString &path)
{
    auto it = m_entries.find(path);
    if (it == m_entries.end())
        return;
    it->objects.removeAll(object);
    if (!it->objects.isEmpty())
        return;
    m_entries.erase(it);
    // Removing a path the watcher doesn't hold (it drops deleted files by itself, and
    // a nameless entry never had one) only draws a warning.
    if (m_watcher.files().contains(path))
        m_watcher.removePath(path);
}

void FileWatcherManager::addObject(FileWatchObject *object, const QString &path)
{
    Entry &entry = m_entries[path];
    if (entry.objects.isEmpty())
        watch(path);
    // A derived class that changed its name without telling us may come back to a path
    // it is still listed under; twice in the list would mean two reloads per change.
    if (!entry.objects.contains(object))
        entry.objects.append(object);
}

void FileWatcherManager::watch(const QString &path)
{
    // The watcher refuses names that don't exist (yet), with a warning each time. A
    // file that isn't there now is picked up by its next load or save.
    if (!path.isEmpty() && QFileInfo::exists(path) && !m_watcher.files().contains(path))
        m_watcher.addPath(path);
}

void FileWatcherManager::fileChanged(const QString &path)
{
    qDebug() << "File modified:" << path;
    if (!m_entries.contains(path))
        return;

    ++m_notifying;
    Interface *host = Interface::instance();
    const bool enabled = !host || host->option(QStringLiteral("enable_file_watcher"), true).toBool();
    // A deleted file has nothing to reload; when it comes back, its next change asks.
    const QFileInfo info(path);
    if (enabled && info.exists() && !m_entries.value(path).busy) {
        Entry &entry = m_entries[path];
        QList<FileWatchObject *> collected;
        for (FileWatchObject *object : qAsConst(entry.objects)) {
            // A pause is used up by the one notification it was meant for; an object that
            // has read the file as it now stands has nothing to reload.
            const bool current = object->m_size >= 0 && object->m_size == info.size()
                                 && object->m_modified == info.lastModified();
            if (object->m_paused != 0)
                object->m_paused = 0;
            else if (!current)
                collected.append(object);
        }
        if (!collected.isEmpty()) {
            entry.busy = true;
            Prompt prompt;
            prompt.icon = QMessageBox::Question;
            prompt.parent = host ? host->mainWidget() : nullptr;
            prompt.title = tr("File modified");
            prompt.text = tr("The file '%1' has been modified. Do you want to reload all other "
                             "instances of this file now?").arg(path);
            prompt.buttons = QMessageBox::Yes | QMessageBox::No;
            prompt.defaultButton = QMessageBox::No;
            const bool reload = ask(prompt) == QMessageBox::Yes;

            // While the question was open, and while each reload runs, objects may have
            // gone or moved and the entry with them: an object is reloaded only if it
            // is still on record for this path, which also means it is still alive.
            if (reload) {
                for (FileWatchObject *object : qAsConst(collected)) {
                    const auto it = m_entries.constFind(path);
                    if (it == m_entries.constEnd())
                        break;
                    if (it->objects.contains(object))
                        object->reloadFile();
                }
            }
            const auto it = m_entries.find(path);
            if (it != m_entries.end())
                it->busy = false;
        }
    }

    // Programs that save by writing a new file and renaming it over the old one make the
    // watcher drop the path; take it up again, as long as there is a file to watch.
    if (m_entries.contains(path))
        watch(path);

    if (--m_notifying == 0 && m_orphaned)
        deleteLater();
}

} // namespace Ovra
