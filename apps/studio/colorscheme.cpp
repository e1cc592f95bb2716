#include "colorscheme.h"

#include <QSettings>

namespace {

struct ColorEntry
{
    const char *name;
    QRgb light;
    QRgb dark;
};

// The code editor's own colours. The light ones are the editor's defaults.
const ColorEntry colorTable[] = {
    {"foreground", qRgb(0, 0, 0), qRgb(216, 222, 233)},
    {"background", qRgb(255, 255, 255), qRgb(30, 34, 42)},
    {"line", qRgb(232, 242, 254), qRgb(44, 50, 62)},
    {"block_range", qRgb(244, 244, 236), qRgb(37, 42, 52)},
    {"paren_range", qRgb(226, 234, 200), qRgb(52, 62, 44)},
};

struct FormatEntry
{
    const char *name;
    QRgb light;
    QRgb dark;
    bool bold;
    bool italic;
    // A format that colours the background rather than the text.
    bool background;
};

// "paren" first, then the ten token types of the parsers in their numbers' order, so that
// the position of a syntax name less one is its token type.
const FormatEntry formatTable[] = {
    {"paren", qRgb(180, 238, 180), qRgb(46, 94, 62), false, false, true},
    {"syntax_plain", qRgb(0, 0, 0), qRgb(216, 222, 233), false, true, false},
    {"syntax_comment", qRgb(128, 128, 128), qRgb(122, 132, 150), false, true, false},
    {"syntax_error", qRgb(255, 0, 0), qRgb(240, 100, 100), false, false, false},
    {"syntax_key", qRgb(0, 0, 255), qRgb(122, 170, 255), false, false, false},
    {"syntax_header", qRgb(0, 0, 0), qRgb(235, 203, 139), true, false, false},
    {"syntax_name", qRgb(0, 128, 0), qRgb(143, 200, 120), true, false, false},
    {"syntax_word", qRgb(255, 128, 0), qRgb(240, 160, 90), true, false, false},
    {"syntax_directive", qRgb(0, 128, 128), qRgb(110, 200, 200), true, false, false},
    {"syntax_number", qRgb(128, 0, 255), qRgb(190, 150, 255), false, false, false},
    {"syntax_text", qRgb(255, 0, 255), qRgb(230, 130, 220), false, false, false},
};

const ColorEntry *colorEntry(const QString &name)
{
    for (const ColorEntry &entry : colorTable) {
        if (name == QLatin1String(entry.name))
            return &entry;
    }
    return nullptr;
}

const FormatEntry *formatEntry(const QString &name)
{
    for (const FormatEntry &entry : formatTable) {
        if (name == QLatin1String(entry.name))
            return &entry;
    }
    return nullptr;
}

QString baseName(ColorScheme::Base base)
{
    return base == ColorScheme::Dark ? QStringLiteral("dark") : QStringLiteral("light");
}

// Formats are kept as "#rrggbb,bold,italic"; empty fields leave the default.
QString formatText(const QTextCharFormat &format, bool background)
{
    const QBrush brush = background ? format.background() : format.foreground();
    QStringList fields{brush.style() == Qt::NoBrush ? QString() : brush.color().name()};
    if (format.hasProperty(QTextFormat::FontWeight))
        fields << (format.fontWeight() > QFont::Normal ? QStringLiteral("bold") : QStringLiteral("normal"));
    else
        fields << QString();
    if (format.hasProperty(QTextFormat::FontItalic))
        fields << (format.fontItalic() ? QStringLiteral("italic") : QStringLiteral("upright"));
    return fields.join(QLatin1Char(','));
}

QTextCharFormat formatFromText(const QString &text, bool background)
{
    const QStringList fields = text.split(QLatin1Char(','));
    QTextCharFormat format;
    const QColor color(fields.value(0));
    if (color.isValid()) {
        if (background)
            format.setBackground(color);
        else
            format.setForeground(color);
    }
    if (fields.value(1) == QLatin1String("bold") || fields.value(1) == QLatin1String("normal"))
        format.setFontWeight(fields.value(1) == QLatin1String("bold") ? QFont::Bold : QFont::Normal);
    if (fields.value(2) == QLatin1String("italic") || fields.value(2) == QLatin1String("upright"))
        format.setFontItalic(fields.value(2) == QLatin1String("italic"));
    return format;
}

} // namespace

