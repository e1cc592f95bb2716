#include "foundation/filesystemarchive.h"
#include "held.h"
#include "image/spritecompression.h"
#include "spritecontainer.h"

#include <QAbstractItemModelTester>
#include <QBuffer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace Ovra;

namespace {

// Entry 0 transparent, then opaque colours that differ by the seed.
QVector<RGBA> palette(int seed)
{
    QVector<RGBA> colors(256);
    for (int i = 1; i < 256; ++i)
        colors[i] = RGBA(quint8(i), quint8(i * seed), quint8(255 - i), 255);
    return colors;
}

QVector<QRgb> qtColors(const QVector<RGBA> &colors)
{
    QVector<QRgb> table;
    for (const RGBA &entry : colors)
        table << entry.toQRgb();
    return table;
}

// An indexed picture whose pixel (x, y) is value(x, y).
QImage indexed(int width, int height, const std::function<int(int, int)> &value, const QVector<RGBA> &colors)
{
    QImage picture(width, height, QImage::Format_Indexed8);
    picture.setColorTable(qtColors(colors));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.scanLine(y)[x] = uchar(value(x, y));
    }
    return picture;
}

QImage trueColour(int width, int height)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, x < 2 ? 0u : qRgba(x * 20, y * 30, 200, 255));
    }
    return picture;
}

QByteArray packedRle8(const QImage &picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    saveRLE8(picture, &buffer);
    return bytes;
}

QByteArray packedLz5(const QImage &picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    saveLZ5(picture, &buffer, true);
    return bytes;
}

// One palette of two colours and two 2x2 sprites, the second sharing the first's pixels:
// every field sits at a known offset (palette at 16, sprites at 32 and 60).
SpriteContainerData smallData()
{
    SpriteContainerData data;
    data.palettes << SpriteContainerPalette{1, 2, {RGBA(0, 0, 0, 0), RGBA(9, 8, 7, 255)}};
    SpriteContainerSprite own;
    own.group = 3;
    own.number = 4;
    own.axisX = -1;
    own.axisY = 2;
    own.pixels = SpritePixels{2, 2, SpritePixels::Indexed, SpritePixels::Raw, QByteArray("\0\1\1\0", 4)};
    SpriteContainerSprite shared = own;
    shared.number = 5;
    shared.source = 0;
    shared.pixels = SpritePixels();
    data.sprites << own << shared;
    return data;
}

QByteArray withSprite(const SpritePixels &pixels)
{
    SpriteContainerData data;
    data.palettes << SpriteContainerPalette{0, 0, palette(1)};
    SpriteContainerSprite sprite;
    sprite.pixels = pixels;
    data.sprites << sprite;
    return writeSpriteContainer(data);
}

QByteArray patched(QByteArray bytes, int at, const QByteArray &with)
{
    return bytes.replace(at, with.size(), with);
}

} // namespace

class SpriteContainerTest : public QObject
{
    Q_OBJECT

private slots:
    void layout();
    void roundTrip();
    void codecChoice_data();
    void codecChoice();
    void unchangedSpritesKeepTheirBytes();
    void paletteModes_data();
    void paletteModes();
    void splitRGB();
    void crop();
    void organizing();
    void palettes();
    void undoRedo();
    void badFiles_data();
    void badFiles();
    void damagedStreamOnFirstUse_data();
    void damagedStreamOnFirstUse();
    void damagedStreamLosesItsPalette();
    void models();
    void files();
};

void SpriteContainerTest::layout()
{
    const QByteArray bytes = writeSpriteContainer(smallData());
    QCOMPARE(bytes.size(), 84);
    QCOMPARE(bytes.left(32).toHex(), QByteArray("4f56535001000000" "0100000002000000" // header
                                                 "0100020002000000" "00000000090807ff")); // palette
    QCOMPARE(bytes.mid(32, 28).toHex(), QByteArray("03000400ffff0200" "0200020001010000" "0000000004000000"
                                                   "00010100"));
    QCOMPARE(bytes.mid(60).toHex(), QByteArray("03000500ffff0200" "0000000000000000" "0100000000000000"));
    SpriteContainerData read;
    QString reason;
    QByteArray held = writeSpriteContainer(smallData()); // its own buffer, not shared with bytes
    QVERIFY2(readSpriteContainer(held, read, reason), qPrintable(reason));
    QCOMPARE(read.sprites.at(1).source, 0);
    // Streams are read in place, yet the caller's bytes stay the caller's: changing or
    // dropping them leaves the sprites as they were read.
    held.fill('\xee');
    held.clear();
    QCOMPARE(read.sprites.at(0).pixels.stream, QByteArray("\0\1\1\0", 4));
    QCOMPARE(writeSpriteContainer(read), bytes);
}

