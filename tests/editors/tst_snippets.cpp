#include "editors/code/snipdlg.h"
#include "editors/code/snipfield.h"
#include "editors/code/snipfielddlg.h"
#include "editors/code/snipfieldsmodel.h"
#include "editors/code/snipform.h"
#include "editors/code/snippet.h"
#include "editors/code/snippetmanager.h"

#include "scriptedanswerer.h"
#include "testinterface.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeView>
#include <QtTest>

#include <functional>

using namespace Ovra;

namespace {

// The data directory needn't exist, so the path is cleaned before the system sees it.
const QString sampleDir = QDir::cleanPath(QStringLiteral(TESTDATADIR "/../../../plugins/sample/data/snippets"));

QByteArray readAll(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Runs `act` on the next modal dialog once its event loop runs, as a user would.
void onNextDialog(std::function<void(QWidget *)> act)
{
    QTimer::singleShot(0, [act] {
        QWidget *dialog = QApplication::activeModalWidget();
        QVERIFY(dialog);
        act(dialog);
    });
}

// Answers the next file dialog with `name`, as a user typing it would.
void answerFileDialog(const QString &name, QString *title = nullptr, QStringList *filters = nullptr)
{
    onNextDialog([=](QWidget *widget) {
        auto *dialog = qobject_cast<QFileDialog *>(widget);
        QVERIFY(dialog);
        if (title)
            *title = dialog->windowTitle();
        if (filters)
            *filters = dialog->nameFilters();
        dialog->selectFile(name);
        QMetaObject::invokeMethod(dialog, "accept");
    });
}

void clickButton(QWidget *parent, const char *name)
{
    auto *button = parent->findChild<QPushButton *>(QLatin1String(name));
    QVERIFY2(button, name);
    QTest::mouseClick(button, Qt::LeftButton);
}

void clickOk(QWidget *dialog)
{
    auto *box = dialog->findChild<QDialogButtonBox *>();
    QVERIFY(box);
    QTest::mouseClick(box->button(QDialogButtonBox::Ok), Qt::LeftButton);
}

// Replaces all the text of a line or spin editor by typing.
void retype(QWidget *editor, const QString &text)
{
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(editor, Qt::Key_Delete);
    QTest::keyClicks(editor, text);
}

SnipFieldInfo field(const QString &name, const QString &title, const QString &type,
                    const QStringList &values = {}, const QStringList &titles = {})
{
    SnipFieldInfo info;
    info.name = name;
    info.title = title;
    info.type = type;
    info.values = values;
    info.valueTitles = titles;
    return info;
}

// One line a field, so that a failed comparison shows where the fields differ.
QString describe(const QVector<SnipFieldInfo> &fields)
{
    QStringList lines;
    for (const SnipFieldInfo &f : fields) {
        lines << QStringLiteral("%1 / %2 / %3 / %4 / %5 / %6")
                     .arg(f.name, f.title, f.type, f.values.join(QLatin1Char(',')), f.valueTitles.join(QLatin1Char(',')))
                     .arg(f.column);
    }
    return lines.join(QLatin1Char('\n'));
}

Snippet heroSnippet()
{
    Snippet snippet;
    snippet.fields = {field(QStringLiteral("NAME"), QStringLiteral("Name of the hero"), QStringLiteral("string")),
                      field(QStringLiteral("LIFE"), QStringLiteral("Life"), QStringLiteral("int")),
                      field(QStringLiteral("SPEED"), QStringLiteral("Speed"), QStringLiteral("float")),
                      field(QStringLiteral("STANCE"), QStringLiteral("Stance"), QStringLiteral("items"),
                            {QStringLiteral("up"), QStringLiteral("down")},
                            {QStringLiteral("Upright"), QStringLiteral("Crouched")})};
    snippet.code = QStringLiteral("[Hero: NAME]\n    life = LIFE\n    speed = SPEED\n    stance = STANCE\n    CURSOR\n");
    return snippet;
}

const QByteArray heroXml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<snippet>\r\n\r\n"
                           "\t<field name=\"NAME\" title=\"Name of the hero\" type=\"string\"/>\r\n"
                           "\t<field name=\"LIFE\" title=\"Life\" type=\"int\"/>\r\n"
                           "\t<field name=\"SPEED\" title=\"Speed\" type=\"float\"/>\r\n"
                           "\t<field name=\"STANCE\" title=\"Stance\" type=\"items\" value=\"up|down\" "
                           "value_title=\"Upright|Crouched\"/>\r\n"
                           "\r\n\t<code>\r\n"
                           "[Hero: NAME]\r\n    life = LIFE\r\n    speed = SPEED\r\n    stance = STANCE\r\n    CURSOR\r\n"
                           "\t</code>\r\n\r\n</snippet>";

} // namespace

Q_DECLARE_METATYPE(QVector<SnipFieldInfo>)

class SnippetsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void savedFileHasTheFixedLayout_data();
    void savedFileHasTheFixedLayout();
    void fieldsMadeInTheDialogSaveAndReadBack();
    void translationExport();
    void badFilesAreReportedWithLineAndColumn_data();
    void badFilesAreReportedWithLineAndColumn();
    void unreadableFileIsReported();
    void fillInTakesTheFormsValues();
    void fillInCancelledGivesNull();
    void longestNameWins();
    void sampleSnippetsRead_data();
    void sampleSnippetsRead();
    void insertSelectedPutsTheNameAtTheCursor();
    void previewShowsTheFilledCode();
    void fieldDialogRefusesWhatCantBeWritten_data();
    void fieldDialogRefusesWhatCantBeWritten();
    void fieldsModel();
    void closingAsksAboutUnsavedChanges();
    void failedWriteIsReported();
    void screenshot();

private:
    std::unique_ptr<TestInterface> m_host;
    std::unique_ptr<QTemporaryDir> m_dir;
};

void SnippetsTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void SnippetsTest::init()
{
    m_host.reset(new TestInterface);
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
}

void SnippetsTest::savedFileHasTheFixedLayout_data()
{
    QTest::addColumn<QVector<SnipFieldInfo>>("fields");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QByteArray>("bytes");

    const Snippet hero = heroSnippet();
    QTest::newRow("all types") << hero.fields << hero.code << heroXml;
    QTest::newRow("no fields, code without a last line end")
        << QVector<SnipFieldInfo>() << QStringLiteral("x = 1")
        << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<snippet>\r\n\r\n\r\n\t<code>\r\nx = 1\t</code>\r\n\r\n</snippet>");
    SnipFieldInfo right = field(QStringLiteral("B"), QStringLiteral("Right"), QStringLiteral("int"));
    right.column = 1;
    // Only a field off the first column carries the attribute.
    QTest::newRow("second column")
        << QVector<SnipFieldInfo>{right} << QStringLiteral("B\n")
        << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<snippet>\r\n\r\n"
                      "\t<field name=\"B\" title=\"Right\" type=\"int\" column=\"1\"/>\r\n"
                      "\r\n\t<code>\r\nB\r\n\t</code>\r\n\r\n</snippet>");
    QTest::newRow("markup and non-ASCII")
        << QVector<SnipFieldInfo>{field(QStringLiteral("A"), QStringLiteral("\"Größe\" & <tab>\t"), QStringLiteral("string"))}
        << QStringLiteral("if (A < 2 && A > 0)\n")
        << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<snippet>\r\n\r\n"
                      "\t<field name=\"A\" title=\"&quot;Gr\xc3\xb6\xc3\x9f" "e&quot; &amp; &lt;tab&gt;&#9;\" type=\"string\"/>\r\n"
                      "\r\n\t<code>\r\nif (A &lt; 2 &amp;&amp; A &gt; 0)\r\n\t</code>\r\n\r\n</snippet>");
}

