#include "optionsdialog.h"

#include "colorspage.h"
#include "optionspages.h"
#include "shortcutseditor.h"
#include "studiohost.h"

#include <QColorDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

OptionsDialog::ColorPicker &installedPicker()
{
    static OptionsDialog::ColorPicker picker;
    return picker;
}

struct OptionDefault
{
    const char *name;
    QVariant value;
};

// The values the studio starts with. Where the library reads an option with a default
// of its own, the value here is that same default, so that the dialog never shows
// something other than what the editors do.
const QList<OptionDefault> &optionDefaults()
{
    static const QList<OptionDefault> table = {
        {"confirm_delete", true},
        {"auto_expand_tree", false},
        {"enable_file_watcher", true},
        {"use_native_open", false},
        {"sort_file_names", false},
        {"cache_type", 1},
        {"native_painting", false},
        {"font_name", QStringLiteral("Courier")},
        {"font_size", 10},
        {"code_line_numbers", true},
        {"code_folding_markers", true},
        {"code_highlight_line", true},
        {"code_highlight_blocks", true},
        {"code_paren_matching", true},
        {"show_code_bar", true},
        {"preserve_code_formatting", false},
        {"back_start", QColor(0x5a, 0x5a, 0x5a)},
        {"back_end", QColor(0x24, 0x24, 0x24)},
        {"background_type", 0},
        {"background_file", QStringLiteral("")},
        {"background_x", 0},
        {"background_y", 0},
        {"attackbox", QColor(Qt::red)},
        {"collisionbox", QColor(Qt::blue)},
        {"box_opacity", 0.5},
        {"crosshair_type", 0},
        {"crosshair_main", QStringLiteral("")},
        {"crosshair_secondary", QStringLiteral("")},
        {"crosshair_extra", QStringLiteral("")},
        {"sprite_over_guides", true},
        {"contact_over_cross", true},
        {"zoom_mode", 0},
        {"zoom_center", 1},
        {"zoom_level", 5},
        {"show_rulers", true},
        {"show_guides", false},
        {"show_cross1", true},
        {"show_cross2", false},
        {"show_attack_box", true},
        {"show_collision_box", true},
        {"onion_effect", 1},
        {"onion_opacity", 0.5},
        {"show_organizer", true},
        {"thumb_size", 64},
    };
    return table;
}

} // namespace

struct OptionsDialog::Private
{
    StudioHost *host = nullptr;
    QListWidget *list = nullptr;
    QStackedWidget *stack = nullptr;
    QList<OptionsPage *> pages;

    void addPage(OptionsPage *page, const QString &iconName)
    {
        if (!page)
            return;
        page->setObjectName(page->title());
        pages.append(page);
        stack->addWidget(page);
        auto *item = new QListWidgetItem(host->icon(iconName), page->title(), list);
        item->setSizeHint(QSize(0, host->scaleToDPI(28)));
    }
};

OptionsDialog::OptionsDialog(StudioHost *host, QWidget *parent)
    : QDialog(parent)
    , d(new Private)
{
    d->host = host;
    setObjectName(QStringLiteral("options"));
    setWindowTitle(tr("Options"));
    setWindowIcon(host->icon(QStringLiteral("tools_options")));
    d->list = new QListWidget(this);
    d->list->setObjectName(QStringLiteral("pages"));
    d->list->setIconSize(QSize(16, 16));
    d->stack = new QStackedWidget(this);

    d->addPage(createGeneralPage(host), QStringLiteral("tools_options"));
    d->addPage(createCodeEditorPage(host), QStringLiteral("editor_code"));
    d->addPage(createColorsPage(host), QStringLiteral("code_string"));
    d->addPage(createGraphicsPage(host), QStringLiteral("editor_anim"));
    d->addPage(new ShortcutsEditor(host), QStringLiteral("code_keyword"));
    d->addPage(createEnginePage(host), QStringLiteral("editor_project"));
    // Wide enough for the longest title beside its icon, whatever the style's item margins.
    int widest = 0;
    for (OptionsPage *page : qAsConst(d->pages))
        widest = qMax(widest, d->list->fontMetrics().horizontalAdvance(page->title()));
    d->list->setFixedWidth(widest + d->list->iconSize().width() + host->scaleToDPI(36));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply
                                             | QDialogButtonBox::RestoreDefaults,
                                         this);
    buttons->setObjectName(QStringLiteral("buttons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &OptionsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &OptionsDialog::reject);
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, &OptionsDialog::apply);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this, [this] {
        static_cast<OptionsPage *>(d->stack->currentWidget())->restoreDefaults();
    });
    connect(d->list, &QListWidget::currentRowChanged, this, [this, buttons](int row) {
        d->stack->setCurrentIndex(row);
        buttons->button(QDialogButtonBox::RestoreDefaults)->setEnabled(d->pages.value(row) && d->pages.value(row)->hasDefaults());
    });

    auto *pages = new QHBoxLayout;
    pages->addWidget(d->list);
    pages->addWidget(d->stack, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(pages, 1);
    layout->addWidget(buttons);

    for (OptionsPage *page : qAsConst(d->pages))
        page->load();
    d->list->setCurrentRow(0);
    resize(host->scaleToDPI(780), host->scaleToDPI(680));
}

OptionsDialog::~OptionsDialog() = default;

OptionsDialog::ColorPicker OptionsDialog::setColorPicker(ColorPicker picker)
{
    ColorPicker before = installedPicker();
    installedPicker() = std::move(picker);
    return before;
}

QColor OptionsDialog::pickColor(const QColor &initial, QWidget *parent, const QString &title)
{
    if (installedPicker())
        return installedPicker()(initial, parent, title);
    return QColorDialog::getColor(initial, parent, title);
}

QVariant OptionsDialog::defaultValue(const QString &name)
{
    for (const OptionDefault &entry : optionDefaults()) {
        if (name == QLatin1String(entry.name))
            return entry.value;
    }
    return QVariant();
}

QStringList OptionsDialog::optionNames()
{
    QStringList names;
    for (const OptionDefault &entry : optionDefaults())
        names.append(QString::fromLatin1(entry.name));
    return names;
}

void OptionsDialog::writeMissingDefaults(StudioHost *host)
{
    for (const OptionDefault &entry : optionDefaults()) {
        const QString name = QString::fromLatin1(entry.name);
        if (!host->option(name, QVariant()).isValid())
            host->setOption(name, entry.value);
    }
}

QStringList OptionsDialog::pageTitles() const
{
    QStringList titles;
    for (OptionsPage *page : qAsConst(d->pages))
        titles.append(page->title());
    return titles;
}

QWidget *OptionsDialog::page(const QString &title) const
{
    for (OptionsPage *page : qAsConst(d->pages)) {
        if (page->title() == title)
            return page;
    }
    return nullptr;
}

void OptionsDialog::showPage(const QString &title)
{
    const int row = pageTitles().indexOf(title);
    if (row >= 0)
        d->list->setCurrentRow(row);
}

QString OptionsDialog::currentPageTitle() const
{
    return static_cast<OptionsPage *>(d->stack->currentWidget())->title();
}

void OptionsDialog::apply()
{
    for (OptionsPage *page : qAsConst(d->pages))
        page->apply();
    d->host->settings()->sync();
    d->host->reconfigure();
    emit applied();
}

void OptionsDialog::accept()
{
    apply();
    QDialog::accept();
}