void SpriteContainerTest::roundTrip()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    QCOMPARE(sprites->toBytes().toHex(), QByteArray("4f56535001000000" "0000000000000000"));
    const QImage first = indexed(7, 5, [](int x, int y) { return (x + y) % 4; }, palette(1));
    const QImage second = indexed(3, 9, [](int x, int) { return 200 + x; }, palette(2));
    Sprite *a = sprites->add(QPoint(0, 1), first, Archive::NoShare);
    sprites->add(QPoint(0, 2), second, Archive::NoShare);
    sprites->add(QPoint(1, 0), trueColour(6, 4), Archive::NoShare);
    Sprite *same = sprites->add(QPoint(2, 0), first, Archive::Share);
    a->setAxis(QPoint(-3, 40));
    QCOMPARE(sprites->palettes()->count(), 2u);
    QVERIFY(same->imageIsShared());
    QVERIFY(a->imageIsShared());
    QVERIFY(!sprites->at(1)->imageIsShared());

    Held<SpriteContainer> back(new SpriteContainer);
    QVERIFY(back->fromBytes(sprites->toBytes()));
    QCOMPARE(back->toBytes(), sprites->toBytes());
    QCOMPARE(back->count(), 4u);
    const QList<QImage> pictures{first, second, trueColour(6, 4), first};
    for (uint i = 0; i < 4; ++i) {
        QCOMPARE(back->at(i)->identifier(), sprites->at(i)->identifier());
        QCOMPARE(back->at(i)->image(), pictures.at(int(i)));
    }
    QCOMPARE(back->at(0)->axis(), QPoint(-3, 40));
    QCOMPARE(back->at(1)->palette(), back->palettes()->at(1));
    QCOMPARE(back->at(2)->palette(), nullptr);
    QVERIFY(back->at(3)->imageIsShared());
    QCOMPARE(back->at(1)->imageProperties().size(), QSize(3, 9));
    QCOMPARE(back->at(2)->imageProperties().format, QImage::Format_ARGB32);
    QVERIFY(!back->isModified());
}

void SpriteContainerTest::codecChoice_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<int>("codec");
    const QVector<RGBA> colors = palette(3);
    QTest::addRow("noise is raw") << indexed(16, 16, [](int x, int y) { return (x * 97 + y * 61) % 251; }, colors)
                                  << int(SpritePixels::Raw);
    QTest::addRow("runs of high indices are RLE8")
        << indexed(40, 10, [](int x, int) { return 100 + x / 10; }, colors) << int(SpritePixels::Rle8);
    QTest::addRow("few low colours are LZ5")
        << indexed(40, 10, [](int x, int y) { return (x / 3 + y) % 5; }, colors) << int(SpritePixels::Lz5);
    QTest::addRow("true colour is raw") << trueColour(10, 10) << int(SpritePixels::Raw);
}

void SpriteContainerTest::codecChoice()
{
    QFETCH(QImage, picture);
    QFETCH(int, codec);
    const SpritePixels pixels = encodeSpritePixels(picture);
    QCOMPARE(int(pixels.codec), codec);
    if (codec != SpritePixels::Raw)
        QVERIFY(pixels.stream.size() < pixels.unpackedSize());
    if (codec == SpritePixels::Lz5) {
        QVERIFY(pixels.stream.size() < packedRle8(picture).size());
        QCOMPARE(pixels.stream, packedLz5(picture)); // with copies
    }
    if (codec == SpritePixels::Raw && picture.format() == QImage::Format_Indexed8)
        QVERIFY(packedRle8(picture).size() >= pixels.stream.size());
    QString reason;
    QVERIFY2(checkSpriteStream(pixels, reason), qPrintable(reason));
    QCOMPARE(decodeSpritePixels(pixels, picture.colorTable()), picture);
}

