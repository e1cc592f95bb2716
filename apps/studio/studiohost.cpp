#include "studiohost.h"

#include "colorscheme.h"
#include "joblist.h"

#include "code/codedocument.h"
#include "code/codenodefile.h"
#include "code/codeparser.h"
#include "editors/editor.h"
#include "editors/extraeditor.h"
#include "editors/workspace.h"
#include "engine/engine.h"
#include "project/project.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>
#include <QMenu>
#include <QScreen>
#include <QSet>
#include <QSettings>
#include <QStandardPaths>
#include <QTextCharFormat>
#include <QToolButton>

using namespace Ovra;

namespace {

QString optionKey(const QString &name)
{
    return QStringLiteral("options/") + name;
}

QString shortcutKey(const QString &name)
{
    return QStringLiteral("shortcuts/") + name;
}

// Menus the library and the window ask for by name, with the titles the menu bar shows.
QString menuTitle(const QString &name)
{
    static const QHash<QString, const char *> titles{
        {QStringLiteral("file"), QT_TRANSLATE_NOOP("StudioHost", "&File")},
        {QStringLiteral("edit"), QT_TRANSLATE_NOOP("StudioHost", "&Edit")},
        {QStringLiteral("view"), QT_TRANSLATE_NOOP("StudioHost", "&View")},
        {QStringLiteral("code"), QT_TRANSLATE_NOOP("StudioHost", "&Code")},
        {QStringLiteral("tools"), QT_TRANSLATE_NOOP("StudioHost", "&Tools")},
        {QStringLiteral("help"), QT_TRANSLATE_NOOP("StudioHost", "&Help")},
        {QStringLiteral("graphics"), QT_TRANSLATE_NOOP("StudioHost", "&Graphics")},
        {QStringLiteral("anim"), QT_TRANSLATE_NOOP("StudioHost", "&Animation")},
        {QStringLiteral("organizer"), QT_TRANSLATE_NOOP("StudioHost", "&Organizer")},
        {QStringLiteral("thumbnails"), QT_TRANSLATE_NOOP("StudioHost", "Sprite e&xplorer")},
        {QStringLiteral("sound"), QT_TRANSLATE_NOOP("StudioHost", "&Sound")},
        {QStringLiteral("sprite"), QT_TRANSLATE_NOOP("StudioHost", "S&prite")},
        {QStringLiteral("palettes"), QT_TRANSLATE_NOOP("StudioHost", "Pa&lettes")},
    };
    const char *title = titles.value(name);
    if (title)
        return QCoreApplication::translate("StudioHost", title);
    QString plain = name;
    plain.replace(QLatin1Char('_'), QLatin1Char(' '));
    return plain.isEmpty() ? plain : plain.at(0).toUpper() + plain.mid(1);
}

// The syntax formats of the scheme, for the parsers' token types: the editor's font is
// the user's, so a format brings colours and weight, never a face or a size.
QTextCharFormat syntaxFormat(ColorScheme *scheme, int type)
{
    const QString name = ColorScheme::formatNames().value(type + 1);
    QTextCharFormat format = scheme->format(name, CodeParserSyntax::defaultFormat(type));
    for (int property : {QTextFormat::FontFamily, QTextFormat::FontPointSize, QTextFormat::FontFixedPitch,
                         QTextFormat::FontStyleHint, QTextFormat::FontFamilies})
        format.clearProperty(property);
    return format;
}

} // namespace

struct StudioHost::Private
{
    QSettings *settings;
    std::unique_ptr<ColorScheme> scheme;
    JobList *jobs = nullptr;
    Interface *previous = nullptr;
    QPointer<QWidget> main;
    Engine *engine = nullptr;
    QList<Project *> projects;
    Project *current = nullptr;
    QPointer<Editor> active;
    QList<FileEditor *> editors;
    QList<ExtraEditor *> extras;
    QObject actionOwner;
    QActionGroup *editorGroup = nullptr;
    QMap<QString, QPointer<QAction>> actions;
    QMap<QString, QKeySequence> defaults;
    QMap<QString, QPointer<QMenu>> menus;
    QMap<QString, QPointer<QObject>> controls;
    QMap<int, QString> status;
    QHash<QString, QIcon> icons;
    QList<QTextCharFormat> appliedFormats;
};

