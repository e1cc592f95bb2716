// The commands on a project's pictures: an animation as a GIF, and the sprites out to
// picture files and in from them.
#include "commands.h"
#include "enginehost.h"
#include "mediafiles.h"
#include "terminal.h"

#include "spriteid.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/framecode.h"
#include "image/gifimage.h"
#include "image/imagecodecs.h"
#include "image/sprite.h"
#include "project/project.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>
#include <QSet>
#include <QTransform>
#include <QtMath>

using namespace Ovra;

namespace {

// Every file of the project on disk: what an output must never replace.
QStringList projectFiles(const Project &project)
{
    QStringList names;
    const QDir base(project.absolutePath());
    for (const ProjectFile *file : project.files()) {
        if (!file->fileName().isEmpty())
            names << base.absoluteFilePath(file->fileName());
    }
    return names;
}

// An identifier as people read it: "10, 1" for a group and a number.
QString identifierText(const QVariant &identifier)
{
    if (identifier.userType() == QMetaType::QPoint) {
        const QPoint point = identifier.toPoint();
        return QStringLiteral("%1, %2").arg(point.x()).arg(point.y());
    }
    return identifier.toString();
}

// ---- gif ----------------------------------------------------------------------------

// The animation an argument names: its identifier, or "#N" for its row from 0.
int findAnimation(const Animations &animations, const QString &argument)
{
    if (argument.startsWith(QLatin1Char('#'))) {
        bool ok = false;
        const int row = argument.mid(1).toInt(&ok);
        return ok && row >= 0 && row < int(animations.count()) ? row : -1;
    }
    return animations.find(0, argument);
}

// The frame's sprite as the game draws it: flipped, scaled and turned about its axis,
// then moved by the frame's offset. Flips alone keep an indexed picture indexed; scaling
// and turning work on true colour.
AnimImageFrame gifFrame(const FrameCode &frame, const Sprite &sprite)
{
    QImage picture = sprite.image();
    QPoint axis = sprite.axis();
    bool flipX = frame.flipFlags() & FrameCode::Horizontal;
    bool flipY = frame.flipFlags() & FrameCode::Vertical;
    double scaleX = frame.scaleX();
    double scaleY = frame.scaleY();
    if (scaleX < 0) {
        scaleX = -scaleX;
        flipX = !flipX;
    }
    if (scaleY < 0) {
        scaleY = -scaleY;
        flipY = !flipY;
    }
    if (!picture.isNull() && qFuzzyCompare(scaleX, 1.0) && qFuzzyCompare(scaleY, 1.0) && qFuzzyIsNull(frame.angle())) {
        if (flipX || flipY) {
            picture = picture.mirrored(flipX, flipY);
            if (flipX)
                axis.setX(picture.width() - 1 - axis.x());
            if (flipY)
                axis.setY(picture.height() - 1 - axis.y());
        }
    } else if (!picture.isNull() && scaleX > 0 && scaleY > 0) {
        QTransform transform;
        transform.rotate(frame.angle());
        transform.scale(flipX ? -scaleX : scaleX, flipY ? -scaleY : scaleY);
        const QImage source = picture.convertToFormat(QImage::Format_ARGB32);
        picture = source.transformed(transform, Qt::FastTransformation);
        // The axis pixel's centre goes where the picture's pixels went.
        const QTransform placed = QImage::trueMatrix(transform, source.width(), source.height());
        const QPointF centre = placed.map(QPointF(axis) + QPointF(0.5, 0.5));
        axis = QPoint(qFloor(centre.x()), qFloor(centre.y()));
    } else {
        picture = QImage(); // a frame scaled to nothing shows nothing
    }
    AnimImageFrame out;
    out.image = picture;
    out.x = axis.x() - frame.offsetX();
    out.y = axis.y() - frame.offsetY();
    out.ticks = frame.delay();
    return out;
}

bool positiveNumber(Cli::Context &context, const Cli::Parser &parser, const QString &option, double *value)
{
    if (!Cli::number(context, parser, option, value))
        return false;
    if (*value > 0 && *value <= 1000)
        return true;
    context.usageError(parser.name(), QStringLiteral("--%1 must lie above 0 and at most 1000, not %2")
                                          .arg(option, parser.value(option)));
    return false;
}

// What the gif command was asked for.
struct GifRequest
{
    QString project;
    QString animation;
    QString output;
    double scale = 1;
    double speed = 1;
    bool sharedPalette = false;
    bool loop = true;
};

void addGifOptions(Cli::Parser &parser)
{
    parser.addOption({QStringLiteral("scale"), QStringLiteral("Enlarge the frames by F (default 1)."),
                      QStringLiteral("F"), QStringLiteral("1")});
    parser.addOption({QStringLiteral("speed"), QStringLiteral("Play F times as fast (default 1)."),
                      QStringLiteral("F"), QStringLiteral("1")});
    parser.addOption({QStringLiteral("shared-palette"),
                      QStringLiteral("One colour table for all frames, that of the first frame.")});
    parser.addOption({QStringLiteral("no-loop"), QStringLiteral("Play once instead of for ever.")});
}

// -1 to go on, else the exit code with the usage error said.
int readGifRequest(Cli::Context &context, const Cli::Parser &parser, GifRequest *request)
{
    request->output = parser.output();
    if (request->output.isEmpty())
        return context.usageError(parser.name(), QStringLiteral("give the GIF file to write with -o"));
    if (!positiveNumber(context, parser, QStringLiteral("scale"), &request->scale)
        || !positiveNumber(context, parser, QStringLiteral("speed"), &request->speed))
        return Cli::UsageError;
    request->project = parser.positional().at(0);
    request->animation = parser.positional().at(1);
    request->sharedPalette = parser.isSet(QStringLiteral("shared-palette"));
    request->loop = !parser.isSet(QStringLiteral("no-loop"));
    return -1;
}

// The animation an argument names, with frames; else null and `code` set, the error said.
const AnimationCode *requestedAnimation(Cli::Context &context, const Animations &animations, const QString &name,
                                        int *code)
{
    const QString command = QStringLiteral("gif");
    const int row = findAnimation(animations, name);
    if (row < 0) {
        QStringList known;
        for (const AnimationCode *animation : animations.animations())
            known << animation->property(QStringLiteral("Identifier")).toString();
        *code = context.usageError(command, QStringLiteral("%1: no animation '%2' (there are: %3)")
                                                .arg(animations.fileName(), name, known.join(QStringLiteral(", "))));
        return nullptr;
    }
    const AnimationCode *animation = animations.at(uint(row));
    if (animation->frameCount() == 0) {
        *code = context.inputError(command, animations.fileName(),
                                   QStringLiteral("animation '%1' has no frames").arg(name));
        return nullptr;
    }
    return animation;
}

// The frames as the GIF shows them, up to one held for ever, which ends the GIF and its
// looping; false with the input error said when a frame's sprite is missing.
bool gifFrames(Cli::Context &context, const Animations &animations, const AnimationCode &animation,
               GifRequest *request, QVector<AnimImageFrame> *frames)
{
    for (const FrameCode *frame : animation.frames()) {
        const Sprite *sprite = frame->sprite();
        if (!sprite) {
            context.inputError(QStringLiteral("gif"), animations.fileName(),
                               QStringLiteral("frame %1 of animation '%2' shows sprite %3, which the "
                                              "project's sprites don't have")
                                   .arg(frame->index())
                                   .arg(request->animation, identifierText(frame->spriteId())));
            return false;
        }
        *frames << gifFrame(*frame, *sprite);
        if (frame->delay() < 0) {
            // Held for ever: nothing after it is ever shown, and a GIF that stops on its
            // last frame is what shows that.
            frames->last().ticks = 0;
            request->loop = false;
            if (frame->index() + 1 < int(animation.frameCount()))
                context.say(QStringLiteral("Frame %1 lasts for ever: the frames after it are left out.").arg(frame->index()));
            break;
        }
    }
    return true;
}

// Writes the GIF and tells what it holds: the exit code.
int writeGif(Cli::Context &context, const GifRequest &request, const QVector<AnimImageFrame> &frames)
{
    const int code = MediaFiles::writeOutput(
        context, QStringLiteral("gif"), request.output,
        [&](QIODevice *device) {
            return saveGIF(device, frames, float(request.scale), float(request.speed), request.sharedPalette,
                           request.loop, CodecRules::Complete);
        },
        QStringLiteral("GIF"));
    if (code != Cli::Success)
        return code;
    if (context.json) {
        context.printJson({{QStringLiteral("output"), QFileInfo(request.output).absoluteFilePath()},
                           {QStringLiteral("animation"), request.animation},
                           {QStringLiteral("frames"), frames.size()},
                           {QStringLiteral("loop"), request.loop}});
    } else {
        context.say(QStringLiteral("Wrote %1: %2%3.").arg(request.output)
                        .arg(MediaFiles::counted(frames.size(), QStringLiteral("frame"), QStringLiteral("frames")))
                        .arg(request.loop ? QStringLiteral(", looping") : QString()));
    }
    return Cli::Success;
}

// ---- sprites --------------------------------------------------------------------------

// The identifier as a part of a file name: the engine's text with each run of anything
// but letters, digits, '.' and '_' made one '-' ("10, 1" becomes "10-1"), so that the
// names need no quoting in a shell.
QString fileNamePart(const QString &text)
{
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._]+"));
    QString part = text;
    part.replace(unsafe, QStringLiteral("-"));
    while (part.startsWith(QLatin1Char('-')))
        part.remove(0, 1);
    while (part.endsWith(QLatin1Char('-')))
        part.chop(1);
    return part.isEmpty() ? QStringLiteral("sprite") : part;
}

