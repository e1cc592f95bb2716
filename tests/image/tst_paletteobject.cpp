#include "engine/extension.h"
#include "engine/extensionmanager.h"
#include "image/paletteobject.h"
#include "imagetestbytes.h"

#include <QBuffer>
#include <QDataStream>
#include <QSignalSpy>
#include <QtTest>

using namespace Ovra;
using ImageTestBytes::savedByName;

namespace {

// A palette with distinct entries: entry i is (i, 255 - i, i / 2), alpha 200.
void fillDistinct(RGBA (&table)[256])
{
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(i), quint8(255 - i), quint8(i / 2), 200);
}

using Entries = QVector<QPair<int, QRgb>>;

bool readFrom(PaletteObject &palette, QByteArray bytes, const char *format)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return palette.fromFile(&buffer, format);
}

QByteArray bigEndian(const std::function<void(QDataStream &)> &write)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::BigEndian);
    out.setFloatingPointPrecision(QDataStream::SinglePrecision);
    write(out);
    return bytes;
}

// Five colours: RGB, one of an unknown space, HSB, CMYK and grey.
QByteArray acoFile()
{
    return bigEndian([](QDataStream &out) {
        out << quint16(1) << quint16(5);
        out << quint16(0) << quint16(255 * 257) << quint16(128 * 257) << quint16(0) << quint16(0);
        out << quint16(7) << quint16(1) << quint16(2) << quint16(3) << quint16(4);
        out << quint16(1) << quint16(120 * 182.5487) << quint16(255 * 257) << quint16(255 * 257) << quint16(0);
        out << quint16(2) << quint16(65535) << quint16(0) << quint16(65535) << quint16(65535);
        out << quint16(8) << quint16(5000) << quint16(0) << quint16(0) << quint16(0);
    });
}

// A RIFF palette chunk of 256 entries (i, 0, 255 - i) whose size field counts 1028 bytes.
QByteArray riffFile()
{
    QByteArray riff("RIFF");
    const quint32 riffSize = 4 + 8 + 8 + 1024;
    riff.append(reinterpret_cast<const char *>(&riffSize), 4).append("PAL data");
    const quint32 chunkSize = 1028;
    riff.append(reinterpret_cast<const char *>(&chunkSize), 4).append("\x00\x03\x00\x01", 4);
    for (int i = 0; i < 256; ++i)
        riff.append(char(i)).append('\0').append(char(255 - i)).append('\0');
    return riff;
}

// 300 entries (i % 256, 1, 2), but for a line that isn't a colour and one out of range.
QByteArray jascFile()
{
    QByteArray jasc("JASC-PAL\r\n0100\r\n300\r\n");
    for (int i = 0; i < 300; ++i) {
        if (i == 2)
            jasc += "not a colour\r\n";
        else if (i == 3)
            jasc += "999 7 8 40\r\n";
        else
            jasc += QByteArray::number(i % 256) + " 1 2\r\n";
    }
    return jasc;
}

// In a group: RGB, LAB (passed over), grey, a block of unknown type, CMYK.
QByteArray aseFile()
{
    return bigEndian([](QDataStream &out) {
        out.writeRawData("ASEF", 4);
        out << quint16(1) << quint16(0) << quint32(7);
        out << quint16(0xC001) << quint32(10) << quint16(2) << quint16('G') << quint16(0);
        out << quint16(1) << quint32(0) << quint16(1) << quint16(0); // a colour with an empty name
        out.writeRawData("RGB ", 4);
        out << 1.0f << 0.5f << 0.0f << quint16(2);
        out << quint16(1) << quint32(0) << quint16(0);
        out.writeRawData("LAB ", 4);
        out << 0.1f << 0.2f << 0.3f << quint16(2);
        out << quint16(1) << quint32(0) << quint16(0);
        out.writeRawData("Gray", 4);
        out << 0.25f << quint16(2);
        out << quint16(0x1234) << quint32(3) << quint8(1) << quint8(2) << quint8(3);
        out << quint16(1) << quint32(0) << quint16(0);
        out.writeRawData("CMYK", 4);
        out << 0.0f << 0.0f << 0.0f << 1.0f << quint16(2);
        out << quint16(0xC002) << quint32(0) << quint16(0);
    });
}

class TextPaletteSaver : public PaletteSaverExtension
{
public:
    const char *format() const override { return "HEX"; }
    const char *name() const override { return "hex"; }
    bool save(QIODevice *device, const RGBA (&palette)[256]) override
    {
        return device->write(QByteArray(reinterpret_cast<const char *>(palette), 1024).toHex()) == 2048;
    }
};

