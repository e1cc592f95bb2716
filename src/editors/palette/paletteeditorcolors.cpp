// The edits of the colours of the palette shown, each an undo step of the editor, and
// the remap tool.
#include "editors/palette/paletteeditor.h"
#include "editors/palette/paletteeditor_p.h"

#include "editors/editor.h"
#include "editors/palette/paletteremapwidget.h"
#include "editors/palette/palettewidget.h"
#include "editors/palette/remapdlg.h"
#include "foundation/interface.h"
#include "image/paletteobject.h"
#include "image/sprite.h"

#include <QColorDialog>
#include <QIcon>
#include <QUndoCommand>

#include <algorithm>
#include <cstring>

namespace Ovra {
namespace {

// The whole table before and after: the steps of the colour choice, a file's colours,
// an exchange of slots.
class TableCommand : public QUndoCommand
{
public:
    TableCommand(PaletteEditorPrivate *editor, int position, const RGBA (&before)[256], const RGBA (&after)[256],
                 const QString &text)
        : QUndoCommand(text)
        , m_editor(editor)
        , m_position(position)
    {
        std::copy(before, before + 256, m_before);
        std::copy(after, after + 256, m_after);
    }
    void undo() override { m_editor->applyTable(m_position, m_before); }
    void redo() override { m_editor->applyTable(m_position, m_after); }

private:
    PaletteEditorPrivate *m_editor;
    int m_position;
    RGBA m_before[256];
    RGBA m_after[256];
};

// A colour moved to another slot, with the pixels of the sprites that use the palette:
// moving it back is the inverse.
class MoveCommand : public QUndoCommand
{
public:
    MoveCommand(PaletteEditorPrivate *editor, int position, int source, int target)
        : QUndoCommand(QStringLiteral("move color"))
        , m_editor(editor)
        , m_position(position)
        , m_source(source)
        , m_target(target)
    {
    }
    void undo() override { m_editor->applyMove(m_position, m_target, m_source); }
    void redo() override { m_editor->applyMove(m_position, m_source, m_target); }

private:
    PaletteEditorPrivate *m_editor;
    int m_position;
    int m_source;
    int m_target;
};

// Old index to new index when the entry at `source` is taken out and put in at `target`,
// the entries between closing up.
void moveMapping(int source, int target, uchar (&mapping)[256])
{
    for (int i = 0; i < 256; ++i) {
        int to = i;
        if (i == source)
            to = target;
        else if (source < target && i > source && i <= target)
            to = i - 1;
        else if (target < source && i >= target && i < source)
            to = i + 1;
        mapping[i] = uchar(to);
    }
}

QColor askColor(const QColor &initial, QWidget *parent)
{
    return QColorDialog::getColor(initial, parent, PaletteEditor::tr("Color"),
                                  QColorDialog::ShowAlphaChannel | QColorDialog::DontUseNativeDialog);
}

} // namespace

void PaletteEditorPrivate::applyTable(int at, const RGBA *colors)
{
    if (at < 0) {
        // The external table: it is the one the colours are shown from.
        if (external) {
            *object = external;
            object->fromPalette(colors);
        }
        return;
    }
    Palette *palette = paletteAt(at);
    if (!palette)
        return;
    palette->setColorTable(colors, Archive::NoShare);
    if (at != position || external)
        showPosition(at);
    else
        loadTable();
}

void PaletteEditorPrivate::applyMove(int at, int source, int target)
{
    uchar mapping[256];
    moveMapping(source, target, mapping);
    RGBA before[256];
    RGBA after[256];
    if (at < 0) {
        if (!external)
            return;
        std::copy(*external, *external + 256, before);
    } else {
        Palette *palette = paletteAt(at);
        if (!palette || !palette->colorTable(before))
            return;
    }
    for (int i = 0; i < 256; ++i)
        after[mapping[i]] = before[i];
    if (at < 0) {
        applyTable(at, after);
        return;
    }
    Palette *palette = paletteAt(at);
    Sprites *sprites = palettes->sprites();
    // One step of the file: the pixels and the colours change together, so that every
    // sprite of the palette looks the same afterwards.
    palettes->beginChange();
    for (uint i = 0; sprites && i < sprites->count(); ++i) {
        Sprite *sprite = sprites->at(i);
        if (!sprite || sprite->palette() != palette)
            continue;
        QImage picture = sprite->image();
        if (picture.format() != QImage::Format_Indexed8)
            continue;
        for (int y = 0; y < picture.height(); ++y) {
            uchar *line = picture.scanLine(y);
            for (int x = 0; x < picture.width(); ++x)
                line[x] = mapping[line[x]];
        }
        QVector<QRgb> table(256);
        for (int c = 0; c < 256; ++c)
            table[c] = after[c].toQRgb();
        picture.setColorTable(table);
        sprite->setImage(picture, true, Sprite::Ignore, nullptr, Archive::NoShare);
    }
    applyTable(at, after);
    palettes->endChange();
}

void PaletteEditorPrivate::pushTable(const RGBA (&before)[256], const QString &text)
{
    RGBA after[256];
    object->toPalette(after);
    if (std::equal(before, before + 256, after))
        return;
    // The step is done already; its first redo writes the same colours to their owner.
    history.push(new TableCommand(this, external ? -1 : position, before, after, text));
    emitStates();
}

void PaletteEditorPrivate::undo()
{
    if (!switchToSprites())
        return;
    history.undo();
    emitStates();
}

void PaletteEditorPrivate::redo()
{
    if (!switchToSprites())
        return;
    history.redo();
    emitStates();
}

void PaletteEditorPrivate::switchColor()
{
    if (!prepare() || !colors || colors->selectedCount() < 2)
        return;
    RGBA before[256];
    object->toPalette(before);
    object->switchColors(colors->selection(), false);
    pushTable(before, QStringLiteral("switch colors"));
}

void PaletteEditorPrivate::setColor()
{
    if (!prepare() || !colors || colors->selectedCount() == 0)
        return;
    const int shown = colors->currentIndex() >= 0 ? colors->currentIndex() : 0;
    const QColor chosen = askColor(object->colorAt(uchar(shown)), widget);
    if (!chosen.isValid())
        return;
    RGBA before[256];
    object->toPalette(before);
    object->setColor(colors->selection(), RGBA(chosen.rgba()));
    pushTable(before, QStringLiteral("set color"));
}

void PaletteEditorPrivate::colorDblClicked(ushort color)
{
    if (color > 255 || (!external && !prepare()) || (!external && !paletteAt(position)))
        return;
    const QColor chosen = askColor(object->colorAt(uchar(color)), widget);
    if (!chosen.isValid())
        return;
    RGBA before[256];
    object->toPalette(before);
    object->setColor(uchar(color), RGBA(chosen.rgba()));
    pushTable(before, QStringLiteral("set color"));
}

void PaletteEditorPrivate::colorMoved(int source, int target)
{
    if (source < 0 || source > 255 || target < 0 || target > 255 || source == target)
        return;
    if (!external && (!prepare() || !paletteAt(position)))
        return;
    history.push(new MoveCommand(this, external ? -1 : position, source, target));
    emitStates();
    emit q->colorMoved(source, target);
}

void PaletteEditorPrivate::colorClicked(ushort color, Qt::MouseButton button)
{
    if (!remapDialog || !remapDialog->isVisible())
        return;
    if (button == Qt::LeftButton)
        remapDialog->setSource(color);
    else if (button == Qt::RightButton)
        remapDialog->setTarget(color);
}

void PaletteEditorPrivate::remap()
{
    if (!prepare())
        return;
    if (!remapDialog) {
        remapDialog = new RemapDlg(widget);
        if (Interface *host = Interface::instance())
            remapDialog->setWindowIcon(host->icon(QStringLiteral("pal_remap")));
        connect(remapDialog->remapWidget(), &PaletteRemapWidget::changed, this, &PaletteEditorPrivate::remapChanged);
    }
    remapDialog->remapWidget()->setPaletteObject(object);
    remapDialog->show();
    remapDialog->raise();
}

void PaletteEditorPrivate::remapChanged()
{
    q->remapChanged();
}

QMap<uint, uint> PaletteEditor::remapTable() const
{
    return d->remapDialog ? d->remapDialog->remapWidget()->table() : QMap<uint, uint>();
}

void PaletteEditor::remapChanged()
{
    // The table goes to the sprite shown, so only while the sprite editor is in front.
    Interface *host = Interface::instance();
    Editor *current = host ? host->currentEditor() : nullptr;
    if (!current || std::strcmp(current->name(), "sprites") != 0 || !d->palettes)
        return;
    emit remapRequested(remapTable());
}

} // namespace Ovra
