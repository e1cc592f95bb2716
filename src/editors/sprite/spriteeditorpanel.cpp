// The sprite editor's panel and actions: the sprite selector, the colour wells, the layer
// list with its blend box, opacity slider and menu, the actions of the editor and the
// exclusive group of the tools, and the slots behind them.
#include "editors/sprite/spriteeditor.h"
#include "editors/sprite/spriteeditor_p.h"

#include "editors/graphics/graphicsworkspace.h"
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/imagetool.h"
#include "editors/sprite/imagetoolicons_p.h"
#include "editors/palette/paletteeditor.h"
#include "editors/palette/palettewidget.h"
#include "image/paletteobject.h"
#include "foundation/interface.h"
#include "foundation/translator.h"

#include <QAction>
#include <QActionGroup>
#include <QColorDialog>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

namespace Ovra {
namespace {

// Who enables an action: the editor itself while there is a file, or its enabled signal.
enum Need { NeedFile, NeedSprite };

struct ActionEntry
{
    const char *name;
    uint text;
    bool checkable;
    const char *slot;
    Need need;
    // Shown in the layer panel's menu.
    bool layerMenu;
};

const uint EditorText = 101;
const uint FirstToolText = 104;
const uint FirstBlendText = 114;
const uint LayersText = 127;

const ActionEntry actionTable[] = {
    {"spr_add", 143, false, SLOT(add()), NeedFile, false},
    {"spr_delete", 135, false, SLOT(del()), NeedSprite, false},
    {"spr_duplicate", 141, false, SLOT(duplicate()), NeedSprite, false},
    {"spr_openimg", 136, false, SLOT(openImg()), NeedSprite, false},
    {"spr_saveimg", 137, false, SLOT(saveImg()), NeedSprite, false},
    {"spr_saveimgas", 138, false, SLOT(saveImgAs()), NeedSprite, false},
    {"spr_resize", 149, false, SLOT(resizeImage()), NeedSprite, false},
    {"spr_crop", 140, false, SLOT(cropImage()), NeedSprite, false},
    {"spr_split_channels", 154, false, SLOT(splitRGB()), NeedSprite, false},
    {"spr_layer_add", 128, false, SLOT(layerAdd()), NeedSprite, true},
    {"spr_layer_delete", 129, false, SLOT(layerDel()), NeedSprite, true},
    {"spr_layer_duplicate", 130, false, SLOT(layerClone()), NeedSprite, true},
    {"spr_layer_mergevis", 131, false, SLOT(layerMergeVis()), NeedSprite, true},
    {"spr_layer_mergeall", 132, false, SLOT(layerMergeAll()), NeedSprite, true},
    {"spr_layer_save", 133, false, SLOT(layerSave()), NeedSprite, true},
    {"spr_layer_play", 139, false, SLOT(playLayers()), NeedSprite, true},
    {"spr_view_original", 146, true, SLOT(imgViewOrig(bool)), NeedSprite, false},
    {"spr_image_properties", 148, false, SLOT(imgProps()), NeedSprite, false},
    {"spr_select_all", 156, false, SLOT(selAll()), NeedSprite, false},
    {"spr_select_none", 157, false, SLOT(selNone()), NeedSprite, false},
    {"spr_select_invert", 158, false, SLOT(selInv()), NeedSprite, false},
    {"spr_image_rotate", 151, false, SLOT(imgRotate()), NeedSprite, false},
    {"spr_image_fliph", 152, false, SLOT(imgFlipH()), NeedSprite, false},
    {"spr_image_flipv", 153, false, SLOT(imgFlipV()), NeedSprite, false},
    {"spr_import_proj", 144, false, SLOT(projImport()), NeedSprite, false},
    {"spr_frame_spr", 145, true, SLOT(frameSpr(bool)), NeedSprite, false},
    {"spr_switch_pal", 159, true, SLOT(switchPalChanged(bool)), NeedFile, false},
    {"spr_prev", 102, false, SLOT(previous()), NeedSprite, false},
    {"spr_next", 103, false, SLOT(next()), NeedSprite, false},
    {"spr_explorer", 207, true, SLOT(switchExplorer(bool)), NeedFile, false},
    {"spr_thumb_add", 212, false, SLOT(addSel()), NeedFile, false},
    {"spr_thumb_add_all", 213, false, SLOT(addAll()), NeedFile, false},
    {"spr_thumb_add_aligned", 214, false, SLOT(addSelAligned()), NeedFile, false},
    {"spr_thumb_add_all_aligned", 215, false, SLOT(addAllAligned()), NeedFile, false},
};

QIcon swatch(const QColor &color)
{
    QPixmap pixmap(20, 20);
    pixmap.fill(Qt::white);
    QPainter painter(&pixmap);
    painter.fillRect(0, 0, 10, 10, Qt::lightGray);
    painter.fillRect(10, 10, 10, 10, Qt::lightGray);
    painter.fillRect(pixmap.rect(), color);
    painter.setPen(Qt::black);
    painter.drawRect(pixmap.rect().adjusted(0, 0, -1, -1));
    return QIcon(pixmap);
}

} // namespace

void SpriteEditorPrivate::updateWells()
{
    if (!foregroundWell)
        return;
    const auto colorOf = [this](uint value) {
        if (canvas->format() == 0)
            return canvas->palette()->colorAt(uchar(value));
        return QColor::fromRgba(value);
    };
    foregroundWell->setIcon(swatch(colorOf(foreground)));
    backgroundWell->setIcon(swatch(colorOf(background)));
    foregroundWell->setToolTip(tr("Foreground: %1").arg(foreground, 0, canvas->format() == 0 ? 10 : 16));
    backgroundWell->setToolTip(tr("Background: %1").arg(background, 0, canvas->format() == 0 ? 10 : 16));
}


// ---- the panel and the actions ---------------------------------------------------------------

// The layer half of the panel: the menu, the blend box, the opacity slider and the list,
// the painter following the layer picked.
void SpriteEditorPrivate::buildLayerFields(QGridLayout *grid, QVBoxLayout *layout)
{
    auto *layersLabel = new QLabel(ovraTranslator()->text(LayersText), panel);
    layerButton = new QToolButton(panel);
    layerButton->setObjectName(QStringLiteral("spr_layers_menu_button"));
    layerButton->setText(QStringLiteral("\u2630"));
    layerButton->setPopupMode(QToolButton::InstantPopup);
    layerMenu = new QMenu(layerButton);
    layerMenu->setObjectName(QStringLiteral("spr_layers_menu"));
    layerButton->setMenu(layerMenu);
    grid->addWidget(layersLabel, 2, 0, 1, 3);
    grid->addWidget(layerButton, 2, 3);

    blendBox = new QComboBox(panel);
    blendBox->setObjectName(QStringLiteral("spr_layers_blendmode"));
    for (int entry = 0; entry < BlendEntryCount; ++entry)
        blendBox->addItem(ovraTranslator()->text(FirstBlendText + uint(entry)));
    connect(blendBox, QOverload<int>::of(&QComboBox::activated), this, &SpriteEditorPrivate::layerBlending);
    connect(this, &SpriteEditorPrivate::setLayerBlending, blendBox, &QComboBox::setCurrentIndex);
    opacitySlider = new QSlider(Qt::Horizontal, panel);
    opacitySlider->setObjectName(QStringLiteral("spr_layers_opacity"));
    opacitySlider->setRange(0, 100);
    opacitySlider->setValue(100);
    connect(opacitySlider, &QSlider::valueChanged, this, &SpriteEditorPrivate::layerOpacity);
    connect(this, &SpriteEditorPrivate::setLayerOpacity, opacitySlider, &QSlider::setValue);
    grid->addWidget(blendBox, 3, 0, 1, 4);
    grid->addWidget(opacitySlider, 4, 0, 1, 4);

    layerList = new QListView(panel);
    layerList->setObjectName(QStringLiteral("spr_layers_list"));
    layerList->setModel(canvas->layers());
    layerList->setMinimumHeight(120);
    layout->addWidget(layerList, 1);
    connect(layerList->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
        bindPainter();
        updateLayerFields();
    });
    // A layer that comes or goes moves the current row: the painter follows.
    const auto relayer = [this] {
        if (layerList && !layerList->currentIndex().isValid() && canvas->layers()->count())
            layerList->setCurrentIndex(canvas->layers()->index(0));
        bindPainter();
        updateLayerFields();
    };
    connect(canvas->layers(), &QAbstractItemModel::rowsInserted, this, relayer);
    connect(canvas->layers(), &QAbstractItemModel::rowsRemoved, this, relayer);
    connect(canvas->layers(), &QAbstractItemModel::modelReset, this, relayer);
    connect(canvas, &ImageCanvas::painterChanged, this, &SpriteEditorPrivate::bindPainter);
    connect(canvas, &ImageCanvas::formatChanged, this, &SpriteEditorPrivate::updateWells);
}

