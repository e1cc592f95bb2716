#include "sampleanimationeditor.h"

#include "animationdocument.h"
#include "samplecanvas.h"
#include "sampletimeline.h"

#include "code/animationcode.h"
#include "code/framecode.h"
#include "editors/animation/timelinewidget.h"
#include "editors/graphics/graphicsworkspace.h"
#include "project/project.h"

using namespace Ovra;

SampleAnimationEditor::SampleAnimationEditor(CodeWorkspace *codeWorkspace, GraphicsWorkspace *graphicsWorkspace,
                                             ThumbnailsEditor *thumbnails)
    : SampleAnimationEditor(codeWorkspace, graphicsWorkspace, thumbnails, new SampleCanvas, new Info)
{
}

SampleAnimationEditor::SampleAnimationEditor(CodeWorkspace *codeWorkspace, GraphicsWorkspace *graphicsWorkspace,
                                             ThumbnailsEditor *thumbnails, SampleCanvas *canvas, Info *sprite)
    : AnimationEditor(codeWorkspace, graphicsWorkspace, thumbnails, canvas, *sprite, GraphicsRenderer::SpriteItem)
    , m_canvas(canvas)
    , m_sprite(sprite)
{
    m_canvas->setParent(this);
}

SampleAnimationEditor::~SampleAnimationEditor()
{
    // The workspace outlives the editor: it must not keep drawing a canvas that goes.
    if (isActive())
        deactivate();
    if (GraphicsWorkspace *workspace = graphicsWorkspace(); workspace && workspace->renderer() == m_canvas)
        workspace->release();
    m_canvas->setContainer(nullptr);
}

int SampleAnimationEditor::fileType() const
{
    return Project::Animations;
}

Sprites *SampleAnimationEditor::spritesOf(Animations *animations) const
{
    auto *document = animations ? dynamic_cast<AnimationDocument *>(animations->document()) : nullptr;
    return document ? document->sprites() : nullptr;
}

int SampleAnimationEditor::optimizeAnimations(Animations *animations)
{
    auto *file = dynamic_cast<SampleAnimations *>(animations);
    return file ? file->optimize() : -1;
}

void SampleAnimationEditor::frameChanged()
{
    if (m_canvas->container() != sprites())
        m_canvas->setContainer(sprites());
    m_canvas->showFrame(currentFrame());
    SampleFrameSprites &shown = m_canvas->frameSprites();
    // In the editor the user drags the frame's sprite to set its offset.
    if (shown.count())
        shown.item(0).flags |= GraphicsRenderer::DragHorizontal | GraphicsRenderer::DragVertical;
    *m_sprite = shown.count() ? shown.item(0) : Info();
}

// The canvas draws the onion frame it is given; the sample engine has nothing to add.
void SampleAnimationEditor::onionFrameChanged()
{
    m_canvas->update();
}

// One lane: the frames of the current animation, as long as their delays.
void SampleAnimationEditor::animationChanged(bool time)
{
    TimeLineWidget *line = timeLine();
    if (!time || !line || !isActive() || isEditCodeMode() || !currentAnimation())
        return;
    line->addTimeLine(new SampleTimeLine(currentAnimation()));
}

const char *SampleAnimationEditorExtension::name() const
{
    static const char engineName[] = "sample";
    return engineName;
}

AnimationEditor *SampleAnimationEditorExtension::create(CodeWorkspace *codeWorkspace,
                                                        GraphicsWorkspace *graphicsWorkspace,
                                                        ThumbnailsEditor *thumbnails)
{
    if (!codeWorkspace)
        return nullptr;
    return new SampleAnimationEditor(codeWorkspace, graphicsWorkspace, thumbnails);
}
