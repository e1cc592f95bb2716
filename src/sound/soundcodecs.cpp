#include "sound/soundcodecs.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"

#include <FLAC/stream_decoder.h>
#include <FLAC/stream_encoder.h>
#include <mpg123.h>
#include <vorbis/codec.h>
#include <vorbis/vorbisenc.h>
#include <vorbis/vorbisfile.h>

#include <QBuffer>
#include <QDataStream>
#include <QIODevice>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace Ovra {
namespace {

// No decoder makes more than this of one file: a header or a stream can claim any
// length, and a few bytes of some formats decode to minutes of silence.
constexpr qint64 MaxDecodedBytes = qint64(1) << 30;
// A WAV whose data is cut short is filled up with silence, but not by more than this: a
// declared length far beyond the file is a broken header, not a short recording.
constexpr qint64 MaxWavPadding = qint64(64) << 20;

bool openForReading(QIODevice *device)
{
    return device && (device->isOpen() ? device->isReadable() : device->open(QIODevice::ReadOnly));
}

bool openForWriting(QIODevice *device)
{
    return device && (device->isOpen() ? device->isWritable() : device->open(QIODevice::WriteOnly));
}

// The decoders start from a header of all zeros, so that a failure is no sound of any shape.
SoundSample zeroed()
{
    SoundSample sample;
    sample.bits = 0;
    return sample;
}

// Up to `count` bytes, in pieces, so that a length read from a header never allocates
// more than the device really has.
QByteArray readUpTo(QIODevice *device, qint64 count)
{
    QByteArray bytes;
    count = qMin(count, MaxDecodedBytes);
    while (bytes.size() < count) {
        // Pieces of what the device says it has (a read allocates its whole size first).
        const qint64 piece = qBound<qint64>(4096, device->bytesAvailable(), 1 << 20);
        const QByteArray bytesRead = device->read(qMin<qint64>(piece, count - bytes.size()));
        if (bytesRead.isEmpty())
            break;
        bytes += bytesRead;
    }
    return bytes;
}

// ---- WAV ------------------------------------------------------------------------------

struct WavHeader
{
    char id[4] = {};
    quint16 tag = 0;
    quint16 channels = 0;
    quint32 rate = 0;
    quint32 byteRate = 0;
    quint16 blockAlign = 0;
    quint16 bits = 0;
    quint32 dataLength = 0;
};

// Reads the format chunk at the start of `body` and the data chunk's head, which is
// wherever "data" first appears in the bytes (the format chunk's end if nowhere).
// Leaves `in` at the first byte of the samples.
bool readWavHeader(QDataStream &in, const QByteArray &body, bool checkId, WavHeader &header)
{
    quint32 formatSize = 0;
    in.readRawData(header.id, 4);
    in >> formatSize >> header.tag >> header.channels >> header.rate >> header.byteRate >> header.blockAlign
        >> header.bits;
    if (in.status() != QDataStream::Ok || header.tag != 1 || (checkId && memcmp(header.id, "fmt", 3) != 0))
        return false;
    const int at = body.indexOf("data");
    if (at > 0)
        in.device()->seek(at);
    char dataId[4];
    in.readRawData(dataId, 4);
    in >> header.dataLength;
    return true;
}

quint32 framesOf(const WavHeader &header)
{
    const quint32 frameBytes = quint32(header.bits) * header.channels / 8;
    return header.byteRate == 0 || frameBytes == 0 ? 0 : header.dataLength / frameBytes;
}

// ---- Ogg Vorbis -------------------------------------------------------------------------

size_t oggRead(void *buffer, size_t size, size_t count, void *source)
{
    const qint64 read = static_cast<QIODevice *>(source)->read(static_cast<char *>(buffer), qint64(size * count));
    return read <= 0 || size == 0 ? 0 : size_t(read) / size;
}

int oggSeek(void *source, ogg_int64_t offset, int whence)
{
    auto *device = static_cast<QIODevice *>(source);
    if (device->isSequential())
        return -1;
    const qint64 base = whence == SEEK_CUR ? device->pos() : whence == SEEK_END ? device->size() : 0;
    return device->seek(base + offset) ? 0 : -1;
}

long oggTell(void *source)
{
    return long(static_cast<QIODevice *>(source)->pos());
}

// The encoder's blocks, written out as pages.
void drainVorbis(vorbis_dsp_state &dsp, vorbis_block &block, ogg_stream_state &stream, QIODevice *device)
{
    ogg_packet packet;
    ogg_page page;
    while (vorbis_analysis_blockout(&dsp, &block) == 1) {
        vorbis_analysis(&block, nullptr);
        vorbis_bitrate_addblock(&block);
        while (vorbis_bitrate_flushpacket(&dsp, &packet)) {
            ogg_stream_packetin(&stream, &packet);
            while (ogg_stream_pageout(&stream, &page)) {
                device->write(reinterpret_cast<const char *>(page.header), page.header_len);
                device->write(reinterpret_cast<const char *>(page.body), page.body_len);
            }
        }
    }
}

// One value of the sample as the Vorbis writer takes it, by its byte size.
float vorbisValue(const uchar *value, int bytes)
{
    switch (bytes) {
    case 1:
        return float(value[0] / 255.0);
    case 2: {
        qint16 v;
        memcpy(&v, value, 2);
        return float(v / 32767.0);
    }
    case 3:
        return float((quint32(value[0]) | quint32(value[1]) << 8 | quint32(value[2]) << 16) * 5.960464477539063e-08);
    case 4: {
        qint32 v;
        memcpy(&v, value, 4);
        return float(v * 4.656612873077393e-10);
    }
    default:
        return 0;
    }
}

// ---- FLAC ---------------------------------------------------------------------------------

struct FlacReading
{
    QIODevice *device = nullptr;
    SoundSample *sample = nullptr;
    int valueBytes = 0;
    qint64 declaredBytes = 0;
    qint64 written = 0;
    bool failed = false;
};

FLAC__StreamDecoderReadStatus flacRead(const FLAC__StreamDecoder *, FLAC__byte buffer[], size_t *bytes, void *client)
{
    auto *reading = static_cast<FlacReading *>(client);
    const qint64 read = reading->device->read(reinterpret_cast<char *>(buffer), qint64(*bytes));
    if (read < 0) {
        *bytes = 0;
        return FLAC__STREAM_DECODER_READ_STATUS_ABORT;
    }
    *bytes = size_t(read);
    return read == 0 ? FLAC__STREAM_DECODER_READ_STATUS_END_OF_STREAM : FLAC__STREAM_DECODER_READ_STATUS_CONTINUE;
}

FLAC__StreamDecoderSeekStatus flacSeek(const FLAC__StreamDecoder *, FLAC__uint64 offset, void *client)
{
    QIODevice *device = static_cast<FlacReading *>(client)->device;
    if (device->isSequential())
        return FLAC__STREAM_DECODER_SEEK_STATUS_UNSUPPORTED;
    return device->seek(qint64(offset)) ? FLAC__STREAM_DECODER_SEEK_STATUS_OK : FLAC__STREAM_DECODER_SEEK_STATUS_ERROR;
}

FLAC__StreamDecoderTellStatus flacTell(const FLAC__StreamDecoder *, FLAC__uint64 *offset, void *client)
{
    *offset = FLAC__uint64(static_cast<FlacReading *>(client)->device->pos());
    return FLAC__STREAM_DECODER_TELL_STATUS_OK;
}

FLAC__StreamDecoderLengthStatus flacLength(const FLAC__StreamDecoder *, FLAC__uint64 *length, void *client)
{
    QIODevice *device = static_cast<FlacReading *>(client)->device;
    if (device->isSequential())
        return FLAC__STREAM_DECODER_LENGTH_STATUS_UNSUPPORTED;
    *length = FLAC__uint64(device->size());
    return FLAC__STREAM_DECODER_LENGTH_STATUS_OK;
}

FLAC__bool flacEof(const FLAC__StreamDecoder *, void *client)
{
    return static_cast<FlacReading *>(client)->device->atEnd();
}

FLAC__StreamDecoderWriteStatus flacWrite(const FLAC__StreamDecoder *, const FLAC__Frame *frame,
                                         const FLAC__int32 *const buffer[], void *client)
{
    auto *reading = static_cast<FlacReading *>(client);
    const unsigned channels = reading->sample->channels;
    if (reading->valueBytes == 0 || frame->header.channels != channels)
        return FLAC__STREAM_DECODER_WRITE_STATUS_ABORT;
    const qint64 needed = qint64(frame->header.blocksize) * channels * reading->valueBytes;
    QByteArray &data = reading->sample->data;
    if (reading->written + needed > data.size()) {
        // More than the stream info promised (or it promised nothing): grow, within reason.
        if (reading->written + needed > MaxDecodedBytes)
            return FLAC__STREAM_DECODER_WRITE_STATUS_ABORT;
        data.resize(int(reading->written + needed));
    }
    auto *out = reinterpret_cast<uchar *>(data.data()) + reading->written;
    for (unsigned i = 0; i < frame->header.blocksize; ++i) {
        for (unsigned channel = 0; channel < channels; ++channel) {
            const quint32 value = quint32(buffer[channel][i]);
            for (int k = 0; k < reading->valueBytes; ++k)
                *out++ = uchar(value >> (8 * k));
        }
    }
    reading->written += needed;
    return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
}

void flacMetadata(const FLAC__StreamDecoder *, const FLAC__StreamMetadata *metadata, void *client)
{
    if (metadata->type != FLAC__METADATA_TYPE_STREAMINFO)
        return;
    auto *reading = static_cast<FlacReading *>(client);
    const FLAC__StreamMetadata_StreamInfo &info = metadata->data.stream_info;
    SoundSample &sample = *reading->sample;
    sample.channels = quint16(info.channels);
    sample.frequency = info.sample_rate;
    // Depths between the usual ones are kept in the next whole byte.
    reading->valueBytes = int((info.bits_per_sample + 7) / 8);
    sample.bits = quint16(info.bits_per_sample % 8 == 0 ? info.bits_per_sample : reading->valueBytes * 8);
    sample.samples = quint32(qMin<FLAC__uint64>(info.total_samples, 0xFFFFFFFFu));
    reading->declaredBytes = qint64(sample.samples) * sample.channels * reading->valueBytes;
}

void flacError(const FLAC__StreamDecoder *, FLAC__StreamDecoderErrorStatus, void *client)
{
    static_cast<FlacReading *>(client)->failed = true;
}

FLAC__StreamEncoderWriteStatus flacEncoderWrite(const FLAC__StreamEncoder *, const FLAC__byte buffer[], size_t bytes,
                                                uint32_t, uint32_t, void *client)
{
    auto *device = static_cast<QIODevice *>(client);
    return device->write(reinterpret_cast<const char *>(buffer), qint64(bytes)) == qint64(bytes)
               ? FLAC__STREAM_ENCODER_WRITE_STATUS_OK
               : FLAC__STREAM_ENCODER_WRITE_STATUS_FATAL_ERROR;
}

FLAC__StreamEncoderSeekStatus flacEncoderSeek(const FLAC__StreamEncoder *, FLAC__uint64 offset, void *client)
{
    auto *device = static_cast<QIODevice *>(client);
    if (device->isSequential())
        return FLAC__STREAM_ENCODER_SEEK_STATUS_UNSUPPORTED;
    return device->seek(qint64(offset)) ? FLAC__STREAM_ENCODER_SEEK_STATUS_OK : FLAC__STREAM_ENCODER_SEEK_STATUS_ERROR;
}

FLAC__StreamEncoderTellStatus flacEncoderTell(const FLAC__StreamEncoder *, FLAC__uint64 *offset, void *client)
{
    *offset = FLAC__uint64(static_cast<QIODevice *>(client)->pos());
    return FLAC__STREAM_ENCODER_TELL_STATUS_OK;
}

// ---- MP3 ----------------------------------------------------------------------------------

mpg123_ssize_t mp3Read(void *handle, void *buffer, size_t count)
{
    return mpg123_ssize_t(static_cast<QIODevice *>(handle)->read(static_cast<char *>(buffer), qint64(count)));
}

off_t mp3Seek(void *handle, off_t offset, int whence)
{
    auto *device = static_cast<QIODevice *>(handle);
    if (device->isSequential())
        return -1;
    const qint64 base = whence == SEEK_CUR ? device->pos() : whence == SEEK_END ? device->size() : 0;
    return device->seek(base + offset) ? off_t(device->pos()) : off_t(-1);
}

} // namespace

