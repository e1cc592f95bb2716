#pragma once

#include "editors/graphics/graphicsworkspace.h"
#include "render/graphicsrenderer.h"

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QSize>

class QAction;
class QSplitter;

namespace Ovra {

class ExAxisDlg;
class RenderView;

class GraphicsWorkspacePrivate : public QObject
{
    Q_OBJECT

public:
    // The view actions by their place on the tool bar; the crosses follow the order of
    // GraphicsWorkspace::Cross so that enableCross can index them.
    enum ViewAction {
        CenterOrigin = 0,
        MainCrossAction,
        SecondaryCrossAction,
        ExtraCrossAction,
        RulersAction,
        GuidesAction,
        AttackBoxAction,
        CollisionBoxAction,
        ViewActionCount
    };
    enum ZoomAction { ZoomIn = 0, ZoomOut, ZoomFit, ZoomActual, ZoomActionCount };

    GraphicsWorkspacePrivate(GraphicsWorkspace *q, Interface *host);

    void buildView();
    void buildActions();
    void buildZoomActions();
    // Our own picture for an action the host gave none worth showing.
    void giveIcon(QAction *action);

    QVariant option(const char *name) const;
    // With no project open, the default screen of the engines: 320 x 240.
    QSize gameSize() const;
    // Steps 2 and 3 of reconfig: the game size and the background.
    void readBackground();
    // The option "zoom_level", for a renderer that has levels.
    void applyZoomLevel();
    void applyVisibility();
    void placeExtraCross();
    GraphicsRenderer *graphicsRenderer() const;
    // A view that never had an origin stored starts with it in its middle, once the view
    // has its size.
    bool eventFilter(QObject *watched, QEvent *event) override;

public slots:
    void centerOrigin();
    // The one slot of all checkable view actions.
    void visibilityChanged(bool checked);
    // A drag of the extra cross on the canvas moves the axis too.
    void itemMoved(Ovra::GraphicsRenderer::ItemType type, int index, QPoint position);

public:
    GraphicsWorkspace *const q;
    Interface *const host;
    GraphicsRendererBase *renderer = nullptr;
    RenderView *view = nullptr;
    QSplitter *splitter = nullptr;
    QToolBar *toolBar = nullptr;
    TimeLineWidget *timeLine = nullptr;
    QPointer<QWidget> sidePanel;
    QAction *actions[ViewActionCount] = {};
    QAction *zoomActions[ZoomActionCount] = {};
    // The separators before the groups of view actions, hidden with them.
    QList<QAction *> viewSeparators;
    // The current editor's own actions at the head of the bar, and the separator after them.
    QList<QAction *> editorActions;
    QAction *editorSeparator = nullptr;
    QPoint extraAxis;
    QPointer<ExAxisDlg> axisDialog;
    bool centreWhenSized = false;
};

} // namespace Ovra
