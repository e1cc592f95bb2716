// The sample engine's own script types: what a script of this engine needs beyond the
// library's classes. Sprites, palettes and sounds are named by a group and a number here,
// so each gets those as properties; the containers find by them; the engine's file
// types and the cleaning of animation files are there as well.
#include "animationdocument.h"
#include "sampleanimationcode.h"
#include "sampleengine.h"
#include "soundbank.h"
#include "spritecontainer.h"
#include "spriteid.h"

#include "engine/script/script.h"
#include "image/sprite.h"
#include "sound/sound.h"

#include <stdexcept>

using namespace Ovra;

namespace {

// Group and number are 16-bit in every file of the engine; a script asking for more gets
// an error rather than a silently clipped identifier.
int checkedPart(int value, const char *what)
{
    if (!SpriteId::isValidPart(value))
        throw std::out_of_range(QStringLiteral("%1 %2 outside 0 to 65535").arg(QLatin1String(what)).arg(value).toStdString());
    return value;
}

QPoint checkedIdentifier(int group, int number)
{
    return QPoint(checkedPart(group, "group"), checkedPart(number, "number"));
}

uint packedId(int group, int number)
{
    return SpriteId::pack(checkedIdentifier(group, number));
}

// The indices of the other sprites of the container that hold the same pixels.
QList<uint> sharingSprites(const ContainerSprite &sprite)
{
    QList<uint> indices;
    const PixelsPointer pixels = sprite.pixels();
    Sprites *container = sprite.parent();
    if (!pixels || !container)
        return indices;
    for (uint i = 0; i < container->count(); ++i) {
        auto *other = dynamic_cast<ContainerSprite *>(container->at(i));
        if (other && other != &sprite && other->pixels() == pixels)
            indices << i;
    }
    return indices;
}

void registerEngine(Script::Table &globals)
{
    globals.usertype<SampleEngine>("SampleEngine")
        .base<Engine>()
        .enumeration("FileType", {{"Main", 0}, {"Sprites", 1}, {"Sounds", 2}, {"Animations", 3}, {"Scripts", 4},
                                  {"Definitions", SampleEngine::Definitions}})
        .staticFunction("suffix", &SampleEngine::suffix)
        .staticFunction("fileTypeOfSuffix", &SampleEngine::fileTypeOfSuffix)
        .staticFunction("fileKey", &SampleEngine::fileKey)
        .staticFunction("fileTypeOfKey", &SampleEngine::fileTypeOfKey)
        .staticFunction("fileTypeName", &SampleEngine::fileTypeName)
        .property("gameSize", &SampleEngine::gameSize);
}

void registerSprites(Script::Table &globals)
{
    globals.usertype<ContainerSprite>("ContainerSprite")
        .base<Sprite>()
        .property(
            "group", [](const ContainerSprite &self) { return self.identifier().toPoint().x(); },
            [](ContainerSprite &self, int group) {
                self.setIdentifier(QPoint(checkedPart(group, "group"), self.identifier().toPoint().y()));
            })
        .property(
            "number", [](const ContainerSprite &self) { return self.identifier().toPoint().y(); },
            [](ContainerSprite &self, int number) {
                self.setIdentifier(QPoint(self.identifier().toPoint().x(), checkedPart(number, "number")));
            })
        .function("setIdentifier",
                  [](ContainerSprite &self, int group, int number) {
                      self.setIdentifier(checkedIdentifier(group, number));
                  })
        .property("axis", &ContainerSprite::axis, [](ContainerSprite &self, const QPoint &axis) { self.setAxis(axis); })
        .property("isEmpty", &ContainerSprite::isEmpty)
        .property("sharesPixels", [](const ContainerSprite &self) { return !sharingSprites(self).isEmpty(); })
        .property("sharingSprites", &sharingSprites);

    globals.usertype<ContainerPalette>("ContainerPalette")
        .base<Palette>()
        .property("group", [](const ContainerPalette &self) { return self.identifier().x(); })
        .property("number", [](const ContainerPalette &self) { return self.identifier().y(); })
        .function("setIdentifier", [](ContainerPalette &self, int group, int number) {
            self.setIdentifier(checkedIdentifier(group, number));
        });

    globals.usertype<SpriteContainer>("SpriteContainer")
        .base<Sprites>()
        .property("canUndo", &SpriteContainer::canUndo)
        .property("canRedo", &SpriteContainer::canRedo)
        .function("findSprite",
                  [](const SpriteContainer &self, int group, int number) -> Sprite * {
                      const int index = self.find(0, packedId(group, number));
                      return index < 0 ? nullptr : self.at(uint(index));
                  })
        .function("findPalette", [](const SpriteContainer &self, int group, int number) -> Palette * {
            const int index = self.palettes()->find(0, packedId(group, number));
            return index < 0 ? nullptr : self.palettes()->at(uint(index));
        });
}

void registerSounds(Script::Table &globals)
{
    globals.usertype<BankSound>("BankSound")
        .base<Sound>()
        .enumeration("Codec", {{"Wav", BankSound::Wav}, {"Ogg", BankSound::Ogg}, {"Flac", BankSound::Flac}})
        .property("group", [](const BankSound &self) { return self.identifier().toPoint().x(); })
        .property("number", [](const BankSound &self) { return self.identifier().toPoint().y(); })
        .function("setIdentifier",
                  [](BankSound &self, int group, int number) { self.setIdentifier(checkedIdentifier(group, number)); })
        .property("codec", [](const BankSound &self) { return int(self.codec()); })
        .property("byteCount", [](const BankSound &self) { return self.bytes().size(); });

    globals.usertype<SoundBank>("SoundBank")
        .base<Sounds>()
        // The bytes of a sound file, kept as they are; nil when they don't decode.
        .function("addFile",
                  [](SoundBank &self, int group, int number, int codec, const QByteArray &bytes) -> Sound * {
                      if (codec < BankSound::Wav || codec > BankSound::Flac)
                          throw std::invalid_argument(
                              QStringLiteral("codec %1 is none of BankSound.Codec").arg(codec).toStdString());
                      return self.addFile(checkedIdentifier(group, number), BankSound::Codec(codec), bytes);
                  })
        .function("findSound", [](const SoundBank &self, int group, int number) -> Sound * {
            const int index = self.find(0, checkedIdentifier(group, number));
            return index < 0 ? nullptr : self.at(uint(index));
        });
}

void registerAnimations(Script::Table &globals)
{
    // Frames name their sprite by group and number; moving sprites to another group
    // moves the frames with them through these (each a text edit with its undo step).
    globals.usertype<SampleFrame>("SampleFrame")
        .base<FrameCode>()
        .property("spriteGroup", [](const SampleFrame &self) { return self.data().sprite.x(); })
        .property("spriteNumber", [](const SampleFrame &self) { return self.data().sprite.y(); })
        .function("setSprite",
                  [](SampleFrame &self, int group, int number) { self.setSpriteId(checkedIdentifier(group, number)); })
        .property("identifier", &SampleFrame::identifier,
                  [](SampleFrame &self, const QString &identifier) { self.setIdentifier(identifier); })
        .property("isLoopPoint", &SampleFrame::isLoopPoint)
        .property("hasBoxes", &SampleFrame::hasBoxes);

    globals.usertype<SampleAnimation>("SampleAnimation")
        .base<AnimationCode>()
        .property("identifier", &SampleAnimation::identifier,
                  [](SampleAnimation &self, const QString &identifier) { self.setIdentifier(identifier); })
        .property("name", &SampleAnimation::name, [](SampleAnimation &self, const QString &name) { self.setName(name); })
        .property("loopPoint", &SampleAnimation::loopPoint);

    globals.usertype<SampleAnimations>("SampleAnimations")
        .base<Animations>()
        .function("optimize", &SampleAnimations::optimize)
        .function("newIdentifier", [](const SampleAnimations &self) { return self.newIdentifier().toInt(); });
}

} // namespace

void SampleEngine::registerScriptClasses(Script::State &state)
{
    Script::Table globals = state.globals();
    registerEngine(globals);
    registerSprites(globals);
    registerSounds(globals);
    registerAnimations(globals);
}
