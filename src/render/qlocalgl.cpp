#include "qlocalgl_p.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMetaObject>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPointer>
#include <QThread>
#include <QThreadStorage>

#include <atomic>

Q_DECLARE_METATYPE(const Ovra::Texture::ImageData *)
Q_DECLARE_METATYPE(const Ovra::RGBA *)
Q_DECLARE_METATYPE(uint *)

namespace Ovra {

namespace {

std::atomic<bool> glEnabled{false};
std::atomic<bool> npotTextures{false};
std::atomic<bool> useGLES{false};
std::atomic<bool> noGL{false};
std::atomic<quint64> uploadTotal{0};
std::atomic<quint64> byteTotal{0};
QPointer<QLocalGL> mainInstance;

QThreadStorage<QLocalGL *> &perThread()
{
    static QThreadStorage<QLocalGL *> storage;
    return storage;
}

bool onGuiThread()
{
    return QCoreApplication::instance() && QThread::currentThread() == QCoreApplication::instance()->thread();
}

// The GUI thread's instance goes while the application still has its window system.
void dropMainInstance()
{
    if (perThread().hasLocalData())
        perThread().setLocalData(nullptr);
}

// Makes one context current for the time of a GL call and gives the caller's back.
class CurrentContext
{
public:
    CurrentContext()
        : m_context(QOpenGLContext::currentContext()), m_surface(m_context ? m_context->surface() : nullptr)
    {
    }
    // A thread that had no context keeps the hidden one current: the next texture call
    // then costs no switch, and anyone who draws makes their own context current first.
    ~CurrentContext()
    {
        if (m_context && m_surface && QOpenGLContext::currentContext() != m_context)
            m_context->makeCurrent(m_surface);
    }

private:
    QOpenGLContext *m_context;
    QSurface *m_surface;
};

} // namespace

QLocalGL::~QLocalGL()
{
    if (m_context) {
        if (QOpenGLContext::currentContext() == m_context)
            m_context->doneCurrent();
        delete m_context;
    }
    if (m_ownsSurface)
        delete m_surface;
    else if (m_surface)
        m_surface->deleteLater(); // it lives on the GUI thread, which made it
}

QLocalGL *QLocalGL::forThread()
{
    QThreadStorage<QLocalGL *> &storage = perThread();
    if (!storage.hasLocalData()) {
        auto *instance = new QLocalGL;
        if (!instance->initialize()) {
            delete instance;
            instance = nullptr;
        }
        storage.setLocalData(instance);
    }
    return storage.localData();
}

bool QLocalGL::initialize()
{
    static const bool registered = [] {
        qRegisterMetaType<const Ovra::Texture::ImageData *>("const Ovra::Texture::ImageData*");
        qRegisterMetaType<const Ovra::RGBA *>("const Ovra::RGBA*");
        qRegisterMetaType<uint *>("uint*");
        qRegisterMetaType<QOffscreenSurface *>("QOffscreenSurface*");
        return true;
    }();
    Q_UNUSED(registered)
    if (noGL || !qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    if (onGuiThread()) {
        m_surface = createSurface();
        m_ownsSurface = true;
        mainInstance = this;
        useGLES = QCoreApplication::testAttribute(Qt::AA_UseOpenGLES);
        qAddPostRoutine(dropMainInstance);
    } else if (useGLES) {
        return !mainInstance.isNull(); // the GUI thread's context serves this thread
    } else {
        QLocalGL *main = mainInstance.data();
        if (!main)
            return false; // GL was never set up on the GUI thread
        QOffscreenSurface *surface = nullptr;
        QMetaObject::invokeMethod(main, "createSurface", Qt::BlockingQueuedConnection,
                                  Q_RETURN_ARG(QOffscreenSurface *, surface));
        m_surface = surface;
    }
    if (!m_surface || !m_surface->isValid())
        return false;
    m_context = new QOpenGLContext;
    m_context->setShareContext(QOpenGLContext::globalShareContext());
    if (!createContext(m_context) || !m_context->makeCurrent(m_surface))
        return false;
    if (onGuiThread())
        npotTextures = m_context->functions()->hasOpenGLFeature(QOpenGLFunctions::NPOTTextures);
    m_context->doneCurrent();
    return true;
}

bool QLocalGL::createContext(QOpenGLContext *context)
{
    const int attempts = 100;
    for (int i = 0; i < attempts && !noGL; ++i) {
        if (context->create())
            return true;
        QThread::msleep(10);
    }
    noGL = true;
    return false;
}

QOffscreenSurface *QLocalGL::createSurface()
{
    auto *surface = new QOffscreenSurface;
    surface->create();
    return surface;
}

bool QLocalGL::nonPowerOfTwo()
{
    return npotTextures;
}

void QLocalGL::setNonPowerOfTwo(bool supported)
{
    npotTextures = supported;
}

bool QLocalGL::enabled()
{
    return glEnabled;
}

void QLocalGL::setEnabled(bool enable)
{
    glEnabled = enable;
}

quint64 QLocalGL::uploads()
{
    return uploadTotal;
}

quint64 QLocalGL::uploadedBytes()
{
    return byteTotal;
}

bool QLocalGL::routesToMain() const
{
    return useGLES && !onGuiThread() && !mainInstance.isNull();
}

void QLocalGL::fromData(const Texture::ImageData *data, uint *id)
{
    if (routesToMain())
        QMetaObject::invokeMethod(mainInstance.data(), "_fromData", Qt::BlockingQueuedConnection,
                                  Q_ARG(const Ovra::Texture::ImageData *, data), Q_ARG(uint *, id));
    else
        _fromData(data, id);
}

void QLocalGL::fromPalette(const RGBA *palette, uint *id)
{
    if (routesToMain())
        QMetaObject::invokeMethod(mainInstance.data(), "_fromPalette", Qt::BlockingQueuedConnection,
                                  Q_ARG(const Ovra::RGBA *, palette), Q_ARG(uint *, id));
    else
        _fromPalette(palette, id);
}

void QLocalGL::reset(uint *id)
{
    if (routesToMain())
        QMetaObject::invokeMethod(mainInstance.data(), "_reset", Qt::BlockingQueuedConnection, Q_ARG(uint *, id));
    else
        _reset(id);
}

bool QLocalGL::makeCurrent()
{
    if (!m_context || !m_surface)
        return false;
    if (QOpenGLContext::currentContext() == m_context && m_context->surface() == m_surface)
        return true;
    return m_context->makeCurrent(m_surface);
}

void QLocalGL::upload(const QSize &size, int depth, const char *bytes, uint *id, bool palette)
{
    QOpenGLFunctions *f = m_context->functions();
    if (QOpenGLContext::openGLModuleType() == QOpenGLContext::LibGL)
        f->glEnable(GL_TEXTURE_2D);
    if (*id) {
        f->glDeleteTextures(1, id);
        *id = 0;
    }
    if (!bytes)
        return;
    const GLenum format = depth <= 8 ? GL_LUMINANCE : depth <= 24 ? GL_RGB : GL_RGBA;
    f->glGenTextures(1, id);
    f->glBindTexture(GL_TEXTURE_2D, *id);
    f->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, palette ? GL_CLAMP_TO_EDGE : GL_REPEAT);
    f->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    f->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    f->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    f->glPixelStorei(GL_PACK_ALIGNMENT, 1);
    f->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    f->glTexImage2D(GL_TEXTURE_2D, 0, GLint(format), size.width(), size.height(), 0, format, GL_UNSIGNED_BYTE,
                    bytes);
    f->glBindTexture(GL_TEXTURE_2D, 0);
    // Another thread's context may draw with it as soon as this returns.
    f->glFinish();
    ++uploadTotal;
    byteTotal += quint64(size.width()) * quint64(size.height()) * quint64(depth <= 8 ? 1 : depth <= 24 ? 3 : 4);
}

void QLocalGL::_fromData(const Texture::ImageData *data, uint *id)
{
    if (!glEnabled)
        return;
    CurrentContext keep;
    if (!makeCurrent())
        return;
    const QSize size = data->textureSize;
    const int depth = data->depth;
    const qint64 bytesPerPixel = depth <= 8 ? 1 : depth <= 24 ? 3 : 4;
    const bool usable = depth > 0 && depth <= 32 && !size.isEmpty()
                        && data->data.size() >= bytesPerPixel * size.width() * size.height();
    upload(size, depth, usable ? data->data.constData() : nullptr, id, false);
}

void QLocalGL::_fromPalette(const RGBA *palette, uint *id)
{
    if (!glEnabled)
        return;
    CurrentContext keep;
    if (!makeCurrent())
        return;
    upload(QSize(256, 1), 32, reinterpret_cast<const char *>(palette), id, true);
}

void QLocalGL::_reset(uint *id)
{
    if (!*id)
        return;
    CurrentContext keep;
    if (!makeCurrent())
        return;
    m_context->functions()->glDeleteTextures(1, id);
    *id = 0;
}

} // namespace Ovra