ColorScheme::ColorScheme(QSettings *settings, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
{
    m_base = m_settings->value(QStringLiteral("colors/scheme")).toString() == QLatin1String("dark") ? Dark : Light;
    load();
}

void ColorScheme::setBase(Base base)
{
    if (base == m_base)
        return;
    m_base = base;
    m_settings->setValue(QStringLiteral("colors/scheme"), baseName(base));
    load();
    emit changed();
}

QStringList ColorScheme::colorNames()
{
    QStringList names;
    for (const ColorEntry &entry : colorTable)
        names << QLatin1String(entry.name);
    return names;
}

QStringList ColorScheme::formatNames()
{
    QStringList names;
    for (const FormatEntry &entry : formatTable)
        names << QLatin1String(entry.name);
    return names;
}

QColor ColorScheme::defaultColor(const QString &name) const
{
    const ColorEntry *entry = colorEntry(name);
    return entry ? QColor(m_base == Dark ? entry->dark : entry->light) : QColor();
}

QTextCharFormat ColorScheme::defaultFormat(const QString &name) const
{
    const FormatEntry *entry = formatEntry(name);
    QTextCharFormat format;
    if (!entry)
        return format;
    const QColor color(m_base == Dark ? entry->dark : entry->light);
    if (entry->background)
        format.setBackground(color);
    else
        format.setForeground(color);
    format.setFontWeight(entry->bold ? QFont::Bold : QFont::Normal);
    format.setFontItalic(entry->italic);
    return format;
}

QColor ColorScheme::color(const QString &name, const QColor &fallback) const
{
    return m_colors.value(name, fallback);
}

QTextCharFormat ColorScheme::format(const QString &name, const QTextCharFormat &fallback) const
{
    if (!m_formats.contains(name))
        return fallback;
    QTextCharFormat merged = fallback;
    merged.merge(m_formats.value(name));
    return merged;
}

void ColorScheme::setColor(const QString &name, const QColor &color)
{
    if (!colorEntry(name))
        return;
    const QString key = QStringLiteral("colors/%1/%2").arg(baseName(m_base), name);
    if (color.isValid() && color != defaultColor(name))
        m_settings->setValue(key, color.name());
    else
        m_settings->remove(key);
    load();
    emit changed();
}

void ColorScheme::setFormat(const QString &name, const QTextCharFormat &format)
{
    const FormatEntry *entry = formatEntry(name);
    if (!entry)
        return;
    const QString key = QStringLiteral("colors/%1/%2").arg(baseName(m_base), name);
    const QString text = formatText(format, entry->background);
    if (format.properties().isEmpty() || text == formatText(defaultFormat(name), entry->background))
        m_settings->remove(key);
    else
        m_settings->setValue(key, text);
    load();
    emit changed();
}

void ColorScheme::resetToDefaults()
{
    m_settings->remove(QStringLiteral("colors/") + baseName(m_base));
    load();
    emit changed();
}

void ColorScheme::load()
{
    m_colors.clear();
    m_formats.clear();
    const QString group = QStringLiteral("colors/%1/").arg(baseName(m_base));
    for (const ColorEntry &entry : colorTable) {
        const QString name = QLatin1String(entry.name);
        const QColor own(m_settings->value(group + name).toString());
        m_colors.insert(name, own.isValid() ? own : defaultColor(name));
    }
    for (const FormatEntry &entry : formatTable) {
        const QString name = QLatin1String(entry.name);
        QTextCharFormat format = defaultFormat(name);
        const QString own = m_settings->value(group + name).toString();
        if (!own.isEmpty())
            format.merge(formatFromText(own, entry.background));
        m_formats.insert(name, format);
    }
}