void SpriteEditorPrivate::buildPanel()
{
    panel = new QWidget;
    panel->setObjectName(QStringLiteral("spr_panel"));
    connect(panel, &QObject::destroyed, this, [this] {
        panel = nullptr;
        layerList = nullptr;
        blendBox = nullptr;
        opacitySlider = nullptr;
        layerButton = nullptr;
        layerMenu = nullptr;
        foregroundWell = backgroundWell = nullptr;
        toolControls = nullptr;
        selector = nullptr;
        selectorLabel = nullptr;
    });
    auto *layout = new QVBoxLayout(panel);
    auto *grid = new QGridLayout;
    layout->addLayout(grid);

    selectorLabel = new QLabel(tr("0 / 0"), panel);
    selectorLabel->setObjectName(QStringLiteral("spr_sel_lb"));
    selector = new QSlider(Qt::Horizontal, panel);
    selector->setObjectName(QStringLiteral("spr_sel"));
    selector->setRange(0, 0);
    connect(selector, &QSlider::valueChanged, this, &SpriteEditorPrivate::selPosChanged);
    connect(this, &SpriteEditorPrivate::setPosText, selectorLabel, &QLabel::setText);
    grid->addWidget(selector, 0, 0, 1, 3);
    grid->addWidget(selectorLabel, 0, 3);

    foregroundWell = new QToolButton(panel);
    foregroundWell->setObjectName(QStringLiteral("spr_foreground"));
    backgroundWell = new QToolButton(panel);
    backgroundWell->setObjectName(QStringLiteral("spr_background"));
    connect(foregroundWell, &QToolButton::clicked, this, &SpriteEditorPrivate::chooseForeground);
    connect(backgroundWell, &QToolButton::clicked, this, &SpriteEditorPrivate::swapColors);
    grid->addWidget(foregroundWell, 1, 0);
    grid->addWidget(backgroundWell, 1, 1);
    toolControls = new QWidget(panel);
    toolControls->setObjectName(QStringLiteral("spr_tool_controls"));
    auto *controlsLayout = new QHBoxLayout(toolControls);
    controlsLayout->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(toolControls, 1, 2, 1, 2);

    buildLayerFields(grid, layout);
    if (interface) {
        for (QObject *control : {static_cast<QObject *>(selector), static_cast<QObject *>(selectorLabel),
                                 static_cast<QObject *>(layerList), static_cast<QObject *>(blendBox),
                                 static_cast<QObject *>(opacitySlider), static_cast<QObject *>(layerMenu),
                                 static_cast<QObject *>(foregroundWell), static_cast<QObject *>(backgroundWell)})
            interface->registerControl(control->objectName(), control);
    }
}

