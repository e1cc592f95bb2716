// The media commands of the ovra tool, run as a program on copies of the example work
// and on files the tests make; what they write is decoded with the library or with Qt.
#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/gifimage.h"
#include "image/imagecodecs.h"
#include "image/imagescaling.h"
#include "image/paletteobject.h"
#include "image/sprite.h"
#include "ovratool.h"
#include "project/project.h"
#include "sound/soundcodecs.h"
#include "testsounds.h"

#include <QBuffer>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Ovra;

namespace {

struct ProjectCloser
{
    void operator()(Project *project) const { project->release(); }
};
using ProjectPointer = std::unique_ptr<Project, ProjectCloser>;

ProjectPointer openProject(const QString &work, QString *error)
{
    const QString file = work + QStringLiteral("/knight/knight.ovp");
    EngineExtension *engine = EngineExtension::forProjectFile(file);
    if (!engine) {
        *error = QStringLiteral("no engine");
        return nullptr;
    }
    return ProjectPointer(engine->openProject(file, error));
}

Sprites *spritesOf(Project *project)
{
    return project ? dynamic_cast<Sprites *>(project->file(Project::Sprites)) : nullptr;
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
    return palette.toFile(&buffer, format, CodecRules::Complete) ? buffer.data() : QByteArray();
}

// The test colours as a JASC text palette, one of the two kinds of .pal file.
QByteArray jascPalette()
{
    RGBA table[256];
    testTable(table);
    QByteArray text("JASC-PAL\r\n0100\r\n256\r\n");
    for (const RGBA &entry : table)
        text += QByteArray::number(entry.red) + ' ' + QByteArray::number(entry.green) + ' ' + QByteArray::number(entry.blue) + "\r\n";
    return text;
}

// The few colours of the test pictures, in an indexed picture's table.
QImage indexedOrNot(const QImage &picture, QImage::Format format)
{
    if (format != QImage::Format_Indexed8)
        return picture;
    const QVector<QRgb> table{qRgba(0, 0, 0, 0), qRgba(40, 40, 40, 255), qRgba(255, 0, 0, 255), qRgba(0, 255, 0, 255),
                              qRgba(0, 0, 255, 255)};
    return picture.convertToFormat(QImage::Format_Indexed8, table, Qt::ThresholdDither);
}

// A picture with a distinct colour in each corner, so that turns can be told apart.
QImage cornerPicture(QImage::Format format)
{
    QImage picture(20, 10, QImage::Format_ARGB32);
    picture.fill(qRgba(40, 40, 40, 255));
    picture.setPixel(0, 0, qRgba(255, 0, 0, 255));
    picture.setPixel(19, 0, qRgba(0, 255, 0, 255));
    picture.setPixel(0, 9, qRgba(0, 0, 255, 255));
    return indexedOrNot(picture, format);
}

// Diagonal lines, which each scaling filter draws in its own way.
QImage diagonalPicture(QImage::Format format)
{
    QImage picture(20, 10, QImage::Format_ARGB32);
    picture.fill(qRgba(40, 40, 40, 255));
    for (int i = 0; i < 10; ++i) {
        picture.setPixel(i, i, qRgba(255, 0, 0, 255));
        picture.setPixel(i + 6, i, qRgba(0, 255, 0, 255));
        picture.setPixel(19 - i, i, qRgba(0, 0, 255, 255));
    }
    return indexedOrNot(picture, format);
}

QImage loadPicture(const QString &fileName, const char *format)
{
    QFile file(fileName);
    QImage image;
    if (file.open(QIODevice::ReadOnly))
        loadImage(&file, format, image);
    return image;
}

bool saveWav(const QString &fileName, const SoundSample &sample)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && soundToWAV(sample, &file);
}

SoundSample loadSoundFile(const QString &fileName, const char *format)
{
    QFile file(fileName);
    SoundSample sample;
    if (file.open(QIODevice::ReadOnly))
        loadSound(&file, format, sample);
    return sample;
}

