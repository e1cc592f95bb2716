#include "editors/palette/paletteeditor.h"
#include "editors/palette/paletteeditor_p.h"

#include "editors/editor.h"
#include "editors/organizer/organizereditor.h"
#include "editors/palette/paletteicons_p.h"
#include "editors/palette/palettewidget.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"
#include "foundation/translator.h"
#include "image/paletteobject.h"
#include "image/sprite.h"
#include "project/project.h"

#include <QAction>
#include <QBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QToolButton>

#include <cstring>

namespace Ovra {
namespace {

// The labels are the library's; the tool tips say what each command does to the
// palettes of the file, which is more than the library's tips of the same words tell.
class PaletteTexts : public Translator
{
public:
    QString text(uint id) override
    {
        if (id == OrganizerText)
            return PaletteEditor::tr("Organizer");
        return ovraTranslator()->text(id);
    }
    QString tip(uint id) override
    {
        switch (id) {
        case 34:
            return PaletteEditor::tr("Remove all palettes");
        case 35:
            return PaletteEditor::tr("Remove all unused palettes");
        case 36:
            return PaletteEditor::tr("Add one or more palettes");
        case 37:
            return PaletteEditor::tr("Remove the current palette");
        case 38:
            return PaletteEditor::tr("Remove all duplicate palettes");
        case 39:
            return PaletteEditor::tr("Define new colors to the palette from a file...");
        case 40:
            return PaletteEditor::tr("Save the palette as a file...");
        case 41:
            return PaletteEditor::tr("Open the palette Remap tool");
        case 46:
            return PaletteEditor::tr("Apply the current palette to the specified sprites");
        case OrganizerText:
            return PaletteEditor::tr("Organize the palettes");
        default:
            return text(id);
        }
    }
    static const uint OrganizerText = 199;
};

PaletteTexts *paletteTexts()
{
    static PaletteTexts texts;
    return &texts;
}

enum Enabling { Always, NeedFile, NeedPalette, NeedUndo, NeedRedo };

const struct ActionEntry
{
    const char *name;
    uint text;
    const char *slot;
    Enabling enabling;
    bool checkable;
    // Whether it has a button on the editor's bar.
    bool onBar;
} actionTable[] = {
    {"pal_clear", 34, SLOT(clear()), NeedFile, false, false},
    {"pal_clear_unused", 35, SLOT(clearUnused()), NeedFile, false, false},
    {"pal_add", 36, SLOT(add()), NeedFile, false, true},
    {"pal_delete", 37, SLOT(del()), NeedPalette, false, true},
    {"pal_delete_duplicates", 38, SLOT(delDupl()), NeedFile, false, false},
    {"pal_open", 39, SLOT(open()), NeedPalette, false, true},
    {"pal_save", 40, SLOT(save()), NeedPalette, false, true},
    {"pal_remap", 41, SLOT(remap()), NeedPalette, false, true},
    {"pal_undo", 42, SLOT(undo()), NeedUndo, false, true},
    {"pal_redo", 43, SLOT(redo()), NeedRedo, false, true},
    {"pal_switch_color", 44, SLOT(switchColor()), NeedPalette, false, false},
    {"pal_set_color", 45, SLOT(setColor()), NeedPalette, false, false},
    {"pal_apply_sprite", 46, SLOT(setSprPal()), NeedPalette, false, true},
    {"pal_prev", 47, SLOT(prevPal()), NeedPalette, false, true},
    {"pal_next", 48, SLOT(nextPal()), NeedPalette, false, true},
    {"org_palette", PaletteTexts::OrganizerText, SLOT(palOrg(bool)), NeedFile, true, false},
};

const char *enablingSignal(Enabling enabling)
{
    switch (enabling) {
    case NeedFile:
        return SIGNAL(fileShown(bool));
    case NeedPalette:
        return SIGNAL(paletteShown(bool));
    case NeedUndo:
        return SIGNAL(canUndo(bool));
    case NeedRedo:
        return SIGNAL(canRedo(bool));
    case Always:
        break;
    }
    return nullptr;
}

} // namespace

PaletteEditorPrivate::PaletteEditorPrivate(PaletteEditor *editor)
    : QObject(editor)
    , q(editor)
{
    for (RGBA &entry : table)
        entry = RGBA(0, 0, 0, 255);
    object = new PaletteObject(&table);
    object->setParent(this);
    connect(&history, &QUndoStack::canUndoChanged, this, &PaletteEditorPrivate::canUndo);
    connect(&history, &QUndoStack::canRedoChanged, this, &PaletteEditorPrivate::canRedo);
}

PaletteEditorPrivate::~PaletteEditorPrivate()
{
    delete organizer;
    // The remap tool is a child of the widget and goes with it.
    delete widget.data();
}

void PaletteEditorPrivate::buildActions()
{
    Interface *host = Interface::instance();
    const bool organizerShown = host && host->option(QStringLiteral("org_palette"), false).toBool();
    for (const ActionEntry &entry : actionTable) {
        const QString name = QString::fromLatin1(entry.name);
        const char *enabling = enablingSignal(entry.enabling);
        const bool checked = entry.checkable && organizerShown;
        QAction *action = host ? host->createAction(ActionScope{"palettes", 0}, name, paletteTexts(), entry.text,
                                                    entry.checkable, this, entry.slot, enabling, checked)
                               : nullptr;
        if (!action) {
            // Without a host's actions the editor makes its own, so that it works all the same.
            action = new QAction(paletteTexts()->text(entry.text), this);
            action->setObjectName(name);
            action->setToolTip(paletteTexts()->tip(entry.text));
            action->setCheckable(entry.checkable);
            action->setChecked(checked);
            connect(action, entry.checkable ? SIGNAL(toggled(bool)) : SIGNAL(triggered()), this, entry.slot);
            if (enabling)
                connect(this, enabling, action, SLOT(setEnabled(bool)));
        }
        actions.insert(name, action);
    }
}

void PaletteEditorPrivate::buildWidget()
{
    widget = new QWidget;
    widget->setObjectName(QStringLiteral("palettes"));
    titleLabel = new QLabel(widget);
    titleLabel->setObjectName(QStringLiteral("pal_title"));
    selector = new QSlider(Qt::Horizontal, widget);
    selector->setObjectName(QStringLiteral("pal_sel"));
    selector->setRange(0, 0);
    selector->setPageStep(1);
    positionLabel = new QLabel(QStringLiteral("0 / 0"), widget);
    positionLabel->setObjectName(QStringLiteral("pal_sel_lb"));
    positionLabel->setMinimumWidth(positionLabel->fontMetrics().horizontalAdvance(QStringLiteral("000 / 000")));
    positionLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    colors = new PaletteWidget(widget);
    colors->setPaletteObject(object);

    auto *bar = new QHBoxLayout;
    bar->setSpacing(1);
    for (const ActionEntry &entry : actionTable) {
        if (!entry.onBar)
            continue;
        QAction *action = actions.value(QString::fromLatin1(entry.name));
        // A host without pictures (or with placeholders of a pixel or two) would leave
        // blank buttons: our own drawings stand in.
        const QSize shown = action->icon().actualSize(QSize(16, 16));
        if (action->icon().isNull() || shown.width() < 8 || shown.height() < 8)
            action->setIcon(paletteActionIcon(action->objectName()));
        auto *button = new QToolButton(widget);
        button->setObjectName(QString::fromLatin1(entry.name) + QStringLiteral("_button"));
        button->setDefaultAction(action);
        button->setAutoRaise(true);
        bar->addWidget(button);
    }
    bar->addStretch();
    auto *row = new QHBoxLayout;
    row->addWidget(selector, 1);
    row->addWidget(positionLabel);
    auto *layout = new QVBoxLayout(widget);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(titleLabel);
    layout->addLayout(bar);
    layout->addLayout(row);
    layout->addWidget(colors, 1);

    if (Interface *host = Interface::instance()) {
        host->registerControl(QStringLiteral("pal_sel"), selector);
        host->registerControl(QStringLiteral("pal_sel_lb"), positionLabel);
    }
    connect(selector, &QSlider::valueChanged, this, &PaletteEditorPrivate::selPosChanged);
    connect(colors, &PaletteWidget::changed, this, &PaletteEditorPrivate::changed);
    connect(colors, &PaletteWidget::colorDblClick, this, &PaletteEditorPrivate::colorDblClicked);
    connect(colors, &PaletteWidget::colorMoved, this, &PaletteEditorPrivate::colorMoved);
    connect(colors, &PaletteWidget::colorClick, this, &PaletteEditorPrivate::colorClicked);
    retranslate();
    if (QAction *shown = actions.value(QStringLiteral("org_palette")); shown && shown->isChecked())
        palOrg(true);
}

void PaletteEditorPrivate::retranslate()
{
    for (const ActionEntry &entry : actionTable) {
        if (QAction *action = actions.value(QString::fromLatin1(entry.name))) {
            action->setText(paletteTexts()->text(entry.text));
            action->setToolTip(paletteTexts()->tip(entry.text));
        }
    }
    if (titleLabel)
        titleLabel->setText(ovraTranslator()->text(33));
}

bool PaletteEditorPrivate::switchToSprites()
{
    Interface *host = Interface::instance();
    if (!host)
        return true;
    const auto isSprites = [](const Editor *editor) { return editor && std::strcmp(editor->name(), "sprites") == 0; };
    if (isSprites(host->currentEditor()))
        return true;
    Sprites *sprites = palettes ? palettes->sprites() : nullptr;
    if (!sprites)
        return false;
    int type = Project::Sprites;
    if (Project *project = sprites->project()) {
        const Project::FileTypes ids = project->fileID(sprites);
        for (int bit = 0; bit < 32 && ids; ++bit) {
            if (ids & (1u << bit)) {
                type = bit;
                break;
            }
        }
    }
    FileEditor *editor = host->editorForFile(sprites, type);
    if (!isSprites(editor))
        return false;
    host->activateEditor(editor);
    return host->currentEditor() == editor;
}

bool PaletteEditorPrivate::prepare()
{
    return switchToSprites() && palettes;
}

int PaletteEditorPrivate::count() const
{
    return palettes ? int(palettes->count()) : 0;
}

Palette *PaletteEditorPrivate::paletteAt(int at) const
{
    return palettes && at >= 0 && at < count() ? palettes->at(uint(at)) : nullptr;
}

void PaletteEditorPrivate::refreshSelector()
{
    const int total = count();
    ++guard;
    if (selector) {
        selector->setRange(0, qMax(0, total - 1));
        selector->setValue(qBound(0, position, qMax(0, total - 1)));
    }
    --guard;
    const QString text = total > 0 && position >= 0 && position < total
                             ? QStringLiteral("%1 / %2").arg(position + 1).arg(total)
                             : QStringLiteral("0 / 0");
    if (positionLabel)
        positionLabel->setText(text);
    emit q->setSelPos(qMax(0, position));
    emit q->setPosText(text);
}

void PaletteEditorPrivate::showPosition(int wanted)
{
    external = nullptr;
    const int total = count();
    position = total > 0 ? qBound(0, wanted, total - 1) : -1;
    if (palettes && position >= 0 && palettes->selected() != uint(position))
        palettes->setSelected(uint(position));
    loadTable();
    refreshSelector();
    emitStates();
}

void PaletteEditorPrivate::loadTable()
{
    if (external) {
        *object = external;
    } else {
        *object = &table;
        RGBA read[256];
        Palette *palette = paletteAt(position);
        if (!palette || !palette->colorTable(read)) {
            for (RGBA &entry : read)
                entry = RGBA(0, 0, 0, 255);
        }
        // The widget relays the change of the colours; the editor tells it once below.
        ++loading;
        object->fromPalette(read);
        --loading;
    }
    if (colors) {
        colors->setPaletteObject(object);
        colors->update();
    }
    emit q->paletteChanged();
}

void PaletteEditorPrivate::emitStates()
{
    const bool file = palettes;
    const bool shown = file && position >= 0 && position < count();
    emit fileShown(file);
    emit paletteShown(shown);
    emit canUndo(history.canUndo());
    emit canRedo(history.canRedo());
    emit q->noFile(!file);
    emit q->enabled(shown);
    if (colors)
        colors->setEnabled(shown || external);
}

void PaletteEditorPrivate::palChanged(int total)
{
    Q_UNUSED(total)
    showPosition(position < 0 ? 0 : position);
}

void PaletteEditorPrivate::selPosChanged(int at)
{
    if (guard > 0)
        return;
    showPosition(at);
}

void PaletteEditorPrivate::prevPal()
{
    if (prepare() && position > 0)
        showPosition(position - 1);
}

void PaletteEditorPrivate::nextPal()
{
    if (prepare() && position + 1 < count())
        showPosition(position + 1);
}

void PaletteEditorPrivate::clear()
{
    if (!prepare())
        return;
    history.clear();
    palettes->clear();
    showPosition(0);
}

void PaletteEditorPrivate::clearUnused()
{
    if (!prepare())
        return;
    history.clear();
    Palette *shown = paletteAt(position);
    const uint before = palettes->count();
    palettes->clearUnused();
    // The palette shown stays in view when it was kept.
    int at = 0;
    for (int i = 0; shown && palettes->count() != before && i < count(); ++i) {
        if (palettes->at(uint(i)) == shown)
            at = i;
    }
    showPosition(palettes->count() == before ? position : at);
}

void PaletteEditorPrivate::del()
{
    if (!prepare() || !paletteAt(position))
        return;
    Interface *host = Interface::instance();
    if (host && host->option(QStringLiteral("confirm_delete"), false).toBool()) {
        Prompt question;
        question.icon = QMessageBox::Question;
        question.title = PaletteEditor::tr("Delete palette");
        question.text = PaletteEditor::tr("Do you really want to delete the palette?");
        question.buttons = QMessageBox::Yes | QMessageBox::No;
        question.defaultButton = QMessageBox::No;
        question.parent = host->mainWidget();
        if (ask(question) != QMessageBox::Yes)
            return;
    }
    history.clear();
    palettes->remove(uint(position));
    showPosition(position);
}

void PaletteEditorPrivate::delDupl()
{
    if (!prepare())
        return;
    history.clear();
    const int old = position;
    palettes->removeDuplicates();
    const int total = count();
    // The position stays where it was unless the list now ends before it.
    position = old >= total ? total - 1 : old;
    if (total == 0)
        position = -1;
    external = nullptr;
    loadTable();
    refreshSelector();
    emitStates();
    emit q->enabled(position >= 0 && position < total);
}

void PaletteEditorPrivate::palOrg(bool shown)
{
    if (Interface *host = Interface::instance())
        host->setOption(QStringLiteral("org_palette"), shown);
    if (!widget)
        return;
    if (shown && !organizer) {
        organizer = new OrganizerEditor;
        widget->layout()->addWidget(organizer->widget());
        connect(organizer, &OrganizerEditor::changed, this, [this] {
            if (palettes)
                showPosition(int(palettes->selected()));
        });
        connect(organizer, &OrganizerEditor::itemClicked, this, &PaletteEditorPrivate::showPosition);
    }
    if (organizer) {
        organizer->setObject(shown ? palettes.data() : nullptr);
        organizer->widget()->setVisible(shown);
    }
}

void PaletteEditorPrivate::changed()
{
    if (loading == 0)
        emit q->paletteChanged();
}

// ---- the editor ---------------------------------------------------------------------

PaletteEditor::PaletteEditor()
    : d(new PaletteEditorPrivate(this))
{
    d->buildActions();
    d->buildWidget();
    d->emitStates();
}

PaletteEditor::~PaletteEditor() = default;

QWidget *PaletteEditor::widget()
{
    return d->widget;
}

PaletteWidget *PaletteEditor::paletteWidget() const
{
    return d->colors;
}

QString PaletteEditor::displayName() const
{
    return ovraTranslator()->text(33);
}

void PaletteEditor::engineSwitched(bool hasEngine)
{
    if (!hasEngine)
        setPalettes(nullptr);
}

void PaletteEditor::retranslate()
{
    d->retranslate();
    d->refreshSelector();
}

void PaletteEditor::setPalettes(Palettes *palettes)
{
    if (d->palettes == palettes && !d->external)
        return;
    if (d->palettes)
        disconnect(d->palettes, nullptr, d, nullptr);
    d->palettes = palettes;
    d->history.clear();
    if (palettes) {
        // Rows that come and go under the editor (the organizer, the sprite editor, undo)
        // keep the selector in step.
        const auto follow = [this] { d->palChanged(d->count()); };
        connect(palettes, &QAbstractItemModel::rowsInserted, d, follow);
        connect(palettes, &QAbstractItemModel::rowsRemoved, d, follow);
        connect(palettes, &QAbstractItemModel::modelReset, d, follow);
        connect(palettes, &QAbstractItemModel::rowsMoved, d, follow);
        connect(palettes, &QAbstractItemModel::dataChanged, d, [this] {
            if (!d->external)
                d->loadTable();
        });
        connect(palettes, &QObject::destroyed, d, [this] { setPalettes(nullptr); });
    }
    if (d->organizer && d->organizer->widget()->isVisible())
        d->organizer->setObject(palettes);
    d->showPosition(palettes ? int(palettes->selected()) : -1);
}

Palettes *PaletteEditor::palettes() const
{
    return d->palettes;
}

void PaletteEditor::setPalette(RGBA (&table)[256])
{
    d->history.clear();
    d->external = &table;
    d->position = -1;
    d->loadTable();
    d->refreshSelector();
    d->emitStates();
}

void PaletteEditor::setCurrentPalette(Palette *palette)
{
    if (!palette || !d->palettes || palette->parent() != d->palettes.data())
        return;
    d->showPosition(int(palette->index()));
}

Palette *PaletteEditor::currentPalette() const
{
    return d->external ? nullptr : d->paletteAt(d->position);
}

} // namespace Ovra
