// The sprite editor: the file and the sprite shown on the canvas, the states that enable
// its actions, the layer panel and the tools, and its place among the host's editors.
#include "editors/sprite/spriteeditor.h"
#include "editors/sprite/spriteeditor_p.h"

#include "editors/animation/timelinewidget.h"
#include "editors/graphics/graphicsworkspace.h"
#include "editors/organizer/organizereditor.h"
#include "editors/organizer/thumbnailseditor.h"
#include "editors/palette/paletteeditor.h"
#include "editors/palette/palettewidget.h"
#include "editors/sprite/commands/rasterlayeredit.h"
#include "editors/sprite/imagecanvas.h"
#include "editors/sprite/imagelayer.h"
#include "editors/sprite/imagelayers.h"
#include "editors/sprite/imagepainter.h"
#include "editors/sprite/imagerenderer.h"
#include "editors/sprite/imagetool.h"
#include "editors/sprite/rasterlayer.h"
#include "foundation/interface.h"
#include "foundation/prompt.h"
#include "foundation/translator.h"
#include "project/regexp.h"
#include "render/renderer.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QActionGroup>
#include <QColorDialog>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QSlider>
#include <QToolButton>
#include <QUndoCommand>
#include <QUndoStack>
#include <QVBoxLayout>

namespace Ovra {
namespace {

// Steps the axis kept for the next save along with the canvas's history, so that undoing
// a crop or a growth puts the axis back too.
class AxisShift : public QUndoCommand
{
public:
    AxisShift(SpriteEditorPrivate *d, const QPoint &shift)
        : m_d(d)
        , m_shift(shift)
    {
    }
    void redo() override { m_d->axisShift += m_shift; }
    void undo() override { m_d->axisShift -= m_shift; }

private:
    SpriteEditorPrivate *m_d;
    QPoint m_shift;
};

} // namespace

// ---- the private part ------------------------------------------------------------------------

SpriteEditorPrivate::SpriteEditorPrivate(SpriteEditor *editor)
    : QObject(editor)
    , q(editor)
    , interface(Interface::instance())
{
}

SpriteEditorPrivate::~SpriteEditorPrivate() = default;

void SpriteEditorPrivate::makeActive()
{
    q->switchToThis();
}

QAction *SpriteEditorPrivate::actionNamed(const char *name) const
{
    return actions.value(QString::fromLatin1(name));
}

QWidget *SpriteEditorPrivate::dialogParent() const
{
    return interface && interface->mainWidget() ? interface->mainWidget() : panel;
}

bool SpriteEditorPrivate::canvasChanged() const
{
    return sprite && !canvas->undoStack()->isClean();
}

void SpriteEditorPrivate::shiftAxis(const QPoint &shift)
{
    if (!shift.isNull())
        canvas->undoStack()->push(new AxisShift(this, shift));
}

// The host's organizer, when the user wants it beside the canvas, orders the sprites of
// the file or, by "org_palette", its palettes.
void SpriteEditorPrivate::showOrganizer()
{
    OrganizerEditor *organizer = nullptr;
    for (int i = 0; interface && !organizer && i < 16; ++i)
        organizer = qobject_cast<OrganizerEditor *>(interface->extraEditor(i));
    if (!organizer)
        return;
    const bool shown = sprites && interface->option(QStringLiteral("show_organizer"), true).toBool();
    const bool palettes = interface->option(QStringLiteral("org_palette"), false).toBool();
    OrganizableObject *object = nullptr;
    if (shown)
        object = palettes ? static_cast<OrganizableObject *>(sprites->palettes()) : sprites;
    organizer->setObject(object);
    interface->setExtraEditor(shown ? organizer : nullptr);
}

void SpriteEditorPrivate::setSprites(Sprites *list)
{
    for (const QMetaObject::Connection &connection : qAsConst(fileConnections))
        disconnect(connection);
    fileConnections.clear();
    sprites = list;
    if (list) {
        const auto changed = [this] { spritesChanged(); };
        fileConnections << connect(list, &QAbstractItemModel::rowsInserted, this, changed)
                        << connect(list, &QAbstractItemModel::rowsRemoved, this, changed)
                        << connect(list, &QAbstractItemModel::rowsMoved, this, changed)
                        << connect(list, &QAbstractItemModel::modelReset, this, changed)
                        << connect(list, &QAbstractItemModel::dataChanged, this, changed)
                        << connect(list, &QObject::destroyed, this, [this] {
                               sprites = nullptr;
                               sprite = nullptr;
                               index = -1;
                               canvas->clear();
                               updateState();
                           });
    }
    if (palettes)
        palettes->setPalettes(list ? list->palettes() : nullptr);
    if (thumbnails && q->isActive())
        thumbnails->filesChanged(list);
    if (q->isActive())
        showOrganizer();
    showSprite(list && list->count() ? int(qMin(list->selected(), list->count() - 1)) : -1);
}

// The file changed under the editor (an edit, an undo): the sprite of the row comes back
// unless the canvas holds changes of its own.
void SpriteEditorPrivate::spritesChanged()
{
    if (updating || !sprites)
        return;
    const int count = int(sprites->count());
    const int row = count ? qBound(0, index, count - 1) : -1;
    if (canvasChanged() && row == index && sprites->at(uint(row)) == sprite) {
        updateState();
        return;
    }
    showSprite(row);
    emit q->spriteCountChanged();
}

// The colours of a palette changed in the palette editor: the canvas shows the new ones
// when it is shown with that palette, its pixels untouched.
void SpriteEditorPrivate::paletteEdited()
{
    Palette *edited = palettes ? palettes->currentPalette() : nullptr;
    if (!edited || !sprite || canvas->format() != 0)
        return;
    RGBA table[256];
    if (!edited->colorTable(table))
        return;
    if (showingOther && shownPaletteSource == edited)
        shownPalette.fromPalette(table);
    else if (!showingOther && sprite->palette() == edited)
        canvas->palette()->fromPalette(table);
    else
        return;
    updateWells();
    if (workspace)
        workspace->update();
}

void SpriteEditorPrivate::showSprite(int row)
{
    if (layerPlay.isActive())
        stopLayers();
    ++updating;
    index = sprites && row >= 0 && row < int(sprites->count()) ? row : -1;
    sprite = index >= 0 ? sprites->at(uint(index)) : nullptr;
    const QImage image = sprite ? sprite->image() : QImage();
    canvas->setImage(image);
    axisShift = QPoint();
    if (image.format() == QImage::Format_Indexed8) {
        RGBA table[256];
        const QVector<QRgb> colors = image.colorTable();
        for (int i = 0; i < 256; ++i)
            table[i] = RGBA(i < colors.size() ? colors.at(i) : 0u);
        canvas->palette()->fromPalette(table);
    }
    if (sprites && index >= 0 && sprites->selected() != uint(index))
        sprites->setSelected(uint(index));
    if (palettes && sprite && sprite->palette() && interface
        && interface->option(QStringLiteral("switch_to_imgpal"), false).toBool())
        palettes->setCurrentPalette(sprite->palette());
    canvas->setPalette(showingOther ? &shownPalette : nullptr);
    if (layerList && canvas->layers()->count())
        layerList->setCurrentIndex(canvas->layers()->index(0));
    bindPainter();
    if (renderer)
        renderer->centralize();
    --updating;
    updateState();
    updateLayerFields();
    updateWells();
    emit q->spriteChanged(sprite);
}

void SpriteEditorPrivate::updateState()
{
    const bool hasFile = sprites != nullptr;
    for (const QPointer<QAction> &action : qAsConst(fileActions)) {
        if (action)
            action->setEnabled(hasFile);
    }
    emit q->noFile(!hasFile);
    emit q->enabled(sprite != nullptr);
    const int count = sprites ? int(sprites->count()) : 0;
    if (!selector)
        return;
    ++updating;
    selector->setRange(0, qMax(0, count - 1));
    selector->setEnabled(count > 1);
    selector->setValue(qMax(0, index));
    emit setSelPos(qMax(0, index));
    --updating;
    emit setPosText(sprite ? tr("%1 / %2").arg(index + 1).arg(count) : tr("0 / 0"));
}

RasterLayer *SpriteEditorPrivate::currentLayer() const
{
    return dynamic_cast<RasterLayer *>(canvas->layers()->at(currentLayerRow()));
}

int SpriteEditorPrivate::currentLayerRow() const
{
    const int row = layerList ? layerList->currentIndex().row() : -1;
    return row >= 0 ? row : (canvas->layers()->count() ? 0 : -1);
}

void SpriteEditorPrivate::bindPainter()
{
    ImagePainter *painter = canvas->painter();
    if (!painter)
        return;
    RasterLayer *layer = currentLayer();
    painter->setImage(layer ? layer->imagePointer() : nullptr);
    painter->setSelection(&canvas->selection());
    painter->setColor(foreground);
    painter->setRemap(remap);
    for (ImageTool *each : qAsConst(tools))
        each->canvasChanged();
}

void SpriteEditorPrivate::updateLayerFields()
{
    if (!blendBox)
        return;
    const ImageLayer *layer = canvas->layers()->at(currentLayerRow());
    ++updating;
    blendBox->setEnabled(layer != nullptr);
    opacitySlider->setEnabled(layer != nullptr);
    const int entry = layer ? blendEntryOfMode(layer->blendMode()) : 0;
    blendBox->setCurrentIndex(qMax(0, entry));
    opacitySlider->setValue(layer ? qRound(layer->opacity() * 100) : 100);
    emit setLayerBlending(blendBox->currentIndex());
    emit setLayerOpacity(opacitySlider->value());
    --updating;
}

// ---- the editor ------------------------------------------------------------------------------

SpriteEditor::SpriteEditor(GraphicsWorkspace *workspace, PaletteEditor *palettes, ThumbnailsEditor *thumbnails,
                           int fileType)
    : d(new SpriteEditorPrivate(this))
{
    d->workspace = workspace;
    d->palettes = palettes;
    d->thumbnails = thumbnails;
    d->fileType = fileType;
    d->canvas = new ImageCanvas(d);
    d->renderer = new ImageRenderer(d);
    d->renderer->setCanvas(d->canvas);
    d->buildPanel();
    d->buildActions();
    d->buildTools();
    connect(&d->layerPlay, &QTimer::timeout, d, &SpriteEditorPrivate::stepLayers);
    if (palettes) {
        connect(palettes, &PaletteEditor::remapRequested, this, &SpriteEditor::setRemap);
        connect(palettes, &PaletteEditor::paletteChanged, d, &SpriteEditorPrivate::paletteEdited);
        connect(palettes->paletteWidget(), &PaletteWidget::colorClick, d, &SpriteEditorPrivate::paletteColorClicked);
    }
    connect(d->canvas->undoStack(), &QUndoStack::cleanChanged, this, [this] { emit modified(); });
    if (!d->tools.isEmpty()) {
        // The pen is where a painter starts.
        ImageTool *pen = d->tools.value(6, d->tools.first());
        setCurrentTool(pen);
    }
    d->updateState();
    d->updateWells();
}

SpriteEditor::~SpriteEditor()
{
    if (d->workspace && d->workspace->sidePanel() == d->panel)
        d->workspace->setSidePanel(nullptr);
    if (d->workspace && d->workspace->renderer() == d->renderer)
        d->workspace->release();
    delete d->panel;
}

QAction *SpriteEditor::action() const
{
    return d->editorAction;
}

const char *SpriteEditor::name() const
{
    return "sprites";
}

QWidget *SpriteEditor::widget()
{
    return d->workspace ? d->workspace->widget() : d->panel;
}

int SpriteEditor::fileType() const
{
    return d->fileType;
}

QList<QWidget *> SpriteEditor::areas() const
{
    QList<QWidget *> list;
    if (d->workspace)
        list << d->workspace->widget();
    if (d->panel)
        list << d->panel;
    if (d->palettes)
        list << d->palettes->widget();
    return list;
}

void SpriteEditor::activate()
{
    FileEditor::activate();
    if (d->workspace) {
        d->workspace->setRenderer(d->renderer);
        d->workspace->activate();
        d->workspace->setSidePanel(d->panel);
        // The painting tools take the place of the animation view's switches, which draw
        // nothing on a picture.
        d->workspace->setViewActionsVisible(false);
        d->workspace->setEditorActions(d->toolGroup->actions());
        // A sprite has no time: the time line of the animations stands aside meanwhile.
        if (QWidget *line = static_cast<QWidget *>(d->workspace->timeLine())) {
            d->timeLineShown = !line->isHidden();
            line->hide();
        }
        if (m_interface)
            m_interface->setWorkspace(d->workspace);
    }
    if (d->thumbnails) {
        QAction *thumbActions[4] = {d->actionNamed("spr_thumb_add"), d->actionNamed("spr_thumb_add_all"),
                                    d->actionNamed("spr_thumb_add_aligned"),
                                    d->actionNamed("spr_thumb_add_all_aligned")};
        d->thumbnails->setFiles(d->sprites, thumbActions);
    }
    if (m_interface) {
        const bool native = m_interface->option(QStringLiteral("native_painting"), false).toBool();
        m_interface->setStatusText(0, tr("Renderer: %1").arg(Renderer::name(native)));
    }
    d->showOrganizer();
}

void SpriteEditor::deactivate()
{
    if (d->tool)
        d->tool->apply();
    if (d->thumbnails)
        d->thumbnails->setFiles(nullptr, nullptr);
    if (d->workspace) {
        d->workspace->deactivate();
        d->workspace->setEditorActions({});
        d->workspace->setViewActionsVisible(true);
        if (d->workspace->sidePanel() == d->panel)
            d->workspace->setSidePanel(nullptr);
        if (QWidget *line = static_cast<QWidget *>(d->workspace->timeLine()))
            line->setVisible(d->timeLineShown);
    }
    FileEditor::deactivate();
}

void SpriteEditor::reconfig()
{
    if (isActive() && d->workspace)
        d->workspace->reconfig();
}

void SpriteEditor::engineSwitched(bool)
{
}

void SpriteEditor::projectSwitched(Project *project)
{
    FileEditor::projectSwitched(project);
}

void SpriteEditor::saveState()
{
    if (m_interface)
        m_interface->setOption(QStringLiteral("editor_spr"), d->tools.indexOf(d->tool));
}

void SpriteEditor::restoreState()
{
    if (!m_interface)
        return;
    const int row = m_interface->option(QStringLiteral("editor_spr"), d->tools.indexOf(d->tool)).toInt();
    if (row >= 0 && row < d->tools.size())
        setCurrentTool(d->tools.at(row));
}

void SpriteEditor::setCurrentFile(ProjectFile *file)
{
    FileEditor::setCurrentFile(file);
    d->setSprites(dynamic_cast<Sprites *>(file));
}

bool SpriteEditor::isModified() const
{
    return d->canvasChanged() || FileEditor::isModified();
}

bool SpriteEditor::canDiscard(const ProjectFile *file)
{
    if (file && file == m_currentFile && !canDiscardChanges())
        return false;
    return FileEditor::canDiscard(file);
}

void SpriteEditor::save()
{
    if (d->canvasChanged())
        setSpriteImage(d->canvas->composed());
    FileEditor::save();
}

// The selected part of what is shown, in true colour, the pixels outside the selection
// clear; all of it without a selection.
void SpriteEditor::copy()
{
    const QImage shown = d->canvas->composed().convertToFormat(QImage::Format_ARGB32);
    if (shown.isNull())
        return;
    QRect box(QPoint(), shown.size());
    QImage part = shown;
    if (d->canvas->hasSelection()) {
        box = QRect();
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                if (d->canvas->isSelected(x, y))
                    box |= QRect(x, y, 1, 1);
                else
                    part.setPixel(x, y, 0);
            }
        }
        if (box.isEmpty())
            return;
    }
    QApplication::clipboard()->setImage(part.copy(box));
}