QJsonObject jsonOf(const ToolRun &run)
{
    return QJsonDocument::fromJson(run.out.toUtf8()).object();
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
    void spritesExport_data();
    void spritesExport();
    void spritesImport();
    void paletteConvert_data();
    void paletteConvert();
    void paletteRoundTrip();
    void imageScale_data();
    void imageScale();
    void imageRotate_data();
    void imageRotate();
    void soundConvertKeepsSamples_data();
    void soundConvertKeepsSamples();
    void soundConvertRate();
    void soundPlay();
    void failures_data();
    void failures();

private:
    // Runs the tool in the test's directory, where the files are named as given.
    ToolRun run(const QStringList &arguments) const { return runOvra(m_dir.path(), arguments); }
    ToolRun run(const char *arguments) const { return run(words(arguments)); }
    QString path(const QString &name) const { return m_dir.filePath(name); }

    QTemporaryDir m_dir;
    std::unique_ptr<ExtensionManager> m_manager;
};

void OvraMediaTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_manager = std::make_unique<ExtensionManager>(QStringLiteral(OVRA_PLUGIN_DIR));
    QVERIFY(copyWork(path(QStringLiteral("work"))));
    // A work whose walk shows a sprite that isn't there.
    const QString animations = path(QStringLiteral("broken/knight/knight.oan"));
    QVERIFY(copyWork(path(QStringLiteral("broken"))));
    const QByteArray text = readFile(animations);
    QVERIFY(text.contains("frame (10, 3)"));
    QVERIFY(writeFile(animations, QByteArray(text).replace("frame (10, 3)", "frame (10, 99)")));
}

void OvraMediaTest::cleanupTestCase()
{
    m_manager.reset();
}

void OvraMediaTest::gif_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("loops"); // QImageReader: -1 for ever, 0 once
    QTest::addColumn<int>("delay"); // of the first frame, milliseconds
    QTest::addColumn<int>("sizeFactor");

    QTest::newRow("walk") << "10" << 6 << -1 << 100 << 1;
    QTest::newRow("walk by row") << "#1" << 6 << -1 << 100 << 1;
    QTest::newRow("scaled") << "10 --scale 2" << 6 << -1 << 100 << 2;
    QTest::newRow("fast") << "10 --speed 2" << 6 << -1 << 50 << 1;
    QTest::newRow("no loop") << "10 --no-loop" << 6 << 0 << 100 << 1;
    QTest::newRow("shared palette") << "10 --shared-palette" << 6 << -1 << 100 << 1;
    // The second frame of Hurt lasts for ever: the GIF plays once and stops on it.
    QTest::newRow("held for ever") << "50" << 2 << 0 << 130 << 1;
}

void OvraMediaTest::gif()
{
    QFETCH(QString, arguments);
    QFETCH(int, frames);
    QFETCH(int, loops);
    QFETCH(int, delay);
    QFETCH(int, sizeFactor);

    const ToolRun result = run(words("gif work -o out.gif") + arguments.split(QLatin1Char(' ')));
    QCOMPARE(result.err, QString());
    QCOMPARE(result.out, QStringLiteral("Wrote out.gif: %1 frames%2.\n").arg(frames).arg(loops ? ", looping" : ""));
    QCOMPARE(result.code, 0);

    QImageReader reader(path(QStringLiteral("out.gif")));
    QCOMPARE(reader.imageCount(), frames);
    QCOMPARE(reader.loopCount(), loops);
    QImage first;
    QVERIFY(reader.read(&first));
    QCOMPARE(reader.nextImageDelay(), delay);

    // The library's reader agrees, and the canvas grows with the scale.
    const auto load = [this](const char *name, GIFImage *gif) {
        QFile file(path(QLatin1String(name)));
        return file.open(QIODevice::ReadOnly) && gif->load(&file);
    };
    GIFImage gif;
    QVERIFY(load("out.gif", &gif));
    QCOMPARE(gif.images().size(), frames);
    QCOMPARE(gif.canLoop(), loops == -1);
    QCOMPARE(run(words("gif work -o plain.gif") << arguments.section(QLatin1Char(' '), 0, 0)).code, 0);
    GIFImage plain;
    QVERIFY(load("plain.gif", &plain));
    QVERIFY(plain.width() > 0);
    QCOMPARE(int(gif.width()), plain.width() * sizeFactor);
    QCOMPARE(int(gif.height()), plain.height() * sizeFactor);
}