// The sprites export under way: what it was asked for, and what it has done.
struct SpriteExport
{
    QString directory;
    QString extension;     // as in the file names
    QByteArray format;     // as the codecs know it
    int group = -1;        // --only; -1 for all
    int number = -1;
    QStringList inputs;    // the project's files, never replaced
    QSet<QString> used;    // the identifier parts of the names given so far
    QJsonArray written;
    int failures = 0;
};

// --format, as one the codecs write; false with the usage error said.
bool readExportFormat(Cli::Context &context, const Cli::Parser &parser, SpriteExport *job)
{
    job->extension = parser.value(QStringLiteral("format")).toLower();
    const QStringList writable = MediaFiles::formats(MediaFiles::Image, MediaFiles::Write);
    if (!writable.contains(job->extension.toUpper())) {
        context.usageError(parser.name(), QStringLiteral("--format: can't write '%1' pictures (formats: %2)")
                                              .arg(job->extension, writable.join(QStringLiteral(", ")).toLower()));
        return false;
    }
    job->format = job->extension.toUpper().toLatin1();
    return true;
}

// The file a sprite goes to. Two sprites under one identifier get numbered names rather
// than one file.
QString exportName(const Sprites &sprites, uint row, SpriteExport *job)
{
    QString part = fileNamePart(sprites.data(sprites.index(int(row), 0), Qt::DisplayRole).toString());
    for (int copy = 2; job->used.contains(part); ++copy)
        part = QStringLiteral("%1(%2)").arg(fileNamePart(identifierText(sprites.at(row)->identifier()))).arg(copy);
    job->used.insert(part);
    const QString base = QFileInfo(sprites.fileName()).completeBaseName();
    return QStringLiteral("%1/%2_%3.%4").arg(job->directory, base, part, job->extension);
}

