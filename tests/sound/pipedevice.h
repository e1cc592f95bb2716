#pragma once

// Bytes handed over as a pipe hands them: a sequential device that can't seek or tell its
// size, and gives at most a few bytes a read, so that readers meet a file in pieces.
#include <QIODevice>

#include <cstring>

class PipeDevice : public QIODevice
{
public:
    explicit PipeDevice(const QByteArray &bytes, qint64 piece = 1000)
        : m_bytes(bytes)
        , m_piece(piece)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    // Like a pipe, no more than its buffer's worth at a time.
    qint64 bytesAvailable() const override { return qMin(m_piece, m_bytes.size() - m_at); }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 count = qMin(qMin(maxSize, m_piece), m_bytes.size() - m_at);
        memcpy(data, m_bytes.constData() + m_at, size_t(count));
        m_at += count;
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_piece;
    qint64 m_at = 0;
};