void SpriteEditorPrivate::buildActions()
{
    editorAction = interface ? interface->editorAction(QStringLiteral("editor_spr"), ovraTranslator(), EditorText)
                             : nullptr;
    if (!editorAction) {
        editorAction = new QAction(ovraTranslator()->text(EditorText), this);
        editorAction->setObjectName(QStringLiteral("editor_spr"));
    }
    const ActionScope scope{"sprite", 0};
    for (const ActionEntry &entry : actionTable) {
        const QString name = QString::fromLatin1(entry.name);
        QAction *action = interface ? interface->createAction(scope, name, ovraTranslator(), entry.text,
                                                              entry.checkable, this, entry.slot, nullptr, false)
                                    : nullptr;
        if (!action) {
            action = new QAction(ovraTranslator()->text(entry.text), this);
            action->setObjectName(name);
            action->setCheckable(entry.checkable);
            connect(action, entry.checkable ? SIGNAL(toggled(bool)) : SIGNAL(triggered()), this, entry.slot);
        }
        if (entry.need == NeedSprite)
            connect(q, &SpriteEditor::enabled, action, &QAction::setEnabled);
        else
            fileActions << action;
        action->setEnabled(false);
        actions.insert(name, action);
        if (entry.layerMenu)
            layerMenu->addAction(action);
    }
    if (interface) {
        const bool frame = interface->option(QStringLiteral("switch_frame_spr"), false).toBool();
        const bool ownPalette = interface->option(QStringLiteral("switch_to_imgpal"), false).toBool();
        QSignalBlocker frameBlock(actionNamed("spr_frame_spr"));
        QSignalBlocker paletteBlock(actionNamed("spr_switch_pal"));
        actionNamed("spr_frame_spr")->setChecked(frame);
        actionNamed("spr_switch_pal")->setChecked(ownPalette);
    }
}

