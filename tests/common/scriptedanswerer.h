#pragma once

#include "foundation/prompt.h"

#include <QList>

// Plays the user in tests: answers prompts from a script, in order, and records
// every prompt it was shown. Installed for its lifetime.
class ScriptedAnswerer
{
public:
    explicit ScriptedAnswerer(QList<QMessageBox::StandardButton> answers = {});
    ~ScriptedAnswerer();
    ScriptedAnswerer(const ScriptedAnswerer &) = delete;
    ScriptedAnswerer &operator=(const ScriptedAnswerer &) = delete;

    void push(QMessageBox::StandardButton answer) { m_answers.append(answer); }
    const QList<Ovra::Prompt> &prompts() const { return m_prompts; }
    // Answers left unused.
    int pending() const { return m_answers.size(); }

private:
    QMessageBox::StandardButton answer(const Ovra::Prompt &prompt);

    QList<QMessageBox::StandardButton> m_answers;
    QList<Ovra::Prompt> m_prompts;
    Ovra::Answerer m_previous;
};