void SnippetsTest::savedFileHasTheFixedLayout()
{
    QFETCH(QVector<SnipFieldInfo>, fields);
    QFETCH(QString, code);
    QFETCH(QByteArray, bytes);

    SnipDlg dialog{QString()};
    Snippet snippet;
    snippet.fields = fields;
    snippet.code = code;
    dialog.setSnippet(snippet);
    const QString name = m_dir->filePath(QStringLiteral("Hero.xml"));
    QString title;
    QStringList filters;
    answerFileDialog(name, &title, &filters);
    clickButton(&dialog, "save");
    QCOMPARE(title, QStringLiteral("Save code snippet"));
    QCOMPARE(filters, QStringList{QStringLiteral("Extensible Markup Language (*.xml)")});
    QCOMPARE(readAll(name), bytes);
    QCOMPARE(dialog.fileName(), name);

    Snippet back;
    QString error;
    QVERIFY2(back.read(name, &error), qPrintable(error));
    QCOMPARE(describe(back.fields), describe(fields));
    QCOMPARE(back.code, code);
}

void SnippetsTest::fieldsMadeInTheDialogSaveAndReadBack()
{
    SnipDlg dialog(m_dir->path());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    onNextDialog([](QWidget *widget) {
        QVERIFY(qobject_cast<SnipFieldDlg *>(widget));
        QTest::keyClicks(widget->findChild<QLineEdit *>(QStringLiteral("name")), QStringLiteral("LIFE"));
        QTest::keyClicks(widget->findChild<QLineEdit *>(QStringLiteral("title")), QStringLiteral("Life"));
        QTest::keyClick(widget->findChild<QComboBox *>(QStringLiteral("type")), Qt::Key_Down); // "int"
        clickOk(widget);
    });
    clickButton(&dialog, "addField");

    onNextDialog([](QWidget *widget) {
        QTest::keyClicks(widget->findChild<QLineEdit *>(QStringLiteral("name")), QStringLiteral("MOOD"));
        QTest::keyClicks(widget->findChild<QLineEdit *>(QStringLiteral("title")), QStringLiteral("Mood"));
        auto *type = widget->findChild<QComboBox *>(QStringLiteral("type"));
        QTest::keyClick(type, Qt::Key_End); // "items"
        auto *items = widget->findChild<QTableWidget *>(QStringLiteral("items"));
        for (const auto &item : {qMakePair(QStringLiteral("calm"), QStringLiteral("Calm")),
                                 qMakePair(QStringLiteral("angry"), QStringLiteral("Angry"))}) {
            clickButton(widget, "addItem");
            const int row = items->rowCount() - 1;
            auto *value = qobject_cast<QLineEdit *>(items->indexWidget(items->model()->index(row, 0)));
            QVERIFY(value);
            QTest::keyClicks(value, item.first);
            // Tab takes the value and opens the title's editor.
            QTest::keyClick(value, Qt::Key_Tab);
            QTRY_VERIFY(items->indexWidget(items->model()->index(row, 1)));
            auto *title = qobject_cast<QLineEdit *>(items->indexWidget(items->model()->index(row, 1)));
            QVERIFY(title);
            QTest::keyClicks(title, item.second);
            QTest::keyClick(title, Qt::Key_Return);
            QTRY_VERIFY(!items->indexWidget(items->model()->index(row, 1)));
        }
        clickOk(widget);
    });
    clickButton(&dialog, "addField");

    auto *code = dialog.findChild<QPlainTextEdit *>(QStringLiteral("code"));
    QTest::keyClicks(code, QStringLiteral("life = LIFE"));
    QTest::keyClick(code, Qt::Key_Return);
    QTest::keyClicks(code, QStringLiteral("mood = MOOD"));

    const QString name = m_dir->filePath(QStringLiteral("Made.xml"));
    answerFileDialog(name);
    clickButton(&dialog, "save");

    const QVector<SnipFieldInfo> expected{
        field(QStringLiteral("LIFE"), QStringLiteral("Life"), QStringLiteral("int")),
        field(QStringLiteral("MOOD"), QStringLiteral("Mood"), QStringLiteral("items"),
              {QStringLiteral("calm"), QStringLiteral("angry")}, {QStringLiteral("Calm"), QStringLiteral("Angry")})};
    Snippet back;
    QString error;
    QVERIFY2(back.read(name, &error), qPrintable(error));
    QCOMPARE(describe(back.fields), describe(expected));
    QCOMPARE(back.code, QStringLiteral("life = LIFE\nmood = MOOD"));
    QCOMPARE(describe(dialog.snippet().fields), describe(expected));

    // A second editor on the file shows the same snippet.
    SnipDlg again(name);
    QCOMPARE(describe(again.snippet().fields), describe(expected));
    QCOMPARE(again.snippet().code, back.code);
}