class TextPaletteLoader : public PaletteLoaderExtension
{
public:
    const char *format() const override { return "HEX"; }
    const char *name() const override { return "hex"; }
    bool load(QIODevice *device, RGBA (&palette)[256]) override
    {
        const QByteArray bytes = QByteArray::fromHex(device->readAll());
        if (bytes.size() != 1024)
            return false;
        memcpy(palette, bytes.constData(), 1024);
        return true;
    }
};

} // namespace

class PaletteObjectTest : public QObject
{
    Q_OBJECT

private slots:
    void effects_data();
    void effects();
    void gradients();
    void colourOperations();
    void sortingAndSwitching();
    void nearestIndex();
    void act();
    void readFormats_data();
    void readFormats();
    void extensionsAndUnknownFormats();
};

void PaletteObjectTest::effects_data()
{
    QTest::addColumn<int>("effect");
    QTest::addColumn<QColor>("result");
    // The entry (200, 100, 30, 77); avg 110.
    QTest::addRow("swap red blue") << 1 << QColor(30, 100, 200, 77);
    QTest::addRow("swap green blue") << 2 << QColor(200, 30, 100, 77);
    QTest::addRow("swap red green") << 3 << QColor(100, 200, 30, 77);
    QTest::addRow("swap blue green") << 4 << QColor(200, 30, 100, 77);
    QTest::addRow("swap green red") << 5 << QColor(100, 200, 30, 77);
    QTest::addRow("swap blue red") << 6 << QColor(30, 100, 200, 77);
    QTest::addRow("lighter") << 7 << QColor(232, 132, 62, 77);
    QTest::addRow("darker") << 8 << QColor(168, 68, 0, 77);
    QTest::addRow("gray scale") << 9 << QColor(110, 110, 110, 77);
    QTest::addRow("warm") << 10 << QColor(210, 55, 0, 77);
    QTest::addRow("cool") << 11 << QColor(87, 0, 115, 77);
    QTest::addRow("contrast") << 12 << QColor(160, 160, 160, 77);
    QTest::addRow("much lighter") << 13 << QColor(255, 228, 158, 77);
    QTest::addRow("much darker") << 14 << QColor(72, 0, 0, 77);
    QTest::addRow("none") << 0 << QColor(200, 100, 30, 77);
    QTest::addRow("past the table") << 15 << QColor(200, 100, 30, 77);
}

void PaletteObjectTest::effects()
{
    QFETCH(int, effect);
    QFETCH(QColor, result);
    RGBA table[256];
    for (RGBA &entry : table)
        entry = RGBA(200, 100, 30, 77);
    PaletteObject palette(&table);
    QSignalSpy changing(&palette, &PaletteObject::changing);
    QSignalSpy changed(&palette, &PaletteObject::changed);
    bool selection[256] = {};
    selection[5] = true;
    palette.applyEffect(RGBPaletteEffect(effect), selection);
    QCOMPARE(palette.colorAt(5), result);
    QCOMPARE(palette.colorAt(6), QColor(200, 100, 30, 77)); // not selected
    QCOMPARE(changing.count(), 1);
    QCOMPARE(changed.count(), 1);
}

void PaletteObjectTest::gradients()
{
    RGBA table[256];
    fillDistinct(table);
    PaletteObject palette(&table);
    bool selection[256] = {};
    selection[3] = selection[10] = selection[20] = true;
    palette.gradient(selection, RGBA(0, 0, 0, 0), RGBA(100, 200, 50, 255));
    QCOMPARE(palette.at(3), RGBA(0, 0, 0, 0));
    QCOMPARE(palette.at(10), RGBA(50, 100, 25, 127));
    QCOMPARE(palette.at(20), RGBA(100, 200, 50, 255));
    // A selection of one entry gets the first colour.
    bool one[256] = {};
    one[40] = true;
    palette.gradient(one, RGBA(9, 9, 9, 9), RGBA(1, 1, 1, 1));
    QCOMPARE(palette.at(40), RGBA(9, 9, 9, 9));
    // With indices: the count only, from entry 0 on.
    fillDistinct(table);
    palette.gradient(10, RGBA(0, 0, 0, 255), 20, RGBA(90, 90, 90, 255));
    QCOMPARE(palette.at(0), RGBA(0, 0, 0, 255));
    QCOMPARE(palette.at(9), RGBA(90, 90, 90, 255));
    QCOMPARE(palette.at(10), RGBA(10, 245, 5, 200));
    palette.gradient(20, RGBA(), 20, RGBA()); // no count: nothing
    QCOMPARE(palette.at(0), RGBA(0, 0, 0, 255));
}