void exportSprite(Cli::Context &context, const Sprites &sprites, uint row, SpriteExport *job)
{
    const QString command = QStringLiteral("sprites export");
    const Sprite *sprite = sprites.at(row);
    const QPoint identifier = sprite->identifier().toPoint();
    if ((job->group >= 0 && identifier.x() != job->group) || (job->number >= 0 && identifier.y() != job->number))
        return;
    const QString name = exportName(sprites, row, job);
    const QImage picture = sprite->image();
    if (picture.isNull()) {
        context.err() << "ovra " << command << ": sprite " << identifierText(sprite->identifier())
                      << " has no picture; passed over\n";
        return;
    }
    if (MediaFiles::checkOutput(context, command, name, job->inputs, false) >= 0) {
        ++job->failures;
        return;
    }
    const QString refusal = MediaFiles::pictureRefusal(job->format, picture);
    if (!refusal.isEmpty()) {
        context.inputError(command, name, refusal);
        ++job->failures;
        return;
    }
    const int code = MediaFiles::writeOutput(
        context, command, name,
        [&](QIODevice *device) { return saveImage(device, job->format.constData(), picture, CodecRules::Complete); },
        QStringLiteral("picture"));
    if (code == Cli::Success)
        job->written.append(QDir::cleanPath(name));
    else
        ++job->failures;
}

