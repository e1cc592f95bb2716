#pragma once

#include "image/imagedata.h"

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QUndoStack>
#include <QVariant>

class QAction;
class QLabel;
class QSlider;
class QToolButton;
class QWidget;

namespace Ovra {

class OrganizerEditor;
class Palette;
class PaletteEditor;
class PaletteObject;
class PaletteWidget;
class Palettes;
class RemapDlg;
class Sprites;

class PaletteEditorPrivate : public QObject
{
    Q_OBJECT
public:
    explicit PaletteEditorPrivate(PaletteEditor *editor);
    ~PaletteEditorPrivate() override;

    void buildActions();
    void buildWidget();
    void retranslate();

    // Makes the sprite editor the current one; false when it can't be.
    bool switchToSprites();
    // The first step of every command: the sprite editor current and a file there.
    bool prepare();
    Palette *paletteAt(int position) const;
    int count() const;
    // Shows palette `position` (held to the list) and sets the selector, without the
    // selector's own signal acting.
    void showPosition(int position);
    // The selector's range and text for the list as it is now.
    void refreshSelector();
    // The colours shown: palette `position` of the file, or the external table.
    void loadTable();
    void emitStates();

    // Reads a palette file into a scratch table; it stays opaque black when the file
    // doesn't read.
    static void readScratch(const QString &fileName, RGBA (&table)[256]);
    QString startDirectory() const;
    QString openFilter() const;
    QString saveFilter() const;
    // A text for the identifier of a palette, fit for a file name.
    static QString identifierText(const QVariant &identifier, int position);
    // The identifiers offered for new palettes, and the text typed back in their type.
    QStringList defaultIdentifiers(int count) const;
    QVariant identifierFromText(const QString &text) const;

    // What the undo steps of the colours do.
    void applyTable(int position, const RGBA *table);
    void applyMove(int position, int source, int target);
    void pushTable(const RGBA (&before)[256], const QString &text);

public slots:
    void clear();
    void clearUnused();
    void add();
    void del();
    void delDupl();
    void open();
    void save();
    void remap();
    void undo();
    void redo();
    void switchColor();
    void setColor();
    void setSprPal();
    void prevPal();
    void nextPal();
    void selPosChanged(int position);
    void palOrg(bool shown);
    void palChanged(int count);
    void remapChanged();
    void changed();
    void colorDblClicked(ushort color);
    void colorMoved(int source, int target);
    void colorClicked(ushort color, Qt::MouseButton button);

signals:
    void fileShown(bool shown);
    void paletteShown(bool shown);
    void canUndo(bool can);
    void canRedo(bool can);

public:
    PaletteEditor *q;
    QPointer<Palettes> palettes;
    // The colours shown, and the operations over them.
    RGBA table[256];
    PaletteObject *object = nullptr;
    // A table that belongs to no palette of the file, when one is shown.
    RGBA (*external)[256] = nullptr;
    int position = -1;
    // Raised while the selector is set from code.
    int guard = 0;
    // Raised while the colours of another palette are loaded.
    int loading = 0;
    QUndoStack history;
    QMap<QString, QAction *> actions;

    QPointer<QWidget> widget;
    PaletteWidget *colors = nullptr;
    QSlider *selector = nullptr;
    QLabel *positionLabel = nullptr;
    QLabel *titleLabel = nullptr;
    QPointer<RemapDlg> remapDialog;
    OrganizerEditor *organizer = nullptr;
};

} // namespace Ovra
