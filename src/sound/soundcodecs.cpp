#include "sound/soundcodecs.h"
#include "sound/soundcodecs_p.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"

#include <FLAC/stream_decoder.h>
#include <FLAC/stream_encoder.h>
#include <mpg123.h>
#include <vorbis/codec.h>
#include <vorbis/vorbisenc.h>
#include <vorbis/vorbisfile.h>

#include <QIODevice>
#include <QtEndian>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace Ovra {

using namespace SoundCodecs;

namespace {

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

bool writePage(QIODevice *device, const ogg_page &page)
{
    return device->write(reinterpret_cast<const char *>(page.header), page.header_len) == page.header_len
           && device->write(reinterpret_cast<const char *>(page.body), page.body_len) == page.body_len;
}

// The encoder's blocks, written out as pages; false when the encoder or the device failed.
bool drainVorbis(vorbis_dsp_state &dsp, vorbis_block &block, ogg_stream_state &stream, QIODevice *device)
{
    bool ok = true;
    ogg_packet packet;
    ogg_page page;
    while (vorbis_analysis_blockout(&dsp, &block) == 1) {
        ok = vorbis_analysis(&block, nullptr) == 0 && ok;
        ok = vorbis_bitrate_addblock(&block) == 0 && ok;
        while (vorbis_bitrate_flushpacket(&dsp, &packet)) {
            ok = ogg_stream_packetin(&stream, &packet) == 0 && ok;
            while (ogg_stream_pageout(&stream, &page))
                ok = writePage(device, page) && ok;
        }
    }
    return ok;
}

// One value of the sample as the Vorbis writer takes it, by its byte size. The designed
// rules keep the scales of the files made so far (8- and 24-bit values unsigned, in 0 to
// 1); the complete ones centre every depth on 0 and scale it by its full range.
float vorbisValue(const uchar *value, int bytes, CodecRules rules)
{
    const bool complete = rules == CodecRules::Complete;
    switch (bytes) {
    case 1:
        return complete ? float((value[0] - 128) / 128.0) : float(value[0] / 255.0);
    case 2:
        return float(qFromLittleEndian<qint16>(value) / (complete ? 32768.0 : 32767.0));
    case 3: {
        const quint32 word = quint32(value[0]) | quint32(value[1]) << 8 | quint32(value[2]) << 16;
        if (complete)
            return float((qint32(word << 8) >> 8) / 8388608.0);
        return float(word * 5.960464477539063e-08);
    }
    case 4:
        return float(qFromLittleEndian<qint32>(value) * 4.656612873077393e-10);
    default:
        return 0;
    }
}

// One Vorbis stream being written to a device; the libraries' state is cleared with it.
struct VorbisWriter
{
    vorbis_info info;
    vorbis_comment comment;
    vorbis_dsp_state dsp;
    vorbis_block block;
    ogg_stream_state stream;
    QIODevice *device = nullptr;
    bool started = false;
    bool ok = true; // every call of the encoder and every write went through

    VorbisWriter(QIODevice *out, const SoundSample &sample)
        : device(out)
    {
        vorbis_info_init(&info);
        vorbis_comment_init(&comment);
        started = sample.channels > 0
                  && vorbis_encode_init_vbr(&info, sample.channels, long(sample.frequency), 0.4f) == 0;
        if (!started)
            return;
        vorbis_analysis_init(&dsp, &info);
        vorbis_block_init(&dsp, &block);
        ogg_stream_init(&stream, std::rand());
    }
    ~VorbisWriter()
    {
        if (started) {
            ogg_stream_clear(&stream);
            vorbis_block_clear(&block);
            vorbis_dsp_clear(&dsp);
        }
        vorbis_comment_clear(&comment);
        vorbis_info_clear(&info);
    }
    Q_DISABLE_COPY(VorbisWriter)

