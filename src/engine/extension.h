#pragma once

#include "foundation/global.h"

#include <QIODevice>
#include <QString>

#include <functional>

class QImage;
class QStringList;

namespace Ovra {

class Animations;
class Archive;
class Engine;
class Project;
struct RGBA;
struct SampleInfo;
struct SoundSample;

// What a plug-in adds to the library: a format of one kind. The library finds
// extensions through ExtensionManager::list() by kind and asks each for its format.
class OVRA_EXPORT Extension
{
public:
    enum Type {
        Container = 0,         // opens container files (ZIP and the like)
        ImageLoader = 1,
        ImageSaver = 2,
        PaletteLoader = 3,
        PaletteSaver = 4,
        SoundLoader = 5,
        SoundSaver = 6,
        Custom7 = 7,           // 7, 8 and 11 to 14 are the engines' own
        Custom8 = 8,
        AnimationExporter = 9,
        AnimationImporter = 10,
        Custom11 = 11,
        Custom12 = 12,
        Custom13 = 13,
        Custom14 = 14,
        SoundEffect = 15,
        Named = 16,            // told apart by name() rather than format()
        TypeCount = 17
    };

    virtual ~Extension() = default;
    virtual Type type() const = 0;
    // The format key it serves, in capitals ("ZIP", "PNG").
    virtual const char *format() const = 0;
    virtual const char *name() const = 0;
};

// Kind 0: container files that hold a project or a backup.
class OVRA_EXPORT ArchiveExtension : public Extension
{
public:
    Type type() const override { return Container; }
    // The archive over `fileName`, or null; the caller releases it.
    virtual Archive *open(const QString &fileName, QIODevice::OpenMode mode) = 0;
};

// Kind 1 and 2: image formats the library doesn't read or write itself.
class OVRA_EXPORT ImageLoaderExtension : public Extension
{
public:
    Type type() const override { return ImageLoader; }
    virtual bool load(QIODevice *device, QImage &image) = 0;
};

class OVRA_EXPORT ImageSaverExtension : public Extension
{
public:
    Type type() const override { return ImageSaver; }
    virtual bool save(QIODevice *device, const QImage &image) = 0;
};

// Kind 3 and 4: palette formats beyond the library's own.
class OVRA_EXPORT PaletteLoaderExtension : public Extension
{
public:
    Type type() const override { return PaletteLoader; }
    virtual bool load(QIODevice *device, RGBA (&palette)[256]) = 0;
};

class OVRA_EXPORT PaletteSaverExtension : public Extension
{
public:
    Type type() const override { return PaletteSaver; }
    virtual bool save(QIODevice *device, const RGBA (&palette)[256]) = 0;
};

// Kind 5 and 6: sound formats beyond WAV, Ogg Vorbis, FLAC and MP3.
class OVRA_EXPORT SoundLoaderExtension : public Extension
{
public:
    Type type() const override { return SoundLoader; }
    virtual bool load(QIODevice *device, SoundSample &sample) = 0;
};

class OVRA_EXPORT SoundSaverExtension : public Extension
{
public:
    Type type() const override { return SoundSaver; }
    virtual bool save(QIODevice *device, const SoundSample &sample) = 0;
};

// Kind 15: an effect of the sound editor's menu. It gets the shape of the sound and the
// bytes of the selected frames, and changes the bytes in place; their length may change
// by whole frames. False when it can't work on sounds of that shape.
class OVRA_EXPORT SoundEffectExtension : public Extension
{
public:
    Type type() const override { return SoundEffect; }
    virtual bool apply(const SampleInfo &info, QByteArray &frames) = 0;
};

// Kind 16: an engine that a plug-in brings, and the way into its projects. Its name() is
// the engine's name. The host finds it by walking the kind's list.
class OVRA_EXPORT EngineExtension : public Extension
{
public:
    Type type() const override { return Named; }
    const char *format() const override { return "ENGINE"; }
    virtual Engine *engine() = 0;
    // True when the file is the main file of one of the engine's projects.
    virtual bool isProjectFile(const QString &fileName) const = 0;
    // The project of that main file, loaded and entered into the work it belongs to;
    // null with the reason in `error` when it can't be read. The caller releases it.
    virtual Project *openProject(const QString &fileName, QString *error) = 0;

    // The first loaded engine that takes the file as a project, or null.
    static EngineExtension *forProjectFile(const QString &fileName);
};

// Kind 9: writes animations of the engine's animation files into an exchange file.
class OVRA_EXPORT AnimationExporterExtension : public Extension
{
public:
    Type type() const override { return AnimationExporter; }
    // The animation files it serves ("*.oan"), as the engine's
    // queryString(AnimationFilePattern, 0) gives them.
    virtual QString filePattern() const = 0;
    // A file-dialog filter for the exchange files.
    virtual QString fileFilter() const = 0;
    // Writes the animations of `rows`, in that order. False when a row doesn't exist
    // (nothing is written then) or when the device doesn't take all the bytes.
    virtual bool exportAnimations(Animations &animations, const QList<uint> &rows, QIODevice *device) = 0;
    // Why the last call failed, for the user; empty after a success.
    virtual QString errorString() const { return QString(); }
};

// Kind 10: brings animations from an exchange file into an animation file.
class OVRA_EXPORT AnimationImporterExtension : public Extension
{
public:
    // Asked once for each animation of the file whose identifier is taken already: true
    // replaces the animation there, false keeps it and passes the new one over. An empty
    // function passes over every such animation.
    using ImportConflict = std::function<bool(const QString &identifier)>;

    Type type() const override { return AnimationImporter; }
    virtual QString filePattern() const = 0;
    virtual QString fileFilter() const = 0;
    // Adds the file's animations as one undo step and lists their identifiers in
    // `imported` (if given). A file it can't read in full gives false and changes nothing.
    virtual bool importAnimations(QIODevice *device, Animations &animations, ImportConflict conflict,
                                  QStringList *imported) = 0;
    virtual QString errorString() const { return QString(); }
};

} // namespace Ovra
