#include "soundbank.h"

#include "soundbankformat.h"
#include "wholefile.h"

#include "foundation/archive.h"
#include "sound/soundcodecs.h"

#include <QBuffer>

using namespace Ovra;

namespace {

const char *formatOf(BankSound::Codec codec)
{
    switch (codec) {
    case BankSound::Ogg:
        return "OGG";
    case BankSound::Flac:
        return "FLAC";
    case BankSound::Wav:
        break;
    }
    return "WAV";
}

} // namespace

// ---- one sound -----------------------------------------------------------------------

BankSound::BankSound(SoundBank *bank, QPoint identifier, Codec codec, const QByteArray &bytes)
    : m_bank(bank)
    , m_identifier(identifier)
    , m_codec(codec)
    , m_bytes(bytes)
{
}

QVariant BankSound::property(const QString &name) const
{
    return name == QLatin1String("Identifier") ? QVariant(m_identifier) : QVariant();
}

void BankSound::setProperty(const QString &name, const QVariant &value)
{
    if (name == QLatin1String("Identifier"))
        setIdentifier(value);
}

uint BankSound::index() const
{
    return uint(m_bank->m_sounds.indexOf(const_cast<BankSound *>(this)));
}

Sounds *BankSound::parent() const
{
    return m_bank;
}

Sound *BankSound::duplicate()
{
    return m_bank->adopt(index() + 1, new BankSound(m_bank, m_identifier, m_codec, m_bytes));
}

SoundSample BankSound::sample() const
{
    QByteArray bytes = m_bytes;
    QBuffer buffer(&bytes);
    SoundSample sample;
    loadSound(&buffer, formatOf(m_codec), sample, CodecRules::Complete);
    return sample;
}

SampleInfo BankSound::info() const
{
    if (m_codec == Wav) {
        QByteArray bytes = m_bytes;
        QBuffer buffer(&bytes);
        return soundInfoFromWAV(&buffer, CodecRules::Complete);
    }
    return sample();
}

bool BankSound::setSample(const SoundSample &sample)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (sample.data.isEmpty() || !soundToWAV(sample, &buffer, CodecRules::Complete))
        return false;
    m_bank->beginChange();
    m_codec = Wav;
    m_bytes = bytes;
    m_bank->touched();
    m_bank->endChange();
    return true;
}

void BankSound::setIdentifier(const QVariant &identifier)
{
    const QPoint point = identifier.toPoint();
    if (point == m_identifier)
        return;
    m_bank->beginChange();
    m_identifier = point;
    m_bank->touched();
    const QModelIndex row = m_bank->index(int(index()));
    emit m_bank->dataChanged(row, row);
    m_bank->endChange();
}

// ---- the bank ---------------------------------------------------------------------------

SoundBank::SoundBank()
    : m_messages(std::make_unique<SimpleMessages>(this))
{
}

SoundBank::~SoundBank()
{
    qDeleteAll(m_sounds);
}

QByteArray SoundBank::toBytes() const
{
    QList<SoundBankEntry> entries;
    for (const BankSound *sound : m_sounds)
        entries << SoundBankEntry{quint32(sound->m_identifier.x()), quint32(sound->m_identifier.y()),
                                  quint8(sound->m_codec), sound->m_bytes};
    return writeSoundBank(entries);
}

bool SoundBank::fromBytes(const QByteArray &bytes)
{
    m_messages->clear();
    QList<SoundBankEntry> entries;
    QString reason;
    if (!readSoundBank(bytes, entries, reason)) {
        m_messages->add(Message::Error, reason, 0, 0);
        return false;
    }
    beginResetModel();
    qDeleteAll(m_sounds);
    m_sounds.clear();
    for (const SoundBankEntry &entry : qAsConst(entries)) {
        m_sounds << new BankSound(this, QPoint(int(entry.group), int(entry.number)), BankSound::Codec(entry.codec),
                                  entry.bytes);
    }
    m_selected = 0;
    m_modified = false;
    endResetModel();
    return true;
}

