#include "code/codetext.h"

#include <QtTest>

using namespace Ovra;

class CodeTextTest : public QObject
{
    Q_OBJECT

private slots:
    void expandTabs_data();
    void expandTabs();
    void fileText_data();
    void fileText();
    void foldUndoesExpansion();
    void changedLine_data();
    void changedLine();
};

void CodeTextTest::expandTabs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expanded");
    QTest::newRow("at a stop") << "\tx" << "    x";
    QTest::newRow("mid column") << "ab\tx" << "ab  x";
    QTest::newRow("one before a stop") << "abc\tx" << "abc x";
    QTest::newRow("two tabs") << "a\t\tb" << "a       b";
    QTest::newRow("line ends restart the column") << "abc\n\tx\r\n\ty" << "abc\n    x\r\n    y";
    QTest::newRow("no tabs") << "plain = 1" << "plain = 1";
}

void CodeTextTest::expandTabs()
{
    QFETCH(QString, text);
    QFETCH(QString, expanded);
    QCOMPARE(Ovra::expandTabs(text), expanded);
}

void CodeTextTest::fileText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("fold");
    QTest::addColumn<QString>("written");
    QTest::newRow("line ends") << "a\nb\n" << false << "a\r\nb\r\n";
    QTest::newRow("blanks kept without folding") << "a   b" << false << "a   b";
    QTest::newRow("run reaching a stop") << "a   b" << true << "a\tb";
    QTest::newRow("single blank before a stop stays") << "abc d" << true << "abc d";
    QTest::newRow("run short of the stop") << "a  b" << true << "a  b";
    QTest::newRow("indent of eight") << "        x" << true << "\t\tx";
    QTest::newRow("indent of five") << "     x" << true << "\t x";
    QTest::newRow("after a tab") << "\t    x" << true << "\t\tx";
    QTest::newRow("per line") << "ab  x\n  y" << true << "ab\tx\r\n  y";
}

void CodeTextTest::fileText()
{
    QFETCH(QString, text);
    QFETCH(bool, fold);
    QFETCH(QString, written);
    QCOMPARE(Ovra::fileText(text, fold), written);
}

void CodeTextTest::foldUndoesExpansion()
{
    // Tab-indented text read with expansion and written with folding comes back as it was.
    const QString original = QStringLiteral("[Stats]\r\n\tspeed\t= 1000\r\n\t\tweight = 3000\r\n");
    QString loaded = Ovra::expandTabs(original);
    loaded.remove(QLatin1Char('\r'));
    QCOMPARE(Ovra::fileText(loaded, true), original);
}

void CodeTextTest::changedLine_data()
{
    QTest::addColumn<QString>("oldLine");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("preserve");
    QTest::addColumn<QString>("line");
    QTest::newRow("columns kept") << "speed  1000 ; strong" << "weight 3000" << true << "weight  3000 ; strong";
    QTest::newRow("comment kept without the option") << "speed  1000 ; strong" << "weight 3000" << false
                                                       << "weight 3000 ; strong";
    QTest::newRow("indent kept") << "    x = 1" << "y = 22" << true << "    y = 22";
    QTest::newRow("new text before the comment") << "a ;note" << "b c" << true << "b c;note";
    QTest::newRow("more new words than places") << "a  b" << "x y z w" << true << "x  y z w";
    QTest::newRow("fewer new words") << "a  b  c" << "x" << true << "x    ";
    QTest::newRow("no comment, option off") << "a b" << "c d" << false << "c d";
    QTest::newRow("empty old line") << QString() << "v = 1" << true << "v = 1";
    QTest::newRow("comment only") << "; all comment" << "x = 1" << true << "x = 1; all comment";
}

void CodeTextTest::changedLine()
{
    QFETCH(QString, oldLine);
    QFETCH(QString, text);
    QFETCH(bool, preserve);
    QFETCH(QString, line);
    QCOMPARE(Ovra::changedLine(oldLine, text, QStringLiteral(";"), preserve), line);
}

QTEST_GUILESS_MAIN(CodeTextTest)
#include "tst_codetext.moc"
