#include "colorspage.h"

#include "colorscheme.h"
#include "studiohost.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QTableWidget>
#include <QTextBlock>
#include <QVBoxLayout>

namespace {

enum Column { NameColumn, ColorColumn, BoldColumn, ItalicColumn, ColumnCount };

QString displayName(const QString &name)
{
    static const struct
    {
        const char *name;
        const char *text;
    } table[] = {
        {"foreground", QT_TRANSLATE_NOOP("ColorsPage", "Foreground")},
        {"background", QT_TRANSLATE_NOOP("ColorsPage", "Background")},
        {"line", QT_TRANSLATE_NOOP("ColorsPage", "Current line")},
        {"block_range", QT_TRANSLATE_NOOP("ColorsPage", "Current block")},
        {"paren_range", QT_TRANSLATE_NOOP("ColorsPage", "Between matching parentheses")},
        {"paren", QT_TRANSLATE_NOOP("ColorsPage", "Matching parentheses")},
    };
    for (const auto &entry : table) {
        if (name == QLatin1String(entry.name))
            return ColorsPage::tr(entry.text);
    }
    // The syntax classes are named after what the parsers report: "syntax_comment".
    QString text = name;
    const bool syntax = text.startsWith(QLatin1String("syntax_"));
    if (syntax)
        text.remove(0, 7);
    text.replace(QLatin1Char('_'), QLatin1Char(' '));
    if (!text.isEmpty())
        text[0] = text.at(0).toUpper();
    return syntax ? ColorsPage::tr("Syntax: %1").arg(text) : text;
}

// A few lines of a definition file: a comment, a directive, a group header with its name,
// keys with texts, numbers and words, and a value in error, so that every syntax class of
// the scheme has something to paint.
const char previewText[] = "# The knight's numbers\n"
                           "@version 1\n"
                           "\n"
                           "[Character: knight]\n"
                           "    name = \"Sir Bramble\"\n"
                           "    life = 1000\n"
                           "    walk = (2.4, -2.2)\n"
                           "    stance = upright\n"
                           "    guard = 12x\n";
const int previewCurrentLine = 6;
const int previewBlockFirst = 3;
const int previewBlockLast = 8;

// Where each of the scheme's syntax formats shows in the sample; a format missing here
// gets a line of its own below it.
QString patternFor(const QString &name)
{
    static const struct
    {
        const char *name;
        const char *pattern;
    } table[] = {
        {"syntax_plain", "[=:,]"},
        {"syntax_comment", "#[^\\n]*"},
        {"syntax_directive", "@\\w+"},
        {"syntax_number", "-?\\b\\d+(\\.\\d+)?\\b(?!x)"},
        {"syntax_header", "^\\[|\\]$|(?<=\\[)\\w+"},
        {"syntax_name", "(?<=: )\\w+(?=\\])"},
        {"syntax_key", "^ +\\w+(?= =)"},
        {"syntax_text", "\"[^\"]*\""},
        {"syntax_word", "(?<== )[a-z]+$"},
        {"syntax_error", "\\b12x\\b"},
    };
    for (const auto &entry : table) {
        if (name == QLatin1String(entry.name))
            return QString::fromLatin1(entry.pattern);
    }
    return QString();
}

QTextEdit::ExtraSelection lineBand(QPlainTextEdit *edit, int line, const QColor &color)
{
    QTextEdit::ExtraSelection selection;
    selection.cursor = QTextCursor(edit->document()->findBlockByNumber(line));
    selection.format.setBackground(color);
    selection.format.setProperty(QTextFormat::FullWidthSelection, true);
    return selection;
}

// Sets a property of `format` to the value shown, or back to the default's own state when
// the value shown is the default's, so that an untouched format compares equal to it.
void setOrFollow(QTextCharFormat &format, const QTextCharFormat &defaults, int property,
                 const QVariant &value, bool asDefault)
{
    if (!asDefault)
        format.setProperty(property, value);
    else if (defaults.hasProperty(property))
        format.setProperty(property, defaults.property(property));
    else
        format.clearProperty(property);
}

QColor brushColor(const QTextCharFormat &format, int property)
{
    return format.hasProperty(property) ? format.brushProperty(property).color() : QColor();
}

// A format has one colour: most colour the text, a few (the parentheses' mark) the
// background behind it. The built-in format tells which.
int colorProperty(const QTextCharFormat &defaults)
{
    return defaults.hasProperty(QTextFormat::BackgroundBrush) ? QTextFormat::BackgroundBrush
                                                              : QTextFormat::ForegroundBrush;
}

} // namespace

