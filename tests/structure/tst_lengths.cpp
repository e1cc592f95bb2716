// Keeps the shipped code in units one can read at a sitting: no file of the library over
// 800 lines, and no function of the library, the plug-in, the programs or the generators
// over 80 lines but the hq filters, whose case tables are written out as the published
// filters are.
//
// Functions are found the way the house style writes them: a '{' alone on its line after
// a signature, up to the '}' at the same indentation. Control statements and types keep
// their brace on the line, so they don't count; lambdas don't either.
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

namespace {

const int longestFile = 800;
const int longestFunction = 80;
const QRegularExpression tables(QStringLiteral("^src/image/hqx[^/]*\\.cpp$"));

struct Function
{
    int line;   // one-based, of the signature's first line
    int length; // signature to closing brace
};

bool endsSignature(const QString &line)
{
    static const QRegularExpression end(QStringLiteral("(\\)|\\bconst|\\boverride|\\bnoexcept|\\bfinal)\\s*$"));
    static const QRegularExpression initializer(QStringLiteral("^\\s*[:,]"));
    static const QRegularExpression statement(QStringLiteral("^\\s*(if|for|while|switch|else|do|catch)\\b"));
    return (end.match(line).hasMatch() || initializer.match(line).hasMatch()) && !statement.match(line).hasMatch();
}

QVector<Function> functionsOf(const QStringList &lines)
{
    static const QRegularExpression openBrace(QStringLiteral("^(\\s*)\\{\\s*$"));
    static const QRegularExpression type(QStringLiteral("^\\s*(class|struct|union|enum|namespace)\\b"));
    QVector<Function> found;
    for (int i = 1; i < lines.size(); ++i) {
        const QRegularExpressionMatch brace = openBrace.match(lines.at(i));
        if (!brace.hasMatch() || !endsSignature(lines.at(i - 1)))
            continue;
        // The signature goes up to the line after the previous statement, block, comment or
        // access label.
        int start = i - 1;
        while (start > 0) {
            const QString above = lines.at(start - 1).trimmed();
            if (above.isEmpty() || above.endsWith(QLatin1Char(';')) || above.endsWith(QLatin1Char('}'))
                || above.endsWith(QLatin1Char('{')) || above.endsWith(QLatin1Char(':')) || above.endsWith(QLatin1String("*/"))
                || above.startsWith(QLatin1Char('#'))
                || above.startsWith(QLatin1String("//")))
                break;
            --start;
        }
        if (type.match(lines.at(start)).hasMatch())
            continue;
        const QString close = brace.captured(1) + QLatin1Char('}');
        int end = i + 1;
        while (end < lines.size() && !lines.at(end).startsWith(close))
            ++end;
        found.append({start + 1, end - start + 1});
    }
    return found;
}

QStringList readLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
}

} // namespace

class LengthsTest : public QObject
{
    Q_OBJECT

private slots:
    void functionsFound_data();
    void functionsFound();
    void filesAreShort();
    void functionsAreShort();
};

void LengthsTest::functionsFound_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QVector<int>>("lengths");

    const QString body = QStringLiteral("    work();\n").repeated(5);
    QTest::newRow("free function") << QStringLiteral("int f(int a)\n{\n") + body + QStringLiteral("}\n") << QVector<int>{8};
    QTest::newRow("signature on two lines")
        << QStringLiteral("bool Foo::bar(int a,\n              int b) const\n{\n") + body + QStringLiteral("}\n")
        << QVector<int>{9};
    QTest::newRow("constructor with initializers")
        << QStringLiteral("Foo::Foo()\n    : m_a(1)\n    , m_b(2)\n{\n") + body + QStringLiteral("}\n") << QVector<int>{10};
    QTest::newRow("member inside a class")
        << QStringLiteral("class A\n{\npublic:\n    void f() override\n    {\n") + body + QStringLiteral("    }\n};\n")
        << QVector<int>{8};
    QTest::newRow("nested block is no function")
        << QStringLiteral("void f()\n{\n    if (a)\n    {\n        g();\n    }\n}\n") << QVector<int>{7};
    QTest::newRow("types and namespaces are none")
        << QStringLiteral("namespace N\n{\nstruct S\n{\n    int a;\n};\n}\n") << QVector<int>{};
}

void LengthsTest::functionsFound()
{
    QFETCH(QString, source);
    QFETCH(QVector<int>, lengths);
    QVector<int> found;
    for (const Function &function : functionsOf(source.split(QLatin1Char('\n'))))
        found.append(function.length);
    QCOMPARE(found, lengths);
}

void LengthsTest::filesAreShort()
{
    QStringList tooLong;
    QDirIterator it(QStringLiteral(OVRA_TOP_DIR "/src"), {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const int lines = readLines(path).size() - 1;
        QVERIFY2(lines >= 0, qPrintable(path));
        if (lines > longestFile)
            tooLong << QStringLiteral("%1: %2 lines").arg(path).arg(lines);
    }
    QVERIFY2(tooLong.isEmpty(), qPrintable(tooLong.join(QLatin1Char('\n'))));
}

void LengthsTest::functionsAreShort()
{
    QStringList tooLong;
    int functions = 0;
    const QDir top(QStringLiteral(OVRA_TOP_DIR));
    for (const char *folder : {"src", "plugins", "apps", "scripts"}) {
        QDirIterator it(top.filePath(QLatin1String(folder)), {QStringLiteral("*.h"), QStringLiteral("*.cpp")},
                        QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = top.relativeFilePath(it.next());
            if (tables.match(path).hasMatch())
                continue;
            for (const Function &function : functionsOf(readLines(top.filePath(path)))) {
                ++functions;
                if (function.length > longestFunction)
                    tooLong << QStringLiteral("%1:%2: %3 lines").arg(path).arg(function.line).arg(function.length);
            }
        }
    }
    QVERIFY2(functions > 1000, "the sources were not found");
    QVERIFY2(tooLong.isEmpty(), qPrintable(tooLong.join(QLatin1Char('\n'))));
}

QTEST_GUILESS_MAIN(LengthsTest)
#include "tst_lengths.moc"
