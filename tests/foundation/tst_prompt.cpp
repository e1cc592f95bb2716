#include "foundation/prompt.h"

#include "scriptedanswerer.h"

#include <QtConcurrent>
#include <QtTest>

using namespace Ovra;

// Questions reach the user through one seam; without widgets nobody can answer, so
// the seam must give up rather than hang.
class PromptTest : public QObject
{
    Q_OBJECT

private slots:
    void escapeAnswer_data();
    void escapeAnswer();
    void answererInstalledAndRestored();
    void answererFromWorkerThread();
    void headlessWithoutAnswerer();
};

void PromptTest::escapeAnswer_data()
{
    QTest::addColumn<int>("buttons");
    QTest::addColumn<int>("defaultButton");
    QTest::addColumn<int>("answer");
    QTest::newRow("yes/no gives no") << int(QMessageBox::Yes | QMessageBox::No)
                                     << int(QMessageBox::Yes) << int(QMessageBox::No);
    QTest::newRow("ok/cancel gives cancel") << int(QMessageBox::Ok | QMessageBox::Cancel)
                                            << int(QMessageBox::NoButton) << int(QMessageBox::Cancel);
    QTest::newRow("notice gives ok") << int(QMessageBox::Ok) << int(QMessageBox::NoButton)
                                     << int(QMessageBox::Ok);
    QTest::newRow("otherwise the default") << int(QMessageBox::Save | QMessageBox::Discard)
                                           << int(QMessageBox::Save) << int(QMessageBox::Save);
}

void PromptTest::escapeAnswer()
{
    QFETCH(int, buttons);
    QFETCH(int, defaultButton);
    QFETCH(int, answer);
    Prompt prompt;
    prompt.buttons = QMessageBox::StandardButtons(buttons);
    prompt.defaultButton = QMessageBox::StandardButton(defaultButton);
    QCOMPARE(int(Ovra::escapeAnswer(prompt)), answer);
}

void PromptTest::answererInstalledAndRestored()
{
    Prompt prompt;
    prompt.title = QStringLiteral("Title");
    prompt.text = QStringLiteral("Go on?");
    prompt.buttons = QMessageBox::Yes | QMessageBox::No;
    {
        ScriptedAnswerer outer({QMessageBox::Yes});
        {
            ScriptedAnswerer inner({QMessageBox::No});
            QCOMPARE(ask(prompt), QMessageBox::No);
            QCOMPARE(inner.prompts().size(), 1);
            QCOMPARE(inner.prompts().first().text, QStringLiteral("Go on?"));
        }
        QCOMPARE(ask(prompt), QMessageBox::Yes);
        tell(QMessageBox::Warning, QStringLiteral("Notice"), QStringLiteral("Done."));
        QCOMPARE(outer.prompts().size(), 2);
        QCOMPARE(outer.prompts().at(1).icon, QMessageBox::Warning);
        QCOMPARE(outer.prompts().at(1).buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
    }
}

void PromptTest::answererFromWorkerThread()
{
    // Background saves close their files on worker threads; their questions still
    // reach the answerer.
    ScriptedAnswerer user({QMessageBox::Retry});
    Prompt prompt;
    prompt.buttons = QMessageBox::Retry | QMessageBox::Cancel;
    const QMessageBox::StandardButton answer = QtConcurrent::run([prompt] { return ask(prompt); }).result();
    QCOMPARE(answer, QMessageBox::Retry);
}

void PromptTest::headlessWithoutAnswerer()
{
    Prompt prompt;
    prompt.title = QStringLiteral("File error!");
    prompt.text = QStringLiteral("Try again?");
    prompt.buttons = QMessageBox::Yes | QMessageBox::No;
    QTest::ignoreMessage(QtWarningMsg, "File error!: Try again?");
    QCOMPARE(ask(prompt), QMessageBox::No);
}

QTEST_GUILESS_MAIN(PromptTest)
#include "tst_prompt.moc"
