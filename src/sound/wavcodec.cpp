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
    quint32 dataLength = 0; // as the data chunk declares it
};

// The bytes of the body read from the device at a time while the designed reader
// searches it.
constexpr qint64 SearchPiece = 65536;

// The length of the body after "WAVE" as far as the rules read it, or -1 for a file that
// isn't a WAV.
qint64 bodyLength(QIODevice *device, CodecRules rules)
{
    const QByteArray head = BoundedReader(device, 12).read(12);
    if (head.size() < 12 || memcmp(head.constData() + 8, "WAVE", 4) != 0)
        return -1;
    const quint32 length = le32(head, 4);
    if (rules == CodecRules::Designed)
        return length < 4 ? -1 : qint64(length) - 4;
    if (memcmp(head.constData(), "RIFF", 4) != 0)
        return -1;
    // Programs that write while they record leave the length at 0 or all ones, and a
    // length beyond the file is a file cut short: the file holds what is there.
    return length < 4 ? MaxDecodedBytes : qint64(length) - 4;
}

// The designed format: the format chunk at the start of the body, taken as its first 16
// bytes whatever its size says, PCM only.
bool designedFormat(const QByteArray &start, bool checkId, WavLayout &layout)
{
    if (start.size() < 24)
        return false;
    layout.tag = le16(start, 8);
    layout.channels = le16(start, 10);
    layout.rate = le32(start, 12);
    layout.byteRate = le32(start, 16);
    layout.bits = le16(start, 22);
    return layout.tag == TagPcm && (!checkId || memcmp(start.constData(), "fmt", 3) == 0);
}

// Where "data" first appears in the body, searched as the bytes come; -1 where it doesn't.
// `window` starts as the body's first bytes, and holds the body from `windowAt` on: all of
// it when `keep`, else the bytes from the match on (or the last three searched).
qint64 searchData(BoundedReader &body, QByteArray &window, qint64 &windowAt, bool keep)
{
    int from = 0;
    for (;;) {
        const int found = window.indexOf("data", from);
        if (found >= 0 && keep)
            return found;
        if (!keep && window.size() > 3) {
            const int drop = found >= 0 ? found : window.size() - 3;
            windowAt += drop;
            window.remove(0, drop);
            if (found >= 0)
                return windowAt;
        }
        from = qMax(0, window.size() - 3);
        // Pieces as large as what was searched so far: a file with its data far in is
        // read in a few steps.
        if (body.readInto(window, qMax<qint64>(SearchPiece, window.size())) == 0)
            return -1;
    }
}

quint32 designedFrames(const WavLayout &layout)
{
    const quint32 frameBytes = quint32(layout.bits) * layout.channels / 8;
    return layout.byteRate == 0 || frameBytes == 0 ? 0 : layout.dataLength / frameBytes;
}

// The designed reading: the data chunk's head wherever "data" first appears in the body,
// or right after the format's 16 bytes. What the body holds of the data is read straight
// into the sample's bytes, and a short file keeps its length: the missing end is silence.
bool readDesignedWav(BoundedReader &body, WavLayout &layout, QByteArray &data)
{
    body.readInto(data, SearchPiece);
    if (!designedFormat(data, true, layout))
        return false;
    qint64 windowAt = 0;
    const qint64 found = searchData(body, data, windowAt, true);
    const qint64 head = found > 0 ? found : 24;
    if (data.size() < head + 8)
        body.readInto(data, head + 8 - data.size());
    layout.dataLength = head + 8 <= data.size() ? le32(data, head + 4) : 0;
    data.remove(0, int(qMin<qint64>(head + 8, data.size())));
    const qint64 length = layout.dataLength;
    if (data.size() > length)
        data.truncate(int(length));
    const qint64 missing = length - data.size();
    if (missing <= 0)
        return true;
    const qint64 held = body.holds(missing);
    if (held >= 0) {
        // Sized once, silence included; a length far beyond the file is refused unread.
        if (missing > held + MaxWavPadding)
            return false;
        data.reserve(int(length));
    }
    body.readInto(data, missing);
    if (length > data.size() + MaxWavPadding)
        return false;
    const int present = data.size();
    data.resize(int(length));
    memset(data.data() + present, 0, size_t(length - present));
    return true;
}

