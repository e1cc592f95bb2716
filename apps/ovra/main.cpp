// The command-line tool. For now it reports the library's version and checks that
// the library it loaded computes its checksums correctly.
#include "foundation/utilities.h"

#include <QCoreApplication>
#include <QTextStream>

namespace {

// The definition, one bit at a time: what the table-driven CRC-64 must agree with.
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

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("ovra"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(Ovra::version()));

    QTextStream out(stdout);
    out << "ovra " << Ovra::version() << '\n';

    // CRC-32 keeps its register without the final inversion, so the check string gives
    // the complement of the well-known check value; CRC-64 is held to its definition.
    QByteArray vector("123456789");
    const quint32 crc32 = Ovra::CRC32(vector.constData(), vector.size());
    const quint64 crc64 = Ovra::CRC64(reinterpret_cast<uchar *>(vector.data()), uint(vector.size()));
    const bool ok = crc32 == ~0xCBF43926u && crc64 == bitwiseCrc64(vector);
    out << QStringLiteral("self-check: CRC32(\"123456789\") = 0x%1, CRC64 = 0x%2: %3\n")
               .arg(crc32, 8, 16, QLatin1Char('0'))
               .arg(crc64, 16, 16, QLatin1Char('0'))
               .arg(ok ? QStringLiteral("ok") : QStringLiteral("FAILED"));
    return ok ? 0 : 1;
}
