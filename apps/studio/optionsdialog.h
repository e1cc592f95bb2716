#pragma once

// The studio's options: a list of pages on the left (general, code editor, colours,
// graphics view, shortcuts and the engine's own page) and the page on the right. Nothing
// reaches the host before OK or Apply; then every page writes through the host, the
// settings are synced and the editors are told to reconfigure.
#include <QColor>
#include <QDialog>
#include <QVariant>

#include <functional>
#include <memory>

class StudioHost;

class OptionsDialog : public QDialog
{
    Q_OBJECT
public:
    explicit OptionsDialog(StudioHost *host, QWidget *parent = nullptr);
    ~OptionsDialog() override;

    // Asks the user for a colour: the current one, the dialog to parent the question, and
    // the name of what is coloured. An invalid result means the user changed their mind.
    // Tests answer it themselves; the studio asks through the colour dialog.
    using ColorPicker = std::function<QColor(const QColor &, QWidget *, const QString &)>;
    // Installs a picker, or the colour dialog again with an empty function; returns the
    // one before.
    static ColorPicker setColorPicker(ColorPicker picker);
    static QColor pickColor(const QColor &initial, QWidget *parent, const QString &title);

    // The value the studio documents for each option the dialog offers. The graphics view
    // reads its options without a default of its own, so the studio stores these at start
    // for every option still missing: see writeMissingDefaults().
    static QVariant defaultValue(const QString &name);
    static QStringList optionNames();
    static void writeMissingDefaults(StudioHost *host);

    // The pages in the order of the list; the shown one.
    QStringList pageTitles() const;
    QWidget *page(const QString &title) const;
    void showPage(const QString &title);
    QString currentPageTitle() const;

public slots:
    void apply();
    void accept() override;

signals:
    // Everything was written and the host reconfigured.
    void applied();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
