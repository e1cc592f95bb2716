// The media commands of the ovra tool, run as a program on copies of the example work
// and on files the tests make; what they write is decoded with the library or with Qt.
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/gifimage.h"
#include "image/imagecodecs.h"
#include "image/paletteobject.h"
#include "image/sprite.h"
#include "project/project.h"
#include "sound/soundcodecs.h"
#include "testfiles.h"
#include "testsounds.h"

#include <QBuffer>
#include <QDirIterator>
#include <QImageReader>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>

using namespace Ovra;

namespace {

struct ProjectCloser
{
    void operator()(Project *project) const { project->release(); }
};
using ProjectPointer = std::unique_ptr<Project, ProjectCloser>;

// The example work copied to `target`.
bool copyWork(const QString &target)
{
    return copyTree(QStringLiteral(OVRA_EXAMPLES_DIR "/sample"), target);
}

struct Run
{
    int code = -1;
    QString out;
    QString err;
};

// Whether a line of the text starts so (Qt may warn on stderr before the tool speaks).
bool hasLine(const QString &text, const QString &start)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    return std::any_of(lines.begin(), lines.end(), [&](const QString &line) { return line.startsWith(start); });
}

// 256 colours that tell every entry apart.
void testTable(RGBA (&table)[256])
{
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(i), quint8(255 - i), quint8((i * 7) % 256), 255);
}

QByteArray paletteBytes(const char *format)
{
    RGBA table[256];
    testTable(table);
    PaletteObject palette(&table);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return palette.toFile(&buffer, format) ? buffer.data() : QByteArray();
}

// A RIFF palette of the test colours: version 3, 256 entries of red, green, blue, flags.
QByteArray riffPalette()
{
    RGBA table[256];
    testTable(table);
    QByteArray data;
    QDataStream out(&data, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData("RIFF", 4);
    out << quint32(4 + 8 + 4 + 1024);
    out.writeRawData("PAL data", 8);
    out << quint32(4 + 1024) << quint16(0x0300) << quint16(256);
    for (const RGBA &entry : table)
        out << entry.red << entry.green << entry.blue << quint8(0);
    return data;
}

QByteArray jascPalette()
{
    RGBA table[256];
    testTable(table);
    QByteArray text("JASC-PAL\r\n0100\r\n256\r\n");
    for (const RGBA &entry : table)
        text += QByteArray::number(entry.red) + ' ' + QByteArray::number(entry.green) + ' '
                + QByteArray::number(entry.blue) + "\r\n";
    return text;
}

// A picture with a distinct colour in each corner, so that turns can be told apart.
QImage cornerPicture(QImage::Format format)
{
    QImage picture(20, 10, QImage::Format_ARGB32);
    picture.fill(qRgba(40, 40, 40, 255));
    picture.setPixel(0, 0, qRgba(255, 0, 0, 255));
    picture.setPixel(19, 0, qRgba(0, 255, 0, 255));
    picture.setPixel(0, 9, qRgba(0, 0, 255, 255));
    if (format == QImage::Format_Indexed8) {
        QVector<QRgb> table{qRgba(0, 0, 0, 0), qRgba(40, 40, 40, 255), qRgba(255, 0, 0, 255),
                            qRgba(0, 255, 0, 255), qRgba(0, 0, 255, 255)};
        return picture.convertToFormat(QImage::Format_Indexed8, table, Qt::ThresholdDither);
    }
    return picture;
}

QImage loadPicture(const QString &fileName, const char *format)
{
    QFile file(fileName);
    QImage image;
    if (file.open(QIODevice::ReadOnly))
        loadImage(&file, format, image);
    return image;
}

SoundSample loadSoundFile(const QString &fileName, const char *format)
{
    QFile file(fileName);
    SoundSample sample;
    if (file.open(QIODevice::ReadOnly))
        loadSound(&file, format, sample);
    return sample;
}

} // namespace

class OvraMediaTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void gif_data();
    void gif();
    void gifFailures_data();
    void gifFailures();
    void spritesExport_data();
    void spritesExport();
    void spritesExportPicturesEqualSprites();
    void spritesImport();
    void spritesImportRefuses_data();
    void spritesImportRefuses();
    void paletteConvert_data();
    void paletteConvert();
    void paletteRoundTrip();
    void imageScale_data();
    void imageScale();
    void imageRotate();
    void soundConvertKeepsSamples_data();
    void soundConvertKeepsSamples();
    void soundConvertRate();
    void soundPlay();
    void failures_data();
    void failures();

