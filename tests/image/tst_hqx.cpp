// hq2x, hq3x and hq4x against recorded outputs of the published filters, and the ways
// resizeImage reaches them. The recordings come from the folder the build names
// (OVRA_HQX_VECTORS); each file is a run of records: width, height, the source pixels and
// the N times larger output, all as little-endian 32-bit words.
#include "image/hqx_p.h"
#include "image/imagescaling.h"

#include <QtEndian>
#include <QtTest>

#include <vector>

using namespace Ovra;

namespace {

using Filter = void (*)(const quint32 *, quint32 *, int, int, int);

Filter filterOf(int scale)
{
    return scale == 2 ? hq2x : scale == 3 ? hq3x : hq4x;
}

struct Record
{
    int number = 0;
    QImage source;
    std::vector<quint32> expected; // (scale * width) x (scale * height), row by row
};

// Reads every record of one file, or says why it can't.
QString readRecords(const QString &path, int scale, QVector<Record> &records)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot open %1: %2").arg(path, file.errorString());
    const QByteArray bytes = file.readAll();
    const auto *p = reinterpret_cast<const uchar *>(bytes.constData());
    const qint64 words = bytes.size() / 4;
    if (bytes.size() % 4)
        return QStringLiteral("%1 is not a whole number of words").arg(path);
    qint64 at = 0;
    auto next = [&] { return qFromLittleEndian<quint32>(p + 4 * at++); };
    while (at < words) {
        Record record;
        record.number = records.size();
        if (words - at < 2)
            return QStringLiteral("%1 ends inside the size of record %2").arg(path).arg(record.number);
        const quint32 width = next();
        const quint32 height = next();
        if (width == 0 || height == 0 || width > 4096 || height > 4096)
            return QStringLiteral("record %1 of %2 has the size %3 x %4").arg(record.number).arg(path).arg(width).arg(height);
        const qint64 pixels = qint64(width) * height;
        if (words - at < pixels * (1 + scale * scale))
            return QStringLiteral("%1 ends inside record %2").arg(path).arg(record.number);
        record.source = QImage(int(width), int(height), QImage::Format_ARGB32);
        for (int y = 0; y < int(height); ++y) {
            for (int x = 0; x < int(width); ++x)
                reinterpret_cast<QRgb *>(record.source.scanLine(y))[x] = next();
        }
        record.expected.resize(size_t(pixels * scale * scale));
        for (quint32 &pixel : record.expected)
            pixel = next();
        records.append(record);
    }
    return QString();
}

// The first difference between an output and the record's expected pixels, or nothing.
QString firstDifference(const Record &record, const QImage &output, int scale)
{
    const int width = record.source.width() * scale;
    const int height = record.source.height() * scale;
    if (output.size() != QSize(width, height) || output.format() != QImage::Format_ARGB32)
        return QStringLiteral("record %1: an output of %2 x %3 in format %4")
            .arg(record.number)
            .arg(output.width())
            .arg(output.height())
            .arg(int(output.format()));
    for (int y = 0; y < height; ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(output.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            const quint32 expected = record.expected[size_t(y) * size_t(width) + size_t(x)];
            if (row[x] != expected)
                return QStringLiteral("record %1: output (%2, %3) of source pixel (%4, %5) is %6, not %7")
                    .arg(record.number)
                    .arg(x)
                    .arg(y)
                    .arg(x / scale)
                    .arg(y / scale)
                    .arg(row[x], 8, 16, QLatin1Char('0'))
                    .arg(expected, 8, 16, QLatin1Char('0'));
        }
    }
    return QString();
}

QImage picture(int width, int height, quint32 seed)
{
    // Few colours, so that edges, corners and flat runs all occur; one differs in alpha only.
    const QRgb colours[] = {0xFFE0E0E0, 0xFF202020, 0xFF20C020, 0x80E02020, 0x40E02020};
    QRandomGenerator random(seed);
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, colours[random.bounded(5)]);
    }
    return image;
}

// The filter run straight on a picture, into rows `padding` words longer than needed.
std::vector<quint32> run(int scale, const QImage &image, int padding)
{
    const int stride = scale * image.width() + padding;
    std::vector<quint32> target(size_t(stride) * size_t(scale * image.height()), 0xDEADBEEF);
    filterOf(scale)(reinterpret_cast<const quint32 *>(image.constBits()), target.data(), image.width(), image.height(),
                    stride * 4);
    return target;
}

QImage turned(const QImage &image)
{
    return image.transformed(QTransform().rotate(90));
}

void addScales()
{
    QTest::addColumn<int>("scale");
    for (int scale = 2; scale <= 4; ++scale)
        QTest::addRow("hq%dx", scale) << scale;
}

} // namespace

class HqxTest : public QObject
{
    Q_OBJECT

private slots:
    void matchesTheRecordedOutputs_data() { addScales(); }
    void matchesTheRecordedOutputs();
    void writesOnlyItsOwnPixels_data();
    void writesOnlyItsOwnPixels();
    void treatsEveryDirectionAlike_data() { addScales(); }
    void treatsEveryDirectionAlike();
    void factorChoosesTheFilter_data();
    void factorChoosesTheFilter();
};

