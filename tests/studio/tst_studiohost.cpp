// The studio's host as the library and the window use it: options, colours and shortcuts
// kept in a settings file across restarts, actions and menus by name, editors switched by
// their actions, and the job list that background saves report to.
#include "colorscheme.h"
#include "joblist.h"
#include "jobswidget.h"
#include "studiohost.h"

#include "code/codeparser.h"
#include "editors/editor.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QToolButton>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

class PlainEditor : public FileEditor
{
public:
    PlainEditor(StudioHost *host, const QString &name) : m_name(name.toLatin1())
    {
        m_action = host->editorAction(QStringLiteral("editor_") + name, ovraTranslator(), 17);
    }
    QAction *action() const override { return m_action; }
    const char *name() const override { return m_name.constData(); }
    QWidget *widget() override { return nullptr; }
    void engineSwitched(bool) override {}
    void saveState() override {}
    void restoreState() override {}
    int fileType() const override { return 5; }
    void cut() override {}
    void copy() override {}
    void paste() override {}

private:
    QByteArray m_name;
    QAction *m_action;
};

// A receiver of action triggers and the source of an enabling signal.
class Receiver : public QObject
{
    Q_OBJECT
public:
    int triggers = 0;
public slots:
    void trigger() { ++triggers; }
signals:
    void enabled(bool enabled);
};

} // namespace

class StudioHostTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void optionsSurviveARestart();
    void colorsStartAsTheEditorsOwnAndKeepTheUsersChanges();
    void formatsMergeOverTheCallersDefault();
    void reconfigureHandsTheSchemeToTheParsersWithoutAFont();
    void actionsCarryTextsSlotsAndTheirScopesMenu();
    void shortcutsAreTheUsersAcrossARestart();
    void editorActionsSwitchEditors();
    void controlsOfKindZeroAreToolButtons();
    void iconsComeFromTheResources();
    void statusTextsAreToldOnce();

    void aJobOfThisThreadEndsWithTheCall();
    void aBackgroundJobEndsAtItsMaximumFromAWorker();
    void cancellingAndErrorsReachTheJobs();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<StudioHost> m_host;

    void restart()
    {
        m_host.reset();
        m_settings->sync();
        m_settings.reset(new QSettings(m_dir->filePath(QStringLiteral("studio.ini")), QSettings::IniFormat));
        m_host.reset(new StudioHost(m_settings.get()));
    }
};

void StudioHostTest::init()
{
    m_dir.reset(new QTemporaryDir);
    m_settings.reset(new QSettings(m_dir->filePath(QStringLiteral("studio.ini")), QSettings::IniFormat));
    m_host.reset(new StudioHost(m_settings.get()));
}

void StudioHostTest::cleanup()
{
    m_host.reset();
    m_settings.reset();
    m_dir.reset();
    // The parsers' formats are the process's: put them back for the next test.
    for (int type = 0; type < CodeParserSyntax::TokenTypeCount; ++type)
        CodeParserSyntax::setFormat(type, CodeParserSyntax::defaultFormat(type));
}

void StudioHostTest::optionsSurviveARestart()
{
    QCOMPARE(Interface::instance(), m_host.get());
    QCOMPARE(m_host->option(QStringLiteral("font_size"), 10).toInt(), 10);
    m_host->setOption(QStringLiteral("font_size"), 13);
    m_host->setOption(QStringLiteral("confirm_delete"), false);
    m_host->setOption(QStringLiteral("cache_type"), 2);
    m_host->setOption(QStringLiteral("cache_type"), QVariant());
    QCOMPARE(m_host->configPath(), m_dir->path());

    restart();
    QCOMPARE(m_host->option(QStringLiteral("font_size"), 10).toInt(), 13);
    QCOMPARE(m_host->option(QStringLiteral("confirm_delete"), true).toBool(), false);
    // A null value removed the key: the default comes through, and the file has no trace.
    QCOMPARE(m_host->option(QStringLiteral("cache_type"), 7).toInt(), 7);
    QVERIFY(!m_settings->contains(QStringLiteral("options/cache_type")));
    QVERIFY(!m_host->option(QStringLiteral("never_set"), QVariant()).isValid());
}