StudioHost::StudioHost(QSettings *settings, QObject *parent)
    : QObject(parent)
    , d(new Private)
{
    d->settings = settings;
    d->scheme.reset(new ColorScheme(settings));
    d->jobs = new JobList(this);
    d->editorGroup = new QActionGroup(&d->actionOwner);
    d->editorGroup->setExclusive(true);
    // The signals to the window carry these; queued connections need their names.
    qRegisterMetaType<QMenu *>();
    qRegisterMetaType<Ovra::Editor *>();
    qRegisterMetaType<Ovra::ExtraEditor *>();
    qRegisterMetaType<Ovra::Workspace *>();
    qRegisterMetaType<Ovra::Project *>();
    d->previous = Interface::instance();
    setGlobalInterface(this);
}

StudioHost::~StudioHost()
{
    for (const QPointer<QMenu> &menu : qAsConst(d->menus))
        delete menu.data();
    setGlobalInterface(d->previous);
}

QString StudioHost::text(uint id)
{
    return ovraTranslator()->text(id);
}

QString StudioHost::tip(uint id)
{
    return ovraTranslator()->tip(id);
}

QWidget *StudioHost::mainWidget()
{
    return d->main;
}

QString StudioHost::userDataPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

QString StudioHost::installPath()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
}

QString StudioHost::configPath()
{
    return QFileInfo(d->settings->fileName()).absolutePath();
}

ProgressProvider *StudioHost::progressProvider()
{
    return d->jobs;
}

Engine *StudioHost::engine()
{
    return d->engine;
}

Editor *StudioHost::currentEditor()
{
    return d->active;
}

FileEditor *StudioHost::editorForFile(ProjectFile *, int fileType)
{
    for (FileEditor *editor : qAsConst(d->editors)) {
        if (editor->fileType() == fileType)
            return editor;
    }
    return nullptr;
}

uint StudioHost::projectCount()
{
    return uint(d->projects.size());
}

Project *StudioHost::project(uint index)
{
    return index < uint(d->projects.size()) ? d->projects.at(int(index)) : nullptr;
}

Project *StudioHost::currentProject()
{
    return d->current;
}

int StudioHost::scaleToDPI(int length)
{
    qreal dpi = 96;
    if (d->main)
        dpi = d->main->logicalDpiX();
    else if (QGuiApplication::primaryScreen())
        dpi = QGuiApplication::primaryScreen()->logicalDotsPerInch();
    return qRound(length * dpi / 96);
}

QIcon StudioHost::icon(const QString &name)
{
    auto known = d->icons.constFind(name);
    if (known != d->icons.constEnd())
        return *known;
    QIcon icon;
    for (const char *size : {"16", "32"}) {
        const QString file = QStringLiteral(":/studio/icons/%1/%2.png").arg(QLatin1String(size), name);
        if (QFile::exists(file))
            icon.addFile(file);
    }
    const QString library = QStringLiteral(":/ovra_icons/icons/%1.png").arg(name);
    if (icon.isNull() && QFile::exists(library))
        icon.addFile(library);
    d->icons.insert(name, icon);
    return icon;
}

QColor StudioHost::color(const QString &name, const QColor &defaultColor)
{
    return d->scheme->color(name, defaultColor);
}

QTextCharFormat StudioHost::textFormat(const QString &name, const QTextCharFormat &defaultFormat)
{
    return d->scheme->format(name, defaultFormat);
}

QVariant StudioHost::option(const QString &name, const QVariant &defaultValue)
{
    return d->settings->value(optionKey(name), defaultValue);
}

void StudioHost::setOption(const QString &name, const QVariant &value)
{
    if (value.isNull())
        d->settings->remove(optionKey(name));
    else
        d->settings->setValue(optionKey(name), value);
}

void StudioHost::setStatusText(int field, const QString &text)
{
    if (d->status.value(field) == text && d->status.contains(field))
        return;
    d->status.insert(field, text);
    emit statusTextChanged(field, text);
}

QString StudioHost::statusText(int field) const
{
    return d->status.value(field);
}