void exportSprites(Cli::Context &context, const Sprites &sprites, SpriteExport *job)
{
    Terminal::ProgressJob progress(QStringLiteral("Exporting sprites"), Terminal::stderrIsTerminal() && !context.quiet);
    progress.setMaximum(sprites.count());
    for (uint row = 0; row < sprites.count(); ++row) {
        progress.setValue(row);
        exportSprite(context, sprites, row, job);
    }
    progress.setValue(sprites.count());
}

// "--only GROUP[,NUMBER]": false (and the usage error said) when it isn't that.
bool parseOnly(Cli::Context &context, const Cli::Parser &parser, int *group, int *number)
{
    *group = -1;
    *number = -1;
    if (!parser.isSet(QStringLiteral("only")))
        return true;
    const QStringList parts = parser.value(QStringLiteral("only")).split(QLatin1Char(','));
    bool ok = parts.size() <= 2;
    if (ok)
        *group = parts.at(0).trimmed().toInt(&ok);
    if (ok && parts.size() == 2)
        *number = parts.at(1).trimmed().toInt(&ok);
    if (ok && *group >= 0 && (parts.size() == 1 || *number >= 0))
        return true;
    context.usageError(parser.name(), QStringLiteral("--only takes GROUP or GROUP,NUMBER, not '%1'")
                                          .arg(parser.value(QStringLiteral("only"))));
    return false;
}

// The project's sprite container, or null with the input error said.
Sprites *spritesOf(Cli::Context &context, const QString &command, Project &project, const QString &argument)
{
    auto *sprites = dynamic_cast<Sprites *>(project.file(Project::Sprites));
    if (!sprites)
        context.inputError(command, argument, QStringLiteral("the project has no sprite file"));
    return sprites;
}

bool parsePaletteMode(const QString &text, Sprite::PaletteMode *mode)
{
    static const QList<QPair<QString, Sprite::PaletteMode>> modes{
        {QStringLiteral("ignore"), Sprite::Ignore},
        {QStringLiteral("own"), Sprite::OwnPalette},
        {QStringLiteral("adapt"), Sprite::AdaptImage},
        {QStringLiteral("swap"), Sprite::SwapPalette},
    };
    for (const auto &pair : modes) {
        if (pair.first == text) {
            *mode = pair.second;
            return true;
        }
    }
    return false;
}

// A picture to import, read before the project is touched.
struct Picture
{
    QString fileName;
    QImage image;
};

// The sprites import under way: what it was asked for, and what it has added.
struct SpriteImport
{
    Sprite::PaletteMode mode = Sprite::OwnPalette;
    int group = 0;
    int start = -1;       // -1: after the group's last sprite
    int paletteRow = -1;  // -1: none given
    bool crop = false;
    bool replace = false;
    QList<Picture> pictures;
    Palette *palette = nullptr;
    QJsonArray added;
};

void addImportOptions(Cli::Parser &parser)
{
    parser.addOption({QStringLiteral("group"), QStringLiteral("The group of the new sprites (default 0)."),
                      QStringLiteral("G"), QStringLiteral("0")});
    parser.addOption({QStringLiteral("start"),
                      QStringLiteral("The number of the first new sprite (default: after the group's last)."),
                      QStringLiteral("N")});
    parser.addOption({QStringLiteral("palette-mode"), QStringLiteral("ignore, own, adapt or swap."),
                      QStringLiteral("MODE"), QStringLiteral("own")});
    parser.addOption({QStringLiteral("palette"),
                      QStringLiteral("The palette (its row, from 0) that adapt and swap use; default the first."),
                      QStringLiteral("INDEX")});
    parser.addOption({QStringLiteral("crop"), QStringLiteral("Cut the transparent border away.")});
    parser.addOption({QStringLiteral("replace"), QStringLiteral("Replace sprites that have the identifiers already.")});
}

