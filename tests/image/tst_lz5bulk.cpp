// The bulk LZ5 decoder against the careful loop: on every path this processor has, for
// streams built packet by packet and random bytes, cut at any length and decoded into
// pictures of many sizes, the result, every byte of the picture and the bytes read agree.
#include "image/spritecompression.h"
#include "image/spritecompression_lz5bulk_p.h"

#include <QBuffer>
#include <QImage>
#include <QRandomGenerator>
#include <QtTest>

#include "decodepaths.h"

#include <vector>

using namespace Ovra;

namespace {

// Writes packets as the decoder reads them, keeping count of the pixels they stand for.
class StreamBuilder
{
public:
    QByteArray stream;
    int pixels = 0;

    void run(int colour, int length) // 1..263
    {
        begin(false);
        if (length < 8) {
            stream.append(char((length << 5) | (colour & 0x1F)));
        } else {
            stream.append(char(colour & 0x1F)).append(char(length - 8));
        }
        pixels += length;
    }
    void longCopy(int distance, int length) // 1..1024, 3..258
    {
        begin(true);
        stream.append(char(((distance - 1) >> 2) & 0xC0)).append(char(distance - 1)).append(char(length - 3));
        pixels += length;
    }
    // 1..256, 2..64. The fourth of a group has its distance spread over the group's first
    // bytes, which are mended here.
    void shortCopy(int distance, int length)
    {
        begin(true);
        m_shortAt[m_shorts] = stream.size();
        stream.append(char(length - 1));
        if (++m_shorts < 4) {
            stream.append(char(distance - 1));
        } else {
            for (int k = 0; k < 4; ++k)
                stream[m_shortAt[k]] = char(stream.at(m_shortAt[k]) | (((distance - 1) >> (6 - 2 * k)) & 3) << 6);
            m_shorts = 0;
        }
        pixels += length;
    }

private:
    void begin(bool copy)
    {
        if (m_index == 0) {
            m_control = stream.size();
            stream.append('\0');
        }
        if (copy)
            stream[m_control] = char(stream.at(m_control) | (1 << m_index));
        m_index = (m_index + 1) & 7;
    }
    int m_index = 0;
    int m_control = 0;
    int m_shorts = 0;
    int m_shortAt[4] = {};
};

// A distance for a copy at `pixels`: often overlapping (1..16), sometimes reaching exactly back
// to the picture's start, otherwise anywhere allowed.
int distanceFor(QRandomGenerator &random, int pixels, int farthest)
{
    const int limit = qMin(pixels, farthest);
    const int kind = random.bounded(4);
    if (kind == 0)
        return 1 + random.bounded(qMin(limit, 16));
    if (kind == 1 && pixels <= farthest)
        return pixels;
    return 1 + random.bounded(limit);
}

// Packets of every kind, mostly a few pixels long as in textured sprites, up to `pixels`.
// `shortCopies` in ten packets at least are short copies, so that groups of eight hold none,
// one or two fourths of a group of four.
QByteArray builtStream(quint32 seed, int pixels, int shortCopies = 3)
{
    QRandomGenerator random(seed);
    StreamBuilder out;
    out.run(random.bounded(32), 1 + random.bounded(7));
    while (out.pixels < pixels) {
        if (random.bounded(10) < shortCopies - 3) {
            out.shortCopy(distanceFor(random, out.pixels, 256), 2 + random.bounded(random.bounded(2) ? 8 : 63));
            continue;
        }
        const int kind = random.bounded(10);
        if (kind < 5)
            out.run(random.bounded(32), 1 + random.bounded(7));
        else if (kind == 5)
            out.run(random.bounded(32), 8 + random.bounded(random.bounded(2) ? 24 : 256));
        else if (kind < 9)
            out.shortCopy(distanceFor(random, out.pixels, 256), 2 + random.bounded(random.bounded(2) ? 8 : 63));
        else
            out.longCopy(distanceFor(random, out.pixels, 1024), 3 + random.bounded(256));
    }
    return out.stream;
}

QByteArray randomBytes(quint32 seed, int size)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

QString pathsDisagree(const QByteArray &stream, int width, int height)
{
    return pathsDisagree(loadLZ5Using, stream, width, height);
}

} // namespace

class Lz5BulkTest : public QObject
{
    Q_OBJECT

private slots:
    void builtStreams_data();
    void builtStreams();
    void randomStreams();
    void cutStreams();
    void pictureEnds();
    void bulkStaysInside_data();
    void bulkStaysInside();
    void sprites();
};

void Lz5BulkTest::builtStreams_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<int>("shortCopies");
    for (quint32 seed = 1; seed <= 24; ++seed)
        QTest::addRow("seed %u", seed) << seed << int(200 + seed * seed * 97) << 3;
    // Groups of eight packets with several fourths of a group of four short copies in them.
    for (quint32 seed = 31; seed <= 36; ++seed)
        QTest::addRow("short copies, seed %u", seed) << seed << int(20000 + seed * 311) << int(seed - 25);
}

