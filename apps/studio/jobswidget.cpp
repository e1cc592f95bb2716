#include "jobswidget.h"

#include "joblist.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QToolButton>

JobsWidget::JobsWidget(JobList *jobs, QWidget *parent)
    : QWidget(parent)
    , m_jobs(jobs)
    , m_title(new QLabel(this))
    , m_bar(new QProgressBar(this))
    , m_background(new QLabel(this))
    , m_cancel(new QToolButton(this))
{
    m_title->setObjectName(QStringLiteral("job_title"));
    m_bar->setObjectName(QStringLiteral("job_progress"));
    m_bar->setMaximumWidth(160);
    m_bar->setTextVisible(false);
    m_background->setObjectName(QStringLiteral("job_background"));
    m_cancel->setObjectName(QStringLiteral("job_cancel"));
    m_cancel->setText(tr("Cancel"));
    m_cancel->setToolTip(tr("Cancel the running jobs"));
    m_cancel->setAutoRaise(true);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_title);
    layout->addWidget(m_bar);
    layout->addWidget(m_background);
    layout->addWidget(m_cancel);
    connect(m_cancel, &QToolButton::clicked, jobs, &JobList::cancelAll);
    connect(jobs, &JobList::changed, this, &JobsWidget::update);
    m_lastPaint.start();
    update();
}

void JobsWidget::update()
{
    const int count = m_jobs->count();
    setVisible(count > 0);
    if (count == 0)
        return;
    m_title->setText(m_jobs->currentTitle());
    const uint maximum = m_jobs->currentMaximum();
    // Without a maximum the bar only says that something runs.
    m_bar->setRange(0, maximum > 0 ? int(qMin<uint>(maximum, INT_MAX)) : 0);
    if (maximum > 0)
        m_bar->setValue(int(qMin(m_jobs->currentValue(), maximum)));
    const int background = m_jobs->backgroundCount();
    m_background->setVisible(background > 0);
    m_background->setText(tr("%n in the background", nullptr, background));
    // A long job of the GUI thread keeps the event loop from painting: paint now, a few
    // times a second at most.
    if (m_lastPaint.elapsed() > 100 && isVisible()) {
        repaint();
        m_lastPaint.restart();
    }
}