void HqxTest::matchesTheRecordedOutputs()
{
    QFETCH(int, scale);
    const QString folder = QStringLiteral(OVRA_HQX_VECTORS);
    if (!QFileInfo(folder).isDir())
        QFAIL(qPrintable(QStringLiteral("the folder of recorded hq outputs is missing: %1 (set OVRA_HQX_VECTORS)").arg(folder)));
    QVector<Record> records;
    const QString error = readRecords(QStringLiteral("%1/hq%2x.vec").arg(folder).arg(scale), scale, records);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QCOMPARE(records.size(), 1314);

    // Exactly N times the size runs the filter alone, whichever filter finishes the job.
    RGBA palette[256];
    QStringList failures;
    for (const Record &record : qAsConst(records)) {
        const QSize size = record.source.size() * scale;
        for (ImageResizeFilter filter : {HqNearestFilter, HqBilinearFilter}) {
            const QString difference = firstDifference(record, resizeImage(record.source, size, palette, filter), scale);
            if (!difference.isEmpty()) {
                failures << QStringLiteral("filter %1, %2").arg(int(filter)).arg(difference);
                break;
            }
        }
    }
    for (const QString &failure : qAsConst(failures).mid(0, 20))
        qWarning("%s", qPrintable(failure));
    QVERIFY2(failures.isEmpty(), qPrintable(QStringLiteral("%1 of %2 records differ").arg(failures.size()).arg(records.size())));
}

void HqxTest::writesOnlyItsOwnPixels_data()
{
    QTest::addColumn<int>("scale");
    QTest::addColumn<QSize>("size");
    for (int scale = 2; scale <= 4; ++scale) {
        for (QSize size : {QSize(1, 1), QSize(1, 5), QSize(6, 1), QSize(7, 4)})
            QTest::addRow("hq%dx %dx%d", scale, size.width(), size.height()) << scale << size;
    }
}

void HqxTest::writesOnlyItsOwnPixels()
{
    QFETCH(int, scale);
    QFETCH(QSize, size);
    const QImage image = picture(size.width(), size.height(), quint32(size.width() * 31 + size.height()));
    const std::vector<quint32> tight = run(scale, image, 0);
    const std::vector<quint32> padded = run(scale, image, 3);
    const int width = scale * size.width();
    for (int y = 0; y < scale * size.height(); ++y) {
        for (int x = 0; x < width; ++x)
            QCOMPARE(padded[size_t(y) * size_t(width + 3) + size_t(x)], tight[size_t(y) * size_t(width) + size_t(x)]);
        for (int x = width; x < width + 3; ++x)
            QCOMPARE(padded[size_t(y) * size_t(width + 3) + size_t(x)], 0xDEADBEEFu);
    }
    QVERIFY(std::find(tight.begin(), tight.end(), 0xDEADBEEFu) == tight.end());

    // Nothing to enlarge leaves the target as it was.
    std::vector<quint32> untouched(16, 0xDEADBEEF);
    filterOf(scale)(reinterpret_cast<const quint32 *>(image.constBits()), untouched.data(), 0, 1, 64);
    filterOf(scale)(reinterpret_cast<const quint32 *>(image.constBits()), untouched.data(), 1, -1, 64);
    filterOf(scale)(nullptr, untouched.data(), 1, 1, 64);
    filterOf(scale)(reinterpret_cast<const quint32 *>(image.constBits()), untouched.data(), 1, 1, scale * 4 - 1);
    QCOMPARE(untouched, std::vector<quint32>(16, 0xDEADBEEF));
}

void HqxTest::treatsEveryDirectionAlike()
{
    // Turning the picture and enlarging it gives the enlargement turned.
    QFETCH(int, scale);
    RGBA palette[256];
    for (quint32 round = 0; round < 20; ++round) {
        const QImage image = picture(1 + int(round % 9), 1 + int(round * 7 % 8), round);
        const QSize size = image.size() * scale;
        const QImage once = resizeImage(turned(image), size.transposed(), palette, HqNearestFilter);
        const QImage other = turned(resizeImage(image, size, palette, HqNearestFilter));
        QCOMPARE(once, other);
    }
}

void HqxTest::factorChoosesTheFilter_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("scale");
    // From 7 x 5, by the larger of the two factors.
    QTest::addRow("halved") << QSize(3, 2) << 2;
    QTest::addRow("1.5x") << QSize(10, 8) << 2;
    QTest::addRow("exactly 2x") << QSize(14, 10) << 2;
    QTest::addRow("just above 2x") << QSize(15, 10) << 3;
    QTest::addRow("taller than wide") << QSize(7, 15) << 3;
    QTest::addRow("exactly 3x") << QSize(21, 15) << 3;
    QTest::addRow("just above 3x") << QSize(22, 10) << 4;
    QTest::addRow("exactly 4x") << QSize(28, 20) << 4;
    QTest::addRow("5x") << QSize(35, 25) << 4;
}

void HqxTest::factorChoosesTheFilter()
{
    QFETCH(QSize, size);
    QFETCH(int, scale);
    const QImage source = picture(7, 5, 3);
    QImage enlarged(source.size() * scale, QImage::Format_ARGB32);
    const std::vector<quint32> pixels = run(scale, source, 0);
    memcpy(enlarged.bits(), pixels.data(), pixels.size() * 4);
    RGBA palette[256];
    const bool exact = enlarged.size() == size;
    QCOMPARE(resizeImage(source, size, palette, HqNearestFilter), exact ? enlarged : resizeImageNearest(enlarged, size));
    QCOMPARE(resizeImage(source, size, palette, HqBilinearFilter),
             exact ? enlarged : resizeImageBilinear(enlarged, size, palette));
}

QTEST_GUILESS_MAIN(HqxTest)
#include "tst_hqx.moc"