void StudioHostTest::colorsStartAsTheEditorsOwnAndKeepTheUsersChanges()
{
    ColorScheme *scheme = m_host->colorScheme();
    QCOMPARE(m_host->color(QStringLiteral("line"), Qt::red), QColor(232, 242, 254));
    QCOMPARE(m_host->color(QStringLiteral("background"), Qt::red), QColor(Qt::white));
    QCOMPARE(m_host->color(QStringLiteral("no_such_colour"), Qt::red), QColor(Qt::red));

    QSignalSpy changed(scheme, &ColorScheme::changed);
    scheme->setColor(QStringLiteral("line"), QColor(10, 20, 30));
    scheme->setBase(ColorScheme::Dark);
    scheme->setColor(QStringLiteral("background"), QColor(1, 2, 3));
    QCOMPARE(changed.count(), 3);
    QVERIFY(m_host->color(QStringLiteral("foreground"), Qt::red).lightness() > 150);

    restart();
    scheme = m_host->colorScheme();
    QCOMPARE(scheme->base(), ColorScheme::Dark);
    QCOMPARE(m_host->color(QStringLiteral("background"), Qt::red), QColor(1, 2, 3));
    scheme->setBase(ColorScheme::Light);
    QCOMPARE(m_host->color(QStringLiteral("line"), Qt::red), QColor(10, 20, 30));
    scheme->resetToDefaults();
    QCOMPARE(m_host->color(QStringLiteral("line"), Qt::red), QColor(232, 242, 254));
    // The dark scheme keeps its own change.
    scheme->setBase(ColorScheme::Dark);
    QCOMPARE(m_host->color(QStringLiteral("background"), Qt::red), QColor(1, 2, 3));
    // Setting the default again leaves nothing in the file.
    scheme->setColor(QStringLiteral("background"), scheme->defaultColor(QStringLiteral("background")));
    QVERIFY(!m_settings->contains(QStringLiteral("colors/dark/background")));
}

void StudioHostTest::formatsMergeOverTheCallersDefault()
{
    QTextCharFormat fallback;
    fallback.setBackground(QColor(180, 238, 180));
    fallback.setFontUnderline(true);
    const QTextCharFormat paren = m_host->textFormat(QStringLiteral("paren"), fallback);
    QCOMPARE(paren.background().color(), QColor(180, 238, 180));
    QVERIFY(paren.fontUnderline());

    QTextCharFormat own;
    own.setForeground(QColor(200, 0, 0));
    own.setFontWeight(QFont::Bold);
    m_host->colorScheme()->setFormat(QStringLiteral("syntax_comment"), own);
    restart();
    const QTextCharFormat comment = m_host->textFormat(QStringLiteral("syntax_comment"), fallback);
    QCOMPARE(comment.foreground().color(), QColor(200, 0, 0));
    QCOMPARE(comment.fontWeight(), int(QFont::Bold));
    QVERIFY(comment.fontItalic()); // the scheme's own, where the user changed nothing
    QVERIFY(comment.fontUnderline());
    QCOMPARE(m_host->textFormat(QStringLiteral("unknown"), fallback), fallback);
}

void StudioHostTest::reconfigureHandsTheSchemeToTheParsersWithoutAFont()
{
    QSignalSpy reconfigured(m_host.get(), &StudioHost::reconfigured);
    m_host->colorScheme()->setBase(ColorScheme::Dark);
    m_host->reconfigure();
    QCOMPARE(reconfigured.count(), 1);
    const QTextCharFormat comment = CodeParserSyntax::format(1);
    QCOMPARE(comment.foreground().color(),
             m_host->colorScheme()->defaultFormat(QStringLiteral("syntax_comment")).foreground().color());
    QVERIFY(comment.fontItalic());
    // The library's own formats name a face and a size; the user's font must win.
    QVERIFY(CodeParserSyntax::defaultFormat(1).hasProperty(QTextFormat::FontFamily));
    QVERIFY(!comment.hasProperty(QTextFormat::FontFamily));
    QVERIFY(!comment.hasProperty(QTextFormat::FontPointSize));
    QCOMPARE(CodeParserSyntax::format(4).fontWeight(), int(QFont::Bold));
}