// -1 to go on, else the exit code with the usage error said.
int readImportRequest(Cli::Context &context, const Cli::Parser &parser, SpriteImport *job)
{
    const QString command = parser.name();
    if (!parsePaletteMode(parser.value(QStringLiteral("palette-mode")), &job->mode)) {
        return context.usageError(command, QStringLiteral("--palette-mode takes ignore, own, adapt or swap, not '%1'")
                                               .arg(parser.value(QStringLiteral("palette-mode"))));
    }
    bool ok = false;
    job->group = parser.value(QStringLiteral("group")).toInt(&ok);
    if (!ok || !SpriteId::isValidPart(job->group))
        return context.usageError(command, QStringLiteral("--group takes a number from 0 to 65535"));
    if (parser.isSet(QStringLiteral("start"))) {
        job->start = parser.value(QStringLiteral("start")).toInt(&ok);
        if (!ok || !SpriteId::isValidPart(job->start))
            return context.usageError(command, QStringLiteral("--start takes a number from 0 to 65535"));
    }
    if (parser.isSet(QStringLiteral("palette"))) {
        job->paletteRow = parser.value(QStringLiteral("palette")).toInt(&ok);
        if (!ok || job->paletteRow < 0)
            return context.usageError(command, QStringLiteral("--palette takes a palette's row, from 0"));
    }
    job->crop = parser.isSet(QStringLiteral("crop"));
    job->replace = parser.isSet(QStringLiteral("replace"));
    return -1;
}

// -1 when every file is a readable picture, else the exit code with the error said.
int readPictures(Cli::Context &context, const QStringList &fileNames, QList<Picture> *pictures)
{
    const QString command = QStringLiteral("sprites import");
    for (const QString &fileName : fileNames) {
        const QByteArray format = MediaFiles::checkedFormat(context, command, fileName, MediaFiles::Image, MediaFiles::Read);
        if (format.isEmpty())
            return Cli::UsageError;
        if (!MediaFiles::checkInput(context, command, fileName))
            return Cli::InputError;
        QFile file(fileName);
        QString error;
        Picture picture{fileName, QImage()};
        if (!MediaFiles::openInput(file, &error))
            return context.inputError(command, fileName, error);
        if (!loadImage(&file, format.constData(), picture.image, CodecRules::Complete))
            return context.inputError(command, fileName, QStringLiteral("not a readable %1 picture").arg(QString::fromLatin1(format)));
        *pictures << picture;
    }
    return -1;
}

// The identifier of the i-th new sprite, as the messages write it.
QString importedText(const SpriteImport &job, int i)
{
    return QStringLiteral("%1, %2").arg(job.group).arg(job.start + i);
}

// The palette, the first number, and the numbers free (or --replace given): -1 to go on,
// else the exit code with the usage error said.
int placeImport(Cli::Context &context, const Sprites &sprites, SpriteImport *job)
{
    const QString command = QStringLiteral("sprites import");
    if (job->paletteRow >= 0) {
        if (uint(job->paletteRow) >= sprites.palettes()->count()) {
            return context.usageError(command, QStringLiteral("--palette %1: the sprite file has %2")
                                                   .arg(job->paletteRow)
                                                   .arg(MediaFiles::counted(int(sprites.palettes()->count()),
                                                                            QStringLiteral("palette"),
                                                                            QStringLiteral("palettes"))));
        }
        job->palette = sprites.palettes()->at(uint(job->paletteRow));
    }
    if (job->start < 0) {
        job->start = 0;
        for (uint row = 0; row < sprites.count(); ++row) {
            const QPoint identifier = sprites.at(row)->identifier().toPoint();
            if (identifier.x() == job->group)
                job->start = qMax(job->start, identifier.y() + 1);
        }
    }
    if (!SpriteId::isValidPart(job->start + job->pictures.size() - 1))
        return context.usageError(command, QStringLiteral("the numbers would run past 65535"));
    if (job->replace)
        return -1;
    QStringList taken;
    for (int i = 0; i < job->pictures.size(); ++i) {
        if (sprites.find(0, SpriteId::pack(job->group, job->start + i)) >= 0)
            taken << importedText(*job, i);
    }
    if (taken.isEmpty())
        return -1;
    return context.usageError(command, QStringLiteral("%1 has %2 %3 already; give --replace to replace %4, or "
                                                      "other numbers with --start")
                                           .arg(sprites.fileName(),
                                                taken.size() == 1 ? QStringLiteral("sprite") : QStringLiteral("sprites"),
                                                taken.join(QStringLiteral("; ")),
                                                taken.size() == 1 ? QStringLiteral("it") : QStringLiteral("them")));
}