private:
    Run run(const QStringList &arguments) const;
    QString path(const QString &name) const { return m_dir.filePath(name); }
    ProjectPointer openProject(const QString &work, QString *error);
    // A fresh copy of the example work under `name`, its project file's path.
    QString freshWork(const QString &name);

    QTemporaryDir m_dir;
    std::unique_ptr<ExtensionManager> m_manager;
    QString m_work;
};

Run OvraMediaTest::run(const QStringList &arguments) const
{
    QProcess process;
    process.setWorkingDirectory(m_dir.path());
    process.start(QStringLiteral(OVRA_TOOL), arguments + QStringList{QStringLiteral("--plugins"), QStringLiteral(OVRA_PLUGIN_DIR)});
    Run result;
    if (!process.waitForFinished(120000))
        return result;
    result.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

ProjectPointer OvraMediaTest::openProject(const QString &work, QString *error)
{
    const QString file = work + QStringLiteral("/knight/knight.ovp");
    EngineExtension *engine = EngineExtension::forProjectFile(file);
    if (!engine) {
        *error = QStringLiteral("no engine");
        return nullptr;
    }
    return ProjectPointer(engine->openProject(file, error));
}

QString OvraMediaTest::freshWork(const QString &name)
{
    const QString work = path(name);
    return copyWork(work) ? work : QString();
}

void OvraMediaTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_manager = std::make_unique<ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
    m_work = freshWork(QStringLiteral("work"));
    QVERIFY(!m_work.isEmpty());
    // The test sound device: nothing reaches a speaker, the clock runs all the same.
    qputenv("ALSOFT_DRIVERS", "null");
}

void OvraMediaTest::cleanupTestCase()
{
    m_manager.reset();
}

void OvraMediaTest::gif_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("animation");
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("loops");     // QImageReader: -1 for ever, 0 once
    QTest::addColumn<int>("delay");     // of the first frame, milliseconds
    QTest::addColumn<int>("sizeFactor");

    QTest::newRow("walk") << QStringList() << "10" << 6 << -1 << 100 << 1;
    QTest::newRow("walk by row") << QStringList() << "#1" << 6 << -1 << 100 << 1;
    QTest::newRow("scaled") << QStringList{QStringLiteral("--scale"), QStringLiteral("2")} << "10" << 6 << -1 << 100 << 2;
    QTest::newRow("fast") << QStringList{QStringLiteral("--speed"), QStringLiteral("2")} << "10" << 6 << -1 << 50 << 1;
    QTest::newRow("no loop") << QStringList{QStringLiteral("--no-loop")} << "10" << 6 << 0 << 100 << 1;
    QTest::newRow("shared palette") << QStringList{QStringLiteral("--shared-palette")} << "10" << 6 << -1 << 100 << 1;
    // The second frame of Hurt lasts for ever: the GIF plays once and stops on it.
    QTest::newRow("held for ever") << QStringList() << "50" << 2 << 0 << 130 << 1;
}

void OvraMediaTest::gif()
{
    QFETCH(QStringList, options);
    QFETCH(QString, animation);
    QFETCH(int, frames);
    QFETCH(int, loops);
    QFETCH(int, delay);
    QFETCH(int, sizeFactor);

    const QString reference = path(QStringLiteral("reference-%1.gif").arg(animation.mid(animation.startsWith(QLatin1Char('#')))));
    const Run plain = run({QStringLiteral("gif"), m_work, animation, QStringLiteral("-o"), reference});
    QCOMPARE(plain.code, 0);
    const QString output = path(QStringLiteral("out.gif"));
    const Run result = run(QStringList{QStringLiteral("gif"), m_work, animation, QStringLiteral("-o"), output} + options);
    QVERIFY2(result.code == 0, qPrintable(result.err));

    QImageReader reader(output);
    QVERIFY(reader.canRead());
    QCOMPARE(reader.imageCount(), frames);
    QCOMPARE(reader.loopCount(), loops);
    QImage first;
    QVERIFY(reader.read(&first));
    QCOMPARE(reader.nextImageDelay(), delay);

    // The library's reader agrees, and the canvas grows with the scale.
    QFile file(output);
    QVERIFY(file.open(QIODevice::ReadOnly));
    GIFImage gif;
    QVERIFY(gif.load(&file));
    QCOMPARE(gif.images().size(), frames);
    QCOMPARE(gif.canLoop(), loops == -1);
    QFile plainFile(reference);
    QVERIFY(plainFile.open(QIODevice::ReadOnly));
    GIFImage unscaled;
    QVERIFY(unscaled.load(&plainFile));
    QVERIFY(unscaled.width() > 0);
    QCOMPARE(int(gif.width()), unscaled.width() * sizeFactor);
    QCOMPARE(int(gif.height()), unscaled.height() * sizeFactor);
}

