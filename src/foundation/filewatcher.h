#pragma once

#include "foundation/global.h"

#include <QFileSystemWatcher>
#include <QList>
#include <QDateTime>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

namespace Ovra {

class Archive;

// Mixed into files that want to hear when their file changes on disk, by another
// program or by another open instance of the same file. The derived class reports
// each read and write of its file; the manager below does the watching and asks the
// user whether to reload.
class OVRA_EXPORT FileWatchObject
{
public:
    FileWatchObject();
    // A copy is a living object of its own, but it isn't registered for any file and
    // not paused: the registration belongs to the object that read the file.
    FileWatchObject(const FileWatchObject &other);
    FileWatchObject &operator=(const FileWatchObject &other);
    virtual ~FileWatchObject();

    // The path under which the object is known right now.
    virtual QString watchedFileName() const = 0;
    // Reads the file again, after the user agreed to it.
    virtual void reloadFile() = 0;
    // A paused object lets the next change notification pass without a question.
    virtual void pauseWatch(bool pause);

    // Non-zero while the next notification is to be swallowed.
    int paused() const { return m_paused; }

protected:
    // Called before the object reads `name`. Only files of the file-system archive are
    // watched, and reading a copy changes nothing.
    void fileLoaded(Archive &archive, const QString &name, bool isCopy);
    // Called when the object writes `name`. Unlike fileLoaded() it registers even an
    // empty name, and it pauses the object so that its own write raises no question.
    void fileSaved(Archive &archive, const QString &name, bool isCopy);
    // Called once a write of the watched file is complete on disk. A safe replacement
    // can notify more than once, and a background write ends after fileSaved(): every
    // notification that follows finds the file as the object wrote it, and asks nothing.
    void fileWritten(const QString &name);

private:
    friend class FileWatcherManager;
    void registerFile(Archive &archive, const QString &name, bool isCopy, bool saving);

    int m_paused = 0;
    // The file as this object last read or wrote it. A notification that finds the
    // file still so has nothing new for the object (it comes late, for a change that
    // the object has read since) and asks it nothing.
    QDateTime m_modified;
    qint64 m_size = -1;
};

// Owns the one file-system watcher of the process and the list of objects per path.
// It exists while at least one FileWatchObject lives: the first creates it, the last
// deletes it.
class OVRA_EXPORT FileWatcherManager : public QObject
{
    Q_OBJECT
public:
    // Null while no FileWatchObject lives.
    static FileWatcherManager *instance();

    // The paths the watcher is listening to.
    QStringList watchedPaths() const;
    // The objects registered for `path`, in order of registration.
    QList<FileWatchObject *> objects(const QString &path) const;
    // Living FileWatchObjects, registered or not.
    int objectCount() const { return m_count; }

private slots:
    void fileChanged(const QString &path);

private:
    friend class FileWatchObject;

    struct Entry
    {
        QList<FileWatchObject *> objects;
        // While the question for this path is open, further notifications are ignored.
        bool busy = false;
    };

    FileWatcherManager();
    ~FileWatcherManager() override;

    static void objectCreated();
    static void objectDestroyed(FileWatchObject *object);
    void removeObject(FileWatchObject *object, const QString &path);
    void addObject(FileWatchObject *object, const QString &path);
    void watch(const QString &path);

    QFileSystemWatcher m_watcher;
    QMap<QString, Entry> m_entries;
    int m_count = 0;
    // How deep fileChanged() is nested; the manager can't be deleted inside it.
    int m_notifying = 0;
    // Set when the last object went while a question was open.
    bool m_orphaned = false;
};

} // namespace Ovra
