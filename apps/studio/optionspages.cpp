#include "optionspages.h"

#include "optionsdialog.h"
#include "studiohost.h"

#include "engine/engine.h"
#include "foundation/filedialogs.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QScrollArea>
#include <QSpinBox>
#include <QVBoxLayout>

#include <memory>

OptionsPage::OptionsPage(StudioHost *host, const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_host(host)
    , m_title(title)
{
}

// ---- ColorButton ----------------------------------------------------------------------

ColorButton::ColorButton(const QString &title, QWidget *parent)
    : QToolButton(parent)
    , m_title(title)
{
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setIconSize(QSize(28, 14));
    setToolTip(title);
    // Room for the widest name a colour has, so that none is elided as colours change.
    setMinimumWidth(iconSize().width() + fontMetrics().horizontalAdvance(QStringLiteral("#DDDDDD")) + 24);
    connect(this, &QToolButton::clicked, this, &ColorButton::choose);
    setColor(QColor());
}

void ColorButton::setColor(const QColor &color)
{
    const bool changed = color != m_color;
    m_color = color;
    QPixmap swatch(iconSize());
    swatch.fill(Qt::transparent);
    QPainter painter(&swatch);
    painter.setPen(palette().color(QPalette::WindowText));
    if (color.isValid())
        painter.setBrush(color);
    painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    painter.end();
    setIcon(QIcon(swatch));
    // The name keeps a colour readable for those who can't tell the swatch's shade.
    setText(color.isValid() ? color.name() : tr("None"));
    if (changed)
        emit colorChanged(color);
}

void ColorButton::choose()
{
    const QColor chosen = OptionsDialog::pickColor(m_color, window(), m_title);
    if (chosen.isValid())
        setColor(chosen);
}

// ---- FieldsPage -----------------------------------------------------------------------

FieldsPage::FieldsPage(StudioHost *host, const QString &title, QWidget *parent)
    : OptionsPage(host, title, parent)
    , m_form(new QFormLayout)
{
    m_form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    // A long page scrolls on a small screen rather than squeezing its rows.
    auto *content = new QWidget;
    auto *inner = new QVBoxLayout(content);
    inner->addLayout(m_form);
    inner->addStretch(1);
    auto *scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(content);
    m_body = content;
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
}

void FieldsPage::load()
{
    for (const Field &field : qAsConst(m_fields))
        field.set(host()->option(field.name, OptionsDialog::defaultValue(field.name)));
}

void FieldsPage::apply()
{
    for (const Field &field : qAsConst(m_fields))
        host()->setOption(field.name, field.get());
}

void FieldsPage::restoreDefaults()
{
    for (const Field &field : qAsConst(m_fields))
        field.set(OptionsDialog::defaultValue(field.name));
}

QWidget *FieldsPage::addCheck(const QString &name, const QString &text)
{
    auto *box = new QCheckBox(text, m_body);
    box->setObjectName(name);
    m_form->addRow(box);
    addField({name, [box] { return QVariant(box->isChecked()); },
              [box](const QVariant &value) { box->setChecked(value.toBool()); }});
    return box;
}

QWidget *FieldsPage::addCombo(const QString &name, const QString &label, const QList<Choice> &choices)
{
    auto *combo = new QComboBox(m_body);
    combo->setObjectName(name);
    for (const Choice &choice : choices)
        combo->addItem(choice.text, choice.value);
    m_form->addRow(label, combo);
    // A number no entry stands for (a settings file edited by hand) shows as the default.
    addField({name, [combo] { return combo->currentData(); },
              [combo, name](const QVariant &value) {
                  int index = combo->findData(value.toInt());
                  if (index < 0)
                      index = combo->findData(OptionsDialog::defaultValue(name).toInt());
                  combo->setCurrentIndex(qMax(index, 0));
              }});
    return combo;
}

QWidget *FieldsPage::addSpin(const QString &name, const QString &label, int minimum, int maximum)
{
    auto *spin = new QSpinBox(m_body);
    spin->setObjectName(name);
    spin->setRange(minimum, maximum);
    m_form->addRow(label, spin);
    addField({name, [spin] { return QVariant(spin->value()); },
              [spin](const QVariant &value) { spin->setValue(value.toInt()); }});
    return spin;
}

QWidget *FieldsPage::addDouble(const QString &name, const QString &label, double minimum, double maximum,
                               double step)
{
    auto *spin = new QDoubleSpinBox(m_body);
    spin->setObjectName(name);
    spin->setRange(minimum, maximum);
    spin->setSingleStep(step);
    spin->setDecimals(2);
    m_form->addRow(label, spin);
    addField({name, [spin] { return QVariant(spin->value()); },
              [spin](const QVariant &value) { spin->setValue(value.toDouble()); }});
    return spin;
}

QWidget *FieldsPage::addColor(const QString &name, const QString &label)
{
    auto *button = new ColorButton(label, m_body);
    button->setObjectName(name);
    m_form->addRow(label, button);
    // A colour that can't be read (a hand-edited file) shows the default rather than none.
    addField({name, [button] { return QVariant(button->color()); },
              [button, name](const QVariant &value) {
                  const QColor color = value.value<QColor>();
                  button->setColor(color.isValid() ? color : OptionsDialog::defaultValue(name).value<QColor>());
              }});
    return button;
}

QWidget *FieldsPage::addFile(const QString &name, const QString &label, const QString &filter)
{
    auto *row = new QWidget(m_body);
    row->setObjectName(name);
    auto *edit = new QLineEdit(row);
    edit->setObjectName(name + QStringLiteral("_edit"));
    auto *browse = new QToolButton(row);
    browse->setObjectName(name + QStringLiteral("_browse"));
    browse->setText(QStringLiteral("..."));
    browse->setToolTip(tr("Choose a picture"));
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(edit, 1);
    layout->addWidget(browse);
    m_form->addRow(label, row);
    connect(browse, &QToolButton::clicked, row, [row, edit, label, filter] {
        const QString chosen = Ovra::getOpenFileName(row->window(), label, edit->text(), filter);
        if (!chosen.isEmpty())
            edit->setText(chosen);
    });
    // An empty name is stored as such, not as a missing option, so that the defaults
    // written at start don't come back over it.
    addField({name, [edit] { return QVariant(edit->text().isNull() ? QStringLiteral("") : edit->text()); },
              [edit](const QVariant &value) { edit->setText(value.toString()); }});
    return row;
}

void FieldsPage::addSection(const QString &text)
{
    auto *label = new QLabel(QStringLiteral("<b>%1</b>").arg(text.toHtmlEscaped()), m_body);
    m_form->addRow(label);
}

// ---- General --------------------------------------------------------------------------

namespace {

class GeneralPage : public FieldsPage
{
    Q_OBJECT
public:
    explicit GeneralPage(StudioHost *host)
        : FieldsPage(host, tr("General"))
    {
        addSection(tr("Projects"));
        addCheck(QStringLiteral("confirm_delete"), tr("Ask before deleting sprites, animations, palettes and sounds"));
        addCheck(QStringLiteral("auto_expand_tree"), tr("Follow the cursor in the tree of a code file"));
        addCheck(QStringLiteral("enable_file_watcher"), tr("Watch open files for changes made by other programs"));
        addSection(tr("File dialogs"));
        addCheck(QStringLiteral("use_native_open"), tr("Use the system's own dialog to open files"));
        addCheck(QStringLiteral("sort_file_names"), tr("Sort the names of several chosen files"));
        addSection(tr("Memory and drawing"));
        // The cache keeps the undo data of the sound editor and the engines' file data;
        // the library treats every number below 2 as memory.
        addCombo(QStringLiteral("cache_type"), tr("Keep undo data:"),
                 {{tr("In memory"), 1}, {tr("On disk, in temporary files"), 2}});
        addCheck(QStringLiteral("native_painting"), tr("Draw the graphics view without OpenGL"));
    }
};

// ---- Code editor ----------------------------------------------------------------------

class CodeEditorPage : public FieldsPage
{
    Q_OBJECT
public:
    explicit CodeEditorPage(StudioHost *host)
        : FieldsPage(host, tr("Code editor"))
    {
        addSection(tr("Font"));
        addFont();
        addSection(tr("View"));
        addCheck(QStringLiteral("code_line_numbers"), tr("Show line numbers"));
        addCheck(QStringLiteral("code_folding_markers"), tr("Show folding markers"));
        addCheck(QStringLiteral("code_highlight_line"), tr("Highlight the current line"));
        addCheck(QStringLiteral("code_highlight_blocks"), tr("Highlight the block around the cursor"));
        addCheck(QStringLiteral("code_paren_matching"), tr("Highlight matching parentheses"));
        addCheck(QStringLiteral("show_code_bar"), tr("Show the code toolbar"));
        addSection(tr("Editing"));
        addCheck(QStringLiteral("preserve_code_formatting"), tr("Keep the columns of a line when a value is rewritten"));
    }

    void apply() override
    {
        FieldsPage::apply();
        // The code workspace reads the toolbar's setting only at start and follows its
        // action afterwards, so the action carries the choice over at once.
        QAction *bar = host()->action("view_code_bar");
        const bool shown = host()->option(QStringLiteral("show_code_bar"), true).toBool();
        if (bar && bar->isCheckable() && bar->isChecked() != shown)
            bar->trigger();
    }

private:
    void addFont()
    {
        auto *fonts = new QFontComboBox(body());
        fonts->setObjectName(QStringLiteral("font_name"));
        fonts->setFontFilters(QFontComboBox::MonospacedFonts);
        form()->addRow(tr("Family:"), fonts);
        // A family this system lacks shows as its nearest; the user's own name is kept
        // unless they pick another, so that the settings stay right on their other machines.
        auto kept = std::make_shared<QPair<QString, QString>>();
        addField({QStringLiteral("font_name"),
                  [fonts, kept] {
                      const QString shown = fonts->currentFont().family();
                      return QVariant(shown == kept->second ? kept->first : shown);
                  },
                  [fonts, kept](const QVariant &value) {
                      fonts->setCurrentFont(QFont(value.toString()));
                      *kept = qMakePair(value.toString(), fonts->currentFont().family());
                  }});
        addSpin(QStringLiteral("font_size"), tr("Size:"), 4, 72);
    }
};

// ---- Graphics view --------------------------------------------------------------------

class GraphicsPage : public FieldsPage
{
    Q_OBJECT
public:
    explicit GraphicsPage(StudioHost *host)
        : FieldsPage(host, tr("Graphics view"))
    {
        const QString pictures = tr("Pictures (*.png *.pcx *.gif *.bmp *.jpg)");
        addSection(tr("Background"));
        addColor(QStringLiteral("back_start"), tr("Gradient top:"));
        addColor(QStringLiteral("back_end"), tr("Gradient bottom:"));
        auto *background = static_cast<QComboBox *>(addCombo(QStringLiteral("background_type"), tr("Background:"),
                                                             {{tr("Gradient only"), 0},
                                                              {tr("Stage picture for the game's size"), 1},
                                                              {tr("Picture from a file"), 2}}));
        QWidget *file = addFile(QStringLiteral("background_file"), tr("Picture:"), pictures);
        addSpin(QStringLiteral("background_x"), tr("Picture offset x:"), -9999, 9999);
        addSpin(QStringLiteral("background_y"), tr("Picture offset y:"), -9999, 9999);
        enableFor(background, {file}, 2);

        addSection(tr("Contact boxes"));
        addColor(QStringLiteral("attackbox"), tr("Attack boxes:"));
        addColor(QStringLiteral("collisionbox"), tr("Collision boxes:"));
        addDouble(QStringLiteral("box_opacity"), tr("Fill opacity:"), 0.0, 1.0, 0.05);

        addSection(tr("Crosses and order"));
        auto *cross = static_cast<QComboBox *>(addCombo(QStringLiteral("crosshair_type"), tr("Crosses:"),
                                                        {{tr("First built-in set"), 0},
                                                         {tr("Second built-in set"), 1},
                                                         {tr("Pictures from files"), 2}}));
        QWidget *main = addFile(QStringLiteral("crosshair_main"), tr("Main cross:"), pictures);
        QWidget *secondary = addFile(QStringLiteral("crosshair_secondary"), tr("Secondary cross:"), pictures);
        QWidget *extra = addFile(QStringLiteral("crosshair_extra"), tr("Extra cross:"), pictures);
        enableFor(cross, {main, secondary, extra}, 2);
        addCheck(QStringLiteral("sprite_over_guides"), tr("Draw sprites over the guide lines"));
        addCheck(QStringLiteral("contact_over_cross"), tr("Draw contact boxes over the crosses"));

        addSection(tr("Zoom"));
        addCombo(QStringLiteral("zoom_mode"), tr("Zoom steps:"),
                 {{tr("Fine (from 25% to 600%)"), 0}, {tr("Coarse (from 25% to 1400%)"), 1}});
        addCombo(QStringLiteral("zoom_center"), tr("Zoom around:"),
                 {{tr("The origin"), 0}, {tr("The middle of the view"), 1}});
        QList<Choice> levels;
        const int percents[] = {25, 50, 75, 100, 150, 200, 225, 250, 275, 300, 350, 400, 450, 500, 550, 600};
        for (int level = 0; level < 16; ++level)
            levels.append({tr("%1%").arg(percents[level]), level});
        addCombo(QStringLiteral("zoom_level"), tr("Zoom of a new view (fine steps):"), levels);

        addSection(tr("Animations and sprites"));
        addCombo(QStringLiteral("onion_effect"), tr("Onion skin:"),
                 {{tr("Plain"), 0}, {tr("Grey"), 1}, {tr("Lighter"), 2}, {tr("Darker"), 3}});
        addDouble(QStringLiteral("onion_opacity"), tr("Onion skin opacity:"), 0.0, 1.0, 0.05);
        addCheck(QStringLiteral("show_organizer"), tr("Show the organizer beside the animation and sprite editors"));
        addCombo(QStringLiteral("thumb_size"), tr("Sprite explorer pictures:"),
                 {{tr("32 pixels"), 32}, {tr("48 pixels"), 48}, {tr("64 pixels"), 64}, {tr("96 pixels"), 96},
                  {tr("128 pixels"), 128}});
    }

private:
    // The picture fields mean something only for the choice that uses pictures.
    static void enableFor(QComboBox *combo, const QList<QWidget *> &widgets, int value)
    {
        auto update = [combo, widgets, value] {
            for (QWidget *widget : widgets)
                widget->setEnabled(combo->currentData().toInt() == value);
        };
        QObject::connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), combo, update);
        update();
    }
};