void StudioHostTest::actionsCarryTextsSlotsAndTheirScopesMenu()
{
    QSignalSpy menus(m_host.get(), &StudioHost::menuCreated);
    Receiver receiver;
    QAction *action = m_host->createAction({"code", 0}, QStringLiteral("code_goto"), ovraTranslator(), 18, false,
                                           &receiver, SLOT(trigger()), SIGNAL(enabled(bool)), false);
    QAction *bar = m_host->createAction({"code", 0}, QStringLiteral("view_code_bar"), ovraTranslator(), 4, true,
                                        &receiver, SLOT(trigger()), nullptr, true);
    QAction *kept = m_host->createAction({"all", 0}, QStringLiteral("kept"), ovraTranslator(), 30, false, nullptr,
                                         nullptr, nullptr, false);
    QCOMPARE(action->text(), QStringLiteral("Go to line..."));
    QCOMPARE(action->toolTip(), QStringLiteral("Go to the specifed line"));
    QCOMPARE(m_host->action("code_goto"), action);
    action->trigger();
    bar->toggle();
    QCOMPARE(receiver.triggers, 2);
    emit receiver.enabled(false);
    QVERIFY(!action->isEnabled());
    QVERIFY(bar->isChecked() == false && bar->isCheckable());

    // The scope word names a menu, made once; "all" puts the action in none.
    QCOMPARE(menus.count(), 1);
    QMenu *code = m_host->menu(QStringLiteral("code"));
    QCOMPARE(menus.count(), 1);
    QCOMPARE(code->actions(), (QList<QAction *>{action, bar}));
    QCOMPARE(code->title(), QStringLiteral("&Code"));
    QVERIFY(!code->actions().contains(kept));
    QVERIFY(m_host->actions().contains(kept));
}

void StudioHostTest::shortcutsAreTheUsersAcrossARestart()
{
    auto makeActions = [this] {
        auto *save = new QAction(m_host.get());
        save->setObjectName(QStringLiteral("file_save"));
        m_host->addAction(save, QKeySequence(QStringLiteral("Ctrl+S")));
        return save;
    };
    QAction *save = makeActions();
    QCOMPARE(save->shortcut(), QKeySequence(QStringLiteral("Ctrl+S")));
    m_host->setShortcut(QStringLiteral("file_save"), QKeySequence(QStringLiteral("Ctrl+Alt+W")));
    QCOMPARE(save->shortcut(), QKeySequence(QStringLiteral("Ctrl+Alt+W")));

    restart();
    save = makeActions();
    QCOMPARE(save->shortcut(), QKeySequence(QStringLiteral("Ctrl+Alt+W")));
    QCOMPARE(m_host->defaultShortcut(QStringLiteral("file_save")), QKeySequence(QStringLiteral("Ctrl+S")));
    // An empty sequence is the user's choice of none, and it stays so.
    m_host->setShortcut(QStringLiteral("file_save"), QKeySequence());
    restart();
    save = makeActions();
    QVERIFY(save->shortcut().isEmpty());
    m_host->resetShortcut(QStringLiteral("file_save"));
    QCOMPARE(save->shortcut(), QKeySequence(QStringLiteral("Ctrl+S")));
}

void StudioHostTest::editorActionsSwitchEditors()
{
    PlainEditor code(m_host.get(), QStringLiteral("code"));
    PlainEditor other(m_host.get(), QStringLiteral("other"));
    QCOMPARE(m_host->editorAction(QStringLiteral("editor_code"), ovraTranslator(), 17), code.action());
    QCOMPARE(code.action()->text(), QStringLiteral("Code"));
    m_host->addEditor(&code);
    m_host->addEditor(&other);
    QCOMPARE(m_host->editorForFile(nullptr, 5), &code);
    QCOMPARE(m_host->editorForFile(nullptr, 3), nullptr);

    QSignalSpy activated(m_host.get(), &StudioHost::editorActivated);
    other.action()->trigger();
    QVERIFY(other.isActive());
    QCOMPARE(m_host->currentEditor(), &other);
    code.action()->trigger();
    QVERIFY(code.isActive());
    QVERIFY(!other.isActive());
    QVERIFY(code.action()->isChecked());
    QVERIFY(!other.action()->isChecked());
    QCOMPARE(activated.count(), 2);
    // Asking again for the editor shown changes nothing.
    code.switchToThis();
    m_host->activateEditor(&code);
    QCOMPARE(activated.count(), 2);
    m_host->removeEditor(&code);
    QCOMPARE(m_host->currentEditor(), nullptr);
    QVERIFY(!code.isActive());
}

