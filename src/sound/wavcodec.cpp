// WAV files. Both sets of rules share the steps around the one place they part: where the
// format and the data are found (the designed reader takes the format chunk first and
// finds the data by a byte search, the complete one walks the chunks) and how the values
// are taken from there.
#include "sound/soundcodecs.h"
#include "sound/soundcodecs_p.h"

#include <QDataStream>
#include <QtEndian>

#include <cmath>
#include <cstring>

namespace Ovra {

using namespace SoundCodecs;

namespace {

// A WAV whose data is cut short is filled up with silence by the designed reader, but not
// by more than this: a declared length far beyond the file is a broken header, not a
// short recording.
constexpr qint64 MaxWavPadding = qint64(64) << 20;

constexpr quint16 TagPcm = 1;
constexpr quint16 TagFloat = 3;
constexpr quint16 TagExtensible = 0xFFFE;
// The extensible layout names its values by a GUID: the format tag they would have in a
// plain header, then these 14 bytes.
constexpr char GuidTail[] = "\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71";

quint16 le16(const QByteArray &bytes, qint64 at)
{
    return qFromLittleEndian<quint16>(bytes.constData() + at);
}

quint32 le32(const QByteArray &bytes, qint64 at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}

// Where the values of a WAV file are and what they look like.
struct WavLayout
{
    quint16 tag = 0;
    quint16 channels = 0;
    quint32 rate = 0;
    quint32 byteRate = 0;
    quint16 bits = 0;       // bits a value by the header (the container's, when extensible)
    int valueBytes = 0;     // bytes a value takes in the file
    int validBits = 0;      // of those bits, the ones that carry the value, at the top
    bool isFloat = false;
    qint64 dataAt = -1;     // the first byte of the samples in the body
    quint32 dataLength = 0; // as the data chunk declares it
};

// The bytes after "WAVE", as far as the RIFF length says and the device has them; false
// for a file that isn't a WAV.
bool readBody(QIODevice *device, CodecRules rules, QByteArray &body)
{
    const QByteArray head = device->read(12);
    if (head.size() < 12 || memcmp(head.constData() + 8, "WAVE", 4) != 0)
        return false;
    const quint32 length = le32(head, 4);
    if (rules == CodecRules::Designed) {
        if (length < 4)
            return false;
        body = readUpTo(device, qint64(length) - 4);
        return true;
    }
    if (memcmp(head.constData(), "RIFF", 4) != 0)
        return false;
    // Programs that write while they record leave the length at 0 or all ones, and a
    // length beyond the file is a file cut short: the file holds what is there.
    body = readUpTo(device, length < 4 ? MaxDecodedBytes : qint64(length) - 4);
    return true;
}

// The designed reading: the format chunk at the start of the body, taken as its first 16
// bytes whatever its size says, PCM only; the data chunk's head wherever "data" first
// appears in the bytes, or right after those 16 bytes.
bool designedLayout(const QByteArray &body, bool checkId, WavLayout &layout)
{
    if (body.size() < 24)
        return false;
    layout.tag = le16(body, 8);
    layout.channels = le16(body, 10);
    layout.rate = le32(body, 12);
    layout.byteRate = le32(body, 16);
    layout.bits = le16(body, 22);
    if (layout.tag != TagPcm || (checkId && memcmp(body.constData(), "fmt", 3) != 0))
        return false;
    const int found = body.indexOf("data");
    const qint64 head = found > 0 ? found : 24;
    layout.dataAt = qMin<qint64>(head + 8, body.size());
    layout.dataLength = head + 8 <= body.size() ? le32(body, head + 4) : 0;
    return true;
}

quint32 designedFrames(const WavLayout &layout)
{
    const quint32 frameBytes = quint32(layout.bits) * layout.channels / 8;
    return layout.byteRate == 0 || frameBytes == 0 ? 0 : layout.dataLength / frameBytes;
}

// A format chunk of `size` bytes at `at`: PCM of 1 to 4 bytes a value, or float of 4 or
// 8, plain or in the extensible layout. False for anything this system can't hold.
bool readFormat(const QByteArray &body, qint64 at, quint32 size, WavLayout &layout)
{
    if (size < 16 || at + 16 > body.size())
        return false;
    layout.tag = le16(body, at);
    layout.channels = le16(body, at + 2);
    layout.rate = le32(body, at + 4);
    layout.byteRate = le32(body, at + 8);
    layout.bits = le16(body, at + 14);
    layout.validBits = layout.bits;
    quint16 code = layout.tag;
    if (layout.tag == TagExtensible) {
        if (size < 40 || at + 40 > body.size() || le16(body, at + 16) < 22
            || memcmp(body.constData() + at + 26, GuidTail, 14) != 0)
            return false;
        layout.validBits = le16(body, at + 18);
        code = le16(body, at + 24);
    }
    layout.isFloat = code == TagFloat;
    layout.valueBytes = (layout.bits + 7) / 8;
    if (layout.validBits == 0 || layout.isFloat)
        layout.validBits = layout.valueBytes * 8;
    if (layout.channels == 0 || (code != TagPcm && code != TagFloat))
        return false;
    if (layout.isFloat)
        return layout.bits == 32 || layout.bits == 64;
    return layout.valueBytes >= 1 && layout.valueBytes <= 4 && layout.validBits <= layout.valueBytes * 8;
}

// The complete reading: the chunks walked one by one, each padded to an even size, until
// the format and the data have been found, in whichever order they come.
bool walkedLayout(const QByteArray &body, WavLayout &layout)
{
    bool format = false;
    qint64 at = 0;
    while (at + 8 <= body.size() && !(format && layout.dataAt >= 0)) {
        const char *id = body.constData() + at;
        const quint32 size = le32(body, at + 4);
        if (!format && memcmp(id, "fmt ", 4) == 0) {
            if (!readFormat(body, at + 8, size, layout))
                return false;
            format = true;
        } else if (layout.dataAt < 0 && memcmp(id, "data", 4) == 0) {
            layout.dataAt = at + 8;
            layout.dataLength = size;
        }
        at += 8 + qint64(size) + (size & 1);
    }
    return format && layout.dataAt >= 0;
}

// The whole frames of the data chunk that the file really holds.
quint32 presentFrames(const QByteArray &body, const WavLayout &layout)
{
    const qint64 present = qMin<qint64>(layout.dataLength, body.size() - layout.dataAt);
    return quint32(present / (qint64(layout.valueBytes) * layout.channels));
}

// IEEE float values (4 or 8 bytes) become 32-bit signed ones, the nearest depth this
// system holds: every float of -1 to 1 lands within half a step of 2^-31 of its value,
// which is finer than a float's own 24 bits of mantissa near full scale. Values past
// full scale are clamped, and a value that is not a number is silence.
QByteArray fromFloat(const char *values, qint64 count, int valueBytes)
{
    QByteArray out(int(count * 4), Qt::Uninitialized);
    for (qint64 i = 0; i < count; ++i) {
        double value = 0;
        if (valueBytes == 4) {
            const quint32 word = qFromLittleEndian<quint32>(values + i * 4);
            float single;
            memcpy(&single, &word, 4);
            value = single;
        } else {
            const quint64 word = qFromLittleEndian<quint64>(values + i * 8);
            memcpy(&value, &word, 8);
        }
        const double scaled = std::isnan(value) ? 0 : std::round(value * 2147483648.0);
        qToLittleEndian(qint32(qBound(-2147483648.0, scaled, 2147483647.0)), out.data() + i * 4);
    }
    return out;
}

// The values as this system keeps them: integers whole, with the bits below the valid
// ones cleared (the layout says they are zero; a writer that left noise there is not
// heard), and floats made 32-bit integers.
QByteArray completeData(const QByteArray &body, const WavLayout &layout, quint32 frames)
{
    const qint64 values = qint64(frames) * layout.channels;
    const char *first = body.constData() + layout.dataAt;
    if (layout.isFloat)
        return fromFloat(first, values, layout.valueBytes);
    QByteArray data(first, int(values * layout.valueBytes));
    const int unused = layout.valueBytes * 8 - layout.validBits;
    if (unused > 0) {
        const quint32 keep = ~((quint32(1) << unused) - 1);
        auto *bytes = reinterpret_cast<uchar *>(data.data());
        for (qint64 i = 0; i < data.size(); ++i)
            bytes[i] &= uchar(keep >> (8 * (i % layout.valueBytes)));
    }
    return data;
}

} // namespace

SoundSample soundFromWAV(QIODevice *device)
{
    return soundFromWAV(device, CodecRules::Designed);
}

SoundSample soundFromWAV(QIODevice *device, CodecRules rules)
{
    SoundSample sample = zeroed();
    QByteArray body;
    WavLayout layout;
    if (!openForReading(device) || !readBody(device, rules, body))
        return sample;
    if (rules == CodecRules::Designed) {
        if (!designedLayout(body, true, layout))
            return sample;
        const qint64 present = qMax<qint64>(body.size() - layout.dataAt, 0);
        if (qint64(layout.dataLength) > present + MaxWavPadding)
            return sample;
        sample.data = body.mid(int(layout.dataAt), int(qMin<qint64>(layout.dataLength, present)));
        // A short file keeps its length: the missing end is silence.
        if (sample.data.size() < qint64(layout.dataLength))
            sample.data.append(QByteArray(int(layout.dataLength - quint32(sample.data.size())), '\0'));
        sample.bits = layout.bits;
        sample.samples = designedFrames(layout);
    } else {
        if (!walkedLayout(body, layout))
            return sample;
        // A file cut short holds the frames that are there, and no more.
        sample.samples = presentFrames(body, layout);
        sample.data = completeData(body, layout, sample.samples);
        sample.bits = quint16(layout.isFloat ? 32 : layout.valueBytes * 8);
    }
    sample.channels = layout.channels;
    sample.frequency = layout.rate;
    return sample;
}

SampleInfo soundInfoFromWAV(QIODevice *device)
{
    return soundInfoFromWAV(device, CodecRules::Designed);
}

SampleInfo soundInfoFromWAV(QIODevice *device, CodecRules rules)
{
    if (!openForReading(device))
        return SampleInfo();
    SampleInfo info;
    info.bits = 0;
    WavLayout layout;
    if (rules == CodecRules::Designed) {
        // Neither "WAVE" nor the format chunk's id is looked at.
        const QByteArray bytes = readUpTo(device, MaxDecodedBytes);
        if (bytes.size() < 12 || !designedLayout(bytes.mid(12), false, layout))
            return info;
        info.bits = layout.bits;
        info.samples = designedFrames(layout);
    } else {
        QByteArray body;
        if (!readBody(device, rules, body) || !walkedLayout(body, layout))
            return info;
        info.bits = quint16(layout.isFloat ? 32 : layout.valueBytes * 8);
        info.samples = presentFrames(body, layout);
    }
    info.channels = layout.channels;
    info.frequency = layout.rate;
    return info;
}

bool soundToWAV(const SoundSample &sample, QIODevice *device)
{
    return soundToWAV(sample, device, CodecRules::Designed);
}

// Under the complete rules the header is plain PCM at every depth and channel count. The
// extensible layout would add a speaker mask and a count of valid bits; sounds here have
// no speaker positions and every bit of their values is valid, so it would tell nothing
// more, while readers that take plain PCM only (the designed reader among them) would
// lose the file. Readers of the extensible layout read plain PCM at 24 and 32 bits and
// any channel count as well.
bool soundToWAV(const SoundSample &sample, QIODevice *device, CodecRules rules)
{
    const bool complete = rules == CodecRules::Complete;
    quint16 bits = sample.bits;
    qint64 size = sample.data.size();
    if (complete) {
        if (sample.channels == 0 || !isDepth(bits))
            return false;
        if (bits == 20)
            bits = 24; // held in three bytes at full scale, as 24-bit values are
        const qint64 frameBytes = qint64(sample.channels) * bits / 8;
        size = qMin<qint64>(size / frameBytes, sample.samples) * frameBytes;
    }
    if (!openForWriting(device))
        return false;
    // A chunk of an odd size is followed by a byte that keeps the next one on an even offset.
    const quint32 pad = complete ? quint32(size & 1) : 0;
    QDataStream out(device);
    out.setByteOrder(QDataStream::LittleEndian);
    const quint16 blockAlign = quint16(sample.channels * bits / 8);
    out.writeRawData("RIFF", 4);
    out << quint32(size + 36 + pad);
    out.writeRawData("WAVEfmt ", 8);
    out << quint32(16) << TagPcm << sample.channels << sample.frequency << quint32(blockAlign * sample.frequency)
        << blockAlign << bits;
    out.writeRawData("data", 4);
    out << quint32(size);
    out.writeRawData(sample.data.constData(), int(size));
    if (pad)
        out << quint8(0);
    return out.status() == QDataStream::Ok;
}

} // namespace Ovra