void OvraMediaTest::spritesExport_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("only");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("refused"); // true colour with transparency, which PCX can't hold

    QStringList all;
    const QList<QPair<int, int>> groups{{0, 4}, {10, 6}, {200, 4}, {40, 4}, {50, 2}, {1000, 4}, {1010, 4}, {9000, 2}};
    for (const auto &group : groups) {
        for (int number = 0; number < group.second; ++number)
            all << QStringLiteral("knight_%1-%2").arg(group.first).arg(number);
    }
    for (const char *format : {"png", "gif", "bmp"})
        QTest::newRow(format) << format << QString() << all << QStringList();
    QStringList clear;
    for (const QString &name : qAsConst(all)) {
        if (name.startsWith(QLatin1String("knight_1000-")) || name.startsWith(QLatin1String("knight_1010-")))
            clear << name;
    }
    QStringList opaque = all;
    for (const QString &name : qAsConst(clear))
        opaque.removeAll(name);
    QTest::newRow("pcx") << "pcx" << QString() << opaque << clear;
    QTest::newRow("one group") << "png" << "10" << QStringList(all.mid(4, 6)) << QStringList();
    QTest::newRow("one sprite") << "png" << "200,2" << QStringList{QStringLiteral("knight_200-2")} << QStringList();
}

void OvraMediaTest::spritesExport()
{
    QFETCH(QString, format);
    QFETCH(QString, only);
    QFETCH(QStringList, names);
    QFETCH(QStringList, refused);

    const QString directory = QStringLiteral("export-%1").arg(QTest::currentDataTag()).replace(QLatin1Char(' '), QLatin1Char('-'));
    QStringList arguments = words("sprites export work --json --format") << format << QStringLiteral("-o") << directory;
    if (!only.isEmpty())
        arguments << QStringLiteral("--only") << only;
    const ToolRun result = run(arguments);
    QStringList refusals;
    for (const QString &name : qAsConst(refused))
        refusals << QStringLiteral("ovra sprites export: %1/%2.pcx: PCX holds no transparency; write the picture as "
                                   "PNG, BMP or GIF").arg(directory, name);
    QStringList said = lines(result.err);
    said.sort();
    refusals.sort();
    QCOMPARE(said, refusals);
    QCOMPARE(result.code, refused.isEmpty() ? 0 : 3);
    QCOMPARE(jsonOf(result).value(QStringLiteral("files")).toArray().size(), names.size());

    QStringList expected;
    for (const QString &name : names)
        expected << name + QLatin1Char('.') + format;
    expected.sort();
    QCOMPARE(QDir(path(directory)).entryList(QDir::Files, QDir::Name), expected);
    // Each decodes in its format; the PNGs show the sprites' own pixels.
    QString error;
    const ProjectPointer project = format == QLatin1String("png") ? openProject(path(QStringLiteral("work")), &error) : nullptr;
    for (const QString &name : expected) {
        const QImage written = loadPicture(path(directory + QLatin1Char('/') + name), qPrintable(format.toUpper()));
        QVERIFY2(!written.isNull(), qPrintable(name));
        if (project) {
            const QStringList identifier = name.mid(7).chopped(4).split(QLatin1Char('-'));
            const int row = spritesOf(project.get())->find(0, identifier.at(0).toUInt() << 16 | identifier.at(1).toUInt());
            QVERIFY2(row >= 0, qPrintable(name));
            QCOMPARE(written.convertToFormat(QImage::Format_ARGB32),
                     spritesOf(project.get())->at(uint(row))->image().convertToFormat(QImage::Format_ARGB32));
        }
    }
}