void SpriteContainerTest::unchangedSpritesKeepTheirBytes()
{
    // Streams that our encoder wouldn't choose: raw for a picture that packs well, and
    // RLE8 for one that LZ5 would take, with a palette of three colours.
    const QImage flat = indexed(20, 20, [](int, int) { return 1; }, palette(1));
    const QImage low = indexed(8, 8, [](int x, int) { return x % 3; }, palette(1));
    SpriteContainerData data;
    data.palettes << SpriteContainerPalette{5, 5, palette(1).mid(0, 3)};
    SpriteContainerSprite sprite;
    sprite.pixels = SpritePixels{20, 20, SpritePixels::Indexed, SpritePixels::Raw, QByteArray(400, '\1')};
    data.sprites << sprite;
    sprite.pixels = SpritePixels{8, 8, SpritePixels::Indexed, SpritePixels::Rle8, packedRle8(low)};
    data.sprites << sprite;
    const QByteArray bytes = writeSpriteContainer(data);
    Held<SpriteContainer> sprites(new SpriteContainer);
    QVERIFY(sprites->fromBytes(bytes));
    QCOMPARE(sprites->toBytes(), bytes);
    QCOMPARE(sprites->at(0)->image().pixelIndex(3, 3), 1);
    QCOMPARE(sprites->at(0)->image().color(1), palette(1).at(1).toQRgb());
    QCOMPARE(sprites->at(0)->image().color(7), 0u); // past the stored colours
    sprites->at(1)->setImage(low, true);
    auto *second = static_cast<ContainerSprite *>(sprites->at(1));
    QCOMPARE(int(second->pixels()->codec), int(SpritePixels::Lz5));
    QCOMPARE(static_cast<ContainerSprite *>(sprites->at(0))->pixels()->stream, QByteArray(400, '\1'));
    Held<SpriteContainer> back(new SpriteContainer);
    QVERIFY(back->fromBytes(sprites->toBytes()));
    QCOMPARE(back->at(1)->image().convertToFormat(QImage::Format_ARGB32),
             sprites->at(1)->image().convertToFormat(QImage::Format_ARGB32));
    QCOMPARE(back->at(0)->image(), flat.convertToFormat(QImage::Format_Indexed8, sprites->at(0)->image().colorTable()));
}

void SpriteContainerTest::paletteModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("trueColourPicture");
    QTest::addColumn<int>("palettesAfter");
    QTest::addColumn<int>("paletteUsed");
    QTest::addColumn<int>("pixel"); // the index of (1, 0) afterwards
    QTest::addRow("ignore keeps the sprite's palette") << int(Sprite::Ignore) << false << 2 << 0 << 2;
    QTest::addRow("own palette adds the picture's") << int(Sprite::OwnPalette) << false << 3 << 2 << 2;
    QTest::addRow("adapt maps colours onto the given") << int(Sprite::AdaptImage) << false << 2 << 1 << 3;
    QTest::addRow("adapt a true-colour picture") << int(Sprite::AdaptImage) << true << 2 << 1 << 3;
    QTest::addRow("swap keeps the indices") << int(Sprite::SwapPalette) << false << 2 << 1 << 2;
    QTest::addRow("own palette of true colour is none") << int(Sprite::OwnPalette) << true << 2 << -1 << -1;
}

void SpriteContainerTest::paletteModes()
{
    QFETCH(int, mode);
    QFETCH(bool, trueColourPicture);
    QFETCH(int, palettesAfter);
    QFETCH(int, paletteUsed);
    QFETCH(int, pixel);
    // Palette 1 holds red at 3; the picture's own palette holds red at 2.
    QVector<RGBA> given(256);
    given[3] = RGBA(255, 0, 0, 255);
    QVector<RGBA> own(256);
    own[2] = RGBA(255, 0, 0, 255);
    own[5] = RGBA(0, 0, 255, 255);
    Held<SpriteContainer> sprites(new SpriteContainer);
    sprites->add(QPoint(0, 0), indexed(2, 2, [](int, int) { return 0; }, palette(1)), Archive::NoShare);
    Palette *target = sprites->palettes()->add(given.constData(), QPoint(9, 9), Archive::NoShare);
    QImage picture = indexed(2, 1, [](int x, int) { return x == 1 ? 2 : 5; }, own);
    if (trueColourPicture)
        picture = picture.convertToFormat(QImage::Format_ARGB32);
    Sprite *sprite = sprites->at(0);
    sprite->setImage(picture, true, Sprite::PaletteMode(mode), target, Archive::NoShare);
    QCOMPARE(int(sprites->palettes()->count()), palettesAfter);
    QCOMPARE(sprite->palette() ? int(sprite->palette()->index()) : -1, paletteUsed);
    const QImage image = sprite->image();
    QCOMPARE(image.size(), QSize(2, 1));
    if (pixel < 0) {
        QCOMPARE(image.format(), QImage::Format_ARGB32);
        QCOMPARE(image.pixel(1, 0), qRgba(255, 0, 0, 255));
    } else {
        QCOMPARE(image.pixelIndex(1, 0), pixel);
    }
    // The picture's palette is there already: taking it again adds nothing.
    if (mode == Sprite::OwnPalette && !trueColourPicture) {
        sprites->at(0)->duplicate()->setImage(picture, true, Sprite::OwnPalette, nullptr, Archive::NoShare);
        QCOMPARE(int(sprites->palettes()->count()), palettesAfter);
    }
}