void PaletteObjectTest::colourOperations()
{
    RGBA table[256];
    fillDistinct(table);
    PaletteObject palette(&table);
    QSignalSpy changed(&palette, &PaletteObject::changed);
    palette.addRGB(nullptr, 100, -100, 0);
    QCOMPARE(palette.at(200), RGBA(255, 0, 100, 200));
    QCOMPARE(palette.at(10), RGBA(110, 145, 5, 200));
    // Hue and saturation make every entry opaque, the transparent one too.
    table[0] = RGBA(10, 20, 30, 0);
    palette.addHueSaturation(nullptr, 0, 0);
    QCOMPARE(palette.at(0).alpha, quint8(255));
    QCOMPARE(palette.colorAt(0).toHsl().hslHue(), QColor(10, 20, 30).toHsl().hslHue());

    // New colours fill the table from its end; present ones are passed over.
    fillDistinct(table);
    RGBA colours[256];
    std::copy(std::begin(table), std::end(table), colours);
    colours[1] = RGBA(1, 2, 3, 4);
    colours[7] = RGBA(5, 6, 7, 8);
    palette.addColors(colours);
    QCOMPARE(palette.at(255), RGBA(1, 2, 3, 4));
    QCOMPARE(palette.at(254), RGBA(5, 6, 7, 8));
    // The table is searched as it stands: entries overwritten on the way count as new.
    QCOMPARE(palette.at(253), RGBA(254, 1, 127, 200));
    QCOMPARE(palette.at(252), RGBA(255, 0, 127, 200));

    // 256 equal entries: 1..254 become the colour, 0 and 255 stay.
    for (RGBA &entry : table)
        entry = RGBA(4, 4, 4, 4);
    palette.clearDuplicated(RGB(9, 8, 7));
    QCOMPARE(palette.at(0), RGBA(4, 4, 4, 4));
    QCOMPARE(palette.at(1), RGBA(9, 8, 7, 255));
    QCOMPARE(palette.at(254), RGBA(9, 8, 7, 255));
    QCOMPARE(palette.at(255), RGBA(4, 4, 4, 4));

    // Copies out, and clearing, say nothing.
    const int before = changed.count();
    RGBA copy[256];
    palette.toPalette(copy);
    palette.empty();
    QCOMPARE(palette.at(255), RGBA());
    QCOMPARE(changed.count(), before);
    palette.fromPalette(copy);
    QCOMPARE(palette.at(1), RGBA(9, 8, 7, 255));
    QCOMPARE(changed.count(), before + 1);
    // One entry, or the selected ones only, each change announced.
    palette.setColor(3, RGBA(1, 1, 1, 1));
    bool selection[256] = {};
    selection[4] = true;
    palette.setColor(selection, RGBA(2, 2, 2, 2));
    QCOMPARE(palette[3], RGBA(1, 1, 1, 1));
    QCOMPARE(palette[4], RGBA(2, 2, 2, 2));
    QCOMPARE(palette[5], RGBA(9, 8, 7, 255));
    QCOMPARE(changed.count(), before + 3);
}

void PaletteObjectTest::sortingAndSwitching()
{
    RGBA table[256];
    for (int i = 0; i < 256; ++i)
        table[i] = RGBA(quint8(255 - i), 0, 0, quint8(i));
    table[0] = RGBA(0, 0, 0, 0);
    PaletteObject palette(&table);
    palette.sortByTones();
    // Nearest to black first: the reds climb from 0 up.
    QCOMPARE(palette.at(0), RGBA(0, 0, 0, 0));
    QCOMPARE(palette.at(1), RGBA(0, 0, 0, 255));
    QCOMPARE(palette.at(2), RGBA(1, 0, 0, 254));
    QCOMPARE(palette.at(255), RGBA(254, 0, 0, 1));

    fillDistinct(table);
    table[0].alpha = 0;
    palette.switchColors(nullptr, true);
    QCOMPARE(palette.at(0), RGBA(255, 0, 127, 0)); // the alpha of 0 stays at 0
    QCOMPARE(palette.at(255), RGBA(0, 255, 0, 200));
    QCOMPARE(palette.at(100), RGBA(155, 100, 77, 200));
    // A selection reverses only its entries.
    fillDistinct(table);
    bool selection[256] = {};
    selection[2] = selection[5] = selection[9] = true;
    palette.switchColors(selection, false);
    QCOMPARE(palette.at(2).red, quint8(9));
    QCOMPARE(palette.at(5).red, quint8(5));
    QCOMPARE(palette.at(9).red, quint8(2));
    QCOMPARE(palette.at(3).red, quint8(3));
}

