#pragma once
// The inside of the animation editor, shared by its two halves: animationeditor.cpp (the
// panel, the states, selection, fields, playback, the canvas, boxes and onion skin; with
// animationeditorpanel.cpp, animationeditorplay.cpp and animationeditorcanvas.cpp) and
// animationeditorops.cpp (the operations over whole animations and files, each with its
// dialog).
#include "code/animationplayer.h"
#include "editors/animation/animationeditor.h"
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QVector>

class QAction;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QSpinBox;

namespace Ovra {

class AnimEditTxt;
class CodeNodeFile;
class Interface;
class Sprite;

// Exported for the tests, which look inside (a sanitizer checks their casts by its type).
class OVRA_EXPORT AnimationEditorPrivate : public QObject
{
    Q_OBJECT
public:
    explicit AnimationEditorPrivate(AnimationEditor *editor);
    // The one the editor uses: the private part keeps the editor's sprite place.
    AnimationEditorPrivate(AnimationEditor *editor, GraphicsRenderer::SpriteProvider::Info &sprite,
                           GraphicsRenderer::ItemType spriteItem);
    ~AnimationEditorPrivate() override;

    // --- animationeditor.cpp ---
    void buildPanel();
    void buildActions();
    // Makes the editor the host's current one, if it isn't; every editing slot starts here.
    void makeActive();
    // Takes the animations of the current file (null for none) and shows the first state.
    void setAnimations(Animations *list);
    // The editor's state from the current file, animation and frame: the signals noFile,
    // enabled, frameEnabled, the selectors' ranges and the position texts.
    void updateState();
    // The fields from the current frame (zeros without one), with `updating` raised.
    void fillFields();
    // Hands the frame's boxes and sprite to the canvas, and the time line to the frame's
    // start while not playing.
    void showFrame();
    // Reports a changed animation: the time line is built anew only with `time`.
    void reportAnimationChanged(bool time);
    void rebuildTimeLine();
    void updateOnion();
    void setStatus(const QString &text);
    QString positionText() const;
    QAction *actionNamed(const char *name) const;
    // The current animation, frame and onion animation again from their rows, after a
    // parse that may have replaced their nodes.
    void refreshPointers();
    void fillAnimationBox();
    void fillFrameBox();
    // The player on the current animation from its start, one tick primed (see tick).
    void loadPlayer();
    TimeLineWidget *timeLine() const;
    void connectRenderer();
    // The canvas, the panel and the time line in the graphics workspace, and back out.
    void enterCanvas();
    void leaveCanvas();
    // The current frame's boxes to the canvas again; the canvas keeps the selection.
    void syncBoxes();
    // A sync that waits for the canvas, now.
    void flushBoxSync();
    void scheduleRefresh();
    void reportIfShown();
    // Writes the canvas's box rectangles that differ from their code, one undo step.
    void writeBoxes();
    void setFrameOffset(QPoint offset);
    // Adds a frame for each sprite to the animation at `row`, one undo step.
    void addFrames(int row, const QList<Sprite *> &list);
    void newAnimation(const QList<Sprite *> &list);
    // The file left its document while the editor showed it: the editor shows none.
    void fileGone();
    void rememberOnion();

    // --- animationeditorops.cpp ---
    // Copies the animations into the file, asking before each one whose identifier is
    // taken, as one undo step; the identifiers of those that went in.
    QStringList copyAnimations(const QList<AnimationCode *> &sources);
    // Selects the first imported animation and tells how many went in.
    void reportImport(const QStringList &identifiers);

    AnimationEditor *const q;
    Interface *const interface;
    CodeWorkspace *codeWorkspace;
    GraphicsWorkspace *graphicsWorkspace;
    ThumbnailsEditor *thumbnails;
    GraphicsRenderer *renderer;
    GraphicsRenderer::SpriteProvider::Info &spriteInfo;
    const GraphicsRenderer::ItemType spriteItem;

    // Above 0, the field slots do nothing.
    int updating = 0;
    // Above 0, a change of the code comes from the editor's own fields.
    int fieldChanges = 0;
    bool editCodeMode = false;
    Animations *animations = nullptr;
    Sprites *sprites = nullptr;
    AnimationCode *animation = nullptr;
    FrameCode *frame = nullptr;
    struct Onion
    {
        // The animation the onion frame comes from, kept per file by its row.
        AnimationCode *animation = nullptr;
        bool enabled = false;
        int selectedAnimation = -1;
        int selectedFrame = -1;
    } onion;
    AnimationPlayer player;
    uint lastTick = 0;
    int tickGuard = 0;