void SpriteContainerTest::splitRGB()
{
    QImage picture(6, 4, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    for (int x = 1; x < 5; ++x) {
        picture.setPixel(x, 1, qRgba(250, 10, 10, 255));
        picture.setPixel(x, 2, x < 3 ? qRgba(10, 250, 10, 255) : qRgba(0, 0, 0, 255));
    }
    Held<SpriteContainer> sprites(new SpriteContainer);
    Sprite *sprite = sprites->add(QPoint(4, 4), picture, Archive::NoShare);
    QCOMPARE(sprite->palette(), nullptr);
    sprite->splitRGB();
    QCOMPARE(sprite->imageProperties().format, QImage::Format_Indexed8);
    QVERIFY(sprite->palette());
    QCOMPARE(sprites->palettes()->count(), 1u);
    RGBA colors[256];
    QVERIFY(sprite->palette()->colorTable(colors));
    QCOMPARE(colors[0], RGBA());
    const QImage image = sprite->image();
    QCOMPARE(image.pixelIndex(0, 0), 0);
    QCOMPARE(image.convertToFormat(QImage::Format_ARGB32), picture); // four colours fit exactly
    QVERIFY(sprites->isModified());
    sprite->splitRGB(); // indexed already
    QCOMPARE(sprites->palettes()->count(), 1u);
}

void SpriteContainerTest::crop()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    const QImage picture = indexed(10, 10, [](int x, int y) { return x >= 3 && x <= 5 && y >= 2 && y <= 6 ? 7 : 0; },
                                   palette(1));
    Sprite *sprite = sprites->add(QPoint(0, 0), picture, Archive::NoShare);
    QCOMPARE(sprite->axis(), QPoint(5, 10)); // a new sprite stands on the middle of its bottom edge
    sprite->setAxis(QPoint(5, 9));
    sprite->crop();
    QCOMPARE(sprite->imageProperties().size(), QSize(3, 5));
    QCOMPARE(sprite->axis(), QPoint(2, 7));
    QCOMPARE(sprite->image().pixelIndex(0, 0), 7);
    sprite->crop(); // nothing left to cut
    QCOMPARE(sprite->axis(), QPoint(2, 7));
}

void SpriteContainerTest::organizing()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    const QImage picture = indexed(4, 4, [](int x, int) { return x; }, palette(1));
    for (const QPoint &id : {QPoint(2, 0), QPoint(0, 5), QPoint(0, 1), QPoint(1, 0)})
        sprites->add(id, picture, Archive::NoShare);
    QCOMPARE(sprites->find(0, (1u << 16) | 0), 3);
    QCOMPARE(sprites->find(0, 5), 1);
    QCOMPARE(sprites->find(2, 5), -1);
    Sprite *copy = sprites->at(1)->duplicate();
    QCOMPARE(copy->index(), 2u);
    QVERIFY(copy->imageIsShared());
    copy->setProperty(QStringLiteral("Identifier"), QPoint(70000, 3)); // held to 16 bits
    QCOMPARE(copy->identifier(), QVariant(QPoint(65535, 3)));
    sprites->remove(2);
    QVERIFY(!sprites->at(1)->imageIsShared());
    sprites->autoOrganize();
    QStringList order;
    for (int row = 0; row < sprites->rowCount(); ++row)
        order << sprites->data(sprites->index(row), Qt::DisplayRole).toString();
    QCOMPARE(order, QStringList({"0, 1", "0, 5", "1, 0", "2, 0"}));
    sprites->setSelected(9);
    QCOMPARE(sprites->selected(), 3u);
    sprites->clear();
    QCOMPARE(sprites->count(), 0u);
    QVERIFY(!sprites->isEmpty()); // the palette stays
    QCOMPARE(sprites->add(QPoint(0, 0), QImage(), Archive::NoShare), nullptr);
    QCOMPARE(sprites->add(QPoint(0, 0), QImage(MaxSpriteSide + 1, 1, QImage::Format_Indexed8), Archive::NoShare),
             nullptr);
}