void SnippetsTest::translationExport()
{
    Snippet snippet;
    snippet.fields = {field(QStringLiteral("NAME"), QStringLiteral("Name"), QStringLiteral("string")),
                      field(QStringLiteral("WAY"), QStringLiteral("Way"), QStringLiteral("items"),
                            {QStringLiteral("up"), QStringLiteral("down")},
                            {QStringLiteral("Up & away"), QStringLiteral("Down")}),
                      field(QStringLiteral("N"), QStringLiteral("Count"), QStringLiteral("int"))};
    snippet.code = QStringLiteral("go NAME WAY N\n");
    const QString file = m_dir->filePath(QStringLiteral("Travel.xml"));
    QVERIFY(writeAll(file, snippet.toXml()));

    SnipDlg dialog(file);
    QCOMPARE(dialog.snippetName(), QStringLiteral("Travel"));
    const QString name = m_dir->filePath(QStringLiteral("travel.ts"));
    QString title;
    QStringList filters;
    answerFileDialog(name, &title, &filters);
    clickButton(&dialog, "saveForTranslation");
    QCOMPARE(title, QStringLiteral("Save for translation"));
    QCOMPARE(filters, QStringList{QStringLiteral("Qt translation sources (*.ts)")});

    const QByteArray expected =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE TS>\n<TS version=\"2.0\">\n<context>\n"
        "\t<name>Ovra::SnippetManager</name>\n"
        "\t<message>\n\t\t<source>Travel</source>\n\t\t<comment>Travel</comment>\n"
        "\t\t<translation type=\"unfinished\"></translation>\n\t</message>\n"
        "\t<message>\n\t\t<source>Name</source>\n\t\t<comment>Travel</comment>\n"
        "\t\t<translation type=\"unfinished\"></translation>\n\t</message>\n"
        "\t<message>\n\t\t<source>Way</source>\n\t\t<comment>Travel</comment>\n"
        "\t\t<translation type=\"unfinished\"></translation>\n\t</message>\n"
        "\t<message>\n\t\t<source>Up &amp; away</source>\n\t\t<comment>Travel</comment>\n"
        "\t\t<translation type=\"unfinished\"></translation>\n\t</message>\n"
        "\t<message>\n\t\t<source>Down</source>\n\t\t<comment>Travel</comment>\n"
        "\t\t<translation type=\"unfinished\"></translation>\n\t</message>\n"
        "\t<message>\n\t\t<source>Count</source>\n\t\t<comment>Travel</comment>\n"
        "\t\t<translation type=\"unfinished\"></translation>\n\t</message>\n"
        "</context>\n</TS>";
    QCOMPARE(readAll(name), expected);
}

void SnippetsTest::badFilesAreReportedWithLineAndColumn_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("where");

    QTest::newRow("not XML") << QByteArray("hello, world\n") << QStringLiteral("Line 1, column 1");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("Line 1, column 0");
    QTest::newRow("binary") << QByteArray("\x00\x01\xff\xfe\x80", 5) << QStringLiteral("Line 1, column 1");
    QTest::newRow("other root") << QByteArray("<?xml version=\"1.0\"?>\n<sprite>\n</sprite>")
                                << QStringLiteral("Line 2, column 8");
    QTest::newRow("unclosed field")
        << QByteArray("<snippet>\r\n\t<field name=\"A\" title=\"a\" type=\"string\">\r\n\t<code>A</code>\r\n</snippet>")
        << QStringLiteral("Line 4, column 10");
    QTest::newRow("element in the code")
        << QByteArray("<snippet>\n<code>\nif a <b>x</b>\n</code>\n</snippet>") << QStringLiteral("Line 3, column 8");

    // The sample layout cut short at a few places: the error stands where the text ends.
    const QByteArray whole = heroXml;
    for (const int length : {30, 60, 140, 330, int(whole.size()) - 4}) {
        const QByteArray cut = whole.left(length);
        const int line = cut.count('\n') + 1;
        const int column = cut.size() - (cut.lastIndexOf('\n') + 1);
        QTest::addRow("cut at %d", length) << cut << QStringLiteral("Line %1, column %2").arg(line).arg(column);
    }
}

