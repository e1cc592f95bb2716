// The commands on whole projects: what a project holds (info), the messages of its
// definition files (check), and the backups of its work (backup, restore, backups).
#include "commands.h"
#include "enginehost.h"
#include "terminal.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/codenodefile.h"
#include "engine/engine.h"
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "foundation/messages.h"
#include "image/sprite.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "project/projectfile.h"
#include "sound/sound.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QThread>

#include <algorithm>

using namespace Ovra;

namespace {

// One message, with the file named as the user should see it.
struct Finding
{
    QString file;
    Message message;
};

QString typeWord(Message::Type type)
{
    switch (type) {
    case Message::Error: return QStringLiteral("error");
    case Message::Warning: return QStringLiteral("warning");
    default: return QStringLiteral("note");
    }
}

// "file:line:column: error: text", with line and column counted from 1 as editors do.
QString findingLine(const Finding &finding)
{
    return QStringLiteral("%1:%2:%3: %4: %5")
        .arg(finding.file)
        .arg(finding.message.line + 1)
        .arg(finding.message.column + 1)
        .arg(typeWord(finding.message.type), finding.message.text);
}

QJsonObject findingJson(const Finding &finding)
{
    return QJsonObject{{QStringLiteral("file"), finding.file},
                       {QStringLiteral("line"), int(finding.message.line + 1)},
                       {QStringLiteral("column"), int(finding.message.column + 1)},
                       {QStringLiteral("type"), typeWord(finding.message.type)},
                       {QStringLiteral("text"), finding.message.text}};
}

void sortFindings(QList<Finding> &findings)
{
    std::stable_sort(findings.begin(), findings.end(), [](const Finding &a, const Finding &b) {
        if (a.file != b.file)
            return a.file < b.file;
        if (a.message.line != b.message.line)
            return a.message.line < b.message.line;
        return a.message.column < b.message.column;
    });
}

// A file of a project named the way the user named the project: absolute when the
// argument was, else relative to the current directory.
QString shownName(const QString &absolute, const QString &argument)
{
    if (absolute.isEmpty())
        return QString();
    return QFileInfo(argument).isAbsolute() ? absolute : QDir::current().relativeFilePath(absolute);
}

QString plural(uint count, const char *singular)
{
    const QString word = QLatin1String(singular);
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? word : word + QLatin1Char('s'));
}

// Every message of the project's files and of its load, in the order of the project's table.
QList<Finding> projectFindings(const Project &project, const QString &argument)
{
    QList<Finding> findings;
    MessageList *list = project.messages();
    list->setFilter(Message::All);
    for (int row = 0; row < list->rowCount(); ++row) {
        const Messages *owner = nullptr;
        const Message message = list->messageAt(row, owner);
        const ProjectFile *file = owner ? owner->file() : nullptr;
        const QString name = file ? file->fileName() : project.fileName();
        findings << Finding{shownName(name, argument), message};
    }
    return findings;
}

// The project's definition-like files: its code documents, and the documents behind
// files that show a part of one (animations), each once.
QList<CodeDocument *> codeDocuments(const Project &project)
{
    QList<CodeDocument *> documents;
    for (ProjectFile *file : project.files()) {
        CodeDocument *document = dynamic_cast<CodeDocument *>(file);
        if (auto *part = dynamic_cast<CodeNodeFile *>(file))
            document = part->document();
        if (document && !documents.contains(document))
            documents << document;
    }
    return documents;
}

// The engines the plug-ins brought.
QList<EngineExtension *> engines()
{
    QList<EngineExtension *> found;
    for (Extension *extension : ExtensionManager::list(Extension::Named)) {
        if (auto *engine = dynamic_cast<EngineExtension *>(extension))
            found << engine;
    }
    return found;
}

// The name of the plug-in that brought the engine.
QString engineName(Engine *engine)
{
    for (EngineExtension *extension : engines()) {
        if (engine && extension->engine() == engine)
            return QLatin1String(extension->name());
    }
    return QString();
}

