// With GLES asked for, textures made on worker threads are made by the GUI thread's hidden
// context through blocking calls; the worker never gets a context of its own.
#include "image/imagedata.h"
#include "render/texture.h"

#include <QApplication>
#include <QFutureWatcher>
#include <QOpenGLContext>
#include <QSignalSpy>
#include <QtConcurrent>
#include <QtTest>

#include <memory>

using namespace Ovra;

class GlesRoadTest : public QObject
{
    Q_OBJECT

private slots:
    void workerTexturesAreMadeOnTheGuiThread();
};

void GlesRoadTest::workerTexturesAreMadeOnTheGuiThread()
{
    Texture::setOpenGLEnabled(true);
    QVERIFY(Texture::isOpenGLEnabled());

    struct Made
    {
        Texture *sprite;
        Texture *palette;
        bool workerHasContext;
    };
    QImage image(8, 4, QImage::Format_Indexed8);
    image.setColorCount(256);
    image.fill(3);
    static RGBA colours[256];
    const quint64 uploads = Texture::uploadCount();
    QFutureWatcher<Made> watcher;
    QSignalSpy finished(&watcher, &QFutureWatcher<Made>::finished);
    watcher.setFuture(QtConcurrent::run([image] {
        auto *sprite = new Texture(image);
        auto *palette = new Texture(colours);
        return Made{sprite, palette, QOpenGLContext::currentContext() != nullptr};
    }));
    // The GUI thread serves the worker's calls from its event loop.
    QVERIFY(finished.wait(20000));
    const Made made = watcher.result();
    std::unique_ptr<Texture> sprite(made.sprite), palette(made.palette);
    QVERIFY(sprite->glId() != 0);
    QVERIFY(palette->glId() != 0);
    QCOMPARE(sprite->type(), Texture::IndexedType);
    QCOMPARE(Texture::uploadCount() - uploads, quint64(2));
    QVERIFY2(!made.workerHasContext, "the worker made no GL context of its own");

    // Freed again by the same road, from the GUI thread.
    Texture::setOpenGLEnabled(false);
    QCOMPARE(sprite->glId(), 0u);
    QCOMPARE(palette->glId(), 0u);
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QCoreApplication::setAttribute(Qt::AA_UseOpenGLES);
    QApplication app(argc, argv);
    GlesRoadTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_glesroad.moc"