void SnippetsTest::badFilesAreReportedWithLineAndColumn()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, where);

    const QString name = m_dir->filePath(QStringLiteral("Broken.xml"));
    QVERIFY(writeAll(name, bytes));
    SnippetManager manager;
    manager.load(m_dir->path());
    QCOMPARE(manager.count(), 1);
    {
        ScriptedAnswerer user({QMessageBox::Ok});
        QVERIFY(manager.fillIn(0, nullptr).isNull());
        QCOMPARE(user.prompts().size(), 1);
        QCOMPARE(user.prompts().first().icon, QMessageBox::Critical);
        const QStringList lines = user.prompts().first().text.split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 2);
        QVERIFY(!lines.first().isEmpty());
        QCOMPARE(lines.last(), where);
    }
    {
        // The editor reports it too, starts empty, and leaves the file alone.
        ScriptedAnswerer user({QMessageBox::Ok});
        SnipDlg dialog(name);
        QCOMPARE(user.prompts().size(), 1);
        QVERIFY(user.prompts().first().text.endsWith(where));
        QVERIFY(dialog.snippet().fields.isEmpty());
        QVERIFY(dialog.snippet().code.isEmpty());
    }
    QCOMPARE(readAll(name), bytes);
}

void SnippetsTest::unreadableFileIsReported()
{
    SnippetManager manager;
    manager.load(m_dir->filePath(QStringLiteral("missing")));
    QCOMPARE(manager.count(), 0);
    QVERIFY(manager.fillIn(0, nullptr).isNull());
    QVERIFY(manager.fillIn(-1, nullptr).isNull());

    // A directory named like a snippet isn't listed; a file that goes away after the
    // listing is reported.
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("Folder.xml")));
    const QString name = m_dir->filePath(QStringLiteral("Gone.xml"));
    QVERIFY(writeAll(name, heroXml));
    manager.load(m_dir->path());
    QCOMPARE(manager.count(), 1);
    QVERIFY(QFile::remove(name));
    ScriptedAnswerer user({QMessageBox::Ok});
    QVERIFY(manager.fillIn(0, nullptr).isNull());
    QCOMPARE(user.prompts().size(), 1);
    QVERIFY(user.prompts().first().text.contains(QStringLiteral("Gone.xml")));
}

void SnippetsTest::fillInTakesTheFormsValues()
{
    QVERIFY(writeAll(m_dir->filePath(QStringLiteral("Hero.xml")), heroXml));
    QVERIFY(writeAll(m_dir->filePath(QStringLiteral("Another.xml")), heroXml));
    SnippetManager manager;
    QAbstractItemModelTester tester(&manager);
    manager.load(m_dir->path());
    QCOMPARE(manager.count(), 2);
    QCOMPARE(manager.name(1), QStringLiteral("Hero"));
    QCOMPARE(manager.data(manager.index(1)).toString(), QStringLiteral("Hero"));
    QCOMPARE(manager.fileName(1), m_dir->filePath(QStringLiteral("Hero.xml")));

    QString windowTitle;
    onNextDialog([&windowTitle](QWidget *dialog) {
        windowTitle = dialog->windowTitle();
        auto *form = dialog->findChild<SnipForm *>();
        QVERIFY(form);
        QTest::keyClicks(form->field(QStringLiteral("NAME"))->editor(), QStringLiteral("Rika"));
        retype(form->field(QStringLiteral("LIFE"))->editor(), QStringLiteral("-120"));
        retype(form->field(QStringLiteral("SPEED"))->editor(), QStringLiteral("2.5"));
        QTest::keyClick(form->field(QStringLiteral("STANCE"))->editor(), Qt::Key_Down);
        QVERIFY(dialog->grab().save(QCoreApplication::applicationDirPath() + QLatin1String("/snipform.png")));
        clickOk(dialog);
    });
    const QString code = manager.fillIn(1, nullptr);
    QCOMPARE(windowTitle, QStringLiteral("Hero"));
    QCOMPARE(code, QStringLiteral("[Hero: Rika]\n    life = -120\n    speed = 2.5\n    stance = down\n    CURSOR\n"));
}