// ---- Engine ---------------------------------------------------------------------------

class EnginePage : public OptionsPage
{
    Q_OBJECT
public:
    EnginePage(StudioHost *host, Ovra::Engine *engine)
        : OptionsPage(host, tr("Engine"))
        , m_engine(engine)
    {
        engine->registerCustomOptions(this);
        // An engine without options of its own still gets a page that says so.
        if (!layout() && findChildren<QWidget *>().isEmpty()) {
            auto *box = new QVBoxLayout(this);
            box->addWidget(new QLabel(tr("The engine %1 has no options of its own.")
                                          .arg(engine->path().section(QLatin1Char('/'), -1))));
            box->addStretch(1);
        }
    }

    // The engine's widgets keep their values in the engine; what the dialog adds is
    // that OK keeps them across runs.
    void load() override {}
    void apply() override { m_engine->save(); }
    void restoreDefaults() override {}
    bool hasDefaults() const override { return false; }

private:
    Ovra::Engine *m_engine;
};

} // namespace

OptionsPage *createGeneralPage(StudioHost *host)
{
    return new GeneralPage(host);
}

OptionsPage *createCodeEditorPage(StudioHost *host)
{
    return new CodeEditorPage(host);
}

OptionsPage *createGraphicsPage(StudioHost *host)
{
    return new GraphicsPage(host);
}

OptionsPage *createEnginePage(StudioHost *host)
{
    Ovra::Engine *engine = host->engine();
    return engine ? new EnginePage(host, engine) : nullptr;
}

#include "optionspages.moc"