SoundSample soundFromWAV(QIODevice *device)
{
    SoundSample sample = zeroed();
    if (!openForReading(device))
        return sample;
    QDataStream file(device);
    file.setByteOrder(QDataStream::LittleEndian);
    char riff[4];
    char wave[4] = {};
    quint32 length = 0;
    file.readRawData(riff, 4);
    file >> length;
    file.readRawData(wave, 4);
    if (file.status() != QDataStream::Ok || memcmp(wave, "WAVE", 4) != 0 || length < 4)
        return sample;

    QByteArray body = readUpTo(device, qint64(length) - 4);
    QBuffer buffer(&body);
    buffer.open(QIODevice::ReadOnly);
    QDataStream in(&buffer);
    in.setByteOrder(QDataStream::LittleEndian);
    WavHeader header;
    if (!readWavHeader(in, body, true, header))
        return sample;
    const qint64 present = qMax<qint64>(buffer.size() - buffer.pos(), 0);
    if (qint64(header.dataLength) > present + MaxWavPadding)
        return sample;
    sample.data = body.mid(int(buffer.pos()), int(qMin<qint64>(header.dataLength, present)));
    // A short file keeps its length: the missing end is silence.
    if (sample.data.size() < qint64(header.dataLength))
        sample.data.append(QByteArray(int(header.dataLength - quint32(sample.data.size())), '\0'));
    sample.channels = header.channels;
    sample.bits = header.bits;
    sample.frequency = header.rate;
    sample.samples = framesOf(header);
    return sample;
}