void SnippetsTest::fillInCancelledGivesNull()
{
    QVERIFY(writeAll(m_dir->filePath(QStringLiteral("Hero.xml")), heroXml));
    SnippetManager manager;
    manager.load(m_dir->path());
    onNextDialog([](QWidget *dialog) {
        QTest::keyClicks(dialog->findChild<SnipForm *>()->field(QStringLiteral("NAME"))->editor(), QStringLiteral("x"));
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    QVERIFY(manager.fillIn(0, nullptr).isNull());
}

void SnippetsTest::longestNameWins()
{
    Snippet snippet;
    snippet.fields = {field(QStringLiteral("ANIM"), QString(), QStringLiteral("int")),
                      field(QStringLiteral("ANIMID"), QString(), QStringLiteral("int")),
                      field(QStringLiteral("X"), QString(), QStringLiteral("string"))};
    snippet.code = QStringLiteral("ANIMID ANIM ANIMX X");
    const QHash<QString, QString> values{{QStringLiteral("ANIM"), QStringLiteral("7")},
                                         {QStringLiteral("ANIMID"), QStringLiteral("42")},
                                         {QStringLiteral("X"), QStringLiteral("ANIM")}};
    // Values aren't searched again: X gives the text "ANIM", not 7.
    QCOMPARE(snippet.filled(values), QStringLiteral("42 7 7ANIM ANIM"));
}

void SnippetsTest::sampleSnippetsRead_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("types");

    QTest::newRow("character") << QStringLiteral("Character header")
                               << QStringList{QStringLiteral("HERONAME"), QStringLiteral("LIFE"), QStringLiteral("GRAVITY"), QStringLiteral("STANCE")}
                               << QStringList{QStringLiteral("string"), QStringLiteral("int"), QStringLiteral("float"), QStringLiteral("items")};
    QTest::newRow("animation") << QStringLiteral("New animation")
                               << QStringList{QStringLiteral("ANIMID"), QStringLiteral("ANIMNAME"), QStringLiteral("SPRITEGROUP"), QStringLiteral("TICKS")}
                               << QStringList{QStringLiteral("int"), QStringLiteral("string"), QStringLiteral("int"), QStringLiteral("int")};
    QTest::newRow("move") << QStringLiteral("New move")
                          << QStringList{QStringLiteral("MOVENAME"), QStringLiteral("ANIMNUMBER"), QStringLiteral("DAMAGE"), QStringLiteral("STATE")}
                          << QStringList{QStringLiteral("string"), QStringLiteral("int"), QStringLiteral("int"), QStringLiteral("items")};
    QTest::newRow("stage") << QStringLiteral("New stage")
                           << QStringList{QStringLiteral("STAGENAME"), QStringLiteral("BACKDROP"), QStringLiteral("WEATHER"), QStringLiteral("ZOOM")}
                           << QStringList{QStringLiteral("string"), QStringLiteral("string"), QStringLiteral("items"), QStringLiteral("float")};
}

void SnippetsTest::sampleSnippetsRead()
{
    QFETCH(QString, file);
    QFETCH(QStringList, names);
    QFETCH(QStringList, types);

    SnippetManager manager;
    manager.load(sampleDir);
    QCOMPARE(manager.count(), 4);
    const int row = manager.name(0) == file ? 0 : manager.name(1) == file ? 1 : manager.name(2) == file ? 2 : 3;
    QCOMPARE(manager.name(row), file);

    ScriptedAnswerer user;
    SnipDlg dialog(manager.fileName(row));
    QCOMPARE(user.prompts().size(), 0);
    const Snippet snippet = dialog.snippet();
    QStringList readNames, readTypes;
    for (const SnipFieldInfo &info : snippet.fields) {
        readNames << info.name;
        readTypes << info.type;
        QVERIFY(!info.title.isEmpty());
        QVERIFY2(snippet.code.contains(info.name), qPrintable(info.name));
        if (info.type == QLatin1String("items")) {
            QVERIFY(info.values.size() >= 2);
            QCOMPARE(info.valueTitles.size(), info.values.size());
        }
    }
    QCOMPARE(readNames, names);
    QCOMPARE(readTypes, types);
    QVERIFY(snippet.code.contains(QStringLiteral("CURSOR\n")));
    QVERIFY(!snippet.code.contains(QLatin1Char('\r')));

    // The samples are in the layout the editor writes: saving them changes no byte.
    const QString copy = m_dir->filePath(file + QLatin1String(".xml"));
    answerFileDialog(copy);
    clickButton(&dialog, "save");
    QCOMPARE(readAll(copy), readAll(manager.fileName(row)));
}

void SnippetsTest::insertSelectedPutsTheNameAtTheCursor()
{
    SnipDlg dialog{QString()};
    dialog.setSnippet(heroSnippet());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto *code = dialog.findChild<QPlainTextEdit *>(QStringLiteral("code"));
    auto *list = dialog.findChild<QTreeView *>(QStringLiteral("fieldList"));

    // Nothing selected: nothing goes in.
    clickButton(&dialog, "insertSelected");
    QCOMPARE(code->toPlainText(), heroSnippet().code);

    QTextCursor cursor = code->textCursor();
    cursor.setPosition(7); // "[Hero: |NAME]"
    code->setTextCursor(cursor);
    const QRect row = list->visualRect(list->model()->index(2, 0));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, row.center());
    clickButton(&dialog, "insertSelected");
    QVERIFY(code->toPlainText().startsWith(QStringLiteral("[Hero: SPEEDNAME]\n")));
    QCOMPARE(code->textCursor().position(), 12);
}