void PaletteObjectTest::nearestIndex()
{
    RGBA table[256];
    for (RGBA &entry : table)
        entry = RGBA(200, 200, 200, 255);
    table[10] = RGBA(10, 10, 10, 255);
    table[11] = RGBA(10, 10, 10, 0);
    table[12] = RGBA(10, 10, 10, 100);
    PaletteObject palette(&table);
    // Equal colours: the alpha difference decides, compared signed but kept as a byte,
    // so a negative difference once kept loses to most that follow.
    QCOMPARE(int(palette.index(RGBA(10, 10, 10, 100))), 12);
    QCOMPARE(int(palette.index(RGBA(10, 10, 10, 255))), 12);
    QCOMPARE(int(palette.index(RGBA(10, 10, 10, 0))), 11);
    QCOMPARE(int(palette.index(RGBA(190, 190, 190, 255))), 0);
}

void PaletteObjectTest::act()
{
    RGBA table[256];
    fillDistinct(table);
    PaletteObject palette(&table);
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    QVERIFY(palette.toFile(&out, "ACT"));
    QCOMPARE(bytes.size(), 768);
    // Stored in reverse: the file's first entry is the table's last.
    QCOMPARE(bytes.left(3).toHex(), QByteArray("ff007f"));

    RGBA read[256] = {};
    PaletteObject loaded(&read);
    QSignalSpy changed(&loaded, &PaletteObject::changed);
    QVERIFY(readFrom(loaded, bytes, "ACT"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(loaded.at(0), RGBA(0, 255, 0, 0)); // index 0 transparent after a read
    for (int i = 1; i < 256; ++i)
        QCOMPARE(loaded.at(uchar(i)), RGBA(quint8(i), quint8(255 - i), quint8(i / 2), 255));
}

void PaletteObjectTest::readFormats_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<Entries>("entries"); // none: the file is refused

    QTest::addRow("act one byte short") << QByteArray(767, '\0') << QByteArray("ACT") << Entries();
    // Inverted ink: cyan 0, magenta full, yellow 0, black 0; grey 255 - round(5000 / 39.2157);
    // the rest starts opaque black.
    QTest::addRow("aco") << acoFile() << QByteArray("ACO")
                         << Entries{{0, qRgba(255, 128, 0, 0)}, {1, qRgb(0, 255, 0)}, {2, qRgb(255, 0, 255)},
                                    {3, qRgb(128, 128, 128)}, {4, qRgb(0, 0, 0)}};
    QTest::addRow("aco version 2") << bigEndian([](QDataStream &out) { out << quint16(2) << quint16(0); })
                                   << QByteArray("ACO") << Entries();
    // 1028 - 8 bytes: 255 entries, reversed; the file's last is dropped, its place black.
    QTest::addRow("riff") << riffFile() << QByteArray("PAL")
                          << Entries{{255, qRgb(0, 0, 255)}, {1, qRgb(254, 0, 1)}, {0, qRgba(0, 0, 0, 0)}};
    QTest::addRow("riff without its chunk") << riffFile().replace(12, 1, "x") << QByteArray("PAL") << Entries();
    // A line that doesn't read leaves its entry at zero; reading stops at 256.
    QTest::addRow("jasc") << jascFile() << QByteArray("PAL")
                          << Entries{{1, qRgb(1, 1, 2)}, {2, 0}, {3, qRgba(255, 7, 8, 40)}, {255, qRgb(255, 1, 2)}};
    QTest::addRow("jasc version 2") << QByteArray("JASC-PAL\r\n0200\r\n1\r\n1 2 3\r\n") << QByteArray("PAL") << Entries();
    // The table of a text format starts all zero.
    QTest::addRow("ase") << aseFile() << QByteArray("ASE")
                         << Entries{{0, qRgba(255, 128, 0, 0)}, {1, qRgb(64, 64, 64)}, {2, qRgb(0, 0, 0)}, {3, 0}};
    QTest::addRow("rows") << QByteArray("ROWS 3\nR:255, G:0, B:10\nnothing\nR: 1,G: 2,B: 3 A: 4\nR:300, G:1, B:1\n")
                          << QByteArray("TXT")
                          << Entries{{0, qRgba(255, 0, 10, 0)}, {1, qRgba(1, 2, 3, 4)}, {2, qRgb(255, 1, 1)}, {3, 0}};

    // Palettes of indexed pictures: 16 colours, entry 5 half transparent.
    QImage image(4, 4, QImage::Format_Indexed8);
    for (int i = 0; i < 16; ++i)
        image.setColor(i, qRgba(i * 10, i, 255 - i, i == 5 ? 100 : 255));
    image.fill(3);
    // PNG keeps the table with its alpha; the 240 missing entries are opaque black.
    QTest::addRow("png") << savedByName(image, "PNG") << QByteArray("PNG")
                         << Entries{{0, qRgba(0, 0, 255, 0)}, {5, qRgba(50, 5, 250, 100)}, {200, qRgb(0, 0, 0)}};
    // A true-colour picture has no palette to give.
    QTest::addRow("png true colour") << savedByName(image.convertToFormat(QImage::Format_RGB32), "PNG")
                                     << QByteArray("PNG") << Entries();
    // PCX, and BMP as Qt writes it, carry no alpha: everything read is opaque but entry 0.
    QTest::addRow("pcx") << savedByName(image, "PCX") << QByteArray("PCX")
                         << Entries{{0, qRgba(0, 0, 255, 0)}, {5, qRgb(50, 5, 250)}, {16, qRgb(0, 0, 0)}};
    QTest::addRow("bmp") << savedByName(image, "BMP") << QByteArray("BMP")
                         << Entries{{0, qRgba(0, 0, 255, 0)}, {5, qRgb(50, 5, 250)}, {15, qRgb(150, 15, 240)},
                                    {16, qRgb(0, 0, 0)}};
    // GIF through its own reader, a file of 256 colours.
    QImage full(2, 2, QImage::Format_Indexed8);
    for (int i = 0; i < 256; ++i)
        full.setColor(i, qRgb(i, 255 - i, i / 3));
    full.fill(7);
    QTest::addRow("gif") << savedByName(full, "GIF") << QByteArray("GIF")
                         << Entries{{0, qRgba(0, 255, 0, 0)}, {1, qRgb(1, 254, 0)}, {255, qRgb(255, 0, 85)}};
}

void PaletteObjectTest::readFormats()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, format);
    QFETCH(Entries, entries);
    QVERIFY(!file.isEmpty());
    RGBA table[256];
    fillDistinct(table);
    PaletteObject palette(&table);
    QSignalSpy changing(&palette, &PaletteObject::changing);
    QCOMPARE(readFrom(palette, file, format.constData()), !entries.isEmpty());
    QCOMPARE(changing.count(), entries.isEmpty() ? 0 : 1);
    if (entries.isEmpty()) {
        // Refused: the palette as it was.
        RGBA distinct[256];
        fillDistinct(distinct);
        for (int i = 0; i < 256; ++i)
            QCOMPARE(table[i], distinct[i]);
    }
    for (const auto &[index, colour] : qAsConst(entries))
        QCOMPARE(palette.at(uchar(index)), RGBA(colour));
}