    void writeHeaders()
    {
        ogg_packet header, commentHeader, codeHeader;
        ok = vorbis_analysis_headerout(&dsp, &comment, &header, &commentHeader, &codeHeader) == 0 && ok;
        for (ogg_packet *packet : {&header, &commentHeader, &codeHeader})
            ok = ogg_stream_packetin(&stream, packet) == 0 && ok;
        flush();
    }
    void flush()
    {
        ogg_page page;
        while (ogg_stream_flush(&stream, &page))
            ok = writePage(device, page) && ok;
    }
    // `frames` frames from `first` on, 0 to end the stream.
    void encode(const SoundSample &sample, qint64 first, int frames, int valueBytes, CodecRules rules)
    {
        const qint64 valueCount = valueBytes ? sample.data.size() / valueBytes : 0;
        const auto *bytes = reinterpret_cast<const uchar *>(sample.data.constData());
        if (frames > 0) {
            float **buffer = vorbis_analysis_buffer(&dsp, frames);
            for (int i = 0; i < frames; ++i) {
                for (int channel = 0; channel < sample.channels; ++channel) {
                    const qint64 index = (first + i) * sample.channels + channel;
                    buffer[channel][i] = index < valueCount ? vorbisValue(bytes + index * valueBytes, valueBytes, rules)
                                                            : 0;
                }
            }
        }
        ok = vorbis_analysis_wrote(&dsp, frames) == 0 && ok;
        ok = drainVorbis(dsp, block, stream, device) && ok;
    }
};

// ---- FLAC ---------------------------------------------------------------------------------

struct FlacReading
{
    QIODevice *device = nullptr;
    SoundSample *sample = nullptr;
    CodecRules rules = CodecRules::Designed;
    int valueBytes = 0;
    int shift = 0; // the complete rules put the values at the top of their bytes
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
            quint32 value = quint32(buffer[channel][i]) << reading->shift;
            // 8-bit FLAC values are signed; this system's are unsigned, with 128 as silence.
            if (reading->valueBytes == 1 && reading->rules == CodecRules::Complete)
                value ^= 0x80;
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
    // Depths between the usual ones are kept in the next whole byte: at its bottom under
    // the designed rules, at its top (so at full scale) under the complete ones.
    reading->valueBytes = int((info.bits_per_sample + 7) / 8);
    sample.bits = quint16(reading->valueBytes * 8);
    if (reading->rules == CodecRules::Complete)
        reading->shift = int(reading->valueBytes * 8 - info.bits_per_sample);
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

// One value widened to 32 bits for the encoder. The designed rules take 8-bit values as
// their unsigned byte and 16-bit values from their low byte alone, sign-extended, as the
// files made so far have them; the complete ones take 16-bit values whole and centre
// 8-bit values on 0, as FLAC holds them. Any other depth is 0.
FLAC__int32 flacValue(const uchar *value, quint16 bits, CodecRules rules)
{
    const bool complete = rules == CodecRules::Complete;
    switch (bits) {
    case 8:
        return complete ? FLAC__int32(value[0]) - 128 : value[0];
    case 16:
        return complete ? qFromLittleEndian<qint16>(value) : qint8(value[0]);
    case 24:
        return qint32(quint32(value[0]) << 8 | quint32(value[1]) << 16 | quint32(value[2]) << 24) >> 8;
    case 32:
        return qFromLittleEndian<qint32>(value);
    default:
        return 0;
    }
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

SoundSample soundFromOGG(QIODevice *device)
{
    return soundFromOGG(device, CodecRules::Designed);
}

SoundSample soundFromOGG(QIODevice *device, CodecRules rules)
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
    bool sized = declared > 0 && declared <= MaxDecodedBytes / 4;
    const qint64 limit = sized ? declared : MaxDecodedBytes;
    if (sized)
        sample.data.resize(int(declared));
    qint64 filled = 0;
    int section = 0;
    int holes = 0;
    char piece[65536];
    for (;;) {
        const qint64 room = limit - filled;
        if (room <= 0)
            break;
        char *target = sized ? sample.data.data() + filled : piece;
        const long read = ov_read(&file, target, int(qMin<qint64>(room, sizeof piece)), 0, 2, 1, &section);
        // A gap in the stream (a page lost) is passed over under the complete rules.
        if (read == OV_HOLE && rules == CodecRules::Complete && ++holes < 1000)
            continue;
        if (read <= 0)
            break;
        if (!sized)
            sample.data.append(piece, int(read));
        filled += read;
    }
    ov_clear(&file);
    // A stream that gave less than it told holds what it gave, under the complete rules.
    if (sized && filled < declared && rules == CodecRules::Complete) {
        sample.data.truncate(int(filled - filled % (sample.channels * 2)));
        sized = false;
    }
    sample.samples = sized ? quint32(total) : quint32(sample.data.size() / (sample.channels * 2));
    return sample;
}

bool soundToOGG(const SoundSample &sample, QIODevice *device)
{
    return soundToOGG(sample, device, CodecRules::Designed);
}

bool soundToOGG(const SoundSample &sample, QIODevice *device, CodecRules rules)
{
    const bool complete = rules == CodecRules::Complete;
    if (complete && !SoundCodecs::isDepth(sample.bits))
        return false;
    if (!openForWriting(device))
        return false;
    VorbisWriter writer(device, sample);
    if (!writer.started)
        return false; // nothing the encoder could set up for: no stream is written
    writer.writeHeaders();

    // The designed rules divide the frame count by the channels once more than the data
    // needs, and end the stream properly only when the count is a whole number of blocks:
    // both stand as the files made so far have them. The complete rules write every frame
    // the data holds and always end the stream.
    const int valueBytes = complete ? (sample.bits + 7) / 8 : sample.bits / 8;
    qint64 remaining = complete ? qMin<qint64>(sample.samples, sample.data.size() / (valueBytes * sample.channels))
                                : qint64(sample.samples / sample.channels);
    qint64 offset = 0;
    do {
        const int frames = int(qMin<qint64>(remaining, 65536));
        if (frames > 0)
            writer.encode(sample, offset, frames, valueBytes, rules);
        offset += frames;
        remaining -= 65536;
    } while (remaining > 0);
    if (remaining == 0 || complete)
        writer.encode(sample, offset, 0, valueBytes, rules);
    if (complete)
        writer.flush();
    return !complete || writer.ok;
}

SoundSample soundFromFLAC(QIODevice *device)
{
    return soundFromFLAC(device, CodecRules::Designed);
}

SoundSample soundFromFLAC(QIODevice *device, CodecRules rules)
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
    reading.rules = rules;
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
    // Fewer frames than the stream info promised leave silence at the end under the
    // designed rules; the complete ones keep what was decoded.
    if (rules == CodecRules::Complete && reading.written < sample.data.size())
        sample.data.truncate(int(reading.written));
    if (reading.written > sample.data.size() || sample.samples == 0
        || (rules == CodecRules::Complete && reading.written != reading.declaredBytes))
        sample.samples = quint32(reading.written / (qint64(sample.channels) * reading.valueBytes));
    return sample;
}

bool soundToFLAC(const SoundSample &sample, QIODevice *device)
{
    return soundToFLAC(sample, device, CodecRules::Designed);
}

bool soundToFLAC(const SoundSample &sample, QIODevice *device, CodecRules rules)
{
    const bool complete = rules == CodecRules::Complete;
    if (complete && (sample.channels == 0 || !isDepth(sample.bits)))
        return false;
    if (!openForWriting(device))
        return false;
    FLAC__StreamEncoder *encoder = FLAC__stream_encoder_new();
    if (!encoder)
        return false;
    const quint16 bits = complete && sample.bits == 20 ? 24 : sample.bits;
    const int valueBytes = bits / 8;
    const qint64 frames = valueBytes && sample.channels
                              ? qMin<qint64>(sample.samples, sample.data.size() / (valueBytes * sample.channels))
                              : 0;
    FLAC__stream_encoder_set_channels(encoder, sample.channels);
    FLAC__stream_encoder_set_bits_per_sample(encoder, bits);
    FLAC__stream_encoder_set_sample_rate(encoder, sample.frequency);
    FLAC__stream_encoder_set_compression_level(encoder, 8);
    if (complete)
        FLAC__stream_encoder_set_total_samples_estimate(encoder, FLAC__uint64(frames));
    if (FLAC__stream_encoder_init_stream(encoder, flacEncoderWrite, flacEncoderSeek, flacEncoderTell, nullptr, device)
        != FLAC__STREAM_ENCODER_INIT_STATUS_OK) {
        FLAC__stream_encoder_delete(encoder);
        return false;
    }
    const auto *bytes = reinterpret_cast<const uchar *>(sample.data.constData());
    std::vector<FLAC__int32> block(size_t(10000) * sample.channels);
    bool ok = true;
    for (qint64 first = 0; first < frames && ok; first += 10000) {
        const qint64 count = qMin<qint64>(10000, frames - first);
        for (qint64 i = 0; i < count * sample.channels; ++i)
            block[size_t(i)] = flacValue(bytes + (first * sample.channels + i) * valueBytes, bits, rules);
        // The designed rules go on past a failure, and report none.
        ok = FLAC__stream_encoder_process_interleaved(encoder, block.data(), uint32_t(count)) || !complete;
    }
    ok = FLAC__stream_encoder_finish(encoder) && ok;
    FLAC__stream_encoder_delete(encoder);
    return ok || !complete;
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
    return loadSound(device, format, sample, CodecRules::Designed);
}

bool loadSound(QIODevice *device, const char *format, SoundSample &sample, CodecRules rules)
{
    if (!openForReading(device) || !format)
        return false;
    const QByteArray name(format);
    if (name == "WAV") {
        sample = soundFromWAV(device, rules);
    } else if (name == "OGG") {
        sample = soundFromOGG(device, rules);
    } else if (name == "FLAC") {
        sample = soundFromFLAC(device, rules);
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
    return saveSound(device, format, sample, CodecRules::Designed);
}

bool saveSound(QIODevice *device, const char *format, const SoundSample &sample, CodecRules rules)
{
    if (!openForWriting(device) || !format)
        return false;
    const QByteArray name(format);
    if (name == "WAV")
        return soundToWAV(sample, device, rules);
    if (name == "OGG")
        return soundToOGG(sample, device, rules);
    if (name == "FLAC")
        return soundToFLAC(sample, device, rules);
    for (Extension *extension : ExtensionManager::list(Extension::SoundSaver)) {
        if (name == extension->format() && static_cast<SoundSaverExtension *>(extension)->save(device, sample))
            return true;
    }
    return false;
}

} // namespace Ovra
