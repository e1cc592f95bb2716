#include "samplework.h"

#include "sampleart.h"

#include "soundbank.h"
#include "spritecontainer.h"

#include "foundation/filesystemarchive.h"
#include "image/sprite.h"
#include "sound/soundcodecs.h"

#include <QBuffer>

#include <QDir>
#include <QFile>
#include <QTextStream>

#include <cstdlib>

using namespace Ovra;

namespace SampleWork {
namespace {

bool fail(QString *error, const QString &reason)
{
    if (error)
        *error = reason;
    return false;
}

// Text files are written with CR LF line ends, as the code documents save them.
bool writeText(const QString &path, const QString &text, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(error, QStringLiteral("Can't write %1: %2").arg(path, file.errorString()));
    QString crlf = text;
    crlf.replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    file.write(crlf.toUtf8());
    return true;
}

bool save(ProjectFile &file, const QString &path, QString *error)
{
    if (!file.toFile(FileSystemArchive::instance(), path, 0, nullptr))
        return fail(error, QStringLiteral("Can't write %1").arg(path));
    return true;
}

QString box(const QRect &rect)
{
    return QStringLiteral("(%1, %2, %3, %4)").arg(rect.left()).arg(rect.top()).arg(rect.right()).arg(rect.bottom());
}

// The body box of the knight, relative to the axis between its feet.
const QRect bodyBox(QPoint(-8, -50), QPoint(8, 0));

QString capitalised(const char *word)
{
    QString text = QLatin1String(word);
    text[0] = text.at(0).toUpper();
    return text;
}

QString projectText(const QString &base, const QString &name)
{
    return QStringLiteral("# A project of the sample engine: what it is called and the files it is made of.\n"
                          "@version 1\n"
                          "\n"
                          "[Project]\n"
                          "    name = %2\n"
                          "    version = 1.0\n"
                          "    author = The Ovra developers\n"
                          "    created = 2026-11-22\n"
                          "\n"
                          "[Files]\n"
                          "    definitions = %1.def\n"
                          "    sprites = %1.osp\n"
                          "    animations = %1.oan\n"
                          "    sounds = %1.sbk\n"
                          "    scripts = %1.lua\n")
        .arg(base, name);
}

QString definitionText()
{
    return QStringLiteral(
        "# The knight: the numbers of the character and its moves.\n"
        "@version 1\n"
        "\n"
        "[Character: knight]\n"
        "    name = \"Sir Bramble\"\n"
        "    portrait = knight.osp\n"
        "    debut = 2026-11-22\n"
        "    life = 1000\n"
        "    power = 3000\n"
        "    defence = 100\n"
        "    gravity = 0.45\n"
        "    walk = (2.4, -2.2)\n"
        "    jump = (0, -8.4, 2.6)\n"
        "    tint = (1, 1, 1, 1)\n"
        "    size = (16, 56)\n"
        "    colour = (196, 40, 44)\n"
        "    bounds = (-8, -56, 8, 0)\n"
        "    palettes = (1, 2, 3)\n"
        "    flying = no\n"
        "    stance = upright\n"
        "    traits = (armoured, heavy)\n"
        "\n"
        "[Move: punch]\n"
        "    command = \"a\"\n"
        "    animation = 200\n"
        "    damage = 40\n"
        "    cost = 0\n"
        "    state = ground\n"
        "    flags = (high)\n"
        "    knockback = (3.5, 0)\n"
        "    reach = (10, -44, 26, -32)\n"
        "    pause = (8, 8)\n"
        "    timings = (3, 4, 6)\n"
        "    scaling = (1, 0.8, 0.6)\n"
        "    sound = swing\n"
        "    juggle = no\n"
        "\n"
        "[Move: leap]\n"
        "    command = \"up\"\n"
        "    animation = 40\n"
        "    damage = 0\n"
        "    state = air\n"
        "    sound = jump\n"
        "\n"
        "[Sounds: knight]\n"
        "    swing = (1, 0)\n"
        "    hit = (1, 1)\n"
        "    jump = (1, 2)\n"
        "    step = (1, 3)\n"
        "    theme = (100, 0)\n");
}

QString scriptText()
{
    return QStringLiteral(
        "-- Reports the knight's animations and the frames that have no collision box.\n"
        "local project = ...\n"
        "if project == nil then\n"
        "    print(\"no project\")\n"
        "    return\n"
        "end\n"
        "local animations = project:fileByType(3)\n"
        "print(\"animations: \" .. animations.count)\n");
}

// The knight's animations: one for each move, the effects, with boxes and loops.
QString animationText()
{
    QString text = QStringLiteral("# The knight's animations. Delays are in ticks, 60 a second.\n@version 1\n");
    for (const SampleArt::MoveInfo &move : SampleArt::moves()) {
        text += QStringLiteral("\nanimation %1 \"%2\"\n").arg(move.group).arg(capitalised(move.name));
        for (int frame = 0; frame < move.frames; ++frame) {
            QString line = QStringLiteral("    frame (%1, %2) delay=%3").arg(move.group).arg(frame);
            const bool hurt = move.move == SampleArt::Move::Hurt;
            const bool punch = move.move == SampleArt::Move::Punch;
            const int delay = punch ? (frame == 2 ? 6 : 3) : move.move == SampleArt::Move::Walk ? 6 : 8;
            line = line.arg(hurt && frame == 1 ? -1 : delay);
            if (move.move == SampleArt::Move::Walk && frame == 0)
                line += QStringLiteral(" loop");
            if (move.move == SampleArt::Move::Jump && frame == 3)
                line += QStringLiteral(" loop");
            if (hurt && frame == 0)
                line += QStringLiteral(" offset=(-2, 0)");
            text += line + QLatin1Char('\n');
            text += QStringLiteral("        body %1\n").arg(box(bodyBox));
            if (punch && frame == 2) {
                const QPoint fist = SampleArt::fist(frame) - SampleArt::knightAxis();
                text += QStringLiteral("        attack %1\n").arg(box(QRect(fist - QPoint(4, 3), QSize(9, 7))));
            }
        }
    }
    text += QStringLiteral("\nanimation 1000 \"Spark\"\n");
    for (int frame = 0; frame < 4; ++frame)
        text += QStringLiteral("    frame (1000, %1) delay=3 blend=add%2\n").arg(frame).arg(frame == 3 ? QStringLiteral(" angle=45") : QString());
    text += QStringLiteral("\nanimation 1010 \"Fireball\"\n");
    for (int frame = 0; frame < 4; ++frame) {
        text += QStringLiteral("    frame (1010, %1) delay=4%2\n").arg(frame).arg(frame == 0 ? QStringLiteral(" loop") : QString());
        text += QStringLiteral("        attack (-12, -10, 12, 10)\n");
    }
    text += QStringLiteral("\nanimation 1020 \"Fireball, mirrored\"\n");
    for (int frame = 0; frame < 4; ++frame)
        text += QStringLiteral("    frame (1010, %1) delay=4 flip=h scale=(1.5, 1.5)\n").arg(frame);
    return text;
}

bool writeSprites(const QString &path, QString *error)
{
    SpriteContainer sprites;
    for (const SampleArt::MoveInfo &move : SampleArt::moves()) {
        for (int frame = 0; frame < move.frames; ++frame) {
            Sprite *sprite = sprites.add(QPoint(move.group, frame), SampleArt::knight(move.move, frame), Archive::NoShare);
            if (!sprite)
                return fail(error, QStringLiteral("The sprite container refused a sprite"));
            sprite->setAxis(SampleArt::knightAxis());
        }
    }
    // The other two team colours, for the game to swap in.
    for (int team = 1; team < 3; ++team) {
        const QVector<QRgb> colours = SampleArt::knightPalette(team);
        RGBA table[256];
        for (int i = 0; i < 256; ++i)
            table[i] = SampleArt::paletteEntry(colours, i);
        sprites.palettes()->add(table, QPoint(1, team + 1), Archive::NoShare);
    }
    // The first frame of the idle stance once more, as the standing picture of menus:
    // the same pixels, stored once.
    if (Sprite *stand = sprites.add(QPoint(9000, 0), sprites.at(0)->image(), Archive::Share))
        stand->setAxis(SampleArt::knightAxis());
    for (int frame = 0; frame < 4; ++frame) {
        if (Sprite *sprite = sprites.add(QPoint(1000, frame), SampleArt::spark(frame), Archive::NoShare))
            sprite->setAxis(QPoint(16, 16));
        if (Sprite *sprite = sprites.add(QPoint(1010, frame), SampleArt::fireball(frame), Archive::NoShare))
            sprite->setAxis(QPoint(27, 12));
    }
    if (Sprite *portrait = sprites.add(QPoint(9000, 1), SampleArt::portrait(), Archive::NoShare))
        portrait->setAxis(QPoint(0, 0));
    return save(sprites, path, error);
}

bool writeSounds(const QString &path, QString *error)
{
    SoundBank bank;
    bank.add(QPoint(1, 0), SampleArt::swing());
    bank.add(QPoint(1, 1), SampleArt::hit());
    bank.add(QPoint(1, 2), SampleArt::jump());
    // One sound of each kind the bank keeps: the step as FLAC, the tune as Ogg Vorbis.
    QByteArray flac;
    QBuffer flacBuffer(&flac);
    if (!saveSound(&flacBuffer, "FLAC", SampleArt::step(), CodecRules::Complete)
        || !bank.addFile(QPoint(1, 3), BankSound::Flac, flac))
        return fail(error, QStringLiteral("Can't encode the step as FLAC"));
    QByteArray ogg;
    QBuffer oggBuffer(&ogg);
    // The Ogg stream's serial number comes from the C library's generator: seeded, so that
    // every run writes the same stream.
    std::srand(1);
    if (!saveSound(&oggBuffer, "OGG", SampleArt::tune(), CodecRules::Complete)
        || !bank.addFile(QPoint(100, 0), BankSound::Ogg, ogg))
        return fail(error, QStringLiteral("Can't encode the tune as Ogg Vorbis"));
    return save(bank, path, error);
}

} // namespace

QString projectFile()
{
    return QStringLiteral("knight/knight.ovp");
}

bool write(const QString &directory, QString *error)
{
    const QDir root(directory);
    if (!root.mkpath(QStringLiteral("knight")))
        return fail(error, QStringLiteral("Can't make the directory %1").arg(root.filePath(QStringLiteral("knight"))));
    const QString base = root.filePath(QStringLiteral("knight/knight"));
    return writeText(root.filePath(QStringLiteral("game.ovg")),
                     QStringLiteral("# The game mark: the directory that holds this file is a game of the sample engine.\n"
                                    "@version 1\n\n[Stage: yard]\n    title = \"The castle yard\"\n    floor = 200\n"
                                    "    limits = (-320, 320)\n    weather = clear\n"),
                     error)
           && writeText(base + QStringLiteral(".ovp"), projectText(QStringLiteral("knight"), QStringLiteral("Knight")), error)
           && writeText(base + QStringLiteral(".def"), definitionText(), error)
           && writeText(base + QStringLiteral(".oan"), animationText(), error)
           && writeText(base + QStringLiteral(".lua"), scriptText(), error)
           && writeSprites(base + QStringLiteral(".osp"), error)
           && writeSounds(base + QStringLiteral(".sbk"), error);
}

QString largeAnimationText(int animations, int sprites)
{
    QString text = QStringLiteral("@version 1\n");
    text.reserve(animations * 600);
    for (int a = 0; a < animations; ++a) {
        text += QStringLiteral("\nanimation %1 \"Generated %1\"\n").arg(a);
        for (int frame = 0; frame < 10; ++frame) {
            const int sprite = (a * 10 + frame) % qMax(sprites, 1);
            text += QStringLiteral("    frame (%1, %2) delay=%3%4\n")
                        .arg(sprite / 10).arg(sprite % 10).arg(4 + frame % 3)
                        .arg(frame == 0 ? QStringLiteral(" loop") : QString());
            text += QStringLiteral("        body (-10, -40, 10, 0)\n");
            if (frame % 3 == 2)
                text += QStringLiteral("        attack (4, -30, 20, -20)\n");
        }
    }
    return text;
}

bool writeLarge(const QString &directory, const Size &size, QString *error)
{
    const QDir root(directory);
    if (!root.mkpath(QStringLiteral("bulk")))
        return fail(error, QStringLiteral("Can't make the directory %1").arg(root.filePath(QStringLiteral("bulk"))));
    const QString base = root.filePath(QStringLiteral("bulk/bulk"));

    SpriteContainer sprites;
    sprites.beginChange();
    for (int i = 0; i < size.sprites; ++i) {
        // Groups of 10, as animations use them; sizes vary as real sprites do.
        const int width = 24 + (i * 7) % 48, height = 32 + (i * 11) % 64;
        if (Sprite *sprite = sprites.add(QPoint(i / 10, i % 10), SampleArt::tile(i, width, height), Archive::NoShare))
            sprite->setAxis(QPoint(width / 2, height - 1));
    }
    sprites.endChange();

    const QString animations = largeAnimationText(size.animations, size.sprites);

    SoundBank bank;
    for (int s = 0; s < size.sounds; ++s)
        bank.add(QPoint(s / 10, s % 10), SampleArt::blip(s, 2205 + (s * 97) % 4410));

    QString project = projectText(QStringLiteral("bulk"), QStringLiteral("Bulk"));
    project.remove(QStringLiteral("    scripts = bulk.lua\n"));
    return writeText(base + QStringLiteral(".ovp"), project, error)
           && writeText(base + QStringLiteral(".def"), definitionText(), error)
           && writeText(base + QStringLiteral(".oan"), animations, error)
           && save(sprites, base + QStringLiteral(".osp"), error) && save(bank, base + QStringLiteral(".sbk"), error);
}

} // namespace SampleWork