void OvraMediaTest::spritesImport()
{
    QVERIFY(copyWork(path(QStringLiteral("import"))));
    QImage picture(7, 5, QImage::Format_ARGB32);
    picture.fill(qRgba(0, 0, 0, 0));
    for (int x = 1; x < 6; ++x)
        picture.setPixel(x, 2, qRgba(200, 30 * x, 10, 255));
    QVERIFY(picture.save(path(QStringLiteral("import.png"))));
    const QImage indexed = cornerPicture(QImage::Format_Indexed8);
    QVERIFY(indexed.save(path(QStringLiteral("import-indexed.png"))));

    ToolRun result = run("sprites import import import.png --group 300 --json");
    QVERIFY2(result.code == 0, qPrintable(result.err));
    QCOMPARE(jsonOf(result).value(QStringLiteral("sprites")).toArray(), QJsonArray{QStringLiteral("300, 0")});
    // The next goes behind it in the group by itself, cropped, over the first palette.
    result = run("sprites import import import.png --group 300 --crop --palette-mode adapt --palette 0");
    QVERIFY2(result.code == 0, qPrintable(result.err));
    // Replacing takes the new picture under the same identifier.
    result = run("sprites import import import-indexed.png --group 0 --start 1 --replace");
    QVERIFY2(result.code == 0, qPrintable(result.err));

    QString error;
    const ProjectPointer project = openProject(path(QStringLiteral("import")), &error);
    Sprites *sprites = spritesOf(project.get());
    QVERIFY2(sprites, qPrintable(error));
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

void OvraMediaTest::paletteConvert_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("output");

    QTest::newRow("act to gpl") << "in.act" << paletteBytes("ACT") << "out.gpl";
    QTest::newRow("pal to act") << "in.pal" << jascPalette() << "out.act";
    // The GPL text comes from the plug-in, which this process has loaded too.
    QTest::newRow("gpl to act") << "in.gpl" << QByteArray() << "out.act";
}

void OvraMediaTest::paletteConvert()
{
    QFETCH(QString, input);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, output);

    if (bytes.isEmpty())
        bytes = paletteBytes("GPL");
    QVERIFY(!bytes.isEmpty());
    QVERIFY(writeFile(path(input), bytes));
    const ToolRun result = run(words("palette convert") << input << output);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.out, QStringLiteral("Wrote %1.\n").arg(output));

    // What the library makes of the input, written in the output's format, byte for byte.
    RGBA table[256];
    PaletteObject palette(&table);
    QBuffer in(&bytes);
    QVERIFY(in.open(QIODevice::ReadOnly));
    QVERIFY(palette.fromFile(&in, qPrintable(QFileInfo(input).suffix().toUpper()), CodecRules::Complete));
    QBuffer expected;
    expected.open(QIODevice::WriteOnly);
    QVERIFY(palette.toFile(&expected, qPrintable(QFileInfo(output).suffix().toUpper()), CodecRules::Complete));
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
    QCOMPARE(run("palette convert trip.act trip.gpl").code, 0);
    QCOMPARE(run("palette convert trip.gpl back.act").code, 0);
    QCOMPARE(readFile(path(QStringLiteral("back.act"))), act);
    QVERIFY(readFile(path(QStringLiteral("trip.gpl"))).contains("\n  1 254   7\tIndex 1\n"));
}

void OvraMediaTest::imageScale_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<int>("value"); // the library's filter of that name
    QTest::addColumn<bool>("indexed");
    QTest::addColumn<QString>("how");
    QTest::addColumn<QSize>("size");

    // Each name once, and both kinds of picture and both ways of giving the size; the
    // result must be the library's filter of that name, pixel for pixel. (At their own
    // factors the pixel-art filters need no second filter, and would look alike.)
    QTest::newRow("nearest") << "nearest" << int(NearestNeighborFilter) << false << "--factor 2" << QSize(40, 20);
    QTest::newRow("bilinear") << "bilinear" << int(BilinearFilter) << true << "--factor 2" << QSize(40, 20);
    QTest::newRow("epx-nearest") << "epx-nearest" << int(EpxNearestFilter) << true << "--size 67x31" << QSize(67, 31);
    QTest::newRow("epx-bilinear") << "epx-bilinear" << int(EpxBilinearFilter) << false << "--size 67x31" << QSize(67, 31);
    QTest::newRow("hq-nearest") << "hq-nearest" << int(HqNearestFilter) << false << "--size 67x31" << QSize(67, 31);
    QTest::newRow("hq-bilinear") << "hq-bilinear" << int(HqBilinearFilter) << true << "--size 67x31" << QSize(67, 31);
}