void Lz5BulkTest::builtStreams()
{
    QFETCH(quint32, seed);
    QFETCH(int, pixels);
    QFETCH(int, shortCopies);
    const QByteArray stream = builtStream(seed, pixels, shortCopies);
    // The whole stream, and pictures that end before it or are left short by it; odd widths
    // give padded rows, decoded through a buffer of their own.
    const QSize sizes[] = {{pixels, 1}, {pixels / 3, 3}, {pixels / 7 + 1, 7}, {pixels / 5 + 40, 5}, {61, pixels / 61}};
    for (const QSize &size : sizes)
        QVERIFY2(pathsDisagree(stream, size.width(), size.height()).isEmpty(),
                 qPrintable(pathsDisagree(stream, size.width(), size.height())));
}

void Lz5BulkTest::randomStreams()
{
    // Random bytes mostly copy from before the start soon; a stream whose every control byte
    // says "run" gets far, and a stream of copies with the control bytes cleared of some.
    for (quint32 seed = 1; seed <= 150; ++seed) {
        QByteArray stream = randomBytes(seed, 64 + int(seed) * 23);
        if (seed % 3 == 1) {
            for (int i = 0; i < stream.size(); i += 9)
                stream[i] = char(stream.at(i) & (seed % 2 ? 0 : 0x80));
        }
        const QString disagree = pathsDisagree(stream, 100 + int(seed) * 13, 3);
        QVERIFY2(disagree.isEmpty(), qPrintable(QStringLiteral("seed %1: ").arg(seed) + disagree));
    }
}

void Lz5BulkTest::cutStreams()
{
    // Ending at every byte: inside packets, at control bytes, near the bulk's margins.
    for (const QByteArray &stream : {builtStream(77, 6000), builtStream(78, 6000, 10)}) {
        for (int size = 0; size <= stream.size(); ++size) {
            const QString disagree = pathsDisagree(stream.left(size), 100, 60);
            QVERIFY2(disagree.isEmpty(), qPrintable(disagree));
        }
    }
}

void Lz5BulkTest::pictureEnds()
{
    // Pictures ending at every pixel around the sizes where the bulk has to hand over.
    const QByteArray stream = builtStream(5, 5000);
    for (int pixels = 1; pixels < 1400; pixels += (pixels < 700 ? 1 : 7)) {
        const QString disagree = pathsDisagree(stream, pixels, 1);
        QVERIFY2(disagree.isEmpty(), qPrintable(disagree));
    }
}

void Lz5BulkTest::bulkStaysInside_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<int>("pixels");
    QTest::addRow("built") << builtStream(11, 40000) << 40000;
    QTest::addRow("built, short picture") << builtStream(12, 40000) << 3000;
    QTest::addRow("built, short copies") << builtStream(13, 40000, 9) << 40000;
    QTest::addRow("runs") << QByteArray(3000, '\0') << 100000;
    QTest::addRow("random") << randomBytes(3, 4000) << 4000;
}

// The bulk alone writes nothing at or past the picture's end, reads only its own copy of the
// stream (the sanitized build watches that), and on long streams gets near an end.
void Lz5BulkTest::bulkStaysInside()
{
    QFETCH(QByteArray, stream);
    QFETCH(int, pixels);
    const std::vector<uchar> bytes(stream.begin(), stream.end());
    for (DecodePath path : {DecodePath::Portable, DecodePath::Avx2, DecodePath::Avx512}) {
        if (!decodePathAvailable(path))
            continue;
        std::vector<uchar> output(size_t(pixels) + 64, 0x5A);
        Lz5Cursor cursor;
        cursor.p = bytes.data();
        cursor.end = bytes.data() + bytes.size();
        cursor.o = cursor.start = output.data();
        cursor.last = output.data() + pixels;
        SpriteBulk::decodeLz5(path, cursor);
        QVERIFY(cursor.p >= bytes.data() && cursor.p <= cursor.end);
        QVERIFY(cursor.o >= output.data() && cursor.o <= cursor.last);
        for (size_t k = size_t(pixels); k < output.size(); ++k)
            QCOMPARE(output[k], uchar(0x5A));
        if (QTest::currentDataTag() != QLatin1String("random"))
            QVERIFY(cursor.end - cursor.p < 25 + 32 || cursor.last - cursor.o < 288 + 263);
    }
}

void Lz5BulkTest::sprites()
{
    // Encoded pictures come back whole by the path loadLZ5 takes, and every path agrees.
    QRandomGenerator random(9);
    QImage image(300, 200, QImage::Format_Indexed8);
    image.setColorCount(256);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.scanLine(y)[x] = uchar((x / 5 + y / 7) % 24 + (random.bounded(6) == 0 ? random.bounded(8) : 0));
    for (bool lz : {false, true}) {
        QByteArray stream;
        QBuffer buffer(&stream);
        QVERIFY(saveLZ5(image, &buffer, lz));
        QImage back(image.size(), QImage::Format_Indexed8);
        QBuffer reading(&stream);
        QVERIFY(loadLZ5(back, &reading));
        QCOMPARE(reading.pos(), qint64(stream.size()));
        for (int y = 0; y < image.height(); ++y)
            QVERIFY(memcmp(back.constScanLine(y), image.constScanLine(y), size_t(image.width())) == 0);
        QVERIFY2(pathsDisagree(stream, 300, 200).isEmpty(), qPrintable(pathsDisagree(stream, 300, 200)));
    }
}

QTEST_GUILESS_MAIN(Lz5BulkTest)
#include "tst_lz5bulk.moc"
