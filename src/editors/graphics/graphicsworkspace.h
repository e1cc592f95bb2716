#pragma once
#include "editors/workspace.h"
#include <QList>
#include <QPoint>

class QAction;
class QToolBar;

namespace Ovra {

class GraphicsRendererBase;
class GraphicsWorkspacePrivate;
class RenderWidgetBase;
class TimeLineWidget;

// The visual place of the graphics editors: a render widget with a tool bar of view
// actions above it and a time line below, bound to one canvas at a time. The view keeps
// in step with the host's options (reconfig) and puts back, and stores, the view state of
// the editor that comes and goes (activate, deactivate). The workspace is made once by
// the host and outlives the editors that use it.
class OVRA_EXPORT GraphicsWorkspace : public Workspace
{
    Q_OBJECT
public:
    enum Cross { MainCross = 0, SecondaryCross = 1, ExtraCross = 2 };
    Q_ENUM(Cross)

    explicit GraphicsWorkspace(Interface *interface, QWidget *parent = nullptr);
    ~GraphicsWorkspace() override;

    // Reads the view keys (rulers, guides, crosses, boxes, origin) into the view.
    void activate();
    // Writes the same keys back.
    void deactivate();
    // The back end, the game size, the background, the boxes, the crosses, the draw
    // order and the zoom, from the options, in that order.
    void reconfig();
    void retranslate();
    // Detaches the canvas; the workspace shows nothing until setRenderer.
    void release();
    void update();

    QWidget *widget() const;
    const char *name() const;
    GraphicsRendererBase *renderer() const;
    // Detaches the canvas shown before, attaches this one to the present render widget,
    // and gives it the look and the zoom of the options.
    void setRenderer(GraphicsRendererBase *renderer);
    // The render widget now in use: OpenGL, or the raster one under "native_painting".
    RenderWidgetBase *renderWidget() const;
    TimeLineWidget *timeLine() const;
    QToolBar *toolBar() const;
    // A panel beside the view (the fields of the editor now shown); one at a time, none
    // for null. The workspace takes it as a child, and keeps it when another is shown.
    void setSidePanel(QWidget *panel);
    QWidget *sidePanel() const;

    // Shows or hides the view actions (origin, crosses, rulers, guides, boxes): a view
    // that draws none of them (a picture being painted) has no use for their switches.
    void setViewActionsVisible(bool visible);
    // The current editor's own actions (its tools), at the head of the tool bar; an empty
    // list takes them off again. The editor keeps owning them.
    void setEditorActions(const QList<QAction *> &actions);
    // Enables the view action of a cross (an editor offers only the crosses it uses).
    void enableCross(Cross cross, bool enabled);
    QPoint extraAxis() const;
    void setExtraAxis(QPoint axis);

public slots:
    void zoomIn();
    void zoomOut();
    void zoomFit();
    void zoomActual();
    // The host's status field was clicked.
    void statusBarClicked();

signals:
    void extraAxisChanged(QPoint axis);
    void statusClicked();

private:
    friend class GraphicsWorkspacePrivate;
    GraphicsWorkspacePrivate *const d;
};

} // namespace Ovra
