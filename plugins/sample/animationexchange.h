#pragma once

// The sample engine's animation exchange: animations of its animation files written to,
// and read back from, a JSON document of our own ("format": "ovra-animations"), so that
// they can travel between projects and be made or checked by other tools. The layout is
// described in FORMATS.md.
#include "engine/extension.h"

namespace AnimationExchange {

// What a file may hold at most; anything beyond is taken for a broken or hostile file
// rather than for work of a person, and the whole file is refused.
constexpr int MaxAnimations = 10000;
constexpr int MaxFramesPerAnimation = 10000;
constexpr int MaxFrames = 100000; // over all animations of the file
constexpr int MaxBoxes = 1000;    // of one type in one frame
constexpr qint64 MaxFileSize = 64 * 1024 * 1024;

} // namespace AnimationExchange

class AnimationExchangeExporter : public Ovra::AnimationExporterExtension
{
public:
    const char *format() const override { return "JSON"; }
    const char *name() const override { return "Animation exchange"; }
    QString filePattern() const override;
    QString fileFilter() const override;
    bool exportAnimations(Ovra::Animations &animations, const QList<uint> &rows, QIODevice *device) override;
    QString errorString() const override { return m_error; }

private:
    QString m_error;
};

class AnimationExchangeImporter : public Ovra::AnimationImporterExtension
{
public:
    const char *format() const override { return "JSON"; }
    const char *name() const override { return "Animation exchange"; }
    QString filePattern() const override;
    QString fileFilter() const override;
    // The file is read and checked in full before the first edit; the edits then go in
    // as one undo step, which is taken back again should the language refuse one of them.
    bool importAnimations(QIODevice *device, Ovra::Animations &animations, ImportConflict conflict,
                          QStringList *imported) override;
    QString errorString() const override { return m_error; }

private:
    QString m_error;
};
