#pragma once
#include "engine/extension.h"

namespace Ovra {

class AnimationEditor;
class CodeWorkspace;
class GraphicsWorkspace;
class ThumbnailsEditor;

// How a host gets the animation editor of an engine: the engine's plug-in registers one
// of these under the engine's name, and the host asks it for an editor on its own
// workspaces. The host owns the editor it gets (and ends it with release()).
class OVRA_EXPORT AnimationEditorExtension : public Extension
{
public:
    Type type() const override { return Named; }
    const char *format() const override { return "ANIMATION_EDITOR"; }
    // The name of the engine whose files the editor shows.
    const char *name() const override = 0;

    // A new editor on the host's workspaces; `thumbnails` may be null.
    virtual AnimationEditor *create(CodeWorkspace *codeWorkspace, GraphicsWorkspace *graphicsWorkspace,
                                    ThumbnailsEditor *thumbnails) = 0;
};

} // namespace Ovra