// Copies, then clears the selected pixels of the layer picked, as one step.
void SpriteEditor::cut()
{
    RasterLayer *layer = d->currentLayer();
    if (!layer)
        return;
    copy();
    const QImage before = layer->image();
    QImage cleared = before;
    for (int y = 0; y < cleared.height(); ++y) {
        for (int x = 0; x < cleared.width(); ++x) {
            // Index 0 on an indexed layer, clear black on a true-colour one.
            if (d->canvas->isSelected(x, y))
                cleared.setPixel(x, y, 0);
        }
    }
    if (cleared == before)
        return;
    layer->setImage(cleared);
    d->canvas->undoStack()->push(new RasterLayerEdit(layer, before, true));
}

// A picture of the clipboard as a new layer.
void SpriteEditor::paste()
{
    if (d->sprite)
        d->addImageAsLayer(QApplication::clipboard()->image());
}

// The canvas's own history first; past its start, the file's.
void SpriteEditor::undo()
{
    if (d->canvas->undoStack()->canUndo())
        d->canvas->undoStack()->undo();
    else if (m_currentFile)
        FileEditor::undo();
}

void SpriteEditor::redo()
{
    if (d->canvas->undoStack()->canRedo())
        d->canvas->undoStack()->redo();
    else if (m_currentFile)
        FileEditor::redo();
}