SampleInfo soundInfoFromWAV(QIODevice *device)
{
    if (!openForReading(device))
        return SampleInfo();
    SampleInfo info;
    info.bits = 0;
    QByteArray bytes = readUpTo(device, MaxDecodedBytes);
    QByteArray body = bytes.mid(12);
    QBuffer buffer(&body);
    buffer.open(QIODevice::ReadOnly);
    QDataStream in(&buffer);
    in.setByteOrder(QDataStream::LittleEndian);
    WavHeader header;
    if (bytes.size() < 12 || !readWavHeader(in, body, false, header))
        return info;
    info.channels = header.channels;
    info.bits = header.bits;
    info.frequency = header.rate;
    info.samples = framesOf(header);
    return info;
}

bool soundToWAV(const SoundSample &sample, QIODevice *device)
{
    if (!openForWriting(device))
        return false;
    QDataStream out(device);
    out.setByteOrder(QDataStream::LittleEndian);
    const quint16 blockAlign = quint16(sample.channels * sample.bits / 8);
    const quint32 size = quint32(sample.data.size());
    out.writeRawData("RIFF", 4);
    out << quint32(size + 36);
    out.writeRawData("WAVEfmt ", 8);
    out << quint32(16) << quint16(1) << sample.channels << sample.frequency << quint32(blockAlign * sample.frequency)
        << blockAlign << sample.bits;
    out.writeRawData("data", 4);
    out << size;
    out.writeRawData(sample.data.constData(), sample.data.size());
    return out.status() == QDataStream::Ok;
}

