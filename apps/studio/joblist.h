#pragma once

// The studio's progress display as the library sees it: every long operation starts a
// job here, from the GUI thread or, for background saves, reports from worker threads.
// The list keeps the jobs and tells the status bar on the GUI thread; a job the user
// cancels answers wasCancelled() from then on.
#include "foundation/progress.h"

#include <QList>
#include <QMutex>
#include <QObject>
#include <QString>

#include <memory>

class StudioJob;

class JobList : public QObject, public Ovra::ProgressProvider
{
    Q_OBJECT
public:
    explicit JobList(QObject *parent = nullptr);
    ~JobList() override;

    // A new job; it ends when the call that started it returns to the event loop, or, for
    // an asynchronous one, once it has reached its maximum or reported an error. A
    // cancelled job runs on until its owner notices.
    Ovra::Job *start(const QString &title, int reserved) override;

    // What the status bar shows: the jobs that run, and the last one's state.
    int count() const;
    int backgroundCount() const;
    QString currentTitle() const;
    uint currentValue() const;
    uint currentMaximum() const;
    // The errors jobs reported, oldest first.
    QStringList errors() const;

public slots:
    // Cancels every job that runs.
    void cancelAll();

signals:
    // Queued to the GUI thread whenever a job starts, moves on or ends.
    void changed();
    void errorReported(const QString &text);

private:
    friend class StudioJob;
    void report();
    void finish(StudioJob *job);

    mutable QMutex m_mutex;
    QList<std::shared_ptr<StudioJob>> m_jobs;
    QList<std::shared_ptr<StudioJob>> m_retired;
    QStringList m_errors;
    bool m_reportQueued = false;
};