QWidget *StudioHost::addControl(const QString &name, const ControlSpec &request)
{
    if (request.kind != ActionControlSpec::Kind)
        return nullptr;
    QAction *action = static_cast<const ActionControlSpec &>(request).action;
    auto *button = new QToolButton;
    button->setObjectName(name);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    if (action && action->menu())
        button->setPopupMode(QToolButton::MenuButtonPopup);
    d->controls.insert(name, button);
    emit controlAdded(name, button);
    return button;
}

void StudioHost::registerControl(const QString &name, QObject *object)
{
    d->controls.insert(name, object);
}

QObject *StudioHost::control(const QString &name)
{
    return d->controls.value(name);
}

QMenu *StudioHost::menu(const QString &name)
{
    QPointer<QMenu> &menu = d->menus[name];
    if (!menu) {
        menu = new QMenu(menuTitle(name));
        menu->setObjectName(name);
        emit menuCreated(name, menu);
    }
    return menu;
}

QAction *StudioHost::newAction(const QString &name, Translator *translator, uint textId)
{
    auto *action = new QAction(&d->actionOwner);
    action->setObjectName(name);
    if (translator) {
        action->setText(translator->text(textId));
        action->setToolTip(translator->tip(textId));
    }
    action->setIcon(icon(name));
    return action;
}

QAction *StudioHost::createAction(ActionScope scope, const QString &name, Translator *translator, uint textId,
                                  bool checkable, QObject *receiver, const char *slot, const char *enablingSignal,
                                  bool checked)
{
    QAction *action = newAction(name, translator, textId);
    action->setCheckable(checkable);
    action->setChecked(checked);
    if (receiver && slot)
        connect(action, checkable ? SIGNAL(toggled(bool)) : SIGNAL(triggered()), receiver, slot);
    if (receiver && enablingSignal)
        connect(receiver, enablingSignal, action, SLOT(setEnabled(bool)));
    addAction(action);
    const QString scopeWord = QString::fromLatin1(scope.scope ? scope.scope : "all");
    if (scopeWord != QLatin1String("all"))
        menu(scopeWord)->addAction(action);
    return action;
}

QAction *StudioHost::action(const char *name)
{
    return d->actions.value(QString::fromLatin1(name));
}

QAction *StudioHost::editorAction(const QString &name, Translator *translator, uint textId)
{
    if (QAction *known = d->actions.value(name))
        return known;
    QAction *action = newAction(name, translator, textId);
    action->setCheckable(true);
    d->editorGroup->addAction(action);
    addAction(action);
    return action;
}

ExtraEditor *StudioHost::extraEditor(int index)
{
    return d->extras.value(index);
}

void StudioHost::projectsRestored()
{
    emit restored();
}

void StudioHost::activateEditor(Editor *editor)
{
    if (editor == d->active)
        return;
    if (d->active)
        d->active->deactivate();
    // What the editor before wrote in the status bar is no longer true.
    for (int field : d->status.keys())
        setStatusText(field, QString());
    d->active = editor;
    if (editor) {
        editor->activate();
        if (QAction *action = editor->action())
            action->setChecked(true);
    }
    emit editorActivated(editor);
}

void StudioHost::setExtraEditor(ExtraEditor *editor)
{
    emit extraEditorRequested(editor);
}

void StudioHost::setWorkspace(Workspace *workspace)
{
    emit workspaceRequested(workspace);
}

QSettings *StudioHost::settings() const
{
    return d->settings;
}

ColorScheme *StudioHost::colorScheme() const
{
    return d->scheme.get();
}

JobList *StudioHost::jobs() const
{
    return d->jobs;
}

void StudioHost::setMainWidget(QWidget *widget)
{
    d->main = widget;
}

void StudioHost::setEngine(Engine *engine)
{
    if (engine == d->engine)
        return;
    d->engine = engine;
    emit engineChanged(engine);
    for (FileEditor *editor : qAsConst(d->editors))
        editor->engineSwitched(engine != nullptr);
    for (ExtraEditor *editor : qAsConst(d->extras))
        editor->engineSwitched(engine != nullptr);
}