ColorsPage::ColorsPage(StudioHost *host, QWidget *parent)
    : OptionsPage(host, tr("Colours"), parent)
    , m_base(new QComboBox(this))
    , m_table(new QTableWidget(this))
    , m_preview(new QPlainTextEdit(this))
{
    m_base->setObjectName(QStringLiteral("scheme"));
    m_base->addItem(tr("Light"), ColorScheme::Light);
    m_base->addItem(tr("Dark"), ColorScheme::Dark);
    auto *reset = new QPushButton(tr("Reset colours"), this);
    reset->setObjectName(QStringLiteral("reset_colors"));
    auto *top = new QHBoxLayout;
    top->addWidget(new QLabel(tr("Scheme:"), this));
    top->addWidget(m_base);
    top->addStretch(1);
    top->addWidget(reset);

    m_table->setObjectName(QStringLiteral("colors"));
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setReadOnly(true);
    m_preview->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_preview->setFrameShape(QFrame::StyledPanel);
    buildTable();

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_table, 3);
    layout->addWidget(new QLabel(tr("Preview:"), this));
    layout->addWidget(m_preview, 2);

    connect(m_base, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ColorsPage::switchBase);
    connect(reset, &QPushButton::clicked, this, &ColorsPage::resetColors);
}

ColorsPage::~ColorsPage() = default;

void ColorsPage::buildTable()
{
    const QStringList colors = ColorScheme::colorNames();
    const QStringList formats = ColorScheme::formatNames();
    m_table->setColumnCount(ColumnCount);
    m_table->setRowCount(colors.size() + formats.size());
    m_table->setHorizontalHeaderLabels({tr("Name"), tr("Colour"), tr("Bold"), tr("Italic")});
    m_table->verticalHeader()->hide();
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    int row = 0;
    for (const QString &name : colors) {
        m_table->setItem(row, NameColumn, new QTableWidgetItem(displayName(name)));
        auto *button = new ColorButton(displayName(name), m_table);
        button->setObjectName(QStringLiteral("color:") + name);
        m_table->setCellWidget(row++, ColorColumn, button);
        connect(button, &ColorButton::colorChanged, this, [this, name](const QColor &color) {
            if (m_showing)
                return;
            m_scratch->setColor(name, color);
            m_touchedBases.insert(m_scratch->base());
            updatePreview();
        });
    }
    for (const QString &name : formats) {
        m_table->setItem(row, NameColumn, new QTableWidgetItem(displayName(name)));
        auto *foreground = new ColorButton(displayName(name), m_table);
        foreground->setObjectName(QStringLiteral("color:") + name);
        auto *bold = new QCheckBox(m_table);
        bold->setObjectName(QStringLiteral("bold:") + name);
        auto *italic = new QCheckBox(m_table);
        italic->setObjectName(QStringLiteral("italic:") + name);
        m_table->setCellWidget(row, ColorColumn, foreground);
        m_table->setCellWidget(row, BoldColumn, bold);
        m_table->setCellWidget(row++, ItalicColumn, italic);
        auto changed = [this, name] { changeFormat(name); };
        connect(foreground, &ColorButton::colorChanged, this, changed);
        connect(bold, &QCheckBox::toggled, this, changed);
        connect(italic, &QCheckBox::toggled, this, changed);
    }
    // Cell widgets don't count in the table's own measure of a column.
    int buttonWidth = m_table->horizontalHeader()->sectionSizeHint(ColorColumn);
    for (ColorButton *button : m_table->findChildren<ColorButton *>())
        buttonWidth = qMax(buttonWidth, qMax(button->minimumWidth(), button->sizeHint().width()));
    m_table->resizeColumnsToContents();
    m_table->setColumnWidth(ColorColumn, buttonWidth + 8);
    m_table->horizontalHeader()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
}

