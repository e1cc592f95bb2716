#include "foundation/utilities.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace Ovra;

namespace {

// The definitions, one bit at a time: what the sliced tables must reproduce exactly.
quint32 bitwiseCrc32(const QByteArray &data)
{
    quint32 crc = 0xFFFFFFFFu;
    for (const char c : data) {
        crc ^= uchar(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? (crc >> 1) ^ 0xEDB88320u : crc >> 1;
    }
    return crc;
}

quint64 bitwiseCrc64(const QByteArray &data)
{
    quint64 crc = ~quint64(0);
    for (const char c : data) {
        crc ^= uchar(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? (crc >> 1) ^ 0x95AC9329AC4BC9B5ull : crc >> 1;
    }
    return crc;
}

quint64 crc64(QByteArray data)
{
    return CRC64(reinterpret_cast<uchar *>(data.data()), uint(data.size()));
}

// A device that can't seek, like a pipe: what was read is gone.
class Pipe : public QIODevice
{
public:
    explicit Pipe(const QByteArray &data) : m_data(data) { open(QIODevice::ReadOnly); }
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return m_data.size() + QIODevice::bytesAvailable(); }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 size = qMin<qint64>(maxSize, m_data.size());
        memcpy(data, m_data.constData(), size_t(size));
        m_data.remove(0, int(size));
        return size;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_data;
};

} // namespace

class UtilitiesTest : public QObject
{
    Q_OBJECT

private slots:
    void crcKnownValues();
    void crcMatchesDefinition_data();
    void crcMatchesDefinition();
    void crcUnalignedStart();
    void randomString_data();
    void randomString();
    void fileExtension_data();
    void fileExtension();
    void skipRead_data();
    void skipRead();
};

void UtilitiesTest::crcKnownValues()
{
    QCOMPARE(CRC32("", 0), 0xFFFFFFFFu);
    QCOMPARE(CRC32(nullptr, 0), 0xFFFFFFFFu);
    // No final inversion: the check string gives the complement of 0xCBF43926.
    QCOMPARE(CRC32("123456789", 9), ~0xCBF43926u);
    QCOMPARE(crc64(QByteArray()), ~quint64(0));
    QCOMPARE(crc64("123456789"), 0xCAA717168609F281ull);
}

void UtilitiesTest::crcMatchesDefinition_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("one byte") << QByteArray(1, '\xA5');
    QTest::newRow("seven bytes, tail only") << QByteArray("ovra123");
    QTest::newRow("eight bytes, one slice") << QByteArray("ovra1234");
    QTest::newRow("nine bytes, slice and tail") << QByteArray("ovra12345");
    QTest::newRow("all zero bytes") << QByteArray(4096, '\0');
    QTest::newRow("all ones bytes") << QByteArray(1000, '\xFF');
    // Long buffers are folded 64 bytes at a time and finished through the tables: cover
    // the edges of the folded part and of the tail.
    QByteArray noise(100003, Qt::Uninitialized);
    QRandomGenerator generator(20261122);
    for (char &c : noise)
        c = char(generator.bounded(256));
    for (int size : {255, 256, 257, 319, 320, 383, 1024, 4099})
        QTest::addRow("%d random bytes", size) << noise.left(size);
    QTest::newRow("100003 random bytes") << noise;
}

void UtilitiesTest::crcMatchesDefinition()
{
    QFETCH(QByteArray, data);
    QCOMPARE(CRC32(data.constData(), data.size()), bitwiseCrc32(data));
    QCOMPARE(crc64(data), bitwiseCrc64(data));
}

void UtilitiesTest::crcUnalignedStart()
{
    // Callers hand in pointers into the middle of larger buffers.
    QByteArray data = QByteArray("xyz") + QByteArray(61, 'q') + "end";
    for (int i = 0; i < 600; ++i)
        data += char(i * 13);
    for (int offset = 0; offset < 3; ++offset) {
        const QByteArray part = data.mid(offset);
        QCOMPARE(CRC32(data.constData() + offset, part.size()), bitwiseCrc32(part));
        QCOMPARE(crc64(part), bitwiseCrc64(part));
    }
}

void UtilitiesTest::randomString_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("expected");
    QTest::newRow("negative") << -3 << 0;
    QTest::newRow("zero") << 0 << 0;
    QTest::newRow("one") << 1 << 1;
    QTest::newRow("temporary suffix") << 6 << 6;
    QTest::newRow("long") << 500 << 500;
}

void UtilitiesTest::randomString()
{
    QFETCH(int, length);
    QFETCH(int, expected);
    const QString text = Ovra::randomString(length);
    QCOMPARE(text.size(), expected);
    static const QRegularExpression alphanumeric(QStringLiteral("^[A-Za-z0-9]*$"));
    QVERIFY2(alphanumeric.match(text).hasMatch(), qPrintable(text));
    if (length >= 500) {
        // Long strings use more than a handful of the 62 characters.
        QSet<QChar> seen;
        for (QChar c : text)
            seen.insert(c);
        QVERIFY(seen.size() > 40);
    }
}

void UtilitiesTest::fileExtension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("extension");
    QTest::newRow("double suffix") << "a.tar.gz" << QByteArray("GZ");
    QTest::newRow("no suffix") << "name" << QByteArray();
    QTest::newRow("mixed case") << "sprite.Png" << QByteArray("PNG");
    QTest::newRow("path with dots") << "/a.b/c/sound.wav" << QByteArray("WAV");
    QTest::newRow("trailing dot") << "file." << QByteArray();
    QTest::newRow("hidden file") << ".config" << QByteArray("CONFIG");
}

void UtilitiesTest::fileExtension()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, extension);
    QCOMPARE(Ovra::fileExtension(name), extension);
}

void UtilitiesTest::skipRead_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<uint>("count");
    QTest::addColumn<qint64>("position");
    QTest::newRow("nothing") << 10 << 0u << qint64(0);
    QTest::newRow("within one piece") << 1000 << 100u << qint64(100);
    QTest::newRow("several pieces") << 1000 << 777u << qint64(777);
    QTest::newRow("exactly to the end") << 512 << 512u << qint64(512);
    QTest::newRow("past the end") << 300 << 5000u << qint64(300);
}

void UtilitiesTest::skipRead()
{
    QFETCH(int, size);
    QFETCH(uint, count);
    QFETCH(qint64, position);
    QByteArray data(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        data[i] = char(i * 7);
    Pipe device(data);
    Ovra::skipRead(&device, count);
    QCOMPARE(device.readAll(), data.mid(int(position)));
}

QTEST_GUILESS_MAIN(UtilitiesTest)
#include "tst_utilities.moc"
