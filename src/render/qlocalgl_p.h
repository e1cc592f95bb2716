#pragma once

#include "image/imagedata.h"
#include "render/texture.h"

#include <QObject>

class QOffscreenSurface;
class QOpenGLContext;

namespace Ovra {

// One hidden GL context of a thread, on an offscreen surface, where textures are made.
// Every such context shares with the global share context, so a texture made on one thread
// draws in any widget. With GLES, whose contexts don't share across threads the way desktop
// ones do, the GUI thread's instance does the work of all threads through blocking calls.
class QLocalGL : public QObject
{
    Q_OBJECT

public:
    ~QLocalGL() override;

    // The instance of the calling thread, made on first use; null when this process can't
    // have GL (no GUI application, or no context could be made).
    static QLocalGL *forThread();
    // Creates the context, retrying every 10 ms, since a busy driver can refuse for a moment.
    // A platform without GL refuses for good: after a second of refusals the process is
    // taken to have no GL, and nothing asks again.
    static bool createContext(QOpenGLContext *context);
    static bool nonPowerOfTwo();
    static void setNonPowerOfTwo(bool supported);
    static bool enabled();
    static void setEnabled(bool enable);
    static quint64 uploads();
    static quint64 uploadedBytes();

    // The GL work for Texture, on this thread's context or, with GLES off the GUI thread, on
    // the GUI thread's. The id holds the old GL name, deleted first, and receives the new one.
    void fromData(const Texture::ImageData *data, uint *id);
    void fromPalette(const RGBA *palette, uint *id);
    void reset(uint *id);

public slots:
    void _fromData(const Ovra::Texture::ImageData *data, uint *id);
    void _fromPalette(const Ovra::RGBA *palette, uint *id);
    void _reset(uint *id);
    QOffscreenSurface *createSurface();

private:
    QLocalGL() = default;
    bool initialize();
    bool routesToMain() const;
    bool makeCurrent();
    void upload(const QSize &size, int depth, const char *bytes, uint *id, bool palette);

    QOpenGLContext *m_context = nullptr;
    QOffscreenSurface *m_surface = nullptr;
    bool m_ownsSurface = false;
};

} // namespace Ovra
