#pragma once

#include "foundation/global.h"
#include "sound/soundsample.h"

#include <QDialog>
#include <QList>

class QComboBox;
class QListWidget;
class QSpinBox;

namespace Ovra {

class Sounds;

// Asks for the shape that sounds are brought to (channels, rate and depth) and which
// sounds of the file go. The sounds whose shape differs from the chosen one are ticked,
// anew at each change of the shape, until the user ticks some by hand.
class OVRA_EXPORT ResampleDlg : public QDialog
{
    Q_OBJECT

public:
    ResampleDlg(Sounds *sounds, const SampleInfo &initial, QWidget *parent = nullptr);

    SampleInfo target() const;
    void setTarget(const SampleInfo &target);
    // The rows ticked, in order.
    QList<uint> selectedSounds() const;
    QListWidget *list() const { return m_list; }

public slots:
    void on_all_clicked();
    void on_clear_clicked();
    void on_invert_clicked();

private:
    void prefill();

    Sounds *m_sounds;
    QComboBox *m_channels;
    QSpinBox *m_frequency;
    QComboBox *m_bits;
    QListWidget *m_list;
    bool m_byHand = false;
};

// The chooser of a sound import: the sound files of the other open projects, and the
// sounds of the one picked.
class OVRA_EXPORT SndImportDlg : public QDialog
{
    Q_OBJECT

public:
    // `sources` are the files offered, with the names shown for them.
    SndImportDlg(const QList<Sounds *> &sources, const QStringList &names, QWidget *parent = nullptr);

    Sounds *source() const;
    QList<uint> selectedSounds() const;
    QListWidget *list() const { return m_list; }
    QComboBox *files() const { return m_files; }

private:
    void fill();

    QList<Sounds *> m_sources;
    QComboBox *m_files;
    QListWidget *m_list;
};

// The text a sound's identifier is shown by.
OVRA_EXPORT QString soundIdentifierText(const QVariant &identifier);

} // namespace Ovra