SoundSample soundFromOGG(QIODevice *device)
{
    SoundSample sample = zeroed();
    if (!openForReading(device))
        return sample;
    const ov_callbacks callbacks = {oggRead, oggSeek, nullptr, oggTell};
    OggVorbis_File file;
    if (ov_open_callbacks(device, &file, nullptr, 0, callbacks) < 0)
        return sample;
    const vorbis_info *info = ov_info(&file, -1);
    if (!info || info->channels <= 0) {
        ov_clear(&file);
        return sample;
    }
    sample.channels = quint16(info->channels);
    sample.frequency = quint32(info->rate);
    sample.bits = 16;
    const ogg_int64_t total = ov_pcm_total(&file, -1);
    const qint64 declared = total > 0 ? qint64(total) * sample.channels * 2 : 0;
    // Sized beforehand when the stream tells a believable length; grown as decoded when it
    // tells none or an unbelievable one.
    const bool sized = declared > 0 && declared <= MaxDecodedBytes / 4;
    const qint64 limit = sized ? declared : MaxDecodedBytes;
    if (sized)
        sample.data.resize(int(declared));
    qint64 filled = 0;
    int section = 0;
    char piece[65536];
    for (;;) {
        const qint64 room = limit - filled;
        if (room <= 0)
            break;
        char *target = sized ? sample.data.data() + filled : piece;
        const long read = ov_read(&file, target, int(qMin<qint64>(room, sizeof piece)), 0, 2, 1, &section);
        if (read <= 0)
            break;
        if (!sized)
            sample.data.append(piece, int(read));
        filled += read;
    }
    ov_clear(&file);
    sample.samples = sized ? quint32(total) : quint32(sample.data.size() / (sample.channels * 2));
    return sample;
}