void SpriteContainerTest::palettes()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    Palettes *palettes = sprites->palettes();
    const QImage picture = indexed(3, 3, [](int x, int y) { return x + y; }, palette(1));
    Sprite *a = sprites->add(QPoint(0, 0), picture, Archive::NoShare);
    Sprite *b = sprites->add(QPoint(0, 1), picture, Archive::NoShare);
    Palette *copy = a->palette()->duplicate();
    QCOMPARE(palettes->count(), 2u);
    copy->setProperty(QStringLiteral("Identifier"), QPoint(3, 4));
    QCOMPARE(palettes->find(0, (3u << 16) | 4), 1);
    b->setPalette(copy);
    QCOMPARE(b->palette(), copy);
    QCOMPARE(palettes->add(palette(1).constData(), QPoint(1, 1), Archive::Share), a->palette());
    palettes->add(palette(5).constData(), QPoint(1, 1), Archive::NoShare);
    palettes->removeDuplicates();
    QCOMPARE(palettes->count(), 2u);
    QCOMPARE(b->palette(), a->palette());
    palettes->clearUnused();
    QCOMPARE(palettes->count(), 1u);
    QCOMPARE(palettes->data(palettes->index(0), Qt::DisplayRole).toString(), QStringLiteral("0, 0"));

    // A palette's new colours show in its sprites.
    QVector<RGBA> changed = palette(1);
    changed[2] = RGBA(1, 2, 3, 255);
    a->palette()->setColorTable(changed.constData(), Archive::NoShare);
    QCOMPARE(b->image().pixel(1, 1), qRgba(1, 2, 3, 255));

    // A removed palette takes nothing with it: its sprites turn true colour.
    const QImage looks = a->image().convertToFormat(QImage::Format_ARGB32);
    palettes->remove(0);
    QCOMPARE(palettes->count(), 0u);
    QCOMPARE(a->palette(), nullptr);
    QCOMPARE(a->image(), looks);
    Held<SpriteContainer> back(new SpriteContainer);
    QVERIFY(back->fromBytes(sprites->toBytes()));
    QCOMPARE(back->at(1)->image(), looks);
}

void SpriteContainerTest::undoRedo()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    QSignalSpy changed(sprites.get(), &OrganizableObject::changed);
    const QImage picture = indexed(4, 2, [](int x, int) { return x + 1; }, palette(1));
    Sprite *sprite = sprites->add(QPoint(1, 1), picture, Archive::NoShare); // one step, palette and all
    QCOMPARE(changed.count(), 1);
    const QByteArray one = sprites->toBytes();
    sprites->beginChange();
    sprite->setAxis(QPoint(7, 7));
    sprites->beginChange(); // nested brackets are still one step
    sprite->setIdentifier(QPoint(2, 2));
    sprites->palettes()->add(palette(4).constData(), QPoint(0, 0), Archive::NoShare);
    sprites->endChange();
    QCOMPARE(changed.count(), 1);
    sprites->endChange();
    QCOMPARE(changed.count(), 2);
    const QByteArray two = sprites->toBytes();
    sprite->crop(); // nothing to cut: no step
    sprite->setImage(indexed(1, 1, [](int, int) { return 3; }, palette(1)), true);
    const QByteArray three = sprites->toBytes();

    sprites->undo();
    QCOMPARE(sprites->toBytes(), two);
    sprites->undo();
    QCOMPARE(sprites->toBytes(), one);
    QCOMPARE(sprite->axis(), QPoint(2, 2)); // the same object, as it was
    QCOMPARE(sprites->at(0), sprite);
    sprites->undo();
    QCOMPARE(sprites->count(), 0u);
    QCOMPARE(sprites->palettes()->count(), 0u);
    QVERIFY(!sprites->isModified());
    QCOMPARE(changed.last().first().toBool(), false);
    sprites->undo(); // nothing left
    sprites->redo();
    sprites->redo();
    QCOMPARE(sprites->toBytes(), two);
    sprites->redo();
    QCOMPARE(sprites->toBytes(), three);

    // Saved, then undone and changed another way: the saved state can't come back.
    QTemporaryDir directory;
    QVERIFY(sprites->toFile(FileSystemArchive::instance(), directory.filePath(QStringLiteral("a.osp")), 0, nullptr));
    QVERIFY(!sprites->isModified());
    sprites->undo();
    QVERIFY(sprites->isModified());
    sprites->redo();
    QVERIFY(!sprites->isModified());
    sprites->undo();
    sprites->at(0)->setAxis(QPoint(0, 0));
    QVERIFY(sprites->isModified());
    QVERIFY(!sprites->canRedo());
    sprites->undo();
    QVERIFY(sprites->isModified());
    QCOMPARE(sprites->toBytes(), two);
}