// A format chunk of `size` bytes, of which `chunk` holds the first ones: PCM of 1 to 4
// bytes a value, or float of 4 or 8, plain or in the extensible layout. False for
// anything this system can't hold.
bool readFormat(const QByteArray &chunk, quint32 size, WavLayout &layout)
{
    if (size < 16 || chunk.size() < 16)
        return false;
    layout.tag = le16(chunk, 0);
    layout.channels = le16(chunk, 2);
    layout.rate = le32(chunk, 4);
    layout.byteRate = le32(chunk, 8);
    layout.bits = le16(chunk, 14);
    layout.validBits = layout.bits;
    quint16 code = layout.tag;
    if (layout.tag == TagExtensible) {
        if (size < 40 || chunk.size() < 40 || le16(chunk, 16) < 22 || memcmp(chunk.constData() + 26, GuidTail, 14) != 0)
            return false;
        layout.validBits = le16(chunk, 18);
        code = le16(chunk, 24);
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
// the format and the data have been found, in whichever order they come. The data chunk's
// bytes go straight into `data` where it is given and are passed over where it isn't;
// `present` is how many of them the file holds.
bool walkChunks(BoundedReader &body, WavLayout &layout, QByteArray *data, qint64 &present)
{
    bool format = false;
    bool found = false;
    while (!(format && found)) {
        const QByteArray head = body.read(8);
        if (head.size() < 8)
            break;
        const quint32 size = le32(head, 4);
        qint64 taken = 0;
        if (!format && memcmp(head.constData(), "fmt ", 4) == 0) {
            const QByteArray chunk = body.read(qMin<quint32>(size, 40));
            if (!readFormat(chunk, size, layout))
                return false;
            format = true;
            taken = chunk.size();
        } else if (!found && memcmp(head.constData(), "data", 4) == 0) {
            found = true;
            layout.dataLength = size;
            present = data ? body.readInto(*data, size) : body.skip(size);
            taken = present;
        }
        if (!(format && found))
            body.skip(qint64(size) - taken + (size & 1));
    }
    return format && found;
}

// IEEE float values (4 or 8 bytes) become 32-bit signed ones, the nearest depth this
// system holds: every float of -1 to 1 lands within half a step of 2^-31 of its value,
// which is finer than a float's own 24 bits of mantissa near full scale. Values past
// full scale are clamped, and a value that is not a number is silence. The values are
// made in place: each is read before its place is written, and no place lies beyond
// the value it comes from.
void fromFloat(QByteArray &data, qint64 count, int valueBytes)
{
    char *bytes = data.data();
    for (qint64 i = 0; i < count; ++i) {
        double value = 0;
        if (valueBytes == 4) {
            const quint32 word = qFromLittleEndian<quint32>(bytes + i * 4);
            float single;
            memcpy(&single, &word, 4);
            value = single;
        } else {
            const quint64 word = qFromLittleEndian<quint64>(bytes + i * 8);
            memcpy(&value, &word, 8);
        }
        const double scaled = std::isnan(value) ? 0 : std::round(value * 2147483648.0);
        qToLittleEndian(qint32(qBound(-2147483648.0, scaled, 2147483647.0)), bytes + i * 4);
    }
    data.truncate(int(count * 4));
}

// The values as this system keeps them, in place: integers whole, with the bits below the
// valid ones cleared (the layout says they are zero; a writer that left noise there is not
// heard), and floats made 32-bit integers.
void toStoredValues(QByteArray &data, const WavLayout &layout, quint32 frames)
{
    const qint64 values = qint64(frames) * layout.channels;
    if (layout.isFloat) {
        fromFloat(data, values, layout.valueBytes);
        return;
    }
    data.truncate(int(values * layout.valueBytes));
    const int unused = layout.valueBytes * 8 - layout.validBits;
    if (unused > 0) {
        const quint32 keep = ~((quint32(1) << unused) - 1);
        auto *bytes = reinterpret_cast<uchar *>(data.data());
        for (qint64 i = 0; i < data.size(); ++i)
            bytes[i] &= uchar(keep >> (8 * (i % layout.valueBytes)));
    }
}

} // namespace

SoundSample soundFromWAV(QIODevice *device)
{
    return soundFromWAV(device, CodecRules::Designed);
}

SoundSample soundFromWAV(QIODevice *device, CodecRules rules)
{
    SoundSample sample = zeroed();
    const qint64 length = openForReading(device) ? bodyLength(device, rules) : -1;
    if (length < 0)
        return sample;
    BoundedReader body(device, length);
    WavLayout layout;
    QByteArray data;
    if (rules == CodecRules::Designed) {
        if (!readDesignedWav(body, layout, data))
            return sample;
        sample.bits = layout.bits;
        sample.samples = designedFrames(layout);
    } else {
        qint64 present = 0;
        if (!walkChunks(body, layout, &data, present))
            return sample;
        // A file cut short holds the frames that are there, and no more.
        sample.samples = quint32(present / (qint64(layout.valueBytes) * layout.channels));
        toStoredValues(data, layout, sample.samples);
        sample.bits = quint16(layout.isFloat ? 32 : layout.valueBytes * 8);
    }
    sample.data = std::move(data);
    sample.channels = layout.channels;
    sample.frequency = layout.rate;
    return sample;
}

SampleInfo soundInfoFromWAV(QIODevice *device)
{
    return soundInfoFromWAV(device, CodecRules::Designed);
}

// The header alone: the data is searched for or passed over, never held.
SampleInfo soundInfoFromWAV(QIODevice *device, CodecRules rules)
{
    if (!openForReading(device))
        return SampleInfo();
    SampleInfo info;
    info.bits = 0;
    WavLayout layout;
    if (rules == CodecRules::Designed) {
        // The whole device is the file; neither "WAVE" nor the format chunk's id is looked at.
        BoundedReader file(device, MaxDecodedBytes);
        QByteArray window;
        if (file.read(12).size() < 12)
            return info;
        file.readInto(window, SearchPiece);
        if (!designedFormat(window, false, layout))
            return info;
        const QByteArray start = window.left(32);
        qint64 windowAt = 0;
        if (searchData(file, window, windowAt, false) > 0) {
            if (window.size() < 8)
                file.readInto(window, 8 - window.size());
            layout.dataLength = window.size() >= 8 ? le32(window, 4) : 0;
        } else {
            layout.dataLength = start.size() >= 32 ? le32(start, 28) : 0;
        }
        info.bits = layout.bits;
        info.samples = designedFrames(layout);
    } else {
        const qint64 length = bodyLength(device, rules);
        qint64 present = 0;
        if (length < 0)
            return info;
        BoundedReader body(device, length);
        if (!walkChunks(body, layout, nullptr, present))
            return info;
        info.bits = quint16(layout.isFloat ? 32 : layout.valueBytes * 8);
        info.samples = quint32(present / (qint64(layout.valueBytes) * layout.channels));
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
