#pragma once

#include "engine/engineprivate.h"

#include <QPointF>
#include <QSize>

namespace Ovra {

class Project;
class ProjectFile;

// An engine's public face, implemented by its plug-in: the names, filters and file
// types that make one game's content different from another's.
class OVRA_EXPORT Engine : public EnginePrivate
{
    Q_OBJECT
public:
    // Strings the library asks for; engines may answer further numbers of their own.
    enum StringType {
        AnimationFilePattern = 1, // compared with the patterns of animation converters
        GameMarkFile = 2,         // a file whose presence makes a directory a game
        CommentMarker = 3,        // what starts a comment in the engine's definition files
    };

    using EnginePrivate::EnginePrivate;

    virtual QString queryString(StringType type, uint index) const = 0;
    // The file-dialog filter of files of one type that open on their own; -1 for all.
    virtual QString singleFileFilters(int fileType = -1) const = 0;
    // A new, empty file of the type for the project.
    virtual ProjectFile *createFile(int fileType, Project *project) = 0;

    // The screen of the game in its own pixels, and how much the engine enlarges the
    // sprites on it. Views show the game at its size divided by the scale factors.
    virtual QSize gameSize() const;
    virtual QPointF scaleFactors() const;
    // gameSize() divided by scaleFactors(), each axis truncated.
    QSize viewSize() const;
};

} // namespace Ovra
