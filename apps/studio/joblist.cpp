#include "joblist.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QMutexLocker>
#include <QThread>
#include <QTimer>

#include <atomic>

class StudioJob : public Ovra::Job
{
public:
    StudioJob(JobList *list, const QString &title) : title(title), m_list(list) {}

    void error(const QString &text) override
    {
        {
            QMutexLocker lock(&m_list->m_mutex);
            m_list->m_errors << title + QStringLiteral(": ") + text;
        }
        QMetaObject::invokeMethod(m_list, "errorReported", Qt::QueuedConnection, Q_ARG(QString, text));
        // A job that failed has nothing more to show.
        if (asynchronous)
            m_list->finish(this);
        else
            m_list->report();
    }
    void setMaximum(uint maximum) override
    {
        this->maximum = maximum;
        m_list->report();
    }
    void setValue(uint value) override
    {
        this->value = value;
        progressed();
    }
    void incrementValue() override
    {
        ++value;
        progressed();
    }
    bool wasCancelled() override { return cancelled; }
    void setAsynchronous(bool asynchronous) override { this->asynchronous = asynchronous; }

    const QString title;
    std::atomic<uint> value{0};
    std::atomic<uint> maximum{0};
    std::atomic<bool> cancelled{false};
    std::atomic<bool> asynchronous{false};
    std::atomic<bool> finished{false};

private:
    void progressed()
    {
        // A job of a worker thread ends by itself once it has come to its end.
        if (asynchronous && maximum > 0 && value >= maximum)
            m_list->finish(this);
        else
            m_list->report();
    }

    JobList *m_list;
};

JobList::JobList(QObject *parent)
    : QObject(parent)
{
}

JobList::~JobList() = default;

Ovra::Job *JobList::start(const QString &title, int)
{
    auto job = std::make_shared<StudioJob>(this, title);
    {
        QMutexLocker lock(&m_mutex);
        m_jobs << job;
    }
    // The call that started a job of this thread is over when the event loop runs again;
    // by then it has said whether the job goes on by itself.
    StudioJob *raw = job.get();
    QTimer::singleShot(0, this, [this, raw] {
        if (!raw->asynchronous)
            finish(raw);
    });
    report();
    return raw;
}

int JobList::count() const
{
    QMutexLocker lock(&m_mutex);
    return m_jobs.size();
}

int JobList::backgroundCount() const
{
    QMutexLocker lock(&m_mutex);
    int count = 0;
    for (const auto &job : m_jobs)
        count += job->asynchronous ? 1 : 0;
    return count;
}

QString JobList::currentTitle() const
{
    QMutexLocker lock(&m_mutex);
    return m_jobs.isEmpty() ? QString() : m_jobs.last()->title;
}

uint JobList::currentValue() const
{
    QMutexLocker lock(&m_mutex);
    return m_jobs.isEmpty() ? 0 : m_jobs.last()->value.load();
}

uint JobList::currentMaximum() const
{
    QMutexLocker lock(&m_mutex);
    return m_jobs.isEmpty() ? 0 : m_jobs.last()->maximum.load();
}

QStringList JobList::errors() const
{
    QMutexLocker lock(&m_mutex);
    return m_errors;
}

void JobList::cancelAll()
{
    {
        QMutexLocker lock(&m_mutex);
        for (const auto &job : qAsConst(m_jobs))
            job->cancelled = true;
    }
    report();
}

void JobList::report()
{
    // Straight away on the GUI thread, so that a bar over a long call of this thread moves;
    // queued from workers, once for a burst of reports.
    if (QThread::currentThread() == thread()) {
        emit changed();
        return;
    }
    QMutexLocker lock(&m_mutex);
    if (m_reportQueued)
        return;
    m_reportQueued = true;
    QMetaObject::invokeMethod(this, [this] {
        {
            QMutexLocker lock(&m_mutex);
            m_reportQueued = false;
        }
        emit changed();
    }, Qt::QueuedConnection);
}

void JobList::finish(StudioJob *job)
{
    if (job->finished.exchange(true))
        return;
    {
        QMutexLocker lock(&m_mutex);
        for (int i = 0; i < m_jobs.size(); ++i) {
            if (m_jobs.at(i).get() == job) {
                // The library may still hold the pointer (a worker inside its last call,
                // a save that reports after its end): ended jobs stay alive with the list.
                // They are a few words each.
                m_retired << m_jobs.takeAt(i);
                break;
            }
        }
    }
    report();
}
