#pragma once

// Plays the user at a modal dialog the code under test opens and waits on: the answer is
// given once the dialog is up. A dialog that never comes makes the poll give up after a
// minute, so that the test fails instead of hanging; a busy machine gets the whole minute.
#include <QApplication>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QtTest>
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
            QPointer<T> answered(dialog);
            answer(dialog);
            // A dialog the answer didn't close would leave the code under test waiting in
            // it for ever: it is put away, and the test fails on what it then finds.
            QTimer::singleShot(20000, [answered] {
                if (answered && answered->isVisible())
                    answered->reject();
            });
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
        // Typed into the name field as well: selectFile() leaves alone a field that already
        // has the focus, and the dialog would take what stands there.
        if (auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
            edit->setText(name);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

// Clicks a dialog's button of that role, as a user does.
inline void clickButton(QDialog *dialog, QDialogButtonBox::StandardButton which)
{
    auto *box = dialog->findChild<QDialogButtonBox *>();
    QVERIFY(box);
    QTest::mouseClick(box->button(which), Qt::LeftButton);
}

// Chooses files of one folder in the next file dialog. Give the names in the order of the
// dialog's list (by name): once the dialog has read the folder, it reports them so.
inline void answerFilesDialog(const QString &folder, const QStringList &names)
{
    whenShown<QFileDialog>([folder, names](QFileDialog *dialog) {
        dialog->setDirectory(folder);
        QStringList quoted;
        for (const QString &name : names)
            quoted << (names.size() > 1 ? QLatin1Char('"') + name + QLatin1Char('"') : name);
        // Typed into the name field: selectFile() leaves a field that has the focus alone.
        auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QVERIFY(edit);
        edit->setText(quoted.join(QLatin1Char(' ')));
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

// Fills the next dialog of that class and clicks its OK.
template<class T>
inline void acceptWhenShown(std::function<void(T *)> fill = nullptr)
{
    whenShown<T>([fill](T *dialog) {
        if (fill)
            fill(dialog);
        clickButton(dialog, QDialogButtonBox::Ok);
    });
}