void OvraMediaTest::imageScale()
{
    QFETCH(QString, filter);
    QFETCH(int, value);
    QFETCH(bool, indexed);
    QFETCH(QString, how);
    QFETCH(QSize, size);

    QImage picture = diagonalPicture(indexed ? QImage::Format_Indexed8 : QImage::Format_ARGB32);
    QVERIFY(picture.save(path(QStringLiteral("scale.png"))));
    const ToolRun result = run(words("image scale scale.png scaled.png --filter") << filter << how.split(QLatin1Char(' ')));
    QCOMPARE(result.err, QString());
    QCOMPARE(result.out, QStringLiteral("Wrote scaled.png: %1 x %2.\n").arg(size.width()).arg(size.height()));
    const QImage scaled = loadPicture(path(QStringLiteral("scaled.png")), "PNG");
    QCOMPARE(scaled.format() == QImage::Format_Indexed8, indexed);
    RGBA palette[256];
    for (int i = 0; i < 256; ++i)
        palette[i] = i < picture.colorCount() ? RGBA(picture.color(i)) : RGBA();
    const QImage expected = resizeImage(loadPicture(path(QStringLiteral("scale.png")), "PNG"), size, palette, ImageResizeFilter(value));
    QCOMPARE(scaled.convertToFormat(QImage::Format_ARGB32), expected.convertToFormat(QImage::Format_ARGB32));
}

void OvraMediaTest::imageRotate_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QPoint>("red");  // where the top-left corner went
    QTest::addColumn<QPoint>("blue"); // and the bottom-left one

    // Clockwise: the top-left corner goes to the top right, the bottom-left to the top left.
    QTest::newRow("90") << "turned.png --angle 90" << "turned.png" << QSize(10, 20) << QPoint(9, 0) << QPoint(0, 0);
    // In place only when asked.
    QTest::newRow("180 in place") << "--angle 180 --in-place" << "turn.png" << QSize(20, 10) << QPoint(19, 9) << QPoint(19, 0);
    // 20 cos 30 + 10 sin 30 = 22.3 and 20 sin 30 + 10 cos 30 = 18.7, give or take a pixel;
    // the picture doesn't reach the corners of the result.
    QTest::newRow("30") << "tilted.png --angle 30" << "tilted.png" << QSize(22, 19) << QPoint() << QPoint();
}

void OvraMediaTest::imageRotate()
{
    QFETCH(QString, arguments);
    QFETCH(QString, output);
    QFETCH(QSize, size);
    QFETCH(QPoint, red);
    QFETCH(QPoint, blue);

    QVERIFY(cornerPicture(QImage::Format_ARGB32).save(path(QStringLiteral("turn.png"))));
    const ToolRun result = run(words("image rotate turn.png") + arguments.split(QLatin1Char(' ')));
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const QImage turned = loadPicture(path(output), "PNG");
    QVERIFY2(qAbs(turned.width() - size.width()) <= 1 && qAbs(turned.height() - size.height()) <= 1,
             qPrintable(QStringLiteral("%1x%2").arg(turned.width()).arg(turned.height())));
    if (red.isNull()) {
        QCOMPARE(qAlpha(turned.pixel(0, 0)), 0);
        return;
    }
    QCOMPARE(turned.size(), size);
    QCOMPARE(turned.pixel(red), qRgba(255, 0, 0, 255));
    QCOMPARE(turned.pixel(blue), qRgba(0, 0, 255, 255));
}

void OvraMediaTest::soundConvertKeepsSamples_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("flacBits");
    QTest::newRow("16 bits") << 16 << 16;
    QTest::newRow("24 bits") << 24 << 24;
    QTest::newRow("32 bits") << 32 << 32;
}

void OvraMediaTest::soundConvertKeepsSamples()
{
    QFETCH(int, bits);
    QFETCH(int, flacBits);
    const SoundSample sine = sineSample(22050, 2, quint16(bits), 4410, 440, 0.5);
    QVERIFY(saveWav(path(QStringLiteral("sine.wav")), sine));

    ToolRun result = run("sound convert sine.wav sine.flac");
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const SoundSample flac = loadSoundFile(path(QStringLiteral("sine.flac")), "FLAC");
    QCOMPARE(flac.frequency, 22050u);
    QCOMPARE(int(flac.bits), flacBits);
    result = run(words("sound convert sine.flac again.wav --bits") << QString::number(bits));
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
    QVERIFY(saveWav(path(QStringLiteral("rate.wav")), sineSample(22050, 1, 16, 22050, 440, 0.5)));
    const ToolRun result = run("sound convert rate.wav rate44.wav --rate 44100 --channels 2 --bits 8");
    QVERIFY2(result.code == 0, qPrintable(result.err));
    const SoundSample converted = loadSoundFile(path(QStringLiteral("rate44.wav")), "WAV");
    QCOMPARE(converted.frequency, 44100u);
    QCOMPARE(converted.channels, quint16(2));
    QCOMPARE(converted.bits, quint16(8));
    QVERIFY2(qAbs(int(converted.samples) - 44100) <= 2, qPrintable(QString::number(converted.samples)));
}

