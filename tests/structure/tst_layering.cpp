// Holds the library's sources to its layers. Every #include of src/ may reach its own
// folder and the folders below it, never up nor sideways:
//
//   foundation -> project, cache -> code, image, sound -> engine -> render -> editors
//
// and the model folders (foundation up to engine) include no widget header. The few
// places where the design itself crosses a layer are listed below, each with its reason.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <iterator>

namespace {

struct Allowance
{
    const char *file;    // pattern of the including file, relative to src/
    const char *include; // pattern of what it includes, as written
    const char *reason;
};

// At most ten lines: each one a seam that the design asks for.
const Allowance allowances[] = {
    {"foundation/(prompt|itemsdialog|filedialogs)\\.(h|cpp)", "<Q.*>",
     "the foundation's own windows: the prompt seam's message boxes, ItemsDialog, the file dialogs"},
    {"foundation/interface\\.cpp", "<QMenu>", "Interface::actionControl puts an action into the host's menu"},
    {"foundation/messages\\.cpp", "\"project/projectfile\\.h\"",
     "the project's message table names each message's file, a ProjectFile"},
    {"project/project\\.cpp", "\"code/(codenodefile|codedocument)\\.h\"",
     "Project::addFile makes the project the owner of a node file's document"},
    {"(project|code)/.*\\.cpp", "\"engine/engine\\.h\"",
     "the game mark and the comment marker are the engine's strings (Engine::queryString)"},
    {"(project|image|sound)/.*\\.cpp", "\"engine/extension(manager)?\\.h\"",
     "codecs and backups ask ExtensionManager::list for the formats of the plug-ins"},
    {"project/parentproject.*\\.cpp", "\"editors/editor\\.h\"",
     "ParentProject::save hands a file it can't write to FileEditor::saveFileAs"},
    {"code/codedocument.*\\.cpp", "<QPlainTextDocumentLayout>",
     "a code document lays itself out as plain text from its construction on"},
};

int layerOf(const QString &folder)
{
    static const QHash<QString, int> layers = {
        {QStringLiteral("foundation"), 0}, {QStringLiteral("project"), 1}, {QStringLiteral("cache"), 1},
        {QStringLiteral("code"), 2},       {QStringLiteral("image"), 2},   {QStringLiteral("sound"), 2},
        {QStringLiteral("engine"), 3},     {QStringLiteral("render"), 4},  {QStringLiteral("editors"), 5},
    };
    return layers.value(folder, -1);
}

const int lastModelLayer = 3;

struct Include
{
    QString file;    // relative to the source root
    int line;
    QString written; // "a/b.h" or <QFoo>, as in the source
    QString target;  // the folder of a header of the tree; empty for others
};

QString topFolder(const QString &relativePath)
{
    return relativePath.section(QLatin1Char('/'), 0, 0);
}

// Every #include of the tree's .h and .cpp files. A quoted name is looked up next to the
// file first and then from the root, as the compiler does with the root on its path.
QVector<Include> includesOf(const QString &root)
{
    static const QRegularExpression directive(QStringLiteral("^\\s*#\\s*include\\s*([<\"][^>\"]+[>\"])"));
    QVector<Include> found;
    const QDir rootDir(root);
    QDirIterator it(root, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            continue;
        const QString relative = rootDir.relativeFilePath(path);
        int line = 0;
        while (!file.atEnd()) {
            ++line;
            const QRegularExpressionMatch match = directive.match(QString::fromUtf8(file.readLine()));
            if (!match.hasMatch())
                continue;
            Include include{relative, line, match.captured(1), QString()};
            if (include.written.startsWith(QLatin1Char('"'))) {
                const QString name = include.written.mid(1, include.written.size() - 2);
                const QString beside = QFileInfo(path).dir().filePath(name);
                if (QFileInfo::exists(beside))
                    include.target = topFolder(rootDir.relativeFilePath(beside));
                else if (rootDir.exists(name))
                    include.target = topFolder(name);
            }
            found.append(include);
        }
    }
    return found;
}

bool isWidgetHeader(const QString &written, const QString &widgetsDir)
{
    if (!written.startsWith(QLatin1Char('<')))
        return false;
    const QString name = written.mid(1, written.size() - 2);
    if (name.startsWith(QLatin1String("QtWidgets")))
        return true;
    return !name.contains(QLatin1Char('/')) && QFileInfo::exists(widgetsDir + QLatin1Char('/') + name);
}

// The includes that break the layering, and which allowances were needed, by index.
QStringList faultsOf(const QVector<Include> &includes, const QString &widgetsDir, QVector<bool> *used = nullptr)
{
    if (used)
        used->fill(false, int(std::size(allowances)));
    QStringList faults;
    for (const Include &include : includes) {
        const int from = layerOf(topFolder(include.file));
        if (from < 0)
            continue;
        QString fault;
        const int to = include.target.isEmpty() ? -1 : layerOf(include.target);
        if (to >= 0 && include.target != topFolder(include.file) && to >= from)
            fault = to > from ? QStringLiteral("goes up to %1").arg(include.target)
                              : QStringLiteral("goes sideways to %1").arg(include.target);
        else if (from <= lastModelLayer && isWidgetHeader(include.written, widgetsDir))
            fault = QStringLiteral("is a widget header in a model folder");
        if (fault.isEmpty())
            continue;
        bool allowed = false;
        for (int i = 0; i < int(std::size(allowances)); ++i) {
            const QRegularExpression file(QRegularExpression::anchoredPattern(QLatin1String(allowances[i].file)));
            const QRegularExpression header(QRegularExpression::anchoredPattern(QLatin1String(allowances[i].include)));
            if (file.match(include.file).hasMatch() && header.match(include.written).hasMatch()) {
                allowed = true;
                if (used)
                    (*used)[i] = true;
            }
        }
        if (!allowed)
            faults << QStringLiteral("%1:%2: %3 %4").arg(include.file).arg(include.line).arg(include.written, fault);
    }
    return faults;
}

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace

class LayeringTest : public QObject
{
    Q_OBJECT

private slots:
    void rules_data();
    void rules();
    void sourceTree();
    void allowancesAreFewAndUsed();
};

// The rules on a small tree of their own, so that a fault is seen to fail.
void LayeringTest::rules_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("faults");

