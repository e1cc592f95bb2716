#include "soundbankformat.h"

#include <QDataStream>

#include <cstring>

namespace {

constexpr char Magic[4] = {'O', 'V', 'S', 'B'};
constexpr quint16 Version = 1;
constexpr int HeaderSize = 12;
constexpr int EntryHeaderSize = 16;

} // namespace

QByteArray writeSoundBank(const QList<SoundBankEntry> &entries)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData(Magic, 4);
    out << Version << quint16(0) << quint32(entries.size());
    for (const SoundBankEntry &entry : entries) {
        out << entry.group << entry.number << entry.codec << quint8(0) << quint16(0) << quint32(entry.bytes.size());
        out.writeRawData(entry.bytes.constData(), entry.bytes.size());
    }
    return bytes;
}

bool readSoundBank(const QByteArray &bytes, QList<SoundBankEntry> &entries, QString &reason)
{
    const QString cutShort = QStringLiteral("The sound bank is cut short.");
    auto refuse = [&reason](const QString &why) {
        reason = why;
        return false;
    };
    if (bytes.size() < HeaderSize)
        return refuse(cutShort);
    if (memcmp(bytes.constData(), Magic, 4) != 0)
        return refuse(QStringLiteral("This is not a sound bank."));
    QDataStream in(bytes);
    in.setByteOrder(QDataStream::LittleEndian);
    in.skipRawData(4);
    quint16 version = 0;
    quint16 reserved = 0;
    quint32 count = 0;
    in >> version >> reserved >> count;
    if (version != Version)
        return refuse(QStringLiteral("Sound bank version %1 is unknown.").arg(version));
    // Reserved bytes are written as zero and read only as zero, so that a bank read and
    // written again is the same file.
    const QString reservedSet = QStringLiteral("The sound bank has reserved bytes that aren't zero.");
    if (reserved != 0)
        return refuse(reservedSet);
    // Every entry takes its header at least: a count the bytes can't hold is a cut file.
    if (qint64(count) * EntryHeaderSize > bytes.size() - HeaderSize)
        return refuse(cutShort);
    QList<SoundBankEntry> read;
    qint64 at = HeaderSize;
    for (quint32 i = 0; i < count; ++i) {
        SoundBankEntry entry;
        quint32 length = 0;
        quint8 pad = 0;
        quint16 pad2 = 0;
        in >> entry.group >> entry.number >> entry.codec >> pad >> pad2 >> length;
        at += EntryHeaderSize;
        if (in.status() != QDataStream::Ok)
            return refuse(cutShort);
        if (pad != 0 || pad2 != 0)
            return refuse(reservedSet);
        if (entry.codec < 1 || entry.codec > 3)
            return refuse(QStringLiteral("Sound %1 has an unknown codec (%2).").arg(i).arg(entry.codec));
        if (qint64(length) > bytes.size() - at)
            return refuse(cutShort);
        entry.bytes = bytes.mid(int(at), int(length));
        read << entry;
        in.skipRawData(int(length));
        at += length;
    }
    if (at != bytes.size())
        return refuse(QStringLiteral("The sound bank has bytes after its last sound."));
    entries = read;
    return true;
}