    // The panel and its fields (registered with the host as controls of their names).
    QWidget *panel = nullptr;
    QComboBox *animationBox = nullptr;    // anim_sel
    QLabel *animationLabel = nullptr;     // anim_sel_lb
    QComboBox *frameBox = nullptr;        // anim_frame_sel
    QLabel *frameLabel = nullptr;         // anim_frame_sel_lb
    QLabel *positionLabel = nullptr;      // anim_frame_lb
    QSpinBox *xField = nullptr;           // anim_frame_xaxis
    QSpinBox *yField = nullptr;           // anim_frame_yaxis
    QSpinBox *timeField = nullptr;        // anim_frame_time
    QComboBox *flipField = nullptr;       // anim_frame_flip
    QDoubleSpinBox *xScaleField = nullptr; // anim_frame_xscale
    QDoubleSpinBox *yScaleField = nullptr; // anim_frame_yscale
    QDoubleSpinBox *angleField = nullptr;  // anim_frame_angle
    QLabel *onionLabel = nullptr;          // anim_onion_lb
    QPointer<AnimEditTxt> textEditor;

    // The rows of the current animation and frame (-1 for none): the pointers above are
    // found again from them after each change of the text.
    int animationIndex = -1;
    int frameIndex = -1;
    // The onion skin's animation and frame rows of each file the editor showed.
    QHash<const QObject *, QPoint> onionChoices;
    QPointer<QAction> editorAction;
    // The host may replace an action of a name when another editor asks for it again.
    QHash<QString, QPointer<QAction>> actions;
    // Actions usable with any file, enabled by the editor itself.
    QList<QPointer<QAction>> fileActions;
    // The file shown, as its document knows it.
    CodeNodeFile *animationsFile = nullptr;
    QMetaObject::Connection textConnection;
    QMetaObject::Connection goneConnection;
    QList<QMetaObject::Connection> canvasConnections;
    // A box sync is waiting for the canvas to finish its own write.
    bool boxSyncPending = false;
    // The canvas and the time line follow the text at the next turn of the event loop,
    // once for a burst of edits.
    bool refreshPending = false;
    // The current animation's name and delays as the time line was last built for them.
    QString reportedName;
    QVector<int> reportedDelays;

public slots:
    // --- animationeditor.cpp ---
    // The code changed under the editor (typing, undo): lists, selection and fields anew.
    void updateFromText();
    void extraAxisChanged(QPoint axis);
    void contactDrawingExit();
    void codeChanged();
    void playAnimation();
    void tick(uint tick);
    void playChanged(bool checked);
    void stopChanged();
    void frameAdd();
    void frameDel();
    void boxAddAChanged(bool checked);
    void boxAddCChanged(bool checked);
    void boxDel();
    void boxDelAll();
    void boxDelAllAnim();
    void boxSwType();
    void boxPrev();
    void setPos(int position);
    void selPosChanged(int index);
    void frameSelPosChanged(int index);
    void frameXChanged(int x);
    void frameYChanged(int y);
    void frameTimeChanged(int time);
    void frameFlipChanged(int flip);
    void frameXScaleChanged(double scale);
    void frameYScaleChanged(double scale);
    void frameAngleChanged(double angle);
    void axisLeft();
    void axisRight();
    void axisUp();
    void axisDown();
    void nextAnimation();
    void prevAnimation();
    void nextFrame();
    void prevFrame();
    void onionSkinChanged(bool checked);
    void onionSelect();
    void onionFrameSelect();
    void onionFind();
    void thumbAdd();
    void thumbAddAll();
    void thumbNew();
    void thumbNewAll();
    void itemMoved(Ovra::GraphicsRenderer::ItemType type, int index, QPoint position);
    void itemReleased(Ovra::GraphicsRenderer::ItemType type, int index, QPoint position);
    void cursorChanged(QPoint position);

    // --- animationeditorops.cpp ---
    void add();
    void del();
    void textEditClosed();
    void editCode(bool checked);
    void editAnimCode();
    void duplicate();
    void saveGIF();
    void frameAllOffset();
    void frameAllTime();
    void frameAllFlip();
    void frameAllScale();
    void frameAlign();
    void boxAllInst();
    void optimize();
    void exportTo();
    void importFrom();
    void projImport();
    void find();
};

} // namespace Ovra