void OvraMediaTest::gifFailures_data()
{
    QTest::addColumn<QString>("damage");   // text to replace in the animation file
    QTest::addColumn<QString>("with");
    QTest::addColumn<QStringList>("arguments"); // after "gif WORK"
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    const QStringList walk{QStringLiteral("10"), QStringLiteral("-o"), QStringLiteral("walk.gif")};
    QTest::newRow("missing sprite") << "frame (10, 3)" << "frame (10, 99)" << walk << 3 << "frame 3";
    QTest::newRow("no such animation") << QString() << QString()
                                       << QStringList{QStringLiteral("77"), QStringLiteral("-o"), QStringLiteral("x.gif")}
                                       << 2 << "no animation '77'";
    QTest::newRow("row past the end") << QString() << QString()
                                      << QStringList{QStringLiteral("#8"), QStringLiteral("-o"), QStringLiteral("x.gif")}
                                      << 2 << "no animation '#8'";
    QTest::newRow("no output") << QString() << QString() << QStringList{QStringLiteral("10")} << 2 << "-o";
    QTest::newRow("bad scale") << QString() << QString() << walk + QStringList{QStringLiteral("--scale"), QStringLiteral("0")}
                               << 2 << "--scale";
    QTest::newRow("onto the project") << QString() << QString()
                                      << QStringList{QStringLiteral("10"), QStringLiteral("-o"), QStringLiteral("WORK/knight/knight.osp")}
                                      << 2 << "would replace the input";
}

void OvraMediaTest::gifFailures()
{
    QFETCH(QString, damage);
    QFETCH(QString, with);
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, message);

    const QString work = freshWork(QStringLiteral("gif-%1").arg(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-')));
    QVERIFY(!work.isEmpty());
    if (!damage.isEmpty()) {
        const QString animations = work + QStringLiteral("/knight/knight.oan");
        QString text = QString::fromUtf8(readFile(animations));
        QVERIFY(text.contains(damage));
        QVERIFY(writeFile(animations, text.replace(damage, with).toUtf8()));
    }
    const QByteArray container = readFile(work + QStringLiteral("/knight/knight.osp"));
    arguments.replaceInStrings(QStringLiteral("WORK"), work);
    const Run result = run(QStringList{QStringLiteral("gif"), work} + arguments);
    QCOMPARE(result.code, code);
    QVERIFY2(hasLine(result.err, QStringLiteral("ovra gif: ")), qPrintable(result.err));
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QCOMPARE(readFile(work + QStringLiteral("/knight/knight.osp")), container);
}

void OvraMediaTest::spritesExport_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("only");
    QTest::addColumn<QStringList>("names");

    QStringList all;
    const QList<QPair<int, int>> groups{{0, 4}, {10, 6}, {200, 4}, {40, 4}, {50, 2}, {1000, 4}, {1010, 4}, {9000, 2}};
    for (const auto &group : groups) {
        for (int number = 0; number < group.second; ++number)
            all << QStringLiteral("knight_%1-%2").arg(group.first).arg(number);
    }
    all.sort();
    for (const QString &format : {QStringLiteral("png"), QStringLiteral("pcx"), QStringLiteral("gif"), QStringLiteral("bmp")})
        QTest::newRow(qPrintable(format)) << format << QString() << all;
    QTest::newRow("one group") << "png" << "10"
                               << QStringList{QStringLiteral("knight_10-0"), QStringLiteral("knight_10-1"),
                                              QStringLiteral("knight_10-2"), QStringLiteral("knight_10-3"),
                                              QStringLiteral("knight_10-4"), QStringLiteral("knight_10-5")};
    QTest::newRow("one sprite") << "png" << "200,2" << QStringList{QStringLiteral("knight_200-2")};
}