// The suffixes of a file-dialog filter: "Definitions (*.def *.inc)" gives def and inc.
QStringList filterSuffixes(const QString &filter)
{
    QStringList suffixes;
    static const QRegularExpression pattern(QStringLiteral("\\*\\.([A-Za-z0-9_]+)"));
    for (auto it = pattern.globalMatch(filter); it.hasNext();)
        suffixes << it.next().captured(1).toLower();
    return suffixes;
}

// The highest file type an engine is asked about; engines number theirs from 0 up.
constexpr int maximumFileType = 31;

// The name an engine gives a file type in its filters ("Definitions (*.def)").
QString fileTypeName(Engine *engine, int type)
{
    const QString filter = engine ? engine->singleFileFilters(type) : QString();
    const int bracket = filter.indexOf(QStringLiteral(" ("));
    if (bracket > 0)
        return filter.left(bracket);
    static const char *const names[] = {"Main", "Sprites", "Sounds", "Animations", "Scripts"};
    return type >= 0 && type < 5 ? QLatin1String(names[type]) : QStringLiteral("Type %1").arg(type);
}

} // namespace

namespace Commands {

// ---- info ----------------------------------------------------------------------------

namespace {

// What info tells of a project beside its names.
struct ProjectSummary
{
    QJsonArray files;
    QStringList fileLines;
    uint sprites = 0;
    uint palettes = 0;
    uint animations = 0;
    uint frames = 0;
    uint sounds = 0;
    QList<Finding> findings;
};

// The project's files by type, as JSON entries and as lines.
void listFiles(const Project &project, Engine *engine, ProjectSummary *summary)
{
    const QDir directory(project.absolutePath());
    for (int type = 0; type <= maximumFileType; ++type) {
        for (const ProjectFile *file : project.filesByType(type)) {
            const QString path = directory.relativeFilePath(file->fileName());
            const QString name = fileTypeName(engine, type);
            summary->files.append(QJsonObject{{QStringLiteral("type"), type},
                                              {QStringLiteral("typeName"), name},
                                              {QStringLiteral("path"), path}});
            summary->fileLines << QStringLiteral("  %1 %2").arg(name + QLatin1Char(':'), -20).arg(path);
        }
    }
}

void countContents(const Project &project, ProjectSummary *summary)
{
    for (ProjectFile *file : project.filesByType(Project::Sprites)) {
        if (auto *container = dynamic_cast<Sprites *>(file)) {
            summary->sprites += container->count();
            if (Palettes *own = container->palettes())
                summary->palettes += own->count();
        }
    }
    for (ProjectFile *file : project.filesByType(Project::Animations)) {
        if (auto *list = dynamic_cast<Animations *>(file)) {
            summary->animations += list->count();
            for (const AnimationCode *animation : list->animations())
                summary->frames += animation->frameCount();
        }
    }
    for (ProjectFile *file : project.filesByType(Project::Sounds)) {
        if (auto *bank = dynamic_cast<Sounds *>(file))
            summary->sounds += bank->count();
    }
}

ProjectSummary summarize(const Project &project, Engine *engine, const QString &argument)
{
    ProjectSummary summary;
    listFiles(project, engine, &summary);
    countContents(project, &summary);
    summary.findings = projectFindings(project, argument);
    sortFindings(summary.findings);
    return summary;
}

void printInfoJson(Cli::Context &context, const Project &project, Engine *engine, const QString &argument,
                   const ProjectSummary &summary)
{
    const MessageList *messages = project.messages();
    QJsonArray list;
    for (const Finding &finding : summary.findings)
        list.append(findingJson(finding));
    context.printJson(QJsonObject{
        {QStringLiteral("project"), project.name()},
        {QStringLiteral("version"), project.version()},
        {QStringLiteral("file"), shownName(project.fileName(), argument)},
        {QStringLiteral("engine"), engineName(engine)},
        {QStringLiteral("files"), summary.files},
        {QStringLiteral("sprites"), int(summary.sprites)},
        {QStringLiteral("palettes"), int(summary.palettes)},
        {QStringLiteral("animations"), int(summary.animations)},
        {QStringLiteral("frames"), int(summary.frames)},
        {QStringLiteral("sounds"), int(summary.sounds)},
        {QStringLiteral("errors"), int(messages->errorCount())},
        {QStringLiteral("warnings"), int(messages->warningCount())},
        {QStringLiteral("notes"), int(messages->informationCount())},
        {QStringLiteral("messages"), list},
    });
}

void printInfoText(Cli::Context &context, const Project &project, const QString &argument, const ProjectSummary &summary)
{
    const MessageList *messages = project.messages();
    const QString version = project.version().isEmpty() ? QString() : QStringLiteral(" %1").arg(project.version());
    context.say(QStringLiteral("%1%2 (%3)").arg(project.name(), version, shownName(project.fileName(), argument)));
    context.say(QStringLiteral("Files:"));
    for (const QString &line : summary.fileLines)
        context.say(line);
    context.say(QStringLiteral("Sprites:    %1").arg(summary.sprites));
    context.say(QStringLiteral("Palettes:   %1").arg(summary.palettes));
    context.say(QStringLiteral("Animations: %1 (%2)").arg(summary.animations).arg(plural(summary.frames, "frame")));
    context.say(QStringLiteral("Sounds:     %1").arg(summary.sounds));
    context.say(QStringLiteral("Messages:   %1, %2, %3")
                    .arg(plural(messages->errorCount(), "error"), plural(messages->warningCount(), "warning"),
                         plural(messages->informationCount(), "note")));
    for (const Finding &finding : summary.findings)
        context.say(QStringLiteral("  ") + findingLine(finding));
}

} // namespace

int info(Cli::Context &context, const QStringList &arguments)
{
    Cli::Parser parser(QStringLiteral("info"),
                       QStringLiteral("Shows a project's files by type, the counts of its sprites, palettes, "
                                      "animations and sounds, and the messages of its files."),
                       QStringLiteral("PROJECT"), Cli::Parser::Json);
    if (const int code = parser.parse(context, arguments, 1, 1); code >= 0)
        return code;
    const QString argument = parser.positional().at(0);
    EngineHost host(context.pluginDirectory);
    ProjectPointer project = host.openProject(context, QStringLiteral("info"), argument);
    if (!project)
        return Cli::InputError;

    Engine *engine = project->parentProject() ? project->parentProject()->engine() : nullptr;
    const ProjectSummary summary = summarize(*project, engine, argument);
    if (context.json)
        printInfoJson(context, *project, engine, argument, summary);
    else
        printInfoText(context, *project, argument, summary);
    return Cli::Success;
}

// ---- check ---------------------------------------------------------------------------

namespace {

struct CheckRun
{
    QList<Finding> findings;
    int files = 0;
    bool inputFailed = false;
};

// A sprite container may leave the check of a sprite's pixels to the first time they are
// shown: each is shown once, so that a damaged one is among the file's messages.
void showEverySprite(ProjectFile *file)
{
    if (auto *sprites = dynamic_cast<Sprites *>(file)) {
        for (uint i = 0; i < sprites->count(); ++i)
            sprites->at(i)->image();
    }
}

// A single file read on its own, by the engine whose filters name its suffix.
void checkSingleFile(Cli::Context &context, const QString &argument, CheckRun &run)
{
    const QString suffix = QFileInfo(argument).suffix().toLower();
    for (EngineExtension *extension : engines()) {
        Engine *engine = extension->engine();
        for (int type = 0; engine && type <= maximumFileType; ++type) {
            if (!filterSuffixes(engine->singleFileFilters(type)).contains(suffix))
                continue;
            ProjectFile *file = engine->createFile(type, nullptr);
            if (!file)
                continue;
            const QString path = QFileInfo(argument).absoluteFilePath();
            const bool read = file->fromFile(FileSystemArchive::instance(), path, 0, nullptr);
            if (read)
                showEverySprite(file);
            const Messages *messages = file->fileMessages();
            const uint count = messages ? messages->count(Message::All) : 0;
            for (uint i = 0; i < count; ++i)
                run.findings << Finding{argument, messages->at(i, Message::All)};
            if (!read && count == 0) {
                context.inputError(QStringLiteral("check"), argument, QStringLiteral("can't be read"));
                run.inputFailed = true;
            }
            ++run.files;
            file->release();
            return;
        }
    }
    context.inputError(QStringLiteral("check"), argument, QStringLiteral("no engine reads files like this one"));
    run.inputFailed = true;
}

} // namespace

int check(Cli::Context &context, const QStringList &arguments)
{
    Cli::Parser parser(QStringLiteral("check"),
                       QStringLiteral("Parses the definition files of projects, or single files, and prints "
                                      "every message as FILE:LINE:COLUMN: error|warning|note: TEXT.\n"
                                      "Exit status 1 when there are errors."),
                       QStringLiteral("PROJECT|FILE..."), Cli::Parser::Json);
    if (const int code = parser.parse(context, arguments, 1, -1); code >= 0)
        return code;
    EngineHost host(context.pluginDirectory);
    if (host.pluginDirectory().isEmpty())
        return context.inputError(QStringLiteral("check"), parser.positional().at(0),
                                  QStringLiteral("no engine plug-ins found (give their directory with --plugins)"));

    CheckRun run;
    for (const QString &argument : parser.positional()) {
        const QFileInfo info(argument);
        if (!info.exists()) {
            context.inputError(QStringLiteral("check"), argument, QStringLiteral("no such file or directory"));
            run.inputFailed = true;
            continue;
        }
        if (info.isDir() || EngineExtension::forProjectFile(info.absoluteFilePath())) {
            ProjectPointer project = host.openProject(context, QStringLiteral("check"), argument);
            if (!project) {
                run.inputFailed = true;
                continue;
            }
            for (ProjectFile *file : project->files())
                showEverySprite(file);
            run.findings << projectFindings(*project, argument);
            run.files += codeDocuments(*project).size();
            continue;
        }
        checkSingleFile(context, argument, run);
    }

    sortFindings(run.findings);
    uint totals[3] = {0, 0, 0};
    QJsonArray list;
    for (const Finding &finding : qAsConst(run.findings)) {
        ++totals[qBound(0, int(finding.message.type), 2)];
        if (context.json)
            list.append(findingJson(finding));
        else
            context.out() << findingLine(finding) << '\n';
    }
    if (context.json) {
        context.printJson(QJsonObject{{QStringLiteral("files"), run.files},
                                      {QStringLiteral("errors"), int(totals[Message::Error])},
                                      {QStringLiteral("warnings"), int(totals[Message::Warning])},
                                      {QStringLiteral("notes"), int(totals[Message::Information])},
                                      {QStringLiteral("messages"), list}});
    } else if (!context.quiet && run.files > 0) {
        QString summary = plural(totals[Message::Error], "error") + QStringLiteral(", ")
                          + plural(totals[Message::Warning], "warning");
        if (totals[Message::Information])
            summary += QStringLiteral(", ") + plural(totals[Message::Information], "note");
        context.out().flush();
        context.err() << summary << " in " << plural(uint(run.files), "file") << '\n';
    }
    if (run.inputFailed)
        return Cli::InputError;
    return totals[Message::Error] ? Cli::Findings : Cli::Success;
}

// ---- backups -------------------------------------------------------------------------

namespace {

struct BackupEntry
{
    QString name;
    QString path; // the zip, or the directory
    qint64 size = 0;
    QDateTime date;
};

// Where the work keeps its backups: "backup/" in its root.
QString backupDirectory(const Project &project)
{
    QString root = project.parentProject()->basePath();
    if (!root.endsWith(QLatin1Char('/')))
        root += QLatin1Char('/');
    return root + QLatin1String("backup/");
}

qint64 sizeBelow(const QString &directory)
{
    qint64 size = 0;
    QDirIterator it(directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        size += it.fileInfo().size();
    }
    return size;
}

// Every backup, the oldest first.
QList<BackupEntry> listBackups(const QString &directory)
{
    QList<BackupEntry> list;
    const QFileInfoList entries = QDir(directory).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        if (entry.isDir())
            list << BackupEntry{entry.fileName(), entry.absoluteFilePath(), sizeBelow(entry.absoluteFilePath()), entry.lastModified()};
        else if (entry.suffix().compare(QLatin1String("zip"), Qt::CaseInsensitive) == 0)
            list << BackupEntry{entry.completeBaseName(), entry.absoluteFilePath(), entry.size(), entry.lastModified()};
    }
    std::stable_sort(list.begin(), list.end(), [](const BackupEntry &a, const BackupEntry &b) {
        return a.date != b.date ? a.date < b.date : a.name < b.name;
    });
    return list;
}

QString humanSize(qint64 bytes)
{
    if (bytes < 1024)
        return QStringLiteral("%1 B").arg(bytes);
    if (bytes < 1024 * 1024)
        return QStringLiteral("%1 KiB").arg(double(bytes) / 1024, 0, 'f', 1);
    return QStringLiteral("%1 MiB").arg(double(bytes) / (1024 * 1024), 0, 'f', 1);
}

// The name the library gives a backup taken at `time` (see ParentProject::backup).
QString stampedName(const QDateTime &time, const QString &name)
{
    return time.toString(QStringLiteral("dd.MM.yyyy_h.m.s_ap_")) + name;
}

bool backupExists(const QString &directory, const QString &name)
{
    return QFileInfo::exists(directory + name + QLatin1String(".zip")) || QFileInfo(directory + name).isDir();
}

} // namespace

