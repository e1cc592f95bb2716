#pragma once

// The colours and character formats the editors ask the host for, by name: the code
// editor's line, range and parenthesis colours, its foreground and background, and one
// format a syntax class. Two built-in schemes, light and dark; the user's changes are kept
// per scheme in the settings, over the defaults, so that a later default change still
// reaches the colours the user never touched.
#include <QColor>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTextCharFormat>

class QSettings;

class ColorScheme : public QObject
{
    Q_OBJECT
public:
    enum Base { Light, Dark };

    // Reads the chosen scheme and the user's changes from the settings, which stay the
    // caller's and must outlive the scheme.
    explicit ColorScheme(QSettings *settings, QObject *parent = nullptr);

    Base base() const { return m_base; }
    // Switches to the other built-in scheme, with the user's changes of that one.
    void setBase(Base base);

    // The names the scheme knows, colours and formats, in the order an options page lists them.
    static QStringList colorNames();
    static QStringList formatNames();

    // The scheme's colour; `fallback` for a name it doesn't know.
    QColor color(const QString &name, const QColor &fallback) const;
    // The scheme's format merged over `fallback`: what the scheme says wins, what it
    // leaves unset stays the caller's.
    QTextCharFormat format(const QString &name, const QTextCharFormat &fallback) const;

    // The user's own colour or format for a name, stored at once; an invalid colour or an
    // empty format goes back to the default.
    void setColor(const QString &name, const QColor &color);
    void setFormat(const QString &name, const QTextCharFormat &format);
    // Forgets the user's changes of the current base.
    void resetToDefaults();

    // The built-in value, whatever the user changed.
    QColor defaultColor(const QString &name) const;
    QTextCharFormat defaultFormat(const QString &name) const;

signals:
    void changed();

private:
    void load();

    QSettings *m_settings;
    Base m_base = Light;
    QMap<QString, QColor> m_colors;
    QMap<QString, QTextCharFormat> m_formats;
};
