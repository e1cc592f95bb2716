#pragma once

// The thread checker sees the locks and threads of the C library, not those inside the
// Qt library, which isn't built for it. Where the caches synchronise through Qt (its
// mutex, its read-write lock, a task of its thread pool), these tell the checker so.
// Without the checker they are nothing.
#include <QMutex>
#include <QReadWriteLock>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace Ovra {

inline void threadCheckAcquire(const void *address)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(const_cast<void *>(address));
#else
    Q_UNUSED(address)
#endif
}

inline void threadCheckRelease(const void *address)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_release(const_cast<void *>(address));
#else
    Q_UNUSED(address)
#endif
}

// QMutexLocker, QReadLocker and QWriteLocker, told to the checker.
class CheckedMutexLocker
{
public:
    explicit CheckedMutexLocker(QMutex *mutex) : m_mutex(mutex)
    {
        m_mutex->lock();
        threadCheckAcquire(m_mutex);
    }
    ~CheckedMutexLocker()
    {
        threadCheckRelease(m_mutex);
        m_mutex->unlock();
    }
    CheckedMutexLocker(const CheckedMutexLocker &) = delete;
    CheckedMutexLocker &operator=(const CheckedMutexLocker &) = delete;

private:
    QMutex *m_mutex;
};

class CheckedReadLocker
{
public:
    explicit CheckedReadLocker(QReadWriteLock *lock) : m_lock(lock)
    {
        m_lock->lockForRead();
        threadCheckAcquire(m_lock);
    }
    ~CheckedReadLocker()
    {
        threadCheckRelease(m_lock);
        m_lock->unlock();
    }
    CheckedReadLocker(const CheckedReadLocker &) = delete;
    CheckedReadLocker &operator=(const CheckedReadLocker &) = delete;

private:
    QReadWriteLock *m_lock;
};

class CheckedWriteLocker
{
public:
    explicit CheckedWriteLocker(QReadWriteLock *lock) : m_lock(lock)
    {
        m_lock->lockForWrite();
        threadCheckAcquire(m_lock);
    }
    ~CheckedWriteLocker() { unlock(); }
    void unlock()
    {
        if (!m_lock)
            return;
        threadCheckRelease(m_lock);
        m_lock->unlock();
        m_lock = nullptr;
    }
    CheckedWriteLocker(const CheckedWriteLocker &) = delete;
    CheckedWriteLocker &operator=(const CheckedWriteLocker &) = delete;

private:
    QReadWriteLock *m_lock;
};

} // namespace Ovra
