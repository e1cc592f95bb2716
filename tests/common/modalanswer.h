#pragma once

// Plays the user at a modal dialog the code under test opens and waits on: the answer is
// given once the dialog is up. A dialog that never comes makes the poll give up after a
// minute, so that the test fails instead of hanging; a busy machine gets the whole minute.
#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QTimer>

#include <functional>
#include <memory>

template<typename T>
void whenShown(std::function<void(T *)> answer)
{
    auto *poll = new QTimer;
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    QObject::connect(poll, &QTimer::timeout, [poll, clock, answer] {
        auto *dialog = qobject_cast<T *>(QApplication::activeModalWidget());
        if (dialog) {
            poll->stop();
            poll->deleteLater();
            answer(dialog);
        } else if (clock->elapsed() > 60000) {
            poll->stop();
            poll->deleteLater();
        }
    });
    poll->start(10);
}

// Chooses `name` in the next file dialog.
inline void answerFileDialog(const QString &name)
{
    whenShown<QFileDialog>([name](QFileDialog *dialog) {
        dialog->selectFile(name);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}