// The picture as the sprite of that identifier: the one there replaced, or a new one.
Sprite *placeSprite(Sprites &sprites, const QPoint &identifier, const QImage &image, const SpriteImport &job)
{
    const int existing = sprites.find(0, SpriteId::pack(identifier));
    Sprite *sprite = existing >= 0 ? sprites.at(uint(existing)) : nullptr;
    if (sprite) {
        sprite->setImage(image, true, job.mode, job.palette, Archive::NoShare);
    } else if (job.mode == Sprite::OwnPalette) {
        sprite = sprites.add(identifier, image, Archive::NoShare);
    } else {
        // A new sprite takes the mode through setImage; a clear true-colour pixel
        // stands in until then, so that add() leaves no palette of its own behind.
        QImage placeholder(1, 1, QImage::Format_ARGB32);
        placeholder.fill(Qt::transparent);
        sprite = sprites.add(identifier, placeholder, Archive::NoShare);
        if (sprite)
            sprite->setImage(image, false, job.mode, job.palette, Archive::NoShare);
    }
    return sprite;
}

// Every picture into the sprites, as one undo step as in the editor: -1 when all went
// in, else the exit code with the input error said.
int importPictures(Cli::Context &context, Sprites &sprites, SpriteImport *job)
{
    auto *file = static_cast<ProjectFile *>(&sprites);
    file->beginChange();
    for (int i = 0; i < job->pictures.size(); ++i) {
        const QImage &image = job->pictures.at(i).image;
        Sprite *sprite = placeSprite(sprites, QPoint(job->group, job->start + i), image, *job);
        if (!sprite || sprite->image().size() != image.size()) {
            file->endChange();
            return context.inputError(QStringLiteral("sprites import"), job->pictures.at(i).fileName,
                                      QStringLiteral("the sprite file can't take this picture (%1 x %2)")
                                          .arg(image.width()).arg(image.height()));
        }
        if (job->crop)
            sprite->crop();
        job->added.append(importedText(*job, i));
    }
    file->endChange();
    return -1;
}

} // namespace

