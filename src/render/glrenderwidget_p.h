#pragma once

#include "render/renderer.h"

#include <QByteArray>
#include <QMatrix4x4>

class QObject;
class QOpenGLFunctions;
class QOpenGLShaderProgram;

namespace Ovra {

class Texture;

// The GL state behind a GL-backed render widget (on screen or off): the shader programs,
// the projection matrices and what the draw helpers remember so as not to repeat GL calls.
// Touched on the GUI thread only.
class GLRenderWidgetPrivate
{
public:
    enum ProgramSet { PaletteSet = 0, ImageSet = 1 };
    enum { EffectCount = 4 };

    // Where a set's uniforms and attributes sit; read once from the set's last program, as
    // the four variants of one text share them.
    struct Locations
    {
        int matrix = -1;
        int mask = -1;
        int image = -1;
        int palette = -1;
        int opacity = -1;
        int position = -1;
        int texCoord = -1;
    };

    ~GLRenderWidgetPrivate();

    // Makes the eight programs (owned by parent) from the built-in or the custom texts.
    // Needs the widget's context current.
    void buildPrograms(QObject *parent);
    void deletePrograms();
    // The orthographic matrix is moved back along z by depthShift, the perspective one
    // always by -2000.
    void setViewSize(int width, int height, float depthShift);
    void resetDrawState();

    Renderer *renderer = nullptr;
    QOpenGLShaderProgram *programs[2][EffectCount] = {};
    Locations locations[2];
    QOpenGLFunctions *gl = nullptr;
    const Texture *currentPalette = nullptr;
    QOpenGLShaderProgram *currentProgram = nullptr;
    QMatrix4x4 matrices[2];
    int projection = Renderer::Orthographic;
    bool blend = false;
    int blendEquation = 0;
    int blendSource = -1;
    int blendDestination = -1;
    QByteArray customPaletteSource; // empty: the built-in text
    QByteArray customImageSource;
};

} // namespace Ovra