void SpriteContainerTest::badFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("message");
    const QByteArray good = writeSpriteContainer(smallData());
    const QString cut = QStringLiteral("The sprite container is cut short.");
    const QString reserved = QStringLiteral("The sprite container has reserved bytes that aren't zero.");
    QTest::addRow("empty") << QByteArray() << cut;
    QTest::addRow("wrong magic") << patched(good, 0, "OVSB") << "This is not a sprite container.";
    QTest::addRow("unknown version") << patched(good, 4, QByteArray("\2\0", 2)) << "Sprite container version 2 is unknown.";
    QTest::addRow("reserved header") << patched(good, 6, "\1") << reserved;
    QTest::addRow("impossible sprite count") << patched(good, 12, "\xff\xff\xff\x0f") << cut;
    QTest::addRow("cut in a palette") << good.left(28) << cut;
    QTest::addRow("cut in a sprite header") << good.left(40) << cut;
    QTest::addRow("cut in a stream") << good.left(58) << cut;
    QTest::addRow("trailing bytes") << good + "x" << "The sprite container has bytes after its last sprite.";
    QTest::addRow("too many colours") << patched(good, 20, QByteArray("\1\1", 2)) << "Palette 0 has 257 colours, more than 256.";
    QTest::addRow("reserved palette") << patched(good, 22, "\1") << reserved;
    QTest::addRow("unused colour stored") << patched(good, 28, QByteArray(4, '\0')) << "Palette 0 ends in unused colours.";
    QTest::addRow("palette out of range") << patched(good, 46, "\1") << "Sprite 0 uses palette 1, which isn't there.";
    QTest::addRow("shared palette out of range") << patched(good, 74, "\3") << "Sprite 1 uses palette 3, which isn't there.";
    QTest::addRow("unknown format") << patched(good, 44, "\7") << "Sprite 0 has an unknown pixel format (7).";
    QTest::addRow("unknown codec") << patched(good, 45, "\4") << "Sprite 0 has an unknown codec (4).";
    QTest::addRow("true colour in LZ5") << patched(good, 44, "\2\3") << "Sprite 0 has an unknown codec (3).";
    QTest::addRow("zero width") << patched(good, 40, QByteArray("\0\0", 2)) << "Sprite 0 has an impossible size (0 x 2).";
    QTest::addRow("huge height") << patched(good, 42, "\xff\xff") << "Sprite 0 has an impossible size (2 x 65535).";
    QTest::addRow("link to itself") << patched(good, 48, "\1") << "Sprite 0 shares the pixels of sprite 0, which doesn't come before it.";
    QTest::addRow("link to a later sprite") << patched(good, 76, "\3")
                                            << "Sprite 1 shares the pixels of sprite 2, which doesn't come before it.";
    QTest::addRow("shared with pixels") << patched(good, 68, "\2") << "Sprite 1 shares pixels and has pixels of its own.";
}