void OvraMediaTest::spritesExport()
{
    QFETCH(QString, format);
    QFETCH(QString, only);
    QFETCH(QStringList, names);

    const QString directory = path(QStringLiteral("export-%1").arg(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-')));
    QStringList arguments{QStringLiteral("sprites"), QStringLiteral("export"), m_work, QStringLiteral("-o"), directory,
                          QStringLiteral("--format"), format, QStringLiteral("--json")};
    if (!only.isEmpty())
        arguments << QStringLiteral("--only") << only;
    const Run result = run(arguments);
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const QJsonObject answer = QJsonDocument::fromJson(result.out.toUtf8()).object();
    QCOMPARE(answer.value(QStringLiteral("files")).toArray().size(), names.size());

    QStringList expected;
    for (const QString &name : names)
        expected << name + QLatin1Char('.') + format;
    QStringList found = QDir(directory).entryList(QDir::Files, QDir::Name);
    expected.sort();
    found.sort();
    QCOMPARE(found, expected);
    // Each decodes in its format.
    for (const QString &name : found)
        QVERIFY2(!loadPicture(directory + QLatin1Char('/') + name, qPrintable(format.toUpper())).isNull(), qPrintable(name));
}

void OvraMediaTest::spritesExportPicturesEqualSprites()
{
    const QString directory = path(QStringLiteral("export-compare"));
    const Run result = run({QStringLiteral("sprites"), QStringLiteral("export"), m_work, QStringLiteral("-o"), directory});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    QVERIFY(result.out.contains(QLatin1String("Wrote 30 pictures")));

    QString error;
    ProjectPointer project = openProject(m_work, &error);
    QVERIFY2(project, qPrintable(error));
    auto *sprites = dynamic_cast<Sprites *>(project->file(Project::Sprites));
    QVERIFY(sprites);
    QCOMPARE(sprites->count(), 30u);
    for (uint row = 0; row < sprites->count(); ++row) {
        const Sprite *sprite = sprites->at(row);
        const QPoint identifier = sprite->identifier().toPoint();
        const QString name = QStringLiteral("%1/knight_%2-%3.png").arg(directory).arg(identifier.x()).arg(identifier.y());
        const QImage written = loadPicture(name, "PNG");
        QVERIFY2(!written.isNull(), qPrintable(name));
        QCOMPARE(written.convertToFormat(QImage::Format_ARGB32), sprite->image().convertToFormat(QImage::Format_ARGB32));
    }
}

void OvraMediaTest::spritesImport()
{
    const QString work = freshWork(QStringLiteral("import"));
    QVERIFY(!work.isEmpty());
    QImage picture(7, 5, QImage::Format_ARGB32);
    picture.fill(qRgba(0, 0, 0, 0));
    for (int x = 1; x < 6; ++x)
        picture.setPixel(x, 2, qRgba(200, 30 * x, 10, 255));
    const QString png = path(QStringLiteral("import.png"));
    QVERIFY(picture.save(png));
    QImage indexed = cornerPicture(QImage::Format_Indexed8);
    const QString indexedName = path(QStringLiteral("import-indexed.png"));
    QVERIFY(indexed.save(indexedName));

    Run result = run({QStringLiteral("sprites"), QStringLiteral("import"), work, png, QStringLiteral("--group"),
                      QStringLiteral("300"), QStringLiteral("--json")});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    QCOMPARE(QJsonDocument::fromJson(result.out.toUtf8()).object().value(QStringLiteral("sprites")).toArray(),
             QJsonArray{QStringLiteral("300, 0")});
    // The next goes behind it in the group by itself, cropped, over the first palette.
    result = run({QStringLiteral("sprites"), QStringLiteral("import"), work, png, QStringLiteral("--group"),
                  QStringLiteral("300"), QStringLiteral("--crop"), QStringLiteral("--palette-mode"),
                  QStringLiteral("adapt"), QStringLiteral("--palette"), QStringLiteral("0")});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    // Replacing takes the new picture under the same identifier.
    result = run({QStringLiteral("sprites"), QStringLiteral("import"), work, indexedName, QStringLiteral("--group"),
                  QStringLiteral("0"), QStringLiteral("--start"), QStringLiteral("1"), QStringLiteral("--replace")});
    QVERIFY2(result.code == 0, qPrintable(result.err));

    QString error;
    ProjectPointer project = openProject(work, &error);
    QVERIFY2(project, qPrintable(error));
    auto *sprites = dynamic_cast<Sprites *>(project->file(Project::Sprites));
    QVERIFY(sprites);
    QCOMPARE(sprites->count(), 32u);
    const int first = sprites->find(0, 300u << 16);
    QVERIFY(first >= 0);
    QCOMPARE(sprites->at(uint(first))->image().convertToFormat(QImage::Format_ARGB32), picture);
    const int second = sprites->find(0, 300u << 16 | 1);
    QVERIFY(second >= 0);
    const QImage adapted = sprites->at(uint(second))->image();
    QCOMPARE(adapted.format(), QImage::Format_Indexed8);
    QCOMPARE(adapted.size(), QSize(5, 1)); // cropped to the one row of colour
    RGBA colours[256];
    QVERIFY(sprites->palettes()->at(0)->colorTable(colours));
    for (int x = 0; x < adapted.width(); ++x)
        QCOMPARE(adapted.pixel(x, 0), colours[adapted.pixelIndex(x, 0)].toQRgb());
    const int replaced = sprites->find(0, 1u);
    QCOMPARE(sprites->at(uint(replaced))->image().convertToFormat(QImage::Format_ARGB32),
             indexed.convertToFormat(QImage::Format_ARGB32));
}

void OvraMediaTest::spritesImportRefuses_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("picture"); // empty: a good PNG
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    QTest::newRow("identifier taken") << QStringList{QStringLiteral("--group"), QStringLiteral("10"), QStringLiteral("--start"), QStringLiteral("5")}
                                      << QByteArray() << 2 << "10, 5 already";
    QTest::newRow("garbage picture") << QStringList() << QByteArray("\x89PNG\r\n\x1a\n not really") << 3 << "not a readable PNG picture";
    QTest::newRow("bad mode") << QStringList{QStringLiteral("--palette-mode"), QStringLiteral("blend")} << QByteArray() << 2 << "--palette-mode";
    QTest::newRow("palette past the end") << QStringList{QStringLiteral("--palette"), QStringLiteral("9")} << QByteArray() << 2 << "3 palettes";
}

void OvraMediaTest::spritesImportRefuses()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, picture);
    QFETCH(int, code);
    QFETCH(QString, message);

    const QString work = freshWork(QStringLiteral("refuse-%1").arg(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-')));
    QVERIFY(!work.isEmpty());
    const QString png = work + QStringLiteral("/new.png");
    if (picture.isEmpty()) {
        QImage image(4, 4, QImage::Format_ARGB32);
        image.fill(qRgba(1, 2, 3, 255));
        QVERIFY(image.save(png));
    } else {
        QVERIFY(writeFile(png, picture));
    }
    const QString container = work + QStringLiteral("/knight/knight.osp");
    const QByteArray before = readFile(container);
    const Run result = run(QStringList{QStringLiteral("sprites"), QStringLiteral("import"), work, png} + options);
    QCOMPARE(result.code, code);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QCOMPARE(readFile(container), before);
}

void OvraMediaTest::paletteConvert_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("output");

    QTest::newRow("act to gpl") << "in.act" << paletteBytes("ACT") << "out.gpl";
    QTest::newRow("riff pal to act") << "in.pal" << riffPalette() << "out.act";
    QTest::newRow("jasc pal to gpl") << "jasc.pal" << jascPalette() << "out.gpl";
    QTest::newRow("gpl to act") << "in.gpl" << QByteArray() << "out.act";
}

