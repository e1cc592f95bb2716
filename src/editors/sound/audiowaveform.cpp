#include "audiowaveform.h"

#include "editors/sound/audiodata.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Ovra {

namespace {

struct Span
{
    float lo = std::numeric_limits<float>::max();
    float hi = std::numeric_limits<float>::lowest();
    void add(float l, float h)
    {
        lo = std::min(lo, l);
        hi = std::max(hi, h);
    }
};

uint blocksOf(uint frames, uint block)
{
    return (frames + block - 1) / block;
}

} // namespace

AudioWaveform::AudioWaveform(AudioData *data, QObject *parent)
    : QObject(parent)
    , m_data(data)
    , m_wave(20, 90, 160)
    , m_background(Qt::white)
{
    m_fine.block = FineBlock;
    m_coarse.block = CoarseBlock;
    connect(data, &AudioData::sampleReset, this, &AudioWaveform::rebuild);
    connect(data, &AudioData::framesReplaced, this, &AudioWaveform::framesReplaced);
    rebuild();
}

AudioWaveform::~AudioWaveform() = default;

void AudioWaveform::setHScale(double scale)
{
    if (!(scale > 0) || !std::isfinite(scale) || scale == m_hScale)
        return;
    m_hScale = scale;
    invalidate();
}

void AudioWaveform::setVScale(double scale)
{
    if (!(scale > 0) || !std::isfinite(scale) || scale == m_vScale)
        return;
    m_vScale = scale;
    invalidate();
}

void AudioWaveform::setFirstFrame(uint frame)
{
    frame = std::min(frame, m_data->sample.samples);
    if (frame == m_firstFrame)
        return;
    m_firstFrame = frame;
    invalidate();
}

uint AudioWaveform::frameAt(int x) const
{
    const double frame = m_firstFrame + std::max(0, x) * framesPerPixel();
    return uint(std::min(frame, double(m_data->sample.samples)));
}

int AudioWaveform::xOf(uint frame) const
{
    const double x = (double(frame) - double(m_firstFrame)) * m_hScale;
    return int(std::floor(std::clamp(x, -1e9, 1e9)));
}

void AudioWaveform::setColors(const QColor &wave, const QColor &background)
{
    m_wave = wave;
    m_background = background;
    invalidate();
}

void AudioWaveform::invalidate()
{
    m_dirty = true;
    emit changed();
}

void AudioWaveform::rebuild()
{
    m_firstFrame = std::min(m_firstFrame, m_data->sample.samples);
    buildFine(0, std::numeric_limits<uint>::max());
    buildCoarse(0, std::numeric_limits<uint>::max());
    invalidate();
}

void AudioWaveform::framesReplaced(uint frame, uint removed, uint inserted)
{
    // A change in place touches only its own blocks; a change of length moves every frame
    // behind it to other blocks, so those are redone from the edit on.
    const uint end = removed == inserted ? blocksOf(frame + inserted, FineBlock) : std::numeric_limits<uint>::max();
    const uint first = frame / FineBlock;
    buildFine(first, end);
    buildCoarse(first / (CoarseBlock / FineBlock),
                end == std::numeric_limits<uint>::max() ? end : blocksOf(end, CoarseBlock / FineBlock));
    m_firstFrame = std::min(m_firstFrame, m_data->sample.samples);
    invalidate();
}

void AudioWaveform::buildFine(uint firstBlock, uint endBlock)
{
    const SoundSample &s = m_data->sample;
    const int channels = s.channels;
    const uint bytes = s.bits / 8u;
    const uint blocks = channels && bytes ? blocksOf(s.samples, FineBlock) : 0;
    m_fine.lows.resize(int(blocks * uint(channels)));
    m_fine.highs.resize(m_fine.lows.size());
    endBlock = std::min(endBlock, blocks);
    const char *data = s.data.constData();
    for (uint b = firstBlock; b < endBlock; ++b) {
        const uint from = b * FineBlock;
        const uint to = std::min(from + FineBlock, s.samples);
        for (int c = 0; c < channels; ++c) {
            Span span;
            const char *p = data + (size_t(from) * uint(channels) + uint(c)) * bytes;
            for (uint f = from; f < to; ++f, p += size_t(channels) * bytes) {
                const float v = decodeSample(p, s.bits);
                span.add(v, v);
            }
            m_fine.lows[int(b * uint(channels)) + c] = span.lo;
            m_fine.highs[int(b * uint(channels)) + c] = span.hi;
        }
    }
}