void StudioHostTest::controlsOfKindZeroAreToolButtons()
{
    QSignalSpy added(m_host.get(), &StudioHost::controlAdded);
    QAction action(QStringLiteral("Play"));
    QMenu menu;
    QWidget *control = m_host->actionControl(QStringLiteral("anim_play"), &action, &menu);
    auto *button = qobject_cast<QToolButton *>(control);
    QVERIFY(button);
    std::unique_ptr<QWidget> owner(control);
    QCOMPARE(button->defaultAction(), &action);
    QCOMPARE(menu.actions(), QList<QAction *>{&action});
    QCOMPARE(added.count(), 1);
    QCOMPARE(m_host->control(QStringLiteral("anim_play")), control);

    ItemSelectorControlSpec tree{};
    tree.kind = ItemSelectorControlSpec::Kind;
    tree.size = int(sizeof(tree));
    QCOMPARE(m_host->addControl(QStringLiteral("code_tree"), tree), nullptr);
    QObject registered;
    m_host->registerControl(QStringLiteral("mine"), &registered);
    QCOMPARE(m_host->control(QStringLiteral("mine")), &registered);
}

void StudioHostTest::iconsComeFromTheResources()
{
    QVERIFY(!m_host->icon(QStringLiteral("error")).isNull());
    QVERIFY(m_host->icon(QStringLiteral("no_such_icon")).isNull());
}

void StudioHostTest::statusTextsAreToldOnce()
{
    QSignalSpy told(m_host.get(), &StudioHost::statusTextChanged);
    m_host->setStatusText(0, QStringLiteral("Line: 1"));
    m_host->setStatusText(0, QStringLiteral("Line: 1"));
    m_host->setStatusText(2, QString());
    QCOMPARE(told.count(), 2);
    QCOMPARE(m_host->statusText(0), QStringLiteral("Line: 1"));
}

void StudioHostTest::aJobOfThisThreadEndsWithTheCall()
{
    JobList *jobs = m_host->jobs();
    QCOMPARE(m_host->progressProvider(), jobs);
    JobsWidget widget(jobs);
    widget.show();
    Job *job = jobs->start(QStringLiteral("Saving knight.def"), 0);
    job->setMaximum(4);
    job->setValue(3);
    QCOMPARE(jobs->count(), 1);
    QVERIFY(widget.isVisible());
    QCOMPARE(widget.titleLabel()->text(), QStringLiteral("Saving knight.def"));
    QCOMPARE(widget.progressBar()->value(), 3);
    QCOMPARE(widget.progressBar()->maximum(), 4);
    QTRY_COMPARE(jobs->count(), 0);
    QVERIFY(!widget.isVisible());
}

void StudioHostTest::aBackgroundJobEndsAtItsMaximumFromAWorker()
{
    JobList *jobs = m_host->jobs();
    Job *job = jobs->start(QStringLiteral("Saving knight.oan"), 0);
    job->setAsynchronous(true);
    job->setMaximum(1);
    job->setValue(0);
    QCoreApplication::processEvents();
    QCOMPARE(jobs->count(), 1);
    QCOMPARE(jobs->backgroundCount(), 1);

    QSignalSpy changed(jobs, &JobList::changed);
    std::unique_ptr<QThread> worker(QThread::create([job] { job->setValue(1); }));
    worker->start();
    QVERIFY(worker->wait(5000));
    QCOMPARE(jobs->count(), 0);
    // The worker's report reaches the window on its own thread.
    QTRY_VERIFY(changed.count() >= 1);
}

void StudioHostTest::cancellingAndErrorsReachTheJobs()
{
    JobList *jobs = m_host->jobs();
    JobsWidget widget(jobs);
    Job *background = jobs->start(QStringLiteral("Saving all"), 0);
    background->setAsynchronous(true);
    QVERIFY(!background->wasCancelled());
    QTest::mouseClick(widget.cancelButton(), Qt::LeftButton);
    QVERIFY(background->wasCancelled());
    // Cancelled, it runs on until its owner notices; an error ends it and is kept.
    QCoreApplication::processEvents();
    QCOMPARE(jobs->count(), 1);
    QSignalSpy reported(jobs, &JobList::errorReported);
    background->error(QStringLiteral("disk full"));
    QCOMPARE(jobs->count(), 0);
    QVERIFY(reported.wait(1000));
    QCOMPARE(reported.first().first().toString(), QStringLiteral("disk full"));
    QCOMPARE(jobs->errors(), QStringList{QStringLiteral("Saving all: disk full")});
}

QTEST_MAIN(StudioHostTest)
#include "tst_studiohost.moc"
