#pragma once

// The tool's answers to the library's progress and questions. Progress is a bar on stderr
// when stderr is a terminal, and nothing otherwise. Questions go to the terminal when the
// user sits at one; without a terminal they take the safe answer: never overwrite, never
// discard.
#include "foundation/progress.h"
#include "foundation/prompt.h"

#include <QString>

#include <memory>

class QTextStream;

namespace Terminal {

bool isInteractive();
bool stderrIsTerminal();

// The answer a question gets when nobody can be asked: No, Cancel or Abort before
// anything that would write or throw away.
QMessageBox::StandardButton safeAnswer(const Ovra::Prompt &prompt);

// Installs the tool's answerer; questions without a terminal are told on `err`.
void installAnswerer(QTextStream *err);

// While it lives, what libraries write straight to the process's stderr goes nowhere:
// the audio libraries' talk while they look for a device, which the tool tells in its
// own words.
class QuietStderr
{
public:
    QuietStderr();
    ~QuietStderr();
    Q_DISABLE_COPY(QuietStderr)

private:
    int m_saved = -1;
};

// One bar: "title [#####     ] 12/40". Silent when `visible` is false.
class ProgressJob : public Ovra::Job
{
public:
    ProgressJob(const QString &title, bool visible);
    ~ProgressJob() override;

    void error(const QString &text) override;
    void setMaximum(uint maximum) override;
    void setValue(uint value) override;
    void incrementValue() override;
    bool wasCancelled() override { return false; }
    void setAsynchronous(bool) override {}

    // The errors reported through the job, for the command to print.
    QStringList errors() const { return m_errors; }

private:
    void draw();

    QString m_title;
    bool m_visible;
    uint m_maximum = 0;
    uint m_value = 0;
    int m_drawn = -1;
    QStringList m_errors;
};

class Progress : public Ovra::ProgressProvider
{
public:
    explicit Progress(bool visible) : m_visible(visible) {}
    ~Progress() override;
    // The job stays the provider's until it ends.
    Ovra::Job *start(const QString &title, int reserved) override;

private:
    bool m_visible;
    std::vector<std::unique_ptr<ProgressJob>> m_jobs;
};

} // namespace Terminal
