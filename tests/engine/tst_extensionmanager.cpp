#include "engine/extensionmanager.h"

#include <QLibrary>
#include <QTemporaryDir>
#include <QtTest>

using namespace Ovra;

namespace {

QStringList warnings;

void recordWarnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        warnings.append(message);
}

class LocalExtension : public Extension
{
public:
    LocalExtension(Type type, const char *format) : m_type(type), m_format(format) {}
    Type type() const override { return m_type; }
    const char *format() const override { return m_format; }
    const char *name() const override { return "local"; }

private:
    Type m_type;
    const char *m_format;
};

QStringList names(Extension::Type type)
{
    QStringList result;
    for (const Extension *extension : ExtensionManager::list(type))
        result.append(QLatin1String(extension->name()));
    return result;
}

} // namespace

class ExtensionManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void loadsPluginsAndPassesOverTheRest();
    void sameRegistrationTwiceIsDropped();
};

void ExtensionManagerTest::loadsPluginsAndPassesOverTheRest()
{
    QTemporaryDir dir;
    const QString pluginDir = QStringLiteral(TESTPLUGINDIR);
    for (const char *name : {"libtestplugin_good.so", "libtestplugin_nosymbol.so"})
        QVERIFY(QFile::copy(pluginDir + QLatin1Char('/') + QLatin1String(name), dir.filePath(QLatin1String(name))));
    QFile garbage(dir.filePath(QStringLiteral("libbroken.so")));
    QVERIFY(garbage.open(QIODevice::WriteOnly));
    garbage.write(QByteArray(4096, '\x5A'));
    garbage.close();
    QCOMPARE(ExtensionManager::nameFilter(), QStringLiteral("*.so"));

    int living = 0;
    warnings.clear();
    const QtMessageHandler previous = qInstallMessageHandler(recordWarnings);
    {
        ExtensionManager manager(dir.path());
        qInstallMessageHandler(previous);
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));

        QLibrary good(dir.filePath(QStringLiteral("libtestplugin_good.so")));
        auto setCounter = reinterpret_cast<void (*)(int *)>(good.resolve("setLiveCounter"));
        QVERIFY(setCounter);
        setCounter(&living);

        QCOMPARE(ExtensionManager::list(Extension::Container).size(), 1);
        QCOMPARE(QLatin1String(ExtensionManager::list(Extension::Container).first()->format()),
                 QLatin1String("ZIP"));
        QCOMPARE(names(Extension::SoundLoader), QStringList({"wave reader"}));
        QCOMPARE(names(Extension::SoundSaver), QStringList({"wave writer"}));
        QCOMPARE(names(Extension::Named), QStringList({"sparkle", "glitter"}));
        QVERIFY(ExtensionManager::list(Extension::ImageLoader).isEmpty());
        QCOMPARE(ExtensionManager::list(Extension::Type(99)).size(), 0);
    }
    // The manager deleted the five extensions it kept, and not the dropped ones.
    QCOMPARE(living, -5);
    for (int type = 0; type < Extension::TypeCount; ++type)
        QVERIFY(ExtensionManager::list(Extension::Type(type)).isEmpty());
}

void ExtensionManagerTest::sameRegistrationTwiceIsDropped()
{
    static const char png[] = "PNG";
    char copy[] = "PNG";
    auto *first = new LocalExtension(Extension::ImageLoader, png);
    LocalExtension again(Extension::ImageLoader, png);
    auto *sameWord = new LocalExtension(Extension::ImageLoader, copy);
    ExtensionManager::add(first);
    ExtensionManager::add(&again);
    // Equal text in another string is another registration.
    ExtensionManager::add(sameWord);
    QCOMPARE(ExtensionManager::list(Extension::ImageLoader),
             QList<Extension *>({first, sameWord}));
    ExtensionManager manager(QStringLiteral("/nonexistent directory")); // ends both
}

QTEST_GUILESS_MAIN(ExtensionManagerTest)
#include "tst_extensionmanager.moc"