void OvraMediaTest::soundPlay()
{
    // A tenth of a second on the test's silent device.
    QVERIFY(saveWav(path(QStringLiteral("beep.wav")), sineSample(22050, 1, 16, 2205, 880, 0.3)));
    const ToolRun result = run("sound play beep.wav");
    QCOMPARE(result.err, QString());
    QCOMPARE(result.out, QStringLiteral("Playing beep.wav: 0.10 s.\n"));
    QCOMPARE(result.code, 0);
}

void OvraMediaTest::failures_data()
{
    QTest::addColumn<QString>("arguments"); // IN stands for the file written first
    QTest::addColumn<QString>("file");      // IN's name, or nothing to write
    QTest::addColumn<QByteArray>("bytes");  // IN's bytes; none: a good picture or sound
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("error");     // the tool's first line on stderr; "@": the test's directory

    const auto row = [](const char *name, const char *arguments, const char *file, const QByteArray &bytes, int code,
                        const char *error) {
        QTest::newRow(name) << QString::fromLatin1(arguments) << QString::fromLatin1(file) << bytes << code << QString::fromUtf8(error);
    };
    const char *replaces = "the output would replace the input; give another output, or --in-place to replace it";
    const QByteArray act = paletteBytes("ACT");
    row("gif of a missing sprite", "gif broken 10 -o walk.gif", "", {}, 3,
        "ovra gif: @/broken/knight/knight.oan: frame 3 of animation '10' shows sprite 10, 99, which the project's sprites don't have");
    row("gif of no animation", "gif work 77 -o x.gif", "", {}, 2,
        "ovra gif: @/work/knight/knight.oan: no animation '77' (there are: 0, 10, 200, 40, 50, 1000, 1010, 1020)");
    row("gif of a row past the end", "gif work #8 -o x.gif", "", {}, 2,
        "ovra gif: @/work/knight/knight.oan: no animation '#8' (there are: 0, 10, 200, 40, 50, 1000, 1010, 1020)");
    row("gif without output", "gif work 10", "", {}, 2, "ovra gif: give the GIF file to write with -o");
    row("gif scaled by 0", "gif work 10 -o walk.gif --scale 0", "", {}, 2, "ovra gif: --scale must lie above 0 and at most 1000, not 0");
    row("gif onto the project", "gif work 10 -o work/knight/knight.osp", "", {}, 2,
        qPrintable(QStringLiteral("ovra gif: work/knight/knight.osp: ") + replaces));
    row("export of nothing", "sprites export nowhere", "", {}, 3, "ovra sprites export: nowhere: no such file or directory");
    row("export to an unknown format", "sprites export work --format tga", "", {}, 2,
        "ovra sprites export: --format: can't write 'tga' pictures (formats: png, pcx, gif, bmp)");
    row("import onto a taken identifier", "sprites import work IN --group 10 --start 5", "new.png", {}, 2,
        "ovra sprites import: @/work/knight/knight.osp has sprite 10, 5 already; give --replace to replace it, or other "
        "numbers with --start");
    row("import of a garbage picture", "sprites import work IN", "new.png", "\x89PNG\r\n\x1a\n not really", 3,
        "ovra sprites import: new.png: not a readable PNG picture");
    row("import in an unknown mode", "sprites import work IN --palette-mode blend", "new.png", {}, 2,
        "ovra sprites import: --palette-mode takes ignore, own, adapt or swap, not 'blend'");
    row("import over a palette past the end", "sprites import work IN --palette 9", "new.png", {}, 2,
        "ovra sprites import: --palette 9: the sprite file has 3 palettes");
    row("missing picture", "image scale absent.png o.png --factor 2", "", {}, 3, "ovra image scale: absent.png: no such file");
    row("garbage picture", "image rotate IN o.png --angle 9", "bad.png", "not a picture at all", 3,
        "ovra image rotate: bad.png: not a readable PNG picture");
    row("picture is a directory", "image rotate IN o.png --angle 9", "dir.png/inside", "x", 3,
        "ovra image rotate: dir.png: is a directory");
    row("unknown filter", "image scale IN o.png --factor 2 --filter sharp", "fine.png", {}, 2,
        "ovra image scale: no filter 'sharp'; the filters are:");
    row("unknown picture format", "image scale IN o.xyz --factor 2", "fine.png", {}, 2,
        "ovra image scale: o.xyz: can't write xyz files as a picture (formats: png, pcx, gif, bmp)");
    row("neither size nor factor", "image scale IN o.png", "fine.png", {}, 2, "ovra image scale: give either --size or --factor");
    row("picture onto itself", "image scale IN IN --factor 2", "self.png", {}, 2,
        qPrintable(QStringLiteral("ovra image scale: self.png: ") + replaces));
    row("truncated palette", "palette convert IN o.gpl", "short.act", QByteArray(100, 'x'), 3,
        "ovra palette convert: short.act: not a readable ACT palette");
    row("unwritable palette format", "palette convert IN o.aco", "good.act", act, 2,
        "ovra palette convert: o.aco: can't write aco files as a palette (formats: act, pal, ase, gpl)");
    row("palette onto itself", "palette convert IN ./IN", "self.act", act, 2,
        qPrintable(QStringLiteral("ovra palette convert: ./self.act: ") + replaces));
    row("garbage sound", "sound convert IN o.flac", "noise.wav", QByteArray("RIFF\x10\0\0\0WAVEjunk", 16), 3,
        "ovra sound convert: noise.wav: not a readable WAV sound");
    row("garbage sound to play", "sound play IN", "noise.wav", "nothing", 3, "ovra sound play: noise.wav: not a readable WAV sound");
    row("mp3 can't be written", "sound convert IN o.mp3", "tone.wav", {}, 2,
        "ovra sound convert: o.mp3: can't write mp3 files as a sound (formats: wav, ogg, flac)");
    row("sound onto itself", "sound convert IN IN --rate 8000", "self.wav", {}, 2,
        qPrintable(QStringLiteral("ovra sound convert: self.wav: ") + replaces));
}