void SpriteEditor::navigateTo(uint line, uint)
{
    setCurrentSprite(int(line));
}

// The next sprite after the one shown whose name in the list matches, round to the
// first; false when none does or the user keeps a changed sprite.
bool SpriteEditor::find(const RegExp &expression, uint)
{
    if (!d->sprites || !expression.isValid())
        return false;
    const int count = int(d->sprites->count());
    for (int step = 1; step <= count; ++step) {
        const int row = (qMax(d->index, 0) + step) % count;
        const QString name = d->sprites->data(d->sprites->index(row), Qt::DisplayRole).toString();
        if (expression.match(name).hasMatch())
            return setCurrentSprite(row);
    }
    return false;
}

void SpriteEditor::replace(const QList<ProjectFile::SearchResult> &, const QString &)
{
}

Sprites *SpriteEditor::sprites() const
{
    return d->sprites;
}

Sprite *SpriteEditor::currentSprite() const
{
    return d->sprite;
}

int SpriteEditor::currentIndex() const
{
    return d->index;
}

bool SpriteEditor::setCurrentSprite(int index)
{
    if (!d->sprites || index < 0 || index >= int(d->sprites->count()))
        return false;
    if (index == d->index)
        return true;
    if (!canDiscardChanges())
        return false;
    d->showSprite(index);
    return true;
}