void SnippetsTest::previewShowsTheFilledCode()
{
    SnipDlg dialog{QString()};
    dialog.setSnippet(heroSnippet());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto *form = dialog.findChild<SnipForm *>();
    QCOMPARE(form->fields().size(), 4);
    QTest::keyClicks(form->field(QStringLiteral("NAME"))->editor(), QStringLiteral("Ada"));
    retype(form->field(QStringLiteral("LIFE"))->editor(), QStringLiteral("9"));
    clickButton(&dialog, "preview");
    QCOMPARE(dialog.findChild<QPlainTextEdit *>(QStringLiteral("preview"))->toPlainText(),
             QStringLiteral("[Hero: Ada]\n    life = 9\n    speed = 0\n    stance = up\n    CURSOR\n"));

    // Removing a field takes it off the form.
    auto *list = dialog.findChild<QTreeView *>(QStringLiteral("fieldList"));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualRect(list->model()->index(0, 0)).center());
    clickButton(&dialog, "removeField");
    QCOMPARE(form->fields().size(), 3);
    QVERIFY(!form->field(QStringLiteral("NAME")));
}

void SnippetsTest::fieldDialogRefusesWhatCantBeWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("plain") << QStringLiteral("A") << QStringLiteral("int") << QStringList() << true;
    QTest::newRow("no name") << QStringLiteral("  ") << QStringLiteral("int") << QStringList() << false;
    QTest::newRow("taken name") << QStringLiteral("TAKEN") << QStringLiteral("string") << QStringList() << false;
    QTest::newRow("items without items") << QStringLiteral("A") << QStringLiteral("items") << QStringList() << false;
    QTest::newRow("separator in a value") << QStringLiteral("A") << QStringLiteral("items") << QStringList{QStringLiteral("a|b")} << false;
    QTest::newRow("items") << QStringLiteral("A") << QStringLiteral("items") << QStringList{QStringLiteral("a"), QStringLiteral("b")} << true;
}

void SnippetsTest::fieldDialogRefusesWhatCantBeWritten()
{
    QFETCH(QString, name);
    QFETCH(QString, type);
    QFETCH(QStringList, values);
    QFETCH(bool, accepted);

    SnipFieldDlg dialog;
    dialog.setTakenNames({QStringLiteral("TAKEN")});
    dialog.setField(field(name, QStringLiteral("T"), type, values, values));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    ScriptedAnswerer user({QMessageBox::Ok});
    clickOk(&dialog);
    QCOMPARE(dialog.result() == QDialog::Accepted, accepted);
    QCOMPARE(dialog.isVisible(), !accepted);
    QCOMPARE(user.prompts().size(), accepted ? 0 : 1);
    if (accepted)
        QCOMPARE(dialog.field(), field(name, QStringLiteral("T"), type, values, values));
}