void ColorsPage::load()
{
    // A fresh copy of everything the user has, so that the scratch scheme starts where
    // the host's is, whatever keys the scheme keeps.
    m_scratch.reset();
    m_scratchSettings.reset(new QSettings(m_scratchDir.filePath(QStringLiteral("scheme.ini")), QSettings::IniFormat));
    m_scratchSettings->clear();
    QSettings *settings = host()->settings();
    const QStringList keys = settings->allKeys();
    for (const QString &key : keys)
        m_scratchSettings->setValue(key, settings->value(key));
    m_scratch.reset(new ColorScheme(m_scratchSettings.get()));
    m_touchedBases.clear();
    showScheme();
}

void ColorsPage::showScheme()
{
    m_showing = true;
    m_base->setCurrentIndex(m_base->findData(m_scratch->base()));
    for (const QString &name : ColorScheme::colorNames())
        m_table->findChild<ColorButton *>(QStringLiteral("color:") + name)->setColor(m_scratch->color(name, QColor()));
    for (const QString &name : ColorScheme::formatNames()) {
        const QTextCharFormat format = m_scratch->format(name, QTextCharFormat());
        m_table->findChild<ColorButton *>(QStringLiteral("color:") + name)
            ->setColor(brushColor(format, colorProperty(m_scratch->defaultFormat(name))));
        m_table->findChild<QCheckBox *>(QStringLiteral("bold:") + name)->setChecked(format.fontWeight() >= QFont::Bold);
        m_table->findChild<QCheckBox *>(QStringLiteral("italic:") + name)->setChecked(format.fontItalic());
    }
    m_showing = false;
    updatePreview();
}

void ColorsPage::changeFormat(const QString &name)
{
    if (m_showing)
        return;
    const QTextCharFormat defaults = m_scratch->defaultFormat(name);
    QTextCharFormat format = m_scratch->format(name, QTextCharFormat());
    const QColor color = m_table->findChild<ColorButton *>(QStringLiteral("color:") + name)->color();
    const int property = colorProperty(defaults);
    const bool bold = m_table->findChild<QCheckBox *>(QStringLiteral("bold:") + name)->isChecked();
    const bool italic = m_table->findChild<QCheckBox *>(QStringLiteral("italic:") + name)->isChecked();
    setOrFollow(format, defaults, property, QBrush(color), color == brushColor(defaults, property));
    setOrFollow(format, defaults, QTextFormat::FontWeight, bold ? QFont::Bold : QFont::Normal,
                bold == (defaults.fontWeight() >= QFont::Bold));
    setOrFollow(format, defaults, QTextFormat::FontItalic, italic, italic == defaults.fontItalic());
    m_scratch->setFormat(name, format);
    m_touchedBases.insert(m_scratch->base());
    updatePreview();
}

void ColorsPage::switchBase(int index)
{
    if (m_showing || !m_scratch)
        return;
    m_scratch->setBase(ColorScheme::Base(m_base->itemData(index).toInt()));
    showScheme();
}

void ColorsPage::resetColors()
{
    m_scratch->resetToDefaults();
    m_touchedBases.insert(m_scratch->base());
    showScheme();
}

void ColorsPage::restoreDefaults()
{
    resetColors();
}

void ColorsPage::copyScheme(ColorScheme *from, ColorScheme *to)
{
    // What equals the default is stored as "the default", so that a later change of the
    // built-in scheme still reaches the colours the user never made their own.
    for (const QString &name : ColorScheme::colorNames()) {
        const QColor color = from->color(name, QColor());
        to->setColor(name, color == from->defaultColor(name) ? QColor() : color);
    }
    for (const QString &name : ColorScheme::formatNames()) {
        const QTextCharFormat format = from->format(name, QTextCharFormat());
        to->setFormat(name, format == from->defaultFormat(name) ? QTextCharFormat() : format);
    }
}

