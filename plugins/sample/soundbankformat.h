#pragma once

// The bytes of a sound bank file (FORMATS.md), apart from the model that holds them, so
// that the reader can be tested and fuzzed on its own.
#include <QByteArray>
#include <QList>
#include <QString>

struct SoundBankEntry
{
    quint32 group = 0;
    quint32 number = 0;
    quint8 codec = 1; // 1 WAV, 2 Ogg Vorbis, 3 FLAC
    QByteArray bytes;
};

QByteArray writeSoundBank(const QList<SoundBankEntry> &entries);
// The entries of a bank file; false, with the reason, for bytes that aren't one.
bool readSoundBank(const QByteArray &bytes, QList<SoundBankEntry> &entries, QString &reason);
