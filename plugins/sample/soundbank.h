#pragma once

// The sample engine's sound bank: sounds kept as the encoded files they came as (WAV,
// Ogg Vorbis or FLAC), each under a group and a number. FORMATS.md describes the file.
#include "foundation/messages.h"
#include "sound/sound.h"

#include <QPoint>

#include <memory>

class SoundBank;

// An entry: its identifier is a QPoint of the group (x) and the number (y).
class BankSound : public Ovra::Sound
{
public:
    enum Codec : quint8 { Wav = 1, Ogg = 2, Flac = 3 };

    BankSound(SoundBank *bank, QPoint identifier, Codec codec, const QByteArray &bytes);

    QVariant property(const QString &name) const override;
    void setProperty(const QString &name, const QVariant &value) override;
    uint index() const override;
    Ovra::Sounds *parent() const override;
    Ovra::Sound *duplicate() override;
    bool isEmpty() const override { return m_bytes.isEmpty(); }
    Ovra::SoundSample sample() const override;
    Ovra::SampleInfo info() const override;
    // Kept as WAV unless the sound came as Ogg Vorbis or FLAC and stays in that form.
    bool setSample(const Ovra::SoundSample &sample) override;
    QVariant identifier() const override { return m_identifier; }
    void setIdentifier(const QVariant &identifier) override;

    Codec codec() const { return m_codec; }
    QByteArray bytes() const { return m_bytes; }

private:
    friend class SoundBank;
    SoundBank *m_bank;
    QPoint m_identifier;
    Codec m_codec;
    QByteArray m_bytes;
};

class SoundBank : public Ovra::Sounds
{
    Q_OBJECT

public:
    SoundBank();
    ~SoundBank() override;

    // The bytes of a bank file, and a bank from them; false (and the bank as it was) for
    // bytes that aren't one, with the reason among the file's messages.
    QByteArray toBytes() const;
    bool fromBytes(const QByteArray &bytes);

    // Project file
    bool fromFile(Ovra::Archive &archive, const QString &name, uint flags, Ovra::JobStats *stats) override;
    bool toFile(Ovra::Archive &archive, const QString &name, uint flags, Ovra::JobStats *stats) override;
    const char *fileExtension() const override { return "sbk"; }
    QString fileName() const override { return m_fileName; }
    bool isEmpty() const override { return m_sounds.isEmpty(); }
    bool isModified() const override { return m_modified; }
    // The container writes itself whole; nothing keeps it from saving.
    bool canSave() const override { return true; }
    QList<SearchResult> search(Ovra::RegExp &, uint) override { return {}; }
    void replace(QList<SearchResult> &, const QString &) override {}
    void free() override { delete this; }
    Ovra::Messages *fileMessages() const override { return m_messages.get(); }

    // Sounds
    uint selected() const override { return m_selected; }
    void setSelected(uint index) override;
    uint count() const override { return uint(m_sounds.size()); }
    Ovra::Sound *at(uint index) const override;
    Ovra::Sound *add(const QVariant &identifier, const Ovra::SoundSample &sample) override;
    Ovra::Sound *insert(uint index, const QVariant &identifier, const Ovra::SoundSample &sample) override;
    void remove(uint index) override;
    int find(uint from, const QVariant &identifier) const override;
    void clear() override;

    // A sound file kept as it came (an import of an Ogg Vorbis or FLAC file keeps its
    // encoding); null when the bytes don't decode as that codec.
    Ovra::Sound *addFile(const QVariant &identifier, BankSound::Codec codec, const QByteArray &bytes);

    // Organizable
    void move(uint from, uint to) override;
    int compare(uint a, uint b) override;
    void beginChange() override;
    void endChange() override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    friend class BankSound;
    void touched();
    BankSound *adopt(uint index, BankSound *sound);

    QList<BankSound *> m_sounds;
    QString m_fileName;
    uint m_selected = 0;
    int m_changes = 0;
    bool m_modified = false;
    std::unique_ptr<Ovra::SimpleMessages> m_messages;
};
