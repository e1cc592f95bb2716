#include "foundation/file.h"

#include "foundation/prompt.h"
#include "foundation/utilities.h"

#include <QThread>

#include <atomic>

namespace Ovra {
namespace {

constexpr unsigned long RetryPause = 200;
constexpr int AttemptsBeforeAsking = 10;

File::Operations &realOperations()
{
    static File::Operations operations;
    return operations;
}

std::atomic<File::Operations *> installedOperations{nullptr};

File::Operations &operations()
{
    File::Operations *installed = installedOperations.load();
    return installed ? *installed : realOperations();
}

} // namespace

bool File::Operations::remove(const QString &name)
{
    return QFile::remove(name);
}

bool File::Operations::rename(const QString &oldName, const QString &newName)
{
    return QFile::rename(oldName, newName);
}

void File::Operations::sleep(unsigned long milliseconds)
{
    QThread::msleep(milliseconds);
}

File::Operations *File::setOperations(Operations *operations)
{
    return installedOperations.exchange(operations);
}

File::File(const QString &name)
    : QFile(name)
    , m_target(name)
{
}

File::~File()
{
    if (isReplacing())
        replace();
}

bool File::open(OpenMode mode)
{
    if (!(mode & WriteOnly) || !exists())
        return QFile::open(mode);

    const QString target = fileName();
    const QString temporary = target + randomString(6);
    setFileName(temporary);
    if (mode & ReadOnly)
        QFile::copy(target, temporary);

    // Holding the real file open read-write proves that it can be replaced later.
    if (QFile::open(mode) && m_target.open(ReadWrite))
        return true;

    m_target.close();
    close();
    QFile::remove(temporary);
    // Without this the destructor would take the failed device for a pending
    // replacement and remove the real file.
    setFileName(target);
    return false;
}

bool File::retry(const std::function<bool()> &step, const QString &title, const QString &text)
{
    int attempts = 0;
    while (!step()) {
        operations().sleep(RetryPause);
        if (++attempts % AttemptsBeforeAsking != 0)
            continue;
        Prompt prompt;
        prompt.icon = QMessageBox::Question;
        prompt.title = title;
        prompt.text = text;
        prompt.buttons = QMessageBox::Yes | QMessageBox::No;
        if (ask(prompt) != QMessageBox::Yes)
            return false;
        attempts = 0;
    }
    return true;
}

void File::replace()
{
    const QString target = m_target.fileName();
    const QString temporary = fileName();
    m_target.close();

    // A file the user deleted by hand, as the question suggests, counts as removed;
    // otherwise the loop could never end.
    const bool removed = retry([&] { return operations().remove(target) || !QFile::exists(target); },
        tr("File error!"),
        tr("Can't replace contents of file '%1'. Do you want to try again?\nObs.: You can delete "
           "the file and rename the temporary one manually. Seems that something is preventing "
           "the file to be replaced.").arg(target));
    if (!removed) {
        discard();
        return;
    }

    // The real file is gone before the write handle closes, in that order on purpose.
    operations().sleep(20);
    close();

    retry(
        [&] {
            return operations().rename(temporary, target)
                   || (!QFile::exists(temporary) && QFile::exists(target));
        },
        tr("File rename error!"),
        tr("Can't rename temporary file to '%1'. Do you want to try again?\nObs.: You can rename "
           "it manually. Seems that something is preventing the file to be renamed.").arg(target));
}

void File::discard()
{
    if (!isReplacing()) {
        const bool createdHere = openMode() & WriteOnly;
        close();
        // The device was made for a new file; discarding it means that no file comes to be.
        // A device opened only for reading must never take the user's file with it.
        if (createdHere)
            QFile::remove(fileName());
        return;
    }

    const QString temporary = fileName();
    m_target.close();
    close();
    retry([&] { return operations().remove(temporary) || !QFile::exists(temporary); },
        tr("File remove error!"),
        tr("Can't remove temporary file to '%1'. Do you want to try again?\nObs.: You can remove it "
           "manually. Seems that something is preventing the file to be removed.").arg(temporary));
    setFileName(m_target.fileName());
}

} // namespace Ovra
