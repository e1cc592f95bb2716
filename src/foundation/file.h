#pragma once

#include "foundation/global.h"

#include <QFile>

#include <functional>

namespace Ovra {

// A file device that never overwrites an existing file in place. Opening an existing
// file for writing writes to a temporary beside it ("a.def" -> "a.defQ3xZ9k") and
// holds the real file open; the destructor replaces the real file with the temporary.
// When the system refuses a step the user is asked, every two seconds, whether to go
// on trying; giving up always leaves either the old file or the temporary on disk.
//
// The two names are the whole state: while the device's name differs from the
// target's, a replacement is pending.
class OVRA_EXPORT File : public QFile
{
    Q_OBJECT
public:
    explicit File(const QString &name);
    ~File() override;

    bool open(OpenMode mode) override;

    // Drops what was written: the temporary goes and the real file stays as it was.
    // A device that created a new file removes that file.
    void discard();

    QString targetName() const { return m_target.fileName(); }
    bool isReplacing() const { return fileName() != m_target.fileName(); }

    // What the replacement does to the disk. Tests stand in for it to play a file
    // that another program holds; hosts on exotic storage may too.
    class OVRA_EXPORT Operations
    {
    public:
        virtual ~Operations() = default;
        virtual bool remove(const QString &name);
        virtual bool rename(const QString &oldName, const QString &newName);
        virtual void sleep(unsigned long milliseconds);
    };
    // Installs operations (null restores the real ones); returns the ones before.
    static Operations *setOperations(Operations *operations);

private:
    void replace();
    // Tries `step` until it succeeds; every tenth failure asks whether to go on.
    // False when the user gave up.
    bool retry(const std::function<bool()> &step, const QString &title, const QString &text);

    QFile m_target;
};

} // namespace Ovra
