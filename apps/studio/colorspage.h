#pragma once

// The colours page: the light or dark scheme, every colour and format the editors ask
// for with a button each, and a preview of a code view painted with them.
#include "optionspages.h"

#include <QSet>
#include <QTemporaryDir>

#include <memory>

class ColorScheme;
class QComboBox;
class QPlainTextEdit;
class QSettings;
class QTableWidget;
class QTextCharFormat;

class ColorsPage : public OptionsPage
{
    Q_OBJECT
public:
    explicit ColorsPage(StudioHost *host, QWidget *parent = nullptr);
    ~ColorsPage() override;

    void load() override;
    void apply() override;
    void restoreDefaults() override;

    // The scheme as the page shows it, not yet the host's.
    QColor pendingColor(const QString &name) const;
    QTextCharFormat pendingFormat(const QString &name) const;

private:
    void buildTable();
    void showScheme();
    void updatePreview();
    void switchBase(int index);
    void resetColors();
    void changeFormat(const QString &name);
    static void copyScheme(ColorScheme *from, ColorScheme *to);

    // The page edits a scheme of its own over a copy of the settings, so that switching
    // between light and dark and picking colours touch nothing of the user's until OK.
    QTemporaryDir m_scratchDir;
    std::unique_ptr<QSettings> m_scratchSettings;
    std::unique_ptr<ColorScheme> m_scratch;
    QSet<int> m_touchedBases;
    bool m_showing = false;

    QComboBox *m_base;
    QTableWidget *m_table;
    QPlainTextEdit *m_preview;
};