void PaletteObjectTest::extensionsAndUnknownFormats()
{
    RGBA table[256];
    fillDistinct(table);
    PaletteObject palette(&table);
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    QVERIFY(!palette.toFile(&out, "HEX")); // nobody serves it yet
    QVERIFY(!readFrom(palette, QByteArray(1024, 'x'), "HEX"));
    TextPaletteSaver saver;
    TextPaletteLoader loader;
    ExtensionManager::add(&saver);
    ExtensionManager::add(&loader);
    QVERIFY(palette.toFile(&out, "HEX"));
    RGBA read[256] = {};
    PaletteObject loaded(&read);
    QVERIFY(readFrom(loaded, bytes, "HEX"));
    QCOMPARE(loaded.at(7), RGBA(7, 248, 3, 200));
    QCOMPARE(loaded.at(0).alpha, quint8(0));
    ExtensionManager::list(Extension::PaletteSaver).removeAll(&saver);
    ExtensionManager::list(Extension::PaletteLoader).removeAll(&loader);
    // A device that can't be read or written: false.
    QBuffer closed;
    QVERIFY(!palette.fromFile(&closed, "ACT"));
    QVERIFY(!palette.toFile(&closed, "ACT"));
}

QTEST_MAIN(PaletteObjectTest)
#include "tst_paletteobject.moc"
