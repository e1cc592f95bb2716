#include "scriptedanswerer.h"

#include <QtTest>

ScriptedAnswerer::ScriptedAnswerer(QList<QMessageBox::StandardButton> answers)
    : m_answers(std::move(answers))
{
    m_previous = Ovra::setAnswerer([this](const Ovra::Prompt &prompt) { return answer(prompt); });
}

ScriptedAnswerer::~ScriptedAnswerer()
{
    Ovra::setAnswerer(m_previous);
}

QMessageBox::StandardButton ScriptedAnswerer::answer(const Ovra::Prompt &prompt)
{
    m_prompts.append(prompt);
    if (m_answers.isEmpty()) {
        // An unexpected question: say so, and give the answer that ends any retry loop.
        qWarning("unscripted prompt: %s", qUtf8Printable(prompt.title));
        return Ovra::escapeAnswer(prompt);
    }
    return m_answers.takeFirst();
}