// Streams are checked when their sprite is first shown, not when the file opens: a damaged
// one opens, says so once when shown, and is written back as it came.
void SpriteContainerTest::damagedStreamOnFirstUse_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("sprite"); // the sprite first shown
    QTest::addColumn<QString>("message");
    const QByteArray good = writeSpriteContainer(smallData());
    QTest::addRow("raw too short") << patched(good, 40, "\3") << 0
                                   << "Sprite 0 doesn't decode: 4 bytes of raw pixels instead of 6.";
    QTest::addRow("raw too short, seen through its link") << patched(good, 40, "\3") << 1
                                                          << "Sprite 1 doesn't decode: 4 bytes of raw pixels instead of 6.";
    const SpritePixels rle{4, 1, SpritePixels::Indexed, SpritePixels::Rle8, QByteArray("\x44\x05", 2)};
    QTest::addRow("RLE8 cut in an item") << withSprite(SpritePixels{rle.width, 1, 1, 2, QByteArray("\x43", 1)})
                                         << 0 << "Sprite 0 doesn't decode: the stream ends inside a packet.";
    QTest::addRow("RLE8 short") << withSprite(SpritePixels{5, 1, 1, 2, rle.stream})
                                << 0 << "Sprite 0 doesn't decode: the stream ends before its picture is full.";
    QTest::addRow("RLE8 long") << withSprite(SpritePixels{3, 1, 1, 2, rle.stream})
                               << 0 << "Sprite 0 doesn't decode: the stream holds more than its picture.";
    QTest::addRow("RLE8 after the end") << withSprite(SpritePixels{4, 1, 1, 2, rle.stream + "\x01"})
                                        << 0 << "Sprite 0 doesn't decode: the stream holds more than its picture.";
    // Control byte 1: the first packet is a copy, from before the first pixel.
    QTest::addRow("LZ5 copy before the start") << withSprite(SpritePixels{4, 1, 1, 3, QByteArray("\x01\x01\x00", 3)})
                                               << 0 << "Sprite 0 doesn't decode: a copy reaches before the start of the picture.";
    QTest::addRow("LZ5 control alone") << withSprite(SpritePixels{4, 1, 1, 3, QByteArray("\x00", 1)})
                                       << 0 << "Sprite 0 doesn't decode: the stream ends inside a packet.";
    QTest::addRow("LZ5 long run cut") << withSprite(SpritePixels{9, 1, 1, 3, QByteArray("\x00\x02", 2)})
                                      << 0 << "Sprite 0 doesn't decode: the stream ends inside a packet.";
}

void SpriteContainerTest::damagedStreamOnFirstUse()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, sprite);
    QFETCH(QString, message);
    // The reader that leaves streams to their first use takes the file, and checks none.
    SpriteContainerData data;
    QString reason;
    QVERIFY2(readSpriteContainer(bytes, data, reason, StreamCheck::OnFirstUse), qPrintable(reason));
    const SpritePixels &stored = data.sprites.first().pixels;
    QCOMPARE(int(stored.check), int(SpritePixels::Unchecked));

    Held<SpriteContainer> sprites(new SpriteContainer);
    sprites->add(QPoint(4, 4), trueColour(3, 3), Archive::NoShare);
    QVERIFY(sprites->fromBytes(bytes));
    Messages *messages = sprites->fileMessages();
    QCOMPARE(messages->count(Message::All), 0u);
    // What the file says of the sprite is there without its pixels.
    QCOMPARE(sprites->at(uint(sprite))->imageProperties().size(), QSize(stored.width, stored.height));
    QVERIFY(!sprites->at(uint(sprite))->isEmpty());

    QVERIFY(sprites->at(uint(sprite))->image().isNull());
    QCOMPARE(messages->count(Message::Error), 1u);
    QCOMPARE(messages->at(0, Message::Error).text, message);
    // Asked again, through any sprite of the stream: no second message.
    for (uint i = 0; i < sprites->count(); ++i)
        QVERIFY(sprites->at(i)->image().isNull());
    QCOMPARE(messages->count(Message::All), 1u);
    // Nothing of the file is lost, and nothing changed.
    QVERIFY(!sprites->isModified());
    QCOMPARE(sprites->toBytes(), bytes);
    // The reader that checks every stream at once refuses the file with the same reason.
    SpriteContainerData checked;
    QVERIFY(!readSpriteContainer(bytes, checked, reason));
    QCOMPARE(reason, QString(message).replace(QLatin1String("Sprite 1"), QLatin1String("Sprite 0")));
    QVERIFY(checked.sprites.isEmpty());
    // A file read again starts with no messages.
    QVERIFY(sprites->fromBytes(writeSpriteContainer(smallData())));
    QCOMPARE(messages->count(Message::All), 0u);
}