void StudioHost::addProject(Project *project)
{
    if (!project || d->projects.contains(project))
        return;
    d->projects << project;
    emit projectsChanged();
}

void StudioHost::removeProject(Project *project)
{
    if (!d->projects.removeOne(project))
        return;
    if (d->current == project)
        setCurrentProject(d->projects.value(0));
    emit projectsChanged();
}

void StudioHost::setCurrentProject(Project *project)
{
    if (project == d->current)
        return;
    d->current = project;
    for (FileEditor *editor : qAsConst(d->editors))
        editor->projectSwitched(project);
    for (ExtraEditor *editor : qAsConst(d->extras))
        editor->projectSwitched(project);
    emit currentProjectChanged(project);
}

void StudioHost::addEditor(FileEditor *editor)
{
    if (!editor || d->editors.contains(editor))
        return;
    d->editors << editor;
    if (QAction *action = editor->action())
        connect(action, &QAction::triggered, editor, [this, editor] { activateEditor(editor); });
}

void StudioHost::removeEditor(FileEditor *editor)
{
    if (!d->editors.removeOne(editor))
        return;
    // Editors may share an action (the text and the canvas editor of animation files): the
    // one removed no longer answers it.
    if (QAction *action = editor->action())
        disconnect(action, nullptr, editor, nullptr);
    if (d->active == editor)
        activateEditor(nullptr);
}

QList<FileEditor *> StudioHost::editors() const
{
    return d->editors;
}

void StudioHost::addExtraEditor(ExtraEditor *editor)
{
    if (editor && !d->extras.contains(editor))
        d->extras << editor;
}

QList<QAction *> StudioHost::actions() const
{
    QList<QAction *> list;
    for (const QPointer<QAction> &action : qAsConst(d->actions)) {
        if (action)
            list << action;
    }
    return list;
}

void StudioHost::addAction(QAction *action, const QKeySequence &defaultShortcut)
{
    const QString name = action->objectName();
    d->actions.insert(name, action);
    d->defaults.insert(name, defaultShortcut);
    const QVariant own = d->settings->value(shortcutKey(name));
    action->setShortcut(own.isValid() ? QKeySequence(own.toString(), QKeySequence::PortableText) : defaultShortcut);
}

QKeySequence StudioHost::defaultShortcut(const QString &name) const
{
    return d->defaults.value(name);
}

void StudioHost::setShortcut(const QString &name, const QKeySequence &shortcut)
{
    d->settings->setValue(shortcutKey(name), shortcut.toString(QKeySequence::PortableText));
    if (QAction *action = d->actions.value(name))
        action->setShortcut(shortcut);
}

void StudioHost::resetShortcut(const QString &name)
{
    d->settings->remove(shortcutKey(name));
    if (QAction *action = d->actions.value(name))
        action->setShortcut(d->defaults.value(name));
}

void StudioHost::reconfigure()
{
    QList<QTextCharFormat> formats;
    for (int type = 0; type < CodeParserSyntax::TokenTypeCount; ++type)
        formats << syntaxFormat(d->scheme.get(), type);
    if (formats != d->appliedFormats) {
        const bool first = d->appliedFormats.isEmpty();
        for (int type = 0; type < formats.size(); ++type)
            CodeParserSyntax::setFormat(type, formats.at(type));
        d->appliedFormats = formats;
        // Lines keep the formats they were painted with until they are highlighted anew.
        if (!first)
            rehighlightDocuments();
    }
    for (FileEditor *editor : qAsConst(d->editors))
        editor->reconfig();
    for (ExtraEditor *editor : qAsConst(d->extras))
        editor->reconfig();
    emit reconfigured();
}

void StudioHost::rehighlightDocuments()
{
    QSet<CodeDocument *> documents;
    for (Project *project : qAsConst(d->projects)) {
        for (ProjectFile *file : project->files()) {
            if (auto *document = dynamic_cast<CodeDocument *>(file))
                documents << document;
            else if (auto *nodes = dynamic_cast<CodeNodeFile *>(file))
                documents << nodes->document();
        }
    }
    for (CodeDocument *document : qAsConst(documents))
        document->rehighlight();
}
