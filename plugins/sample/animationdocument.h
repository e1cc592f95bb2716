#pragma once

// An animation file of the sample engine (".oan"): animations with their frames, and
// the attack and collision boxes of each frame below it. The document owns its parser.
//
// Ownership: like every project file the document is reference counted. The list of
// its animations, SampleAnimations, takes over the reference that `new` gives:
//     auto *document = new AnimationDocument;
//     auto *animations = new SampleAnimations(document);
// and releasing the list (as the project does with its files) ends the document too.
// Whoever wants the document beyond the list calls addRef() on it first, and release()
// when done. Never delete either directly.
#include "code/animations.h"
#include "code/codedocument.h"

#include <memory>

class SampleParser;

namespace Ovra {
class Sprites;
}

class AnimationDocument : public Ovra::CodeDocument
{
    Q_OBJECT
public:
    explicit AnimationDocument(short fileType = 0);
    ~AnimationDocument() override;

    // The sprites frames show; not owned: whoever sets them keeps them alive while the
    // document may draw, or sets null before they go.
    void setSprites(Ovra::Sprites *sprites) { m_sprites = sprites; }
    Ovra::Sprites *sprites() const { return m_sprites; }

    // Frames one level under their animation, boxes two; with `indentOnly` false also
    // regular spacing: "delay=6", "(1, 2)", one blank between fields.
    void formatLines(int firstBlock, int lastBlock, bool indentOnly) override;
    const char *fileExtension() const override { return "oan"; }

private:
    std::unique_ptr<SampleParser> m_parser;
    Ovra::Sprites *m_sprites = nullptr;
};

// The animations of an AnimationDocument as a list and a project file (see above for
// who owns what).
class SampleAnimations : public Ovra::Animations
{
    Q_OBJECT
public:
    // Registers with the document and adopts the caller's reference to it.
    explicit SampleAnimations(Ovra::CodeDocument *document);

    // The smallest whole number from 0 on that no animation has as identifier.
    QVariant newIdentifier() const override;
    // "animation %1" and a line end.
    QString animationTemplate() const override;
    void free() override { delete this; }

    // Cleans the whole file as one undo step, and gives the number of lines it removed:
    // frames are written without fields at their default values; a frame that looks
    // like the one before it (same sprite, offset, flip, scale, angle, blend and ease)
    // is merged into it, the delays added, where neither is a loop point, has a name or
    // boxes, or lasts for ever; runs of blank lines shrink to one, and blank lines at the
    // start and the end of the file go.
    int optimize();
};