void OvraMediaTest::paletteConvert()
{
    QFETCH(QString, input);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, output);

    // The GPL text comes from the plug-in, which this process has loaded too.
    if (bytes.isEmpty())
        bytes = paletteBytes("GPL");
    QVERIFY(!bytes.isEmpty());
    QVERIFY(writeFile(path(input), bytes));
    const Run result = run({QStringLiteral("palette"), QStringLiteral("convert"), path(input), path(output)});
    QVERIFY2(result.code == 0, qPrintable(result.err));

    // What the library makes of the input, written in the output's format, byte for byte.
    RGBA table[256];
    PaletteObject palette(&table);
    QBuffer in(&bytes);
    QVERIFY(in.open(QIODevice::ReadOnly));
    QVERIFY(palette.fromFile(&in, qPrintable(QFileInfo(input).suffix().toUpper())));
    QBuffer expected;
    expected.open(QIODevice::WriteOnly);
    QVERIFY(palette.toFile(&expected, qPrintable(QFileInfo(output).suffix().toUpper())));
    QCOMPARE(readFile(path(output)), expected.data());
    // And the colours are the test's own, wherever the format put them.
    RGBA reference[256];
    testTable(reference);
    int matches = 0;
    for (int i = 1; i < 256; ++i) {
        for (const RGBA &entry : reference)
            matches += entry.red == table[i].red && entry.green == table[i].green && entry.blue == table[i].blue;
    }
    QVERIFY2(matches >= 254, qPrintable(QString::number(matches)));
}

void OvraMediaTest::paletteRoundTrip()
{
    const QByteArray act = paletteBytes("ACT");
    QVERIFY(writeFile(path(QStringLiteral("trip.act")), act));
    QCOMPARE(run({QStringLiteral("palette"), QStringLiteral("convert"), path(QStringLiteral("trip.act")), path(QStringLiteral("trip.gpl"))}).code, 0);
    QCOMPARE(run({QStringLiteral("palette"), QStringLiteral("convert"), path(QStringLiteral("trip.gpl")), path(QStringLiteral("back.act"))}).code, 0);
    QCOMPARE(readFile(path(QStringLiteral("back.act"))), act);
    QVERIFY(readFile(path(QStringLiteral("trip.gpl"))).contains("\n  1 254   7\tIndex 1\n"));
}