bool SoundBank::fromFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    QByteArray bytes;
    if (!readWholeFile(archive, name, bytes)) {
        m_messages->clear();
        m_messages->add(Message::Error, QStringLiteral("The sound bank can't be read."), 0, 0);
        return false;
    }
    if (!fromBytes(bytes))
        return false;
    if (!(flags & Foreign))
        m_fileName = name;
    ProjectFile::fromFile(archive, name, flags, stats); // the parent's bookkeeping
    return true;
}

bool SoundBank::toFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    if (!writeWholeFile(archive, name, toBytes()))
        return false;
    if (!(flags & Foreign)) {
        m_fileName = name;
        m_modified = false;
        emit changed(false);
    }
    ProjectFile::toFile(archive, name, flags, stats); // the parent's bookkeeping
    return true;
}

void SoundBank::setSelected(uint index)
{
    m_selected = qMin(index, qMax(count(), 1u) - 1);
}

Sound *SoundBank::at(uint index) const
{
    return index < count() ? m_sounds.at(int(index)) : nullptr;
}

Sound *SoundBank::add(const QVariant &identifier, const SoundSample &sample)
{
    return insert(count(), identifier, sample);
}

Sound *SoundBank::insert(uint index, const QVariant &identifier, const SoundSample &sample)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (sample.data.isEmpty() || !soundToWAV(sample, &buffer, CodecRules::Complete))
        return nullptr;
    return adopt(qMin(index, count()), new BankSound(this, identifier.toPoint(), BankSound::Wav, bytes));
}

Sound *SoundBank::addFile(const QVariant &identifier, BankSound::Codec codec, const QByteArray &bytes)
{
    auto *sound = new BankSound(this, identifier.toPoint(), codec, bytes);
    if (sound->sample().data.isEmpty()) {
        delete sound;
        return nullptr;
    }
    return adopt(count(), sound);
}

BankSound *SoundBank::adopt(uint index, BankSound *sound)
{
    beginChange();
    beginInsertRows(QModelIndex(), int(index), int(index));
    m_sounds.insert(int(index), sound);
    endInsertRows();
    touched();
    endChange();
    return sound;
}

void SoundBank::remove(uint index)
{
    if (index >= count())
        return;
    beginChange();
    beginRemoveRows(QModelIndex(), int(index), int(index));
    delete m_sounds.takeAt(int(index));
    endRemoveRows();
    touched();
    endChange();
}

int SoundBank::find(uint from, const QVariant &identifier) const
{
    const QPoint wanted = identifier.toPoint();
    for (int i = int(from); i < m_sounds.size(); ++i) {
        if (m_sounds.at(i)->m_identifier == wanted)
            return i;
    }
    return -1;
}

void SoundBank::clear()
{
    if (m_sounds.isEmpty())
        return;
    beginChange();
    beginResetModel();
    qDeleteAll(m_sounds);
    m_sounds.clear();
    endResetModel();
    touched();
    endChange();
}

void SoundBank::move(uint from, uint to)
{
    if (from >= count() || to >= count() || from == to)
        return;
    beginChange();
    beginMoveRows(QModelIndex(), int(from), int(from), QModelIndex(), int(to > from ? to + 1 : to));
    m_sounds.move(int(from), int(to));
    endMoveRows();
    touched();
    endChange();
}

int SoundBank::compare(uint a, uint b)
{
    const QPoint x = m_sounds.at(int(a))->m_identifier;
    const QPoint y = m_sounds.at(int(b))->m_identifier;
    if (x.x() != y.x())
        return x.x() < y.x() ? -1 : 1;
    return x.y() == y.y() ? 0 : x.y() < y.y() ? -1 : 1;
}

void SoundBank::beginChange()
{
    ++m_changes;
}

void SoundBank::endChange()
{
    if (--m_changes == 0 && m_modified)
        emit changed(true);
}

void SoundBank::touched()
{
    m_modified = true;
    emit modified();
}

int SoundBank::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_sounds.size();
}

QVariant SoundBank::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_sounds.size() || role != Qt::DisplayRole)
        return QVariant();
    const QPoint id = m_sounds.at(index.row())->m_identifier;
    return QStringLiteral("%1, %2").arg(id.x()).arg(id.y());
}
