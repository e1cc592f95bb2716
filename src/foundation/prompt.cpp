#include "foundation/prompt.h"

#include <QApplication>
#include <QMutex>
#include <QThread>

namespace Ovra {
namespace {

struct AnswererSlot
{
    QMutex mutex;
    Answerer answerer;
};

AnswererSlot &answererSlot()
{
    static AnswererSlot slot;
    return slot;
}

QMessageBox::StandardButton showBox(const Prompt &prompt)
{
    QMessageBox box(prompt.icon, prompt.title, prompt.text, prompt.buttons, prompt.parent);
    if (prompt.defaultButton != QMessageBox::NoButton)
        box.setDefaultButton(prompt.defaultButton);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

} // namespace

QMessageBox::StandardButton escapeAnswer(const Prompt &prompt)
{
    for (auto button : {QMessageBox::No, QMessageBox::Cancel, QMessageBox::Abort, QMessageBox::Ok}) {
        if (prompt.buttons & button)
            return button;
    }
    return prompt.defaultButton;
}

Answerer setAnswerer(Answerer answerer)
{
    auto &slot = answererSlot();
    QMutexLocker lock(&slot.mutex);
    std::swap(slot.answerer, answerer);
    return answerer;
}

QMessageBox::StandardButton ask(const Prompt &prompt)
{
    Answerer answerer;
    {
        auto &slot = answererSlot();
        QMutexLocker lock(&slot.mutex);
        answerer = slot.answerer;
    }
    if (answerer)
        return answerer(prompt);

    auto *app = qobject_cast<QApplication *>(QCoreApplication::instance());
    if (!app) {
        qWarning("%s: %s", qUtf8Printable(prompt.title), qUtf8Printable(prompt.text));
        return escapeAnswer(prompt);
    }
    if (QThread::currentThread() == app->thread())
        return showBox(prompt);

    // A worker thread can't own widgets: the box opens on the GUI thread while this one waits.
    QMessageBox::StandardButton answer = QMessageBox::NoButton;
    QMetaObject::invokeMethod(app, [&] { answer = showBox(prompt); }, Qt::BlockingQueuedConnection);
    return answer;
}

void tell(QMessageBox::Icon icon, const QString &title, const QString &text, QWidget *parent)
{
    Prompt prompt;
    prompt.icon = icon;
    prompt.title = title;
    prompt.text = text;
    prompt.parent = parent;
    ask(prompt);
}

} // namespace Ovra