void AudioWaveform::buildCoarse(uint firstBlock, uint endBlock)
{
    const uint channels = m_data->sample.channels;
    const uint fineBlocks = channels ? uint(m_fine.lows.size()) / channels : 0;
    const uint ratio = CoarseBlock / FineBlock;
    const uint blocks = blocksOf(fineBlocks, ratio);
    m_coarse.lows.resize(int(blocks * channels));
    m_coarse.highs.resize(m_coarse.lows.size());
    endBlock = std::min(endBlock, blocks);
    for (uint b = firstBlock; b < endBlock; ++b) {
        const uint to = std::min((b + 1) * ratio, fineBlocks);
        for (uint c = 0; c < channels; ++c) {
            Span span;
            for (uint f = b * ratio; f < to; ++f)
                span.add(m_fine.lows[int(f * channels + c)], m_fine.highs[int(f * channels + c)]);
            m_coarse.lows[int(b * channels + c)] = span.lo;
            m_coarse.highs[int(b * channels + c)] = span.hi;
        }
    }
}

void AudioWaveform::rawPeak(int channel, uint from, uint to, float &lo, float &hi) const
{
    const SoundSample &s = m_data->sample;
    to = std::min(to, s.samples);
    Span span;
    const uint bytes = s.bits / 8u;
    if (channel >= 0 && channel < s.channels && bytes) {
        const char *p = s.data.constData() + (size_t(from) * s.channels + uint(channel)) * bytes;
        for (uint f = from; f < to; ++f, p += size_t(s.channels) * bytes) {
            const float v = decodeSample(p, s.bits);
            span.add(v, v);
        }
    }
    lo = from < to ? span.lo : 0.0f;
    hi = from < to ? span.hi : 0.0f;
}

void AudioWaveform::peak(int channel, uint from, uint to, float &lo, float &hi) const
{
    const SoundSample &s = m_data->sample;
    to = std::min(to, s.samples);
    if (channel < 0 || channel >= s.channels || from >= to) {
        lo = hi = 0.0f;
        return;
    }
    const uint channels = s.channels;
    Span span;
    auto raw = [&](uint a, uint b) {
        if (a >= b)
            return;
        float l, h;
        rawPeak(channel, a, b, l, h);
        span.add(l, h);
    };
    auto blocks = [&](const Level &level, uint a, uint b) {
        for (uint i = a; i < b; ++i)
            span.add(level.lows[int(i * channels) + channel], level.highs[int(i * channels) + channel]);
    };
    // Whole fine blocks inside the range, then whole coarse blocks inside those; the
    // ragged ends are read from the frames and the fine blocks.
    const uint fa = blocksOf(from, FineBlock), fb = to / FineBlock;
    if (fa >= fb) {
        raw(from, to);
    } else {
        raw(from, fa * FineBlock);
        raw(fb * FineBlock, to);
        const uint ratio = CoarseBlock / FineBlock;
        const uint ca = blocksOf(fa, ratio), cb = fb / ratio;
        if (ca >= cb) {
            blocks(m_fine, fa, fb);
        } else {
            blocks(m_fine, fa, ca * ratio);
            blocks(m_fine, cb * ratio, fb);
            blocks(m_coarse, ca, cb);
        }
    }
    lo = span.lo;
    hi = span.hi;
}

QImage AudioWaveform::picture(const QSize &size)
{
    if (m_dirty || m_picture.size() != size) {
        m_picture = render(size, Summaries);
        m_dirty = false;
    }
    return m_picture;
}

QImage AudioWaveform::render(const QSize &size, Source source) const
{
    QImage image(size.expandedTo(QSize(1, 1)), QImage::Format_RGB32);
    image.fill(m_background);
    const SoundSample &s = m_data->sample;
    const int channels = s.channels;
    if (!channels || !s.samples)
        return image;
    QPainter painter(&image);
    const double lane = double(image.height()) / channels;
    const double fpp = framesPerPixel();
    QColor axis = m_wave;
    axis.setAlpha(90);
    for (int c = 0; c < channels; ++c) {
        const double middle = lane * (c + 0.5);
        const double half = lane / 2 * m_vScale;
        painter.setPen(axis);
        painter.drawLine(QPointF(0, middle), QPointF(image.width(), middle));
        painter.setPen(m_wave);
        float prevLo = 0, prevHi = 0;
        for (int x = 0; x < image.width(); ++x) {
            const uint from = m_firstFrame + uint(std::floor(x * fpp));
            if (from >= s.samples)
                break;
            const uint to = std::max(from + 1, m_firstFrame + uint(std::floor((x + 1) * fpp)));
            float lo, hi;
            if (source == Summaries)
                peak(c, from, to, lo, hi);
            else
                rawPeak(c, from, to, lo, hi);
            // Joined to the column before, so that a zoomed-in wave stays one line.
            const float top = x ? std::max(hi, prevLo) : hi;
            const float bottom = x ? std::min(lo, prevHi) : lo;
            prevLo = lo;
            prevHi = hi;
            painter.drawLine(QPointF(x + 0.5, middle - top * half), QPointF(x + 0.5, middle - bottom * half));
        }
    }
    return image;
}

} // namespace Ovra