void ColorsPage::apply()
{
    ColorScheme *scheme = host()->colorScheme();
    const ColorScheme::Base chosen = m_scratch->base();
    for (int base : qAsConst(m_touchedBases)) {
        if (base == chosen)
            continue;
        m_scratch->setBase(ColorScheme::Base(base));
        scheme->setBase(ColorScheme::Base(base));
        copyScheme(m_scratch.get(), scheme);
    }
    m_scratch->setBase(chosen);
    if (scheme->base() != chosen)
        scheme->setBase(chosen);
    if (m_touchedBases.contains(chosen))
        copyScheme(m_scratch.get(), scheme);
    m_touchedBases.clear();
}

QColor ColorsPage::pendingColor(const QString &name) const
{
    return m_scratch ? m_scratch->color(name, QColor()) : QColor();
}

QTextCharFormat ColorsPage::pendingFormat(const QString &name) const
{
    return m_scratch ? m_scratch->format(name, QTextCharFormat()) : QTextCharFormat();
}

void ColorsPage::updatePreview()
{
    if (!m_scratch)
        return;
    QString text = QString::fromLatin1(previewText);
    QStringList alone;
    for (const QString &name : ColorScheme::formatNames()) {
        if (name != QLatin1String("paren") && patternFor(name).isEmpty())
            alone.append(name);
    }
    for (const QString &name : qAsConst(alone))
        text += QStringLiteral("# %1\n").arg(displayName(name));
    m_preview->setPlainText(text);
    m_preview->setStyleSheet(QStringLiteral("QPlainTextEdit { background-color: %1; color: %2; }")
                                 .arg(pendingColor(QStringLiteral("background")).name(),
                                      pendingColor(QStringLiteral("foreground")).name()));

    QTextDocument *document = m_preview->document();
    for (const QString &name : ColorScheme::formatNames()) {
        const QString pattern = patternFor(name);
        if (pattern.isEmpty())
            continue;
        QTextCursor cursor(document);
        const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
        while (!(cursor = document->find(expression, cursor)).isNull())
            cursor.mergeCharFormat(pendingFormat(name));
    }
    int line = document->blockCount() - 1 - alone.size();
    for (const QString &name : qAsConst(alone)) {
        QTextCursor cursor(document->findBlockByNumber(line++));
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(pendingFormat(name));
    }

    // The editor's own bands: the block around the cursor, the cursor's line, and a
    // matched pair of parentheses with the range between them.
    QList<QTextEdit::ExtraSelection> selections;
    for (int block = previewBlockFirst; block <= previewBlockLast; ++block)
        selections.append(lineBand(m_preview, block, pendingColor(QStringLiteral("block_range"))));
    selections.append(lineBand(m_preview, previewCurrentLine, pendingColor(QStringLiteral("line"))));
    const QTextBlock call = document->findBlockByNumber(previewCurrentLine);
    const int open = call.position() + call.text().indexOf(QLatin1Char('('));
    const int close = call.position() + call.text().lastIndexOf(QLatin1Char(')'));
    QTextEdit::ExtraSelection range;
    range.cursor = QTextCursor(document);
    range.cursor.setPosition(open);
    range.cursor.setPosition(close + 1, QTextCursor::KeepAnchor);
    range.format.setBackground(pendingColor(QStringLiteral("paren_range")));
    selections.append(range);
    for (int position : {open, close}) {
        QTextEdit::ExtraSelection paren;
        paren.cursor = QTextCursor(document);
        paren.cursor.setPosition(position);
        paren.cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
        paren.format = pendingFormat(QStringLiteral("paren"));
        selections.append(paren);
    }
    m_preview->setExtraSelections(selections);
}

OptionsPage *createColorsPage(StudioHost *host)
{
    return new ColorsPage(host);
}