void OvraMediaTest::failures()
{
    QFETCH(QString, arguments);
    QFETCH(QString, file);
    QFETCH(QByteArray, bytes);
    QFETCH(int, code);
    QFETCH(QString, error);

    if (!bytes.isEmpty())
        QVERIFY(writeFile(path(file), bytes));
    else if (file.endsWith(QLatin1String(".png")))
        QVERIFY(cornerPicture(QImage::Format_ARGB32).save(path(file)));
    else if (!file.isEmpty())
        QVERIFY(saveWav(path(file), sineSample(8000, 1, 16, 800, 440, 0.5)));
    arguments.replace(QLatin1String("IN"), file.section(QLatin1Char('/'), 0, 0));
    const QMap<QString, QByteArray> before = snapshot(m_dir.path());

    const ToolRun result = run(arguments.split(QLatin1Char(' ')));
    QCOMPARE(result.code, code);
    QCOMPARE(result.out, QString());
    // A codec library may have spoken first.
    QStringList said = lines(result.err);
    while (!said.isEmpty() && !said.first().startsWith(QLatin1String("ovra ")))
        said.removeFirst();
    QCOMPARE(said.value(0), error.replace(QLatin1Char('@'), m_dir.path()));
    const QString command = arguments.section(QLatin1Char(' '), 0, arguments.startsWith(QLatin1String("gif")) ? 0 : 1);
    if (code == 2)
        QCOMPARE(said.value(said.size() - 1), QStringLiteral("Try 'ovra %1 --help'.").arg(command));
    // Nothing was written, and every input is as it was.
    QCOMPARE(snapshot(m_dir.path()), before);
}

QTEST_MAIN(OvraMediaTest)
#include "tst_ovramedia.moc"