PaletteEditor *SpriteEditor::palettesEditor() const
{
    return d->palettes;
}

ThumbnailsEditor *SpriteEditor::thumbnails() const
{
    return d->thumbnails;
}

ImageCanvas *SpriteEditor::canvas() const
{
    return d->canvas;
}

ImageRenderer *SpriteEditor::renderer() const
{
    return d->renderer;
}

QList<ImageTool *> SpriteEditor::tools() const
{
    return d->tools;
}

ImageTool *SpriteEditor::currentTool() const
{
    return d->tool;
}

void SpriteEditor::setCurrentTool(ImageTool *tool)
{
    if (tool == d->tool || (tool && !d->tools.contains(tool)))
        return;
    if (d->tool) {
        d->tool->apply();
        d->tool->deactivate();
    }
    d->tool = tool;
    if (tool) {
        tool->activate();
        if (QAction *action = d->actions.value(QString::fromLatin1(tool->actionName())))
            action->setChecked(true);
    }
    d->showToolControls();
    d->renderer->setTool(tool);
}

void SpriteEditor::setSpriteImage(const QImage &image)
{
    if (!d->sprite || image.isNull())
        return;
    ++d->updating;
    static_cast<ProjectFile *>(d->sprites)->beginChange();
    const QPoint axis = d->sprite->axis() + d->axisShift;
    d->sprite->setImage(image, true);
    d->sprite->setAxis(axis);
    static_cast<ProjectFile *>(d->sprites)->endChange();
    --d->updating;
    d->axisShift = QPoint();
    d->canvas->undoStack()->setClean();
    if (d->thumbnails)
        d->thumbnails->update();
    emit spriteChanged(d->sprite);
}