int backup(Cli::Context &context, const QStringList &arguments)
{
    Cli::Parser parser(QStringLiteral("backup"),
                       QStringLiteral("Takes a backup of the project's files under \"backup/\" in the work's "
                                      "directory: a zip, or a directory when no plug-in writes zips.\n"
                                      "NAME (default: the project file's name) follows the date and time."),
                       QStringLiteral("PROJECT [NAME]"));
    if (const int code = parser.parse(context, arguments, 1, 2); code >= 0)
        return code;
    const QString argument = parser.positional().at(0);
    QString name = parser.positional().value(1);
    if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')) || name.startsWith(QLatin1Char('.')))
        return context.usageError(parser.name(), QStringLiteral("a backup's name has no '/', '\\' or leading '.': '%1'").arg(name));

    EngineHost host(context.pluginDirectory);
    ProjectPointer project = host.openProject(context, QStringLiteral("backup"), argument);
    if (!project)
        return Cli::InputError;
    if (name.isEmpty())
        name = QFileInfo(project->fileName()).completeBaseName();

    const QString directory = backupDirectory(*project);
    // A work from elsewhere may bring a "backup" link that leads out of it: backups are
    // written only inside the work's own folder.
    if (!isInsideDirectory(directory, project->parentProject()->basePath()))
        return context.inputError(QStringLiteral("backup"), argument,
                                  QStringLiteral("its backup folder leads outside the work; nothing was written"));
    // Backups are named to the second; one of the same name taken in the same second
    // would be written into the earlier one, so wait for the next second.
    while (backupExists(directory, stampedName(QDateTime::currentDateTime(), name)))
        QThread::msleep(50);
    QSet<QString> before;
    for (const BackupEntry &entry : listBackups(directory))
        before.insert(entry.path);

    Terminal::ProgressJob job(QStringLiteral("Backing up"), !context.quiet && Terminal::stderrIsTerminal());
    const bool done = project->parentProject()->backup(name, &job);
    for (const QString &error : job.errors())
        context.inputError(QStringLiteral("backup"), argument, error);

    QList<BackupEntry> made;
    for (const BackupEntry &entry : listBackups(directory)) {
        if (!before.contains(entry.path))
            made << entry;
    }
    if (!done || made.isEmpty())
        return context.inputError(QStringLiteral("backup"), directory, QStringLiteral("the backup could not be written"));
    const BackupEntry &entry = made.last();
    context.say(QStringLiteral("Backup %1 written to %2 (%3)").arg(entry.name, shownName(entry.path, argument), humanSize(entry.size)));
    return job.errors().isEmpty() ? Cli::Success : Cli::InputError;
}