void SpriteContainerTest::damagedStreamLosesItsPalette()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    const QByteArray bytes = patched(writeSpriteContainer(smallData()), 40, "\3");
    QVERIFY(sprites->fromBytes(bytes));
    // The palette goes: the damaged sprite can't keep its looks, it turns transparent at its size.
    sprites->palettes()->remove(0);
    QCOMPARE(sprites->fileMessages()->count(Message::Error), 1u);
    const QImage picture = sprites->at(0)->image();
    QCOMPARE(picture.size(), QSize(3, 2));
    QCOMPARE(picture.format(), QImage::Format_ARGB32);
    QCOMPARE(picture.pixel(1, 1), 0u);
    sprites->undo();
    QCOMPARE(sprites->toBytes(), bytes);
}

void SpriteContainerTest::badFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    Held<SpriteContainer> sprites(new SpriteContainer);
    sprites->add(QPoint(4, 4), trueColour(3, 3), Archive::NoShare);
    const QByteArray before = sprites->toBytes();
    QVERIFY(!sprites->fromBytes(bytes));
    QCOMPARE(sprites->toBytes(), before); // the container as it was
    QVERIFY(sprites->isModified());
    QCOMPARE(sprites->fileMessages()->count(Message::Error), 1u);
    QCOMPARE(sprites->fileMessages()->at(0, Message::Error).text, message);
    SpriteContainerData data;
    QString reason;
    QVERIFY(!readSpriteContainer(bytes, data, reason));
    QVERIFY(data.sprites.isEmpty());
}

void SpriteContainerTest::models()
{
    Held<SpriteContainer> sprites(new SpriteContainer);
    QCOMPARE(sprites->model(), static_cast<QAbstractItemModel *>(sprites.get()));
    QAbstractItemModelTester spriteTester(sprites.get());
    QAbstractItemModelTester paletteTester(sprites->palettes());
    QSignalSpy inserted(sprites.get(), &QAbstractItemModel::rowsInserted);
    QSignalSpy paletteRows(sprites->palettes(), &QAbstractItemModel::rowsInserted);
    QSignalSpy dataChanged(sprites.get(), &QAbstractItemModel::dataChanged);
    const QImage picture = indexed(5, 5, [](int x, int y) { return x * y % 3; }, palette(1));
    for (int i = 0; i < 4; ++i)
        sprites->add(QPoint(i, 3 - i), picture, Archive::NoShare);
    QCOMPARE(inserted.count(), 4);
    QCOMPARE(paletteRows.count(), 1);
    sprites->at(2)->setAxis(QPoint(1, 1));
    QCOMPARE(dataChanged.count(), 1);
    QCOMPARE(dataChanged.last().first().toModelIndex().row(), 2);
    sprites->move(0, 3);
    sprites->move(3, 1);
    sprites->at(0)->duplicate();
    sprites->palettes()->add(nullptr, QPoint(1, 1), Archive::NoShare);
    sprites->palettes()->move(0, 1);
    sprites->autoOrganize();
    sprites->palettes()->autoOrganize();
    sprites->undo();
    sprites->remove(1);
    sprites->palettes()->removeDuplicates();
    sprites->palettes()->clear();
    sprites->undo();
    sprites->redo();
    sprites->clear();
    QCOMPARE(sprites->rowCount(), 0);
    QVERIFY(!sprites->data(sprites->index(0), Qt::DisplayRole).isValid());
}

void SpriteContainerTest::files()
{
    QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("sprites/people.osp"));
    Held<SpriteContainer> sprites(new SpriteContainer);
    QCOMPARE(QByteArray(sprites->fileExtension()), QByteArray("osp"));
    sprites->add(QPoint(0, 0), trueColour(4, 4), Archive::NoShare);
    QVERIFY(sprites->toFile(FileSystemArchive::instance(), name, 0, nullptr));
    QVERIFY(!sprites->isModified());
    QCOMPARE(sprites->fileName(), name);
    Held<SpriteContainer> back(new SpriteContainer);
    QVERIFY(back->fromFile(FileSystemArchive::instance(), name, 0, nullptr));
    QCOMPARE(back->toBytes(), sprites->toBytes());
    QVERIFY(!back->fromFile(FileSystemArchive::instance(), directory.filePath(QStringLiteral("none.osp")), 0, nullptr));
    QCOMPARE(back->count(), 1u);
    QCOMPARE(back->fileMessages()->count(Message::Error), 1u);
}

QTEST_MAIN(SpriteContainerTest)
#include "tst_spritecontainer.moc"
