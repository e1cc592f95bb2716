#pragma once

// The status bar's view of the job list: the running job's title and progress, how many
// run in the background, and a button that cancels them. Hidden while nothing runs.
#include <QElapsedTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QToolButton;
class JobList;

class JobsWidget : public QWidget
{
    Q_OBJECT
public:
    explicit JobsWidget(JobList *jobs, QWidget *parent = nullptr);

    QLabel *titleLabel() const { return m_title; }
    QProgressBar *progressBar() const { return m_bar; }
    QToolButton *cancelButton() const { return m_cancel; }

private:
    void update();

    JobList *m_jobs;
    QLabel *m_title;
    QProgressBar *m_bar;
    QLabel *m_background;
    QToolButton *m_cancel;
    QElapsedTimer m_lastPaint;
};