int restore(Cli::Context &context, const QStringList &arguments)
{
    Cli::Parser parser(QStringLiteral("restore"),
                       QStringLiteral("Brings a backup back over the working files of the project's work.\n"
                                      "NAME is one that 'ovra backups' lists."),
                       QStringLiteral("PROJECT NAME"));
    if (const int code = parser.parse(context, arguments, 2, 2); code >= 0)
        return code;
    const QString argument = parser.positional().at(0);
    QString name = parser.positional().at(1);
    if (name.endsWith(QLatin1String(".zip"), Qt::CaseInsensitive))
        name.chop(4);

    EngineHost host(context.pluginDirectory);
    ProjectPointer project = host.openProject(context, QStringLiteral("restore"), argument);
    if (!project)
        return Cli::InputError;

    const QString directory = backupDirectory(*project);
    const QList<BackupEntry> all = listBackups(directory);
    const bool known = std::any_of(all.begin(), all.end(), [&name](const BackupEntry &entry) { return entry.name == name; });
    if (name.contains(QLatin1Char('/')) || !known) {
        QStringList names;
        for (const BackupEntry &entry : all)
            names << entry.name;
        return context.inputError(QStringLiteral("restore"), name,
                                  names.isEmpty() ? QStringLiteral("no such backup; this work has none yet")
                                                  : QStringLiteral("no such backup; there are: %1").arg(names.join(QStringLiteral(", "))));
    }

    Terminal::ProgressJob job(QStringLiteral("Restoring"), !context.quiet && Terminal::stderrIsTerminal());
    if (!project->parentProject()->restoreBackup(name, &job)) {
        // A backup refused whole names the entry that stopped it; nothing was written.
        if (!job.errors().isEmpty())
            return context.inputError(QStringLiteral("restore"), name, job.errors().join(QStringLiteral("; ")) + QStringLiteral("; nothing was restored"));
        return context.inputError(QStringLiteral("restore"), argument, QStringLiteral("the work can't be written"));
    }
    for (const QString &error : job.errors())
        context.inputError(QStringLiteral("restore"), argument, error);
    const QString work = QDir::cleanPath(project->parentProject()->basePath());
    context.say(QStringLiteral("Restored %1 over %2").arg(name, shownName(work, argument)));
    return job.errors().isEmpty() ? Cli::Success : Cli::InputError;
}