void OvraMediaTest::imageScale_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<bool>("indexed");
    QTest::addColumn<QStringList>("how");
    QTest::addColumn<QSize>("size");

    const QStringList filters{QStringLiteral("nearest"), QStringLiteral("bilinear"), QStringLiteral("epx-nearest"),
                              QStringLiteral("epx-bilinear"), QStringLiteral("hq-nearest"), QStringLiteral("hq-bilinear")};
    for (const QString &filter : filters) {
        for (bool indexed : {false, true}) {
            const QString kind = indexed ? QStringLiteral("indexed") : QStringLiteral("true colour");
            QTest::newRow(qPrintable(filter + QLatin1Char(' ') + kind + QStringLiteral(" factor")))
                << filter << indexed << QStringList{QStringLiteral("--factor"), QStringLiteral("2")} << QSize(40, 20);
            QTest::newRow(qPrintable(filter + QLatin1Char(' ') + kind + QStringLiteral(" size")))
                << filter << indexed << QStringList{QStringLiteral("--size"), QStringLiteral("67x31")} << QSize(67, 31);
        }
    }
}

void OvraMediaTest::imageScale()
{
    QFETCH(QString, filter);
    QFETCH(bool, indexed);
    QFETCH(QStringList, how);
    QFETCH(QSize, size);

    const QString input = path(indexed ? QStringLiteral("scale-indexed.png") : QStringLiteral("scale-rgb.png"));
    QVERIFY(cornerPicture(indexed ? QImage::Format_Indexed8 : QImage::Format_ARGB32).save(input));
    const QString output = path(QStringLiteral("scaled.png"));
    const Run result = run(QStringList{QStringLiteral("image"), QStringLiteral("scale"), input, output,
                                       QStringLiteral("--filter"), filter} + how);
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const QImage scaled = loadPicture(output, "PNG");
    QCOMPARE(scaled.size(), size);
    QCOMPARE(scaled.format() == QImage::Format_Indexed8, indexed);
    // The top-left corner keeps its colour under every filter.
    QCOMPARE(scaled.pixel(0, 0), qRgba(255, 0, 0, 255));
}

void OvraMediaTest::imageRotate()
{
    const QString input = path(QStringLiteral("turn.png"));
    const QImage picture = cornerPicture(QImage::Format_ARGB32);
    QVERIFY(picture.save(input));
    Run result = run({QStringLiteral("image"), QStringLiteral("rotate"), input, path(QStringLiteral("turned.png")),
                      QStringLiteral("--angle"), QStringLiteral("90")});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    QImage turned = loadPicture(path(QStringLiteral("turned.png")), "PNG");
    QCOMPARE(turned.size(), QSize(10, 20));
    // Clockwise: the top-left corner goes to the top right, the bottom-left to the top-left.
    QCOMPARE(turned.pixel(9, 0), qRgba(255, 0, 0, 255));
    QCOMPARE(turned.pixel(0, 0), qRgba(0, 0, 255, 255));
    QCOMPARE(turned.pixel(9, 19), qRgba(0, 255, 0, 255));

    result = run({QStringLiteral("image"), QStringLiteral("rotate"), input, path(QStringLiteral("tilted.png")),
                  QStringLiteral("--angle"), QStringLiteral("30")});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    turned = loadPicture(path(QStringLiteral("tilted.png")), "PNG");
    // 20 cos 30 + 10 sin 30 = 22.3 and 20 sin 30 + 10 cos 30 = 18.7, give or take a pixel.
    QVERIFY2(qAbs(turned.width() - 22) <= 1 && qAbs(turned.height() - 19) <= 1,
             qPrintable(QStringLiteral("%1x%2").arg(turned.width()).arg(turned.height())));
    QCOMPARE(qAlpha(turned.pixel(0, 0)), 0); // a corner the picture doesn't reach

    // In place only when asked.
    result = run({QStringLiteral("image"), QStringLiteral("rotate"), input, QStringLiteral("--angle"),
                  QStringLiteral("180"), QStringLiteral("--in-place")});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    turned = loadPicture(input, "PNG");
    QCOMPARE(turned.size(), picture.size());
    QCOMPARE(turned.pixel(19, 9), qRgba(255, 0, 0, 255));
}

void OvraMediaTest::soundConvertKeepsSamples_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("flacBits");
    QTest::newRow("16 bits") << 16 << 24; // widened: the FLAC writer keeps 24 bits whole
    QTest::newRow("24 bits") << 24 << 24;
    QTest::newRow("32 bits") << 32 << 32;
}