void SpriteEditorPrivate::buildTools()
{
    tools = createImageTools(canvas, this);
    toolGroup = new QActionGroup(this);
    toolGroup->setExclusive(true);
    const ActionScope scope{"sprite", 0};
    for (int i = 0; i < tools.size(); ++i) {
        ImageTool *each = tools.at(i);
        const QString name = QString::fromLatin1(each->actionName());
        QAction *action = interface ? interface->createAction(scope, name, ovraTranslator(), FirstToolText + uint(i),
                                                              true, nullptr, nullptr, nullptr, false)
                                    : nullptr;
        if (!action) {
            action = new QAction(each->label(), this);
            action->setObjectName(name);
            action->setCheckable(true);
        }
        // A host without pictures (or with placeholders of a pixel or two) would show the
        // tools as words, too wide for one row: our own drawings stand in.
        const QSize shown = action->icon().actualSize(QSize(24, 24));
        if (action->icon().isNull() || shown.width() < 8 || shown.height() < 8)
            action->setIcon(imageToolIcon(name));
        action->setData(i);
        toolGroup->addAction(action);
        actions.insert(name, action);
        connect(q, &SpriteEditor::enabled, action, &QAction::setEnabled);
        action->setEnabled(false);
        // The picker gives the colour it read to the wells.
        if (each->metaObject()->indexOfSignal("colorPicked(uint,Qt::MouseButton)") >= 0)
            connect(each, SIGNAL(colorPicked(uint, Qt::MouseButton)), this,
                    SLOT(colorPicked(uint, Qt::MouseButton)));
    }
    connect(toolGroup, &QActionGroup::triggered, this, &SpriteEditorPrivate::toolChosen);
}