void SpriteEditor::refreshSprite()
{
    d->showSprite(d->index);
}

void SpriteEditor::switchPalette(Palette *palette)
{
    d->showingOther = palette && palette->colorTable(d->shownTable);
    d->shownPaletteSource = d->showingOther ? palette : nullptr;
    if (d->showingOther)
        d->shownPalette.fromPalette(d->shownTable);
    d->canvas->setPalette(d->showingOther ? &d->shownPalette : nullptr);
    d->updateWells();
    if (d->workspace)
        d->workspace->update();
}

void SpriteEditor::switchExtraEditor(bool shown)
{
    // Put away, the explorer gives its place back to the organizer (if the user keeps one).
    if (!shown)
        d->showOrganizer();
    else if (m_interface)
        m_interface->setExtraEditor(d->thumbnails);
}

void SpriteEditor::setRenderer()
{
    if (d->workspace)
        d->workspace->setRenderer(d->renderer);
}

void SpriteEditor::setRemap(const QMap<uint, uint> &remap)
{
    d->remap = remap;
    if (ImagePainter *painter = d->canvas->painter())
        painter->setRemap(remap);
}

void SpriteEditor::crop()
{
    if (!d->sprite)
        return;
    // Nothing to cut leaves the history as it is.
    QRect content;
    for (const ImageLayer *layer : d->canvas->layers()->layers())
        content |= layer->contentRect();
    if (!content.isValid() || content == QRect(QPoint(), d->canvas->size()))
        return;
    QPoint offset;
    d->canvas->undoStack()->beginMacro(tr("Crop"));
    if (d->canvas->crop(&offset))
        d->shiftAxis(-offset);
    d->canvas->undoStack()->endMacro();
}

bool SpriteEditor::canDiscardChanges()
{
    if (!d->canvasChanged())
        return true;
    Prompt prompt;
    prompt.icon = QMessageBox::Question;
    prompt.title = tr("Discard changes?");
    prompt.text = tr("Do you want to discard the changes made in the current sprite?");
    prompt.buttons = QMessageBox::Yes | QMessageBox::No;
    prompt.defaultButton = QMessageBox::No;
    prompt.parent = d->dialogParent();
    return ask(prompt) == QMessageBox::Yes;
}

bool SpriteEditor::canEditFileType() const
{
    return true;
}

bool SpriteEditor::canChangeFieldValue() const
{
    return d->sprite != nullptr;
}

} // namespace Ovra
