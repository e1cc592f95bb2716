#include "testengine.h"
#include "treeshape.h"

#include "foundation/messages.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace Ovra;

namespace {

QString randomLine(QRandomGenerator &random)
{
    switch (random.bounded(9)) {
    case 0: return QStringLiteral("[G%1]").arg(random.bounded(20));
    case 6: return QStringLiteral("<%1>").arg(random.bounded(20));
    case 7:
    case 8: return QStringLiteral("frame %1, 0, 0, %2").arg(random.bounded(9)).arg(random.bounded(5));
    case 1: return QStringLiteral("; note %1").arg(random.bounded(100));
    case 2: return QString();
    case 3: return QStringLiteral("broken %1").arg(random.bounded(9));
    default: return QStringLiteral("k%1 = %2").arg(random.bounded(30)).arg(random.bounded(1000));
    }
}

} // namespace

class TreePropertyTest : public QObject
{
    Q_OBJECT

private slots:
    void editsKeepTheTreeOfAFreshParse_data();
    void editsKeepTheTreeOfAFreshParse();
};

void TreePropertyTest::editsKeepTheTreeOfAFreshParse_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed : {1u, 4u, 7u, 37u, 38u, 42u, 2026u})
        QTest::addRow("seed %u", seed) << seed;
}

void TreePropertyTest::editsKeepTheTreeOfAFreshParse()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    QStringList lines;
    for (int i = 0; i < 200; ++i)
        lines << randomLine(random);
    TestDocument document;
    document.fromString(lines.join(QLatin1Char('\n')));

    for (int step = 0; step < 150; ++step) {
        const int blocks = document.blockCount();
        QTextCursor cursor(document.findBlockByNumber(random.bounded(blocks)));
        QString action;
        switch (random.bounded(7)) {
        case 0: // a new line
            cursor.insertText(randomLine(random) + QLatin1Char('\n'));
            action = QStringLiteral("insert line");
            break;
        case 1: // a keystroke inside a line
            cursor.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, random.bounded(cursor.block().length()));
            cursor.insertText(QString(QChar(u"[]= ;kx1"[random.bounded(8)])));
            action = QStringLiteral("type");
            break;
        case 2: // delete a few lines
            cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, 1 + random.bounded(3));
            cursor.removeSelectedText();
            action = QStringLiteral("delete lines");
            break;
        case 3: // delete a character
            cursor.movePosition(QTextCursor::Right, QTextCursor::MoveAnchor, random.bounded(cursor.block().length()));
            cursor.deleteChar();
            action = QStringLiteral("delete char");
            break;
        case 4:
            document.undo();
            action = QStringLiteral("undo");
            break;
        case 5:
            document.redo();
            action = QStringLiteral("redo");
            break;
        default: { // several node edits as one step
            document.beginChange();
            for (int i = 0; i < 3; ++i) {
                CodeNode *node = document.nodeInBlock(document.findBlockByNumber(random.bounded(document.blockCount())));
                if (!node)
                    document.insertBefore(nullptr, randomLine(random), true);
                else if (random.bounded(2))
                    document.insertAfter(node, randomLine(random), true);
                else
                    node->remove(false);
            }
            document.endChange();
            action = QStringLiteral("bracket");
            break;
        }
        }
        TestDocument fresh;
        fresh.fromString(document.toString());
        const QStringList actual = codeTreeShape(document);
        const QStringList expected = codeTreeShape(fresh);
        if (actual != expected) {
            qWarning("step %d (%s) diverged", step, qPrintable(action));
            QCOMPARE(actual, expected);
        }
    }
}

QTEST_MAIN(TreePropertyTest)
#include "tst_treeproperty.moc"