void SpriteEditorPrivate::showToolControls()
{
    if (!toolControls)
        return;
    for (QWidget *before : toolControls->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        delete before;
    if (QWidget *controls = tool ? tool->createToolBar(toolControls) : nullptr)
        toolControls->layout()->addWidget(controls);
}

// ---- the slots of the panel ------------------------------------------------------------------

void SpriteEditorPrivate::toolChosen(QAction *action)
{
    q->setCurrentTool(tools.value(action->data().toInt()));
}

void SpriteEditorPrivate::colorPicked(uint color, Qt::MouseButton button)
{
    if (button == Qt::RightButton)
        background = color;
    else
        foreground = color;
    bindPainter();
    updateWells();
}

void SpriteEditorPrivate::paletteColorClicked(ushort index, Qt::MouseButton button)
{
    if (button != Qt::LeftButton && button != Qt::RightButton)
        return;
    if (canvas->format() == 0) {
        colorPicked(index, button);
        return;
    }
    const PaletteObject *shown = palettes ? palettes->paletteWidget()->paletteObject() : nullptr;
    if (shown && index < 256)
        colorPicked(shown->at(uchar(index)).toQRgb(), button);
}

void SpriteEditorPrivate::chooseForeground()
{
    const QColor start = canvas->format() == 0 ? canvas->palette()->colorAt(uchar(foreground))
                                               : QColor::fromRgba(foreground);
    const QColor chosen = QColorDialog::getColor(start, dialogParent(), tr("Foreground"),
                                                 QColorDialog::ShowAlphaChannel);
    if (!chosen.isValid())
        return;
    foreground = canvas->format() == 0 ? canvas->palette()->index(RGBA(chosen.rgba())) : chosen.rgba();
    bindPainter();
    updateWells();
}

void SpriteEditorPrivate::swapColors()
{
    qSwap(foreground, background);
    bindPainter();
    updateWells();
}

void SpriteEditorPrivate::layerBlending(int entry)
{
    const int row = currentLayerRow();
    if (updating || row < 0)
        return;
    canvas->setLayerBlendMode(row, blendModeOfEntry(entry));
}

void SpriteEditorPrivate::layerOpacity(int value)
{
    const int row = currentLayerRow();
    if (updating || row < 0)
        return;
    canvas->setLayerOpacity(row, value / 100.0);
}

void SpriteEditorPrivate::selPosChanged(int position)
{
    if (updating || !sprites || position == index)
        return;
    if (!q->setCurrentSprite(position))
        updateState();
}

void SpriteEditorPrivate::previous()
{
    if (sprites && index > 0)
        q->setCurrentSprite(index - 1);
}

void SpriteEditorPrivate::next()
{
    if (sprites && index + 1 < int(sprites->count()))
        q->setCurrentSprite(index + 1);
}

void SpriteEditorPrivate::switchPalChanged(bool checked)
{
    if (interface)
        interface->setOption(QStringLiteral("switch_to_imgpal"), checked);
    if (checked && palettes && sprite && sprite->palette())
        palettes->setCurrentPalette(sprite->palette());
}

void SpriteEditorPrivate::frameSpr(bool checked)
{
    if (interface)
        interface->setOption(QStringLiteral("switch_frame_spr"), checked);
}

void SpriteEditorPrivate::imgViewOrig(bool checked)
{
    if (renderer)
        renderer->setShowOriginal(checked);
    if (workspace)
        workspace->update();
}

void SpriteEditorPrivate::selAll()
{
    canvas->setSelection(QByteArray(canvas->size().width() * canvas->size().height(), '\1'));
}

void SpriteEditorPrivate::selNone()
{
    canvas->clearSelection();
}

void SpriteEditorPrivate::selInv()
{
    const int pixels = canvas->size().width() * canvas->size().height();
    QByteArray mask = canvas->selection();
    if (mask.isEmpty()) {
        // Everything was selected: nothing is.
        canvas->setSelection(QByteArray(pixels, '\0'));
        return;
    }
    for (char &byte : mask)
        byte = byte ? '\0' : '\1';
    canvas->setSelection(mask);
}

void SpriteEditorPrivate::imgFlipH()
{
    canvas->flip(true, false);
}

void SpriteEditorPrivate::imgFlipV()
{
    canvas->flip(false, true);
}

void SpriteEditorPrivate::resizeImage()
{
    q->resize();
}

void SpriteEditorPrivate::cropImage()
{
    q->crop();
}

void SpriteEditorPrivate::switchExplorer(bool shown)
{
    q->switchExtraEditor(shown);
}

void SpriteEditorPrivate::layerAdd()
{
    canvas->addLayer(0);
    if (layerList)
        layerList->setCurrentIndex(canvas->layers()->index(0));
}

void SpriteEditorPrivate::layerDel()
{
    // The last layer stays: a picture without layers has nothing to save.
    if (canvas->layers()->count() > 1)
        canvas->deleteLayer(currentLayerRow());
}

void SpriteEditorPrivate::layerClone()
{
    const int row = currentLayerRow();
    if (row >= 0 && canvas->duplicateLayer(row) && layerList)
        layerList->setCurrentIndex(canvas->layers()->index(row));
}

void SpriteEditorPrivate::layerMergeVis()
{
    canvas->mergeVisible();
}

void SpriteEditorPrivate::layerMergeAll()
{
    canvas->mergeAll();
}

// Shows each layer alone, from the bottom one up, a few times a second, and then the
// layers as they were: a look at the layers as the frames of an animation. A second
// trigger stops it.
void SpriteEditorPrivate::playLayers()
{
    if (layerPlay.isActive()) {
        stopLayers();
        return;
    }
    ImageLayers *list = canvas->layers();
    if (list->count() < 2)
        return;
    layerShown.clear();
    for (ImageLayer *layer : list->layers())
        layerShown << layer->isVisible();
    layerStep = list->count() - 1;
    layerPlay.start(200);
    stepLayers();
}

void SpriteEditorPrivate::stepLayers()
{
    ImageLayers *list = canvas->layers();
    // The layers changed under the play (a new sprite): it ends.
    if (layerStep < 0 || list->count() != layerShown.size()) {
        stopLayers();
        return;
    }
    for (int row = 0; row < list->count(); ++row)
        list->at(row)->setVisible(row == layerStep);
    --layerStep;
    if (workspace)
        workspace->update();
}

void SpriteEditorPrivate::stopLayers()
{
    layerPlay.stop();
    ImageLayers *list = canvas->layers();
    if (list->count() == layerShown.size()) {
        for (int row = 0; row < list->count(); ++row)
            list->at(row)->setVisible(layerShown.at(row));
    }
    layerShown.clear();
    if (workspace)
        workspace->update();
}

void SpriteEditor::retranslate()
{
    for (const ActionEntry &entry : actionTable) {
        if (QAction *action = d->actionNamed(entry.name)) {
            action->setText(ovraTranslator()->text(entry.text));
            action->setToolTip(ovraTranslator()->tip(entry.text));
        }
    }
    if (d->blendBox) {
        for (int entry = 0; entry < d->blendBox->count(); ++entry)
            d->blendBox->setItemText(entry, ovraTranslator()->text(FirstBlendText + uint(entry)));
    }
    d->updateState();
}

} // namespace Ovra