bool soundToOGG(const SoundSample &sample, QIODevice *device)
{
    if (!openForWriting(device))
        return false;
    vorbis_info info;
    vorbis_info_init(&info);
    if (sample.channels == 0 || vorbis_encode_init_vbr(&info, sample.channels, long(sample.frequency), 0.4f) != 0) {
        // Nothing the encoder could set up for: no stream is written.
        vorbis_info_clear(&info);
        return false;
    }
    vorbis_comment comment;
    vorbis_comment_init(&comment);
    vorbis_dsp_state dsp;
    vorbis_analysis_init(&dsp, &info);
    vorbis_block block;
    vorbis_block_init(&dsp, &block);
    ogg_stream_state stream;
    ogg_stream_init(&stream, std::rand());

    ogg_packet header, commentHeader, codeHeader;
    vorbis_analysis_headerout(&dsp, &comment, &header, &commentHeader, &codeHeader);
    ogg_stream_packetin(&stream, &header);
    ogg_stream_packetin(&stream, &commentHeader);
    ogg_stream_packetin(&stream, &codeHeader);
    ogg_page page;
    while (ogg_stream_flush(&stream, &page)) {
        device->write(reinterpret_cast<const char *>(page.header), page.header_len);
        device->write(reinterpret_cast<const char *>(page.body), page.body_len);
    }

    // The frame count is divided by the channels once more than the data needs, and the
    // stream only ends properly when the count is a whole number of blocks: both stand
    // as the files made so far have them.
    const int valueBytes = sample.bits / 8;
    const qint64 valueCount = valueBytes ? sample.data.size() / valueBytes : 0;
    const auto *bytes = reinterpret_cast<const uchar *>(sample.data.constData());
    qint64 remaining = qint64(sample.samples / sample.channels);
    qint64 offset = 0;
    do {
        const int frames = int(qMin<qint64>(remaining, 65536));
        if (frames > 0) {
            float **buffer = vorbis_analysis_buffer(&dsp, frames);
            for (int i = 0; i < frames; ++i) {
                for (int channel = 0; channel < sample.channels; ++channel) {
                    const qint64 index = (offset + i) * sample.channels + channel;
                    buffer[channel][i] = index < valueCount ? vorbisValue(bytes + index * valueBytes, valueBytes) : 0;
                }
            }
            vorbis_analysis_wrote(&dsp, frames);
            drainVorbis(dsp, block, stream, device);
        }
        offset += frames;
        remaining -= 65536;
    } while (remaining > 0);
    if (remaining == 0) {
        vorbis_analysis_wrote(&dsp, 0);
        drainVorbis(dsp, block, stream, device);
    }

    ogg_stream_clear(&stream);
    vorbis_block_clear(&block);
    vorbis_dsp_clear(&dsp);
    vorbis_comment_clear(&comment);
    vorbis_info_clear(&info);
    return true;
}