void SnippetsTest::fieldsModel()
{
    SnipFieldsModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setFields(heroSnippet().fields);
    QCOMPARE(model.rowCount(), 4);
    QCOMPARE(model.data(model.index(3, SnipFieldsModel::TypeColumn)).toString(), QStringLiteral("items"));
    QVERIFY(model.moveField(0, 1));
    QCOMPARE(model.field(1).name, QStringLiteral("NAME"));
    QVERIFY(model.moveField(3, -1));
    QCOMPARE(model.field(2).name, QStringLiteral("STANCE"));
    QVERIFY(!model.moveField(0, -1));
    QVERIFY(!model.moveField(3, 1));
    model.removeField(7);
    model.insertField(9, SnipFieldInfo());
    QCOMPARE(model.rowCount(), 4);
    model.removeField(0);
    QCOMPARE(model.rowOf(QStringLiteral("SPEED")), 2);
    QCOMPARE(model.rowOf(QStringLiteral("LIFE")), -1);
}

void SnippetsTest::closingAsksAboutUnsavedChanges()
{
    const QString name = m_dir->filePath(QStringLiteral("Hero.xml"));
    QVERIFY(writeAll(name, heroXml));
    SnipDlg dialog(name);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    {
        // Nothing changed: no question.
        ScriptedAnswerer user;
        clickButton(&dialog, "close");
        QVERIFY(!dialog.isVisible());
        QCOMPARE(user.prompts().size(), 0);
    }
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QTest::keyClicks(dialog.findChild<QPlainTextEdit *>(QStringLiteral("code")), QStringLiteral("more"));
    ScriptedAnswerer user({QMessageBox::No, QMessageBox::Yes});
    clickButton(&dialog, "close");
    QVERIFY(dialog.isVisible());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(user.prompts().first().defaultButton, QMessageBox::No);
    QCOMPARE(readAll(name), heroXml);
}

void SnippetsTest::failedWriteIsReported()
{
    SnipDlg dialog{QString()};
    dialog.setSnippet(heroSnippet());
    ScriptedAnswerer user({QMessageBox::Ok, QMessageBox::Ok});
    // A name inside a folder that isn't there, and a name that is a folder.
    QVERIFY(!dialog.saveTo(m_dir->filePath(QStringLiteral("nowhere/Hero.xml"))));
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("Taken.ts")));
    QVERIFY(!dialog.saveTranslationTo(m_dir->filePath(QStringLiteral("Taken.ts"))));
    QCOMPARE(user.prompts().size(), 2);
    QCOMPARE(user.prompts().first().icon, QMessageBox::Critical);
    QVERIFY(user.prompts().first().text.contains(QStringLiteral("Hero.xml")));
    QVERIFY(dialog.fileName().isEmpty());
    QVERIFY(QFileInfo(m_dir->filePath(QStringLiteral("Taken.ts"))).isDir());
}

void SnippetsTest::screenshot()
{
    SnipDlg dialog(sampleDir + QLatin1String("/Character header.xml"));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto *list = dialog.findChild<QTreeView *>(QStringLiteral("fieldList"));
    list->setCurrentIndex(list->model()->index(1, 0));
    clickButton(&dialog, "preview");
    const QString name = QCoreApplication::applicationDirPath() + QLatin1String("/snipdlg.png");
    QVERIFY(dialog.grab().save(name));

    // Every button shows its whole text.
    const QList<QPushButton *> buttons = dialog.findChildren<QPushButton *>();
    QVERIFY(buttons.size() >= 10);
    for (const QPushButton *button : buttons)
        QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->text()));

    SnipFieldDlg fieldDialog;
    fieldDialog.setField(dialog.snippet().fields.last());
    fieldDialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&fieldDialog));
    QVERIFY(fieldDialog.grab().save(QCoreApplication::applicationDirPath() + QLatin1String("/snipfielddlg.png")));
}

QTEST_MAIN(SnippetsTest)
#include "tst_snippets.moc"