namespace Commands {

int gif(Cli::Context &context, const QStringList &arguments)
{
    const QString command = QStringLiteral("gif");
    Cli::Parser parser(command,
                       QStringLiteral("Export an animation of a project as an animated GIF. ANIMATION is the "
                                      "animation's identifier, or its row as #N (#0 is the first). The frames are "
                                      "drawn as the game draws them: flipped, scaled, turned and moved by their "
                                      "offsets, all on one axis. A frame that lasts for ever ends the GIF, which "
                                      "then plays once."),
                       QStringLiteral("PROJECT ANIMATION -o OUT.gif"), Cli::Parser::Output | Cli::Parser::Json);
    addGifOptions(parser);
    const int parsed = parser.parse(context, arguments, 2, 2);
    if (parsed >= 0)
        return parsed;
    GifRequest request;
    if (const int code = readGifRequest(context, parser, &request); code >= 0)
        return code;

    EngineHost host(context.pluginDirectory);
    ProjectPointer project = host.openProject(context, command, request.project);
    if (!project)
        return Cli::InputError;
    const int refused = MediaFiles::checkOutput(context, command, request.output, projectFiles(*project), false);
    if (refused >= 0)
        return refused;
    auto *animations = dynamic_cast<Animations *>(project->file(Project::Animations));
    if (!animations)
        return context.inputError(command, request.project, QStringLiteral("the project has no animation file"));
    int code = Cli::Success;
    const AnimationCode *animation = requestedAnimation(context, *animations, request.animation, &code);
    if (!animation)
        return code;
    QVector<AnimImageFrame> frames;
    if (!gifFrames(context, *animations, *animation, &request, &frames))
        return Cli::InputError;

    return writeGif(context, request, frames);
}

int spritesExport(Cli::Context &context, const QStringList &arguments)
{
    const QString command = QStringLiteral("sprites export");
    Cli::Parser parser(command,
                       QStringLiteral("Write each sprite of a project as a picture file, named "
                                      "DIR/FILE_IDENTIFIER.FORMAT: FILE is the sprite file's name without its "
                                      "suffix, IDENTIFIER the sprite's identifier with every run of spaces and "
                                      "punctuation made one '-' (\"10, 1\" gives knight_10-1.png). Existing "
                                      "pictures of those names are replaced; the project's own files never."),
                       QStringLiteral("PROJECT"), Cli::Parser::Output | Cli::Parser::Json);
    parser.addOption({QStringLiteral("format"), QStringLiteral("The picture format: png (default), pcx, gif or bmp."),
                      QStringLiteral("FORMAT"), QStringLiteral("png")});
    parser.addOption({QStringLiteral("only"), QStringLiteral("Only the sprites of a group, or one sprite."),
                      QStringLiteral("GROUP[,NUMBER]")});
    const int parsed = parser.parse(context, arguments, 1, 1);
    if (parsed >= 0)
        return parsed;
    SpriteExport job;
    if (!parseOnly(context, parser, &job.group, &job.number))
        return Cli::UsageError;
    job.directory = parser.output().isEmpty() ? QStringLiteral(".") : parser.output();

    EngineHost host(context.pluginDirectory); // plug-ins add picture formats
    if (!readExportFormat(context, parser, &job))
        return Cli::UsageError;
    ProjectPointer project = host.openProject(context, command, parser.positional().at(0));
    if (!project)
        return Cli::InputError;
    Sprites *sprites = spritesOf(context, command, *project, parser.positional().at(0));
    if (!sprites)
        return Cli::InputError;
    if (!QDir().mkpath(job.directory))
        return context.inputError(command, job.directory, QStringLiteral("the directory can't be made"));

    job.inputs = projectFiles(*project);
    exportSprites(context, *sprites, &job);
    if (context.json) {
        context.printJson({{QStringLiteral("directory"), QFileInfo(job.directory).absoluteFilePath()},
                           {QStringLiteral("files"), job.written}, {QStringLiteral("failed"), job.failures}});
    } else {
        context.say(QStringLiteral("Wrote %1 to %2.")
                        .arg(MediaFiles::counted(job.written.size(), QStringLiteral("picture"), QStringLiteral("pictures")))
                        .arg(job.directory));
    }
    if (job.written.isEmpty() && job.failures == 0 && job.group >= 0)
        context.err() << "ovra " << command << ": no sprite matches --only " << parser.value(QStringLiteral("only")) << '\n';
    return job.failures ? Cli::InputError : Cli::Success;
}

int spritesImport(Cli::Context &context, const QStringList &arguments)
{
    const QString command = QStringLiteral("sprites import");
    Cli::Parser parser(command,
                       QStringLiteral("Add pictures to the sprites of a project, one sprite each, numbered from "
                                      "--start in --group, and save the sprite file in place. A sprite that is "
                                      "there already is only replaced with --replace. Palette modes: own (the "
                                      "picture brings its colours, the default), ignore (keep the sprite's "
                                      "palette, take the indices as they are), adapt (match the picture's colours "
                                      "to the palette of --palette), swap (keep the indices, use the palette of "
                                      "--palette)."),
                       QStringLiteral("PROJECT PICTURE..."), Cli::Parser::Json);
    addImportOptions(parser);
    const int parsed = parser.parse(context, arguments, 2, -1);
    if (parsed >= 0)
        return parsed;
    SpriteImport job;
    if (const int code = readImportRequest(context, parser, &job); code >= 0)
        return code;

    EngineHost host(context.pluginDirectory); // plug-ins add picture formats
    // Every picture is read before the project is opened: a bad one changes nothing.
    if (const int code = readPictures(context, parser.positional().mid(1), &job.pictures); code >= 0)
        return code;
    const QString argument = parser.positional().at(0);
    ProjectPointer project = host.openProject(context, command, argument);
    if (!project)
        return Cli::InputError;
    Sprites *sprites = spritesOf(context, command, *project, argument);
    if (!sprites)
        return Cli::InputError;
    if (const int code = placeImport(context, *sprites, &job); code >= 0)
        return code;
    if (const int code = importPictures(context, *sprites, &job); code >= 0)
        return code;
    // The container writes itself through its archive, which replaces the file safely.
    if (!sprites->toFile(sprites->archive(), sprites->fileName(), 0, nullptr))
        return context.inputError(command, sprites->fileName(), QStringLiteral("can't be written"));
    if (context.json) {
        context.printJson({{QStringLiteral("file"), sprites->fileName()}, {QStringLiteral("sprites"), job.added},
                           {QStringLiteral("count"), int(sprites->count())}});
    } else {
        const QString first = job.added.first().toString();
        const QString range = job.added.size() > 1 ? first + QStringLiteral(" to ") + job.added.last().toString() : first;
        context.say(QStringLiteral("Added %1 to %2 (%3).")
                        .arg(MediaFiles::counted(job.added.size(), QStringLiteral("sprite"), QStringLiteral("sprites")))
                        .arg(sprites->fileName())
                        .arg(range));
    }
    return Cli::Success;
}

} // namespace Commands