int backups(Cli::Context &context, const QStringList &arguments)
{
    Cli::Parser parser(QStringLiteral("backups"),
                       QStringLiteral("Lists the backups of the project's work, the newest last."),
                       QStringLiteral("PROJECT"), Cli::Parser::Json);
    if (const int code = parser.parse(context, arguments, 1, 1); code >= 0)
        return code;
    const QString argument = parser.positional().at(0);
    EngineHost host(context.pluginDirectory);
    ProjectPointer project = host.openProject(context, QStringLiteral("backups"), argument);
    if (!project)
        return Cli::InputError;

    const QString directory = backupDirectory(*project);
    const QList<BackupEntry> list = listBackups(directory);
    if (context.json) {
        QJsonArray entries;
        for (const BackupEntry &entry : list) {
            entries.append(QJsonObject{{QStringLiteral("name"), entry.name},
                                       {QStringLiteral("path"), shownName(entry.path, argument)},
                                       {QStringLiteral("size"), double(entry.size)},
                                       {QStringLiteral("date"), entry.date.toString(Qt::ISODate)}});
        }
        context.printJson(QJsonObject{{QStringLiteral("directory"), shownName(directory, argument)},
                                      {QStringLiteral("backups"), entries}});
        return Cli::Success;
    }
    if (list.isEmpty()) {
        context.say(QStringLiteral("No backups in %1").arg(shownName(directory, argument)));
        return Cli::Success;
    }
    for (const BackupEntry &entry : list) {
        context.say(QStringLiteral("%1  %2  %3")
                        .arg(entry.date.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")))
                        .arg(humanSize(entry.size), 10)
                        .arg(entry.name));
    }
    return Cli::Success;
}

} // namespace Commands
