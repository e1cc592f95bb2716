#include "editors/sound/resampledlg.h"

#include "sound/sound.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPoint>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace Ovra {

QString soundIdentifierText(const QVariant &identifier)
{
    if (identifier.type() == QVariant::Point) {
        const QPoint point = identifier.toPoint();
        return QStringLiteral("%1,%2").arg(point.x()).arg(point.y());
    }
    return identifier.toString();
}

namespace {

QString soundRowText(Sound *sound)
{
    const SampleInfo info = sound->info();
    return QStringLiteral("%1  (%2 ch, %3 Hz, %4 bits)")
        .arg(soundIdentifierText(sound->identifier()))
        .arg(info.channels)
        .arg(info.frequency)
        .arg(info.bits);
}

void fillList(QListWidget *list, Sounds *sounds)
{
    list->clear();
    const uint count = sounds ? sounds->count() : 0;
    for (uint i = 0; i < count; ++i) {
        auto *item = new QListWidgetItem(soundRowText(sounds->at(i)), list);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Unchecked);
    }
}

QList<uint> checkedRows(const QListWidget *list)
{
    QList<uint> rows;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->checkState() == Qt::Checked)
            rows << uint(i);
    return rows;
}

} // namespace

ResampleDlg::ResampleDlg(Sounds *sounds, const SampleInfo &initial, QWidget *parent)
    : QDialog(parent)
    , m_sounds(sounds)
{
    setObjectName(QStringLiteral("ResampleDlg"));
    setWindowTitle(tr("Resample"));
    m_channels = new QComboBox(this);
    m_channels->setObjectName(QStringLiteral("channels"));
    m_channels->addItem(tr("Mono"), 1);
    m_channels->addItem(tr("Stereo"), 2);
    m_frequency = new QSpinBox(this);
    m_frequency->setObjectName(QStringLiteral("frequency"));
    m_frequency->setRange(1000, 192000);
    m_frequency->setSuffix(QStringLiteral(" Hz"));
    m_bits = new QComboBox(this);
    m_bits->setObjectName(QStringLiteral("bits"));
    for (int bits : {8, 16, 24, 32})
        m_bits->addItem(tr("%1 bits").arg(bits), bits);
    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("sounds"));
    fillList(m_list, sounds);

    auto *all = new QPushButton(tr("All"), this);
    all->setObjectName(QStringLiteral("all"));
    auto *clear = new QPushButton(tr("None"), this);
    clear->setObjectName(QStringLiteral("clear"));
    auto *invert = new QPushButton(tr("Invert"), this);
    invert->setObjectName(QStringLiteral("invert"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);

    auto *form = new QFormLayout;
    form->addRow(tr("Channels:"), m_channels);
    form->addRow(tr("Sample rate:"), m_frequency);
    form->addRow(tr("Bits per sample:"), m_bits);
    auto *choice = new QHBoxLayout;
    choice->addWidget(all);
    choice->addWidget(clear);
    choice->addWidget(invert);
    choice->addStretch(1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_list, 1);
    layout->addLayout(choice);
    layout->addWidget(buttons);

    setTarget(initial);
    connect(all, &QPushButton::clicked, this, &ResampleDlg::on_all_clicked);
    connect(clear, &QPushButton::clicked, this, &ResampleDlg::on_clear_clicked);
    connect(invert, &QPushButton::clicked, this, &ResampleDlg::on_invert_clicked);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_channels, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ResampleDlg::prefill);
    connect(m_bits, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ResampleDlg::prefill);
    connect(m_frequency, QOverload<int>::of(&QSpinBox::valueChanged), this, &ResampleDlg::prefill);
    connect(m_list, &QListWidget::itemChanged, this, [this] { m_byHand = true; });
}

SampleInfo ResampleDlg::target() const
{
    SampleInfo info;
    info.channels = quint16(m_channels->currentData().toUInt());
    info.frequency = quint32(m_frequency->value());
    info.bits = quint16(m_bits->currentData().toUInt());
    return info;
}

void ResampleDlg::setTarget(const SampleInfo &target)
{
    const QSignalBlocker channels(m_channels), frequency(m_frequency), bits(m_bits);
    m_channels->setCurrentIndex(target.channels == 2 ? 1 : 0);
    m_frequency->setValue(int(target.frequency));
    const int depth = m_bits->findData(target.bits == 20 ? 24 : int(target.bits));
    m_bits->setCurrentIndex(depth >= 0 ? depth : 1);
    prefill();
}

QList<uint> ResampleDlg::selectedSounds() const
{
    return checkedRows(m_list);
}

void ResampleDlg::prefill()
{
    if (m_byHand || !m_sounds)
        return;
    const SampleInfo wanted = target();
    const QSignalBlocker blocker(m_list);
    for (int i = 0; i < m_list->count() && uint(i) < m_sounds->count(); ++i) {
        const SampleInfo info = m_sounds->at(uint(i))->info();
        const bool differs = info.channels != wanted.channels || info.frequency != wanted.frequency
                             || info.bits != wanted.bits;
        m_list->item(i)->setCheckState(differs ? Qt::Checked : Qt::Unchecked);
    }
}

void ResampleDlg::on_all_clicked()
{
    for (int i = 0; i < m_list->count(); ++i)
        m_list->item(i)->setCheckState(Qt::Checked);
}

void ResampleDlg::on_clear_clicked()
{
    for (int i = 0; i < m_list->count(); ++i)
        m_list->item(i)->setCheckState(Qt::Unchecked);
}

void ResampleDlg::on_invert_clicked()
{
    for (int i = 0; i < m_list->count(); ++i) {
        QListWidgetItem *item = m_list->item(i);
        item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
    }
}

SndImportDlg::SndImportDlg(const QList<Sounds *> &sources, const QStringList &names, QWidget *parent)
    : QDialog(parent)
    , m_sources(sources)
{
    setObjectName(QStringLiteral("SndImportDlg"));
    setWindowTitle(tr("Import from another project"));
    m_files = new QComboBox(this);
    m_files->setObjectName(QStringLiteral("files"));
    m_files->addItems(names);
    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("sounds"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_files);
    layout->addWidget(m_list, 1);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_files, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SndImportDlg::fill);
    fill();
}

Sounds *SndImportDlg::source() const
{
    const int index = m_files->currentIndex();
    return index >= 0 && index < m_sources.size() ? m_sources.at(index) : nullptr;
}

QList<uint> SndImportDlg::selectedSounds() const
{
    return checkedRows(m_list);
}

void SndImportDlg::fill()
{
    fillList(m_list, source());
}

} // namespace Ovra