void OvraMediaTest::soundConvertKeepsSamples()
{
    QFETCH(int, bits);
    QFETCH(int, flacBits);
    const SoundSample sine = sineSample(22050, 2, quint16(bits), 4410, 440, 0.5);
    QFile wav(path(QStringLiteral("sine.wav")));
    QVERIFY(wav.open(QIODevice::WriteOnly));
    QVERIFY(soundToWAV(sine, &wav));
    wav.close();

    Run result = run({QStringLiteral("sound"), QStringLiteral("convert"), path(QStringLiteral("sine.wav")), path(QStringLiteral("sine.flac"))});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const SoundSample flac = loadSoundFile(path(QStringLiteral("sine.flac")), "FLAC");
    QCOMPARE(flac.frequency, 22050u);
    QCOMPARE(int(flac.bits), flacBits);
    result = run({QStringLiteral("sound"), QStringLiteral("convert"), path(QStringLiteral("sine.flac")),
                  path(QStringLiteral("again.wav")), QStringLiteral("--bits"), QString::number(bits)});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const SoundSample back = loadSoundFile(path(QStringLiteral("again.wav")), "WAV");
    QCOMPARE(back.channels, sine.channels);
    QCOMPARE(back.bits, sine.bits);
    QCOMPARE(back.frequency, sine.frequency);
    QCOMPARE(back.samples, sine.samples);
    QVERIFY(back.data == sine.data);
}

void OvraMediaTest::soundConvertRate()
{
    const SoundSample sine = sineSample(22050, 1, 16, 22050, 440, 0.5);
    QFile wav(path(QStringLiteral("rate.wav")));
    QVERIFY(wav.open(QIODevice::WriteOnly));
    QVERIFY(soundToWAV(sine, &wav));
    wav.close();
    const Run result = run({QStringLiteral("sound"), QStringLiteral("convert"), path(QStringLiteral("rate.wav")),
                            path(QStringLiteral("rate44.wav")), QStringLiteral("--rate"), QStringLiteral("44100"),
                            QStringLiteral("--channels"), QStringLiteral("2"), QStringLiteral("--bits"), QStringLiteral("8")});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const SoundSample converted = loadSoundFile(path(QStringLiteral("rate44.wav")), "WAV");
    QCOMPARE(converted.frequency, 44100u);
    QCOMPARE(converted.channels, quint16(2));
    QCOMPARE(converted.bits, quint16(8));
    QVERIFY2(qAbs(int(converted.samples) - 44100) <= 2, qPrintable(QString::number(converted.samples)));
}

void OvraMediaTest::soundPlay()
{
    const SoundSample beep = sineSample(22050, 1, 16, 2205, 880, 0.3);
    QFile wav(path(QStringLiteral("beep.wav")));
    QVERIFY(wav.open(QIODevice::WriteOnly));
    QVERIFY(soundToWAV(beep, &wav));
    wav.close();
    const Run result = run({QStringLiteral("sound"), QStringLiteral("play"), path(QStringLiteral("beep.wav"))});
    QVERIFY2(result.code == 0, qPrintable(result.err));
    QVERIFY(result.out.contains(QLatin1String("beep.wav")));
}