    QTest::newRow("model includes an editor") << "code/model.cpp" << QByteArray("#include \"editors/editor.h\"\n") << 1;
    QTest::newRow("foundation includes the engine")
        << "foundation/a.cpp" << QByteArray("  #  include \"engine/extension.h\"\n") << 1;
    QTest::newRow("sideways between siblings") << "image/a.cpp" << QByteArray("#include \"sound/b.h\"\n") << 1;
    QTest::newRow("widget in a model header") << "engine/a.h" << QByteArray("#include <QPushButton>\n") << 1;
    QTest::newRow("widget by module path") << "cache/a.cpp" << QByteArray("#include <QtWidgets/QLabel>\n") << 1;
    QTest::newRow("editor includes the model")
        << "editors/e.cpp" << QByteArray("#include \"code/model.h\"\n#include <QPushButton>\n") << 0;
    QTest::newRow("render includes the engine") << "render/r.cpp" << QByteArray("#include \"engine/extension.h\"\n") << 0;
    QTest::newRow("own folder, quoted beside") << "code/model.cpp" << QByteArray("#include \"model.h\"\n") << 0;
    QTest::newRow("core Qt header") << "code/model.cpp" << QByteArray("#include <QTextDocument>\n") << 0;
    QTest::newRow("comment is no include") << "code/model.cpp" << QByteArray("// #include \"editors/editor.h\"\n") << 0;
    QTest::newRow("allowed seam") << "project/parentproject.cpp" << QByteArray("#include \"editors/editor.h\"\n") << 0;
    QTest::newRow("allowance is for its file only")
        << "project/project.cpp" << QByteArray("#include \"editors/editor.h\"\n") << 1;
}

void LayeringTest::rules()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(int, faults);

    QTemporaryDir root;
    QVERIFY(root.isValid());
    const QString widgets = root.filePath(QStringLiteral("widgets"));
    writeFile(widgets + QStringLiteral("/QPushButton"), "#include \"qpushbutton.h\"\n");
    writeFile(widgets + QStringLiteral("/QLabel"), "#include \"qlabel.h\"\n");
    const QString src = root.filePath(QStringLiteral("src"));
    for (const char *header : {"editors/editor.h", "engine/extension.h", "sound/b.h", "code/model.h"})
        writeFile(src + QLatin1Char('/') + QLatin1String(header), "#pragma once\n");
    writeFile(src + QLatin1Char('/') + file, content);

    const QStringList found = faultsOf(includesOf(src), widgets);
    QVERIFY2(found.size() == faults, qPrintable(found.join(QLatin1Char('\n'))));
}

void LayeringTest::sourceTree()
{
    const QStringList faults = faultsOf(includesOf(QStringLiteral(OVRA_SOURCE_DIR)), QStringLiteral(QTWIDGETS_DIR));
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1Char('\n'))));
}

// An allowance that nothing needs any more hides the next real crossing: it goes.
void LayeringTest::allowancesAreFewAndUsed()
{
    QVERIFY(std::size(allowances) <= 10);
    QVector<bool> used;
    faultsOf(includesOf(QStringLiteral(OVRA_SOURCE_DIR)), QStringLiteral(QTWIDGETS_DIR), &used);
    for (int i = 0; i < used.size(); ++i)
        QVERIFY2(used.at(i), qPrintable(QStringLiteral("unused allowance: %1 %2")
                                            .arg(QLatin1String(allowances[i].file), QLatin1String(allowances[i].include))));
}

QTEST_GUILESS_MAIN(LayeringTest)
#include "tst_layering.moc"