SoundSample soundFromFLAC(QIODevice *device)
{
    SoundSample sample = zeroed();
    if (!openForReading(device))
        return sample;
    FLAC__StreamDecoder *decoder = FLAC__stream_decoder_new();
    if (!decoder)
        return sample;
    FlacReading reading;
    reading.device = device;
    reading.sample = &sample;
    if (FLAC__stream_decoder_init_stream(decoder, flacRead, flacSeek, flacTell, flacLength, flacEof, flacWrite,
                                         flacMetadata, flacError, &reading)
        != FLAC__STREAM_DECODER_INIT_STATUS_OK) {
        FLAC__stream_decoder_delete(decoder);
        return sample;
    }
    bool ok = FLAC__stream_decoder_process_until_end_of_metadata(decoder) && !reading.failed
              && reading.valueBytes > 0 && sample.channels > 0;
    if (ok) {
        if (reading.declaredBytes <= MaxDecodedBytes / 4)
            sample.data = QByteArray(int(reading.declaredBytes), '\0');
        ok = FLAC__stream_decoder_process_until_end_of_stream(decoder) && !reading.failed;
    }
    FLAC__stream_decoder_finish(decoder);
    FLAC__stream_decoder_delete(decoder);
    // A stream of no audio at all is no sound, whatever its header promised.
    if (!ok || reading.written == 0) {
        sample.data.clear();
        return sample;
    }
    if (reading.written > sample.data.size() || sample.samples == 0)
        sample.samples = quint32(reading.written / (qint64(sample.channels) * reading.valueBytes));
    return sample;
}

bool soundToFLAC(const SoundSample &sample, QIODevice *device)
{
    if (!openForWriting(device))
        return false;
    FLAC__StreamEncoder *encoder = FLAC__stream_encoder_new();
    if (!encoder)
        return false;
    FLAC__stream_encoder_set_channels(encoder, sample.channels);
    FLAC__stream_encoder_set_bits_per_sample(encoder, sample.bits);
    FLAC__stream_encoder_set_sample_rate(encoder, sample.frequency);
    FLAC__stream_encoder_set_compression_level(encoder, 8);
    if (FLAC__stream_encoder_init_stream(encoder, flacEncoderWrite, flacEncoderSeek, flacEncoderTell, nullptr, device)
        != FLAC__STREAM_ENCODER_INIT_STATUS_OK) {
        FLAC__stream_encoder_delete(encoder);
        return false;
    }
    // Widened to 32 bits as the files made so far have it: 8-bit values as their unsigned
    // byte, 16-bit values from their low byte alone, sign-extended.
    const int valueBytes = sample.bits / 8;
    const qint64 frames = valueBytes ? qMin<qint64>(sample.samples, sample.data.size() / (valueBytes * sample.channels))
                                     : 0;
    const auto *bytes = reinterpret_cast<const uchar *>(sample.data.constData());
    std::vector<FLAC__int32> block(size_t(10000) * sample.channels);
    for (qint64 first = 0; first < frames; first += 10000) {
        const qint64 count = qMin<qint64>(10000, frames - first);
        for (qint64 i = 0; i < count * sample.channels; ++i) {
            const uchar *value = bytes + (first * sample.channels + i) * valueBytes;
            FLAC__int32 wide = 0;
            switch (sample.bits) {
            case 8:
                wide = value[0];
                break;
            case 16:
                wide = qint8(value[0]);
                break;
            case 24:
                wide = qint32(quint32(value[0]) << 8 | quint32(value[1]) << 16 | quint32(value[2]) << 24) >> 8;
                break;
            case 32:
                memcpy(&wide, value, 4);
                break;
            default:
                break;
            }
            block[size_t(i)] = wide;
        }
        FLAC__stream_encoder_process_interleaved(encoder, block.data(), uint32_t(count));
    }
    FLAC__stream_encoder_finish(encoder);
    FLAC__stream_encoder_delete(encoder);
    return true;
}

