#pragma once
// The inside of the sprite editor, shared by spriteeditor.cpp (the states, the panel, the
// actions, the canvas and the current sprite) and spriteeditorops.cpp (the operations on
// sprites and pictures: import, export, the dialogs, the layers laid from other sprites).
#include "editors/sprite/spriteeditor.h"
#include "image/imagedata.h"
#include "image/paletteobject.h"
#include "image/sprite.h"

#include <QHash>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVector>
#include <functional>

class QAction;
class QActionGroup;
class QComboBox;
class QGridLayout;
class QLabel;
class QListView;
class QMenu;
class QSlider;
class QToolButton;
class QVBoxLayout;

namespace Ovra {

class Interface;
class RasterLayer;

// Reads one picture file for an import, away from the user-interface thread: the format
// by the file's extension, nothing but its own image touched. A file that can't be read
// leaves the image null.
OVRA_EXPORT void loadSpritePicture(const QString &path, QImage *image);
// The same, the picture then cut to its content.
OVRA_EXPORT void loadSpritePictureCropped(const QString &path, QImage *image);
// Called by the two loaders with each path before it is read, on the thread that reads
// it (for tests); an empty function for none.
OVRA_EXPORT void setSpritePictureLoadHook(std::function<void(const QString &)> hook);

// Identifiers of sprites as the editor makes them: a group and a number.
OVRA_EXPORT QString spriteIdentifierText(const QVariant &identifier);
// The identifier a file name ends with ("name_12_3.png" gives group 12, number 3), as
// the export writes it; an invalid variant for other names.
OVRA_EXPORT QVariant spriteIdentifierOfFile(const QString &path);

class SpriteEditorPrivate : public QObject
{
    Q_OBJECT
public:
    explicit SpriteEditorPrivate(SpriteEditor *editor);
    ~SpriteEditorPrivate() override;

    // --- spriteeditor.cpp ---
    void buildPanel();
    void buildLayerFields(QGridLayout *grid, QVBoxLayout *layout);
    void buildActions();
    void buildTools();
    // The current tool's controls in place of the previous tool's.
    void showToolControls();
    void makeActive();
    QAction *actionNamed(const char *name) const;
    QWidget *dialogParent() const;
    void setSprites(Sprites *list);
    void showOrganizer();
    // The sprite of the row on the canvas (none for -1), its history empty.
    void showSprite(int row);
    // The selector, the label, the actions' states.
    void updateState();
    // The painter paints on the chosen layer with the editor's colour and remap.
    void bindPainter();
    RasterLayer *currentLayer() const;
    int currentLayerRow() const;
    void updateLayerFields();
    void updateWells();
    bool canvasChanged() const;
    void spritesChanged();
    // Moves the axis kept for the next save, as one step of the canvas's history.
    void shiftAxis(const QPoint &shift);
    void stepLayers();
    void stopLayers();

    // --- spriteeditorops.cpp ---
    // Loads the pictures on the pool's threads, in file order; null images for failures.
    QList<QImage> loadPictures(const QStringList &files, bool crop);
    // Adds or replaces sprites from the pictures, one undo step; the rows that went in.
    int importPictures(const QStringList &files, const QList<QImage> &images, Sprite::PaletteMode mode,
                       Palette *palette);
    int copySprites(Sprites *from, const QList<int> &rows, Sprite::PaletteMode mode, Palette *palette);
    QVariant nextFreeIdentifier(const QList<QVariant> &taken) const;
    int rowOfIdentifier(const QVariant &identifier) const;
    // Lays the picture on the canvas as a new top layer, one step of its history.
    void addImageAsLayer(const QImage &image);
    void addSpritesAsLayers(const QList<Sprite *> &list, bool aligned);
    bool writePicture(const QString &path, const QImage &image);
    QString imageFolder() const;
    void rememberFolder(const QString &path);
    QStringList paletteNames() const;

    SpriteEditor *const q;
    Interface *const interface;
    GraphicsWorkspace *workspace = nullptr;
    PaletteEditor *palettes = nullptr;
    ThumbnailsEditor *thumbnails = nullptr;
    int fileType = 0;

    Sprites *sprites = nullptr;
    Sprite *sprite = nullptr;
    int index = -1;
    ImageCanvas *canvas = nullptr;
    ImageRenderer *renderer = nullptr;
    QList<ImageTool *> tools;
    ImageTool *tool = nullptr;
    QActionGroup *toolGroup = nullptr;
    // The current tool's own controls (pen size, "Contiguous"), beside the colour wells.
    QWidget *toolControls = nullptr;
    // How far the sprite's axis moves when the canvas is saved into it.
    QPoint axisShift;
    // The painter's colours (indices or ARGB words) and the remap pen's table.
    uint foreground = 255;
    uint background = 0;
    QMap<uint, uint> remap;
    // The palette the canvas is shown with, when another than the sprite's own.
    RGBA shownTable[256];
    PaletteObject shownPalette{&shownTable};
    bool showingOther = false;
    Palette *shownPaletteSource = nullptr;
    // The layers played one by one: the next row, and the visibility to give back.
    QTimer layerPlay;
    int layerStep = -1;
    QVector<bool> layerShown;
    // Whether the workspace showed its time line before the editor came.
    bool timeLineShown = true;
    int updating = 0;

    QWidget *panel = nullptr;
    QListView *layerList = nullptr;     // spr_layers_list
    QComboBox *blendBox = nullptr;      // spr_layers_blendmode
    QSlider *opacitySlider = nullptr;   // spr_layers_opacity
    QToolButton *layerButton = nullptr; // shows spr_layers_menu
    QMenu *layerMenu = nullptr;         // spr_layers_menu
    QToolButton *foregroundWell = nullptr;
    QToolButton *backgroundWell = nullptr;
    QSlider *selector = nullptr;        // spr_sel
    QLabel *selectorLabel = nullptr;    // spr_sel_lb

    QPointer<QAction> editorAction;
    QHash<QString, QPointer<QAction>> actions;
    QList<QPointer<QAction>> fileActions;
    QList<QMetaObject::Connection> fileConnections;

signals:
    void setLayerBlending(int entry);
    void setLayerOpacity(int value);
    void setSelPos(int position);
    void setPosText(const QString &text);

public slots:
    // --- spriteeditor.cpp ---
    void layerBlending(int entry);
    void layerOpacity(int value);
    void selPosChanged(int position);
    void switchPalChanged(bool checked);
    void previous();
    void next();
    void imgViewOrig(bool checked);
    void frameSpr(bool checked);
    void selAll();
    void selNone();
    void selInv();
    void imgFlipH();
    void imgFlipV();
    void layerAdd();
    void layerDel();
    void layerClone();
    void layerMergeVis();
    void layerMergeAll();
    void playLayers();
    void toolChosen(QAction *action);
    void colorPicked(uint color, Qt::MouseButton button);
    // A click on a colour of the palette editor chooses it for that button's well.
    void paletteColorClicked(ushort index, Qt::MouseButton button);
    void paletteEdited();
    void chooseForeground();
    void swapColors();
    void resizeImage();
    void cropImage();
    void switchExplorer(bool shown);

    // --- spriteeditorops.cpp ---
    void add();
    void del();
    void duplicate();
    void openImg();
    void saveImg();
    void saveImgAs();
    void splitRGB();
    void layerSave();
    void imgProps();
    void imgRotate();
    void projImport();
    void addSel();
    void addAll();
    void addSelAligned();
    void addAllAligned();
};

} // namespace Ovra