void OvraMediaTest::failures_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("file");     // written with `bytes` first, unless empty
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    const QString in = QStringLiteral("IN");
    QTest::newRow("missing picture") << QStringList{QStringLiteral("image"), QStringLiteral("scale"), QStringLiteral("absent.png"), QStringLiteral("o.png"), QStringLiteral("--factor"), QStringLiteral("2")}
                                     << QString() << QByteArray() << 3 << "absent.png: no such file";
    QTest::newRow("garbage picture") << QStringList{QStringLiteral("image"), QStringLiteral("rotate"), in, QStringLiteral("o.png"), QStringLiteral("--angle"), QStringLiteral("9")}
                                     << "bad.png" << QByteArray("not a picture at all") << 3 << "bad.png: not a readable PNG picture";
    QTest::newRow("picture is a directory") << QStringList{QStringLiteral("image"), QStringLiteral("rotate"), QStringLiteral("dir.png"), QStringLiteral("o.png"), QStringLiteral("--angle"), QStringLiteral("9")}
                                            << "dir.png/inside" << QByteArray("x") << 3 << "dir.png: is a directory";
    QTest::newRow("truncated palette") << QStringList{QStringLiteral("palette"), QStringLiteral("convert"), in, QStringLiteral("o.gpl")}
                                       << "short.act" << QByteArray(100, 'x') << 3 << "short.act: not a readable ACT palette";
    QTest::newRow("garbage sound") << QStringList{QStringLiteral("sound"), QStringLiteral("convert"), in, QStringLiteral("o.flac")}
                                   << "noise.wav" << QByteArray("RIFF\x10\0\0\0WAVEjunk", 16) << 3 << "noise.wav: not a readable WAV sound";
    QTest::newRow("garbage sound to play") << QStringList{QStringLiteral("sound"), QStringLiteral("play"), in}
                                           << "noise2.wav" << QByteArray("nothing") << 3 << "noise2.wav: not a readable WAV sound";
    QTest::newRow("missing project") << QStringList{QStringLiteral("sprites"), QStringLiteral("export"), QStringLiteral("nowhere")}
                                     << QString() << QByteArray() << 3 << "nowhere: no such file";
    QTest::newRow("unknown filter") << QStringList{QStringLiteral("image"), QStringLiteral("scale"), in, QStringLiteral("o.png"), QStringLiteral("--factor"), QStringLiteral("2"), QStringLiteral("--filter"), QStringLiteral("sharp")}
                                    << "fine.png" << QByteArray() << 2 << "no filter 'sharp'";
    QTest::newRow("unknown picture format") << QStringList{QStringLiteral("image"), QStringLiteral("scale"), in, QStringLiteral("o.xyz"), QStringLiteral("--factor"), QStringLiteral("2")}
                                            << "fine2.png" << QByteArray() << 2 << "can't write xyz files";
    QTest::newRow("unwritable palette format") << QStringList{QStringLiteral("palette"), QStringLiteral("convert"), in, QStringLiteral("o.pal")}
                                               << "good.act" << paletteBytes("ACT") << 2 << "can't write pal files";
    QTest::newRow("mp3 can't be written") << QStringList{QStringLiteral("sound"), QStringLiteral("convert"), in, QStringLiteral("o.mp3")}
                                          << "tone.wav" << QByteArray() << 2 << "can't write mp3 files";
    QTest::newRow("unknown export format") << QStringList{QStringLiteral("sprites"), QStringLiteral("export"), QStringLiteral("work"), QStringLiteral("--format"), QStringLiteral("tga")}
                                           << QString() << QByteArray() << 2 << "can't write 'tga'";
    QTest::newRow("picture onto itself") << QStringList{QStringLiteral("image"), QStringLiteral("scale"), in, in, QStringLiteral("--factor"), QStringLiteral("2")}
                                         << "self.png" << QByteArray() << 2 << "self.png: the output would replace the input";
    QTest::newRow("palette onto itself") << QStringList{QStringLiteral("palette"), QStringLiteral("convert"), in, QStringLiteral("./") + in}
                                         << "self.act" << paletteBytes("ACT") << 2 << "would replace the input";
    QTest::newRow("sound onto itself") << QStringList{QStringLiteral("sound"), QStringLiteral("convert"), in, in, QStringLiteral("--rate"), QStringLiteral("8000")}
                                       << "self.wav" << QByteArray() << 2 << "--in-place";
    QTest::newRow("neither size nor factor") << QStringList{QStringLiteral("image"), QStringLiteral("scale"), in, QStringLiteral("o.png")}
                                             << "fine3.png" << QByteArray() << 2 << "--size or --factor";
}

void OvraMediaTest::failures()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, file);
    QFETCH(QByteArray, bytes);
    QFETCH(int, code);
    QFETCH(QString, message);

    if (!file.isEmpty()) {
        if (bytes.isEmpty() && file.endsWith(QLatin1String(".png"))) {
            QVERIFY(cornerPicture(QImage::Format_ARGB32).save(path(file)));
        } else if (bytes.isEmpty()) {
            QFile wav(path(file));
            QVERIFY(wav.open(QIODevice::WriteOnly));
            QVERIFY(soundToWAV(sineSample(8000, 1, 16, 800, 440, 0.5), &wav));
        } else {
            QVERIFY(writeFile(path(file), bytes));
        }
        arguments.replaceInStrings(QStringLiteral("IN"), file);
    }
    const QByteArray before = file.isEmpty() ? QByteArray() : readFile(path(file));
    const QStringList outputs = QDir(m_dir.path()).entryList({QStringLiteral("o.*")}, QDir::Files);
    const Run result = run(arguments);
    QCOMPARE(result.code, code);
    QVERIFY2(hasLine(result.err, QStringLiteral("ovra %1 %2: ").arg(arguments.at(0), arguments.at(1))),
             qPrintable(result.err));
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    // Nothing was written, and the input is as it was.
    QCOMPARE(QDir(m_dir.path()).entryList({QStringLiteral("o.*")}, QDir::Files), outputs);
    if (!file.isEmpty())
        QCOMPARE(readFile(path(file)), before);
}

QTEST_MAIN(OvraMediaTest)
#include "tst_ovramedia.moc"