SoundSample soundFromMP3(QIODevice *device)
{
    SoundSample sample = zeroed();
    if (!openForReading(device))
        return sample;
    mpg123_init();
    int error = MPG123_OK;
    mpg123_handle *handle = mpg123_new(nullptr, &error);
    if (!handle) {
        mpg123_exit();
        return sample;
    }
    mpg123_param(handle, MPG123_ADD_FLAGS, MPG123_QUIET, 0);
    long rate = 0;
    int channels = 0;
    int encoding = 0;
    if (mpg123_replace_reader_handle(handle, mp3Read, mp3Seek, nullptr) == MPG123_OK
        && mpg123_open_handle(handle, device) == MPG123_OK
        && mpg123_getformat(handle, &rate, &channels, &encoding) == MPG123_OK && channels > 0) {
        if (encoding != MPG123_ENC_SIGNED_16) {
            mpg123_format_none(handle);
            mpg123_format(handle, rate, channels, MPG123_ENC_SIGNED_16);
        }
        mpg123_scan(handle);
        const off_t length = mpg123_length(handle);
        if (length > 0)
            sample.data.reserve(int(qMin<qint64>(qint64(length) * channels * 2, MaxDecodedBytes / 4)));
        std::vector<unsigned char> block(qMax<size_t>(mpg123_outblock(handle), 4096));
        for (;;) {
            size_t done = 0;
            const int result = mpg123_read(handle, block.data(), block.size(), &done);
            if (done > 0 && sample.data.size() + qint64(done) <= MaxDecodedBytes)
                sample.data.append(reinterpret_cast<const char *>(block.data()), int(done));
            if (result != MPG123_OK || sample.data.size() + qint64(block.size()) > MaxDecodedBytes)
                break;
        }
        sample.bits = 16;
        sample.channels = quint16(channels);
        sample.frequency = quint32(rate);
        sample.samples = quint32(sample.data.size() / (channels * 2));
        mpg123_close(handle);
    }
    mpg123_delete(handle);
    mpg123_exit();
    return sample;
}

bool loadSound(QIODevice *device, const char *format, SoundSample &sample)
{
    if (!openForReading(device) || !format)
        return false;
    const QByteArray name(format);
    if (name == "WAV") {
        sample = soundFromWAV(device);
    } else if (name == "OGG") {
        sample = soundFromOGG(device);
    } else if (name == "FLAC") {
        sample = soundFromFLAC(device);
    } else if (name == "MP3") {
        sample = soundFromMP3(device);
    } else {
        for (Extension *extension : ExtensionManager::list(Extension::SoundLoader)) {
            if (name == extension->format() && static_cast<SoundLoaderExtension *>(extension)->load(device, sample))
                break;
        }
    }
    return !sample.data.isEmpty();
}

bool saveSound(QIODevice *device, const char *format, const SoundSample &sample)
{
    if (!openForWriting(device) || !format)
        return false;
    const QByteArray name(format);
    if (name == "WAV")
        return soundToWAV(sample, device);
    if (name == "OGG")
        return soundToOGG(sample, device);
    if (name == "FLAC")
        return soundToFLAC(sample, device);
    for (Extension *extension : ExtensionManager::list(Extension::SoundSaver)) {
        if (name == extension->format() && static_cast<SoundSaverExtension *>(extension)->save(device, sample))
            return true;
    }
    return false;
}

} // namespace Ovra
