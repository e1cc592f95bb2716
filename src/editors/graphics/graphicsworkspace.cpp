#include "editors/graphics/graphicsworkspace.h"
#include "editors/graphics/graphicsworkspace_p.h"

#include "editors/animation/timelinewidget.h"
#include "editors/graphics/exaxisdlg.h"
#include "editors/graphics/viewicons_p.h"
#include "engine/engine.h"
#include "foundation/interface.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "render/renderview.h"
#include "render/renderwidgetbase.h"

#include <QAction>
#include <QCoreApplication>
#include <QEvent>
#include <QSplitter>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

namespace Ovra {

namespace {

// The view actions by the name the host keeps their icon and shortcut under, with the
// number of their text in the library's string table, in the order of ViewAction.
struct ActionEntry
{
    const char *name;
    uint text;
};

const ActionEntry viewActions[] = {
    {"view_center_origin", 5}, {"view_main_cross", 6},    {"view_secondary_cross", 7},
    {"view_extra_cross", 8},   {"view_rulers", 9},        {"view_guide_lines", 10},
    {"view_attack_box", 11},   {"view_collision_box", 12},
};

const ActionEntry zoomEntries[] = {
    {"view_zoom_in", 0}, {"view_zoom_out", 1}, {"view_zoom_fit", 2}, {"view_zoom_actual", 3},
};

// The option that keeps the state of a checkable view action between two activations.
struct ViewKey
{
    int action;
    const char *option;
};

const ViewKey viewKeys[] = {
    {GraphicsWorkspacePrivate::RulersAction, "show_rulers"},
    {GraphicsWorkspacePrivate::GuidesAction, "show_guides"},
    {GraphicsWorkspacePrivate::MainCrossAction, "show_cross1"},
    {GraphicsWorkspacePrivate::SecondaryCrossAction, "show_cross2"},
    {GraphicsWorkspacePrivate::AttackBoxAction, "show_attack_box"},
    {GraphicsWorkspacePrivate::CollisionBoxAction, "show_collision_box"},
};

// The zoom buttons' texts, which the library's string table does not hold. The host
// keeps the pointer with the actions, so one table lives as long as the process.
class ZoomTexts : public Translator
{
public:
    QString text(uint id) override
    {
        static const char *const texts[] = {
            QT_TRANSLATE_NOOP("Ovra::GraphicsWorkspace", "Zoom in"),
            QT_TRANSLATE_NOOP("Ovra::GraphicsWorkspace", "Zoom out"),
            QT_TRANSLATE_NOOP("Ovra::GraphicsWorkspace", "Zoom to fit"),
            QT_TRANSLATE_NOOP("Ovra::GraphicsWorkspace", "Actual size"),
        };
        return id < 4 ? QCoreApplication::translate("Ovra::GraphicsWorkspace", texts[id]) : QString();
    }
};

Translator *zoomTexts()
{
    static ZoomTexts texts;
    return &texts;
}

// An action made here when there is no host, or the host makes none, so that the view
// works all the same.
QAction *ownAction(QObject *parent, const ActionEntry &entry, Translator *strings, bool checkable)
{
    auto *action = new QAction(strings->text(entry.text), parent);
    action->setObjectName(QString::fromLatin1(entry.name));
    action->setToolTip(strings->tip(entry.text));
    action->setCheckable(checkable);
    return action;
}

} // namespace

GraphicsWorkspacePrivate::GraphicsWorkspacePrivate(GraphicsWorkspace *q, Interface *host)
    : QObject(q)
    , q(q)
    , host(host)
{
}

void GraphicsWorkspacePrivate::buildView()
{
    toolBar = new QToolBar(q);
    toolBar->setObjectName(QStringLiteral("graphics_toolbar"));
    view = new RenderView(q);
    view->setObjectName(QStringLiteral("graphics_view"));
    view->setBars({toolBar});
    timeLine = new TimeLineWidget(q);

    splitter = new QSplitter(Qt::Horizontal, q);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(view);
    splitter->setStretchFactor(0, 1);

    auto *layout = new QVBoxLayout(q);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(splitter, 1);
    layout->addWidget(timeLine);
}

void GraphicsWorkspacePrivate::buildActions()
{
    const ActionScope scope{"graphics", 0};
    for (int i = 0; i < ViewActionCount; ++i) {
        const ActionEntry &entry = viewActions[i];
        const bool checkable = i != CenterOrigin;
        const char *slot = checkable ? SLOT(visibilityChanged(bool)) : SLOT(centerOrigin());
        QAction *action = host ? host->createAction(scope, QString::fromLatin1(entry.name), ovraTranslator(),
                                                    entry.text, checkable, this, slot, nullptr, false)
                               : nullptr;
        if (!action) {
            action = ownAction(this, entry, ovraTranslator(), checkable);
            if (checkable)
                connect(action, &QAction::toggled, this, &GraphicsWorkspacePrivate::visibilityChanged);
            else
                connect(action, &QAction::triggered, this, &GraphicsWorkspacePrivate::centerOrigin);
        }
        actions[i] = action;
        if (i == MainCrossAction || i == RulersAction || i == AttackBoxAction)
            viewSeparators << toolBar->addSeparator();
        toolBar->addAction(action);
        giveIcon(action);
    }
}

void GraphicsWorkspacePrivate::buildZoomActions()
{
    static const char *const zoomSlots[] = {SLOT(zoomIn()), SLOT(zoomOut()), SLOT(zoomFit()), SLOT(zoomActual())};
    const ActionScope scope{"graphics", 0};
    toolBar->addSeparator();
    for (int i = 0; i < ZoomActionCount; ++i) {
        const ActionEntry &entry = zoomEntries[i];
        QAction *action = host ? host->createAction(scope, QString::fromLatin1(entry.name), zoomTexts(), entry.text,
                                                    false, q, zoomSlots[i], nullptr, false)
                               : nullptr;
        if (!action) {
            action = ownAction(this, entry, zoomTexts(), false);
            connect(action, SIGNAL(triggered()), q, zoomSlots[i]);
        }
        zoomActions[i] = action;
        toolBar->addAction(action);
        giveIcon(action);
    }
}

void GraphicsWorkspacePrivate::giveIcon(QAction *action)
{
    // A host without pictures (or with placeholders of a pixel or two) would leave a row
    // of blank buttons, and the words are too wide for one row: our own drawings stand in.
    const QSize size = action->icon().actualSize(toolBar->iconSize());
    if (action->icon().isNull() || size.width() < 8 || size.height() < 8)
        action->setIcon(viewActionIcon(action->objectName()));
}

QVariant GraphicsWorkspacePrivate::option(const char *name) const
{
    return host ? host->option(QString::fromLatin1(name), QVariant()) : QVariant();
}

QSize GraphicsWorkspacePrivate::gameSize() const
{
    Project *project = host ? host->currentProject() : nullptr;
    ParentProject *parent = project ? project->parentProject() : nullptr;
    Engine *engine = parent ? parent->engine() : nullptr;
    return engine ? engine->viewSize() : QSize(320, 240);
}

void GraphicsWorkspacePrivate::readBackground()
{
    const QSize size = gameSize();
    const int type = qBound(0, option("background_type").toInt(), 2);
    GraphicsRenderer::setBackground(qvariant_cast<QColor>(option("back_start")),
                                    qvariant_cast<QColor>(option("back_end")),
                                    GraphicsRenderer::BackgroundType(type),
                                    QPoint(option("background_x").toInt(), option("background_y").toInt()),
                                    option("background_file").toString(), size);
}

void GraphicsWorkspacePrivate::applyZoomLevel()
{
    if (GraphicsRenderer *canvas = graphicsRenderer())
        canvas->setZoomLevel(static_cast<unsigned char>(qBound(0, option("zoom_level").toInt(), 16)));
}

void GraphicsWorkspacePrivate::applyVisibility()
{
    if (!renderer)
        return;
    renderer->setVisibility(actions[MainCrossAction]->isChecked(), actions[SecondaryCrossAction]->isChecked(),
                            actions[ExtraCrossAction]->isChecked(), actions[AttackBoxAction]->isChecked(),
                            actions[CollisionBoxAction]->isChecked(), actions[RulersAction]->isChecked(),
                            actions[GuidesAction]->isChecked());
}

void GraphicsWorkspacePrivate::placeExtraCross()
{
    if (GraphicsRenderer *canvas = graphicsRenderer())
        canvas->setItemPosition(GraphicsRenderer::ExtraCross, QPointF(extraAxis));
}

GraphicsRenderer *GraphicsWorkspacePrivate::graphicsRenderer() const
{
    return dynamic_cast<GraphicsRenderer *>(renderer);
}

bool GraphicsWorkspacePrivate::eventFilter(QObject *watched, QEvent *event)
{
    // Called with no event for a view that already had its size.
    if (watched == view && centreWhenSized && (!event || event->type() == QEvent::Resize)) {
        // The canvas hears of the new size from its own widget, after this.
        QTimer::singleShot(0, this, [this] {
            if (!centreWhenSized || view->size().isEmpty())
                return;
            centreWhenSized = false;
            view->removeEventFilter(this);
            centerOrigin();
        });
    }
    return QObject::eventFilter(watched, event);
}

void GraphicsWorkspacePrivate::centerOrigin()
{
    if (renderer)
        renderer->centralize();
}

void GraphicsWorkspacePrivate::visibilityChanged(bool checked)
{
    applyVisibility();
    if (sender() != actions[ExtraCrossAction])
        return;
    // The extra cross has no place of its own in the options: showing it is the moment
    // the user wants to say where it goes.
    if (checked) {
        if (!axisDialog) {
            axisDialog = new ExAxisDlg(q, q);
            axisDialog->setWindowFlag(Qt::Tool);
        }
        axisDialog->setAxis(extraAxis);
        axisDialog->show();
        axisDialog->raise();
    } else if (axisDialog) {
        axisDialog->hide();
    }
}

void GraphicsWorkspacePrivate::itemMoved(GraphicsRenderer::ItemType type, int, QPoint)
{
    GraphicsRenderer *canvas = graphicsRenderer();
    if (type != GraphicsRenderer::ExtraCross || !canvas)
        return;
    // The signal may carry a step rather than the place; the canvas knows the place.
    q->setExtraAxis(canvas->itemPosition(GraphicsRenderer::ExtraCross).toPoint());
}

GraphicsWorkspace::GraphicsWorkspace(Interface *interface, QWidget *parent)
    : Workspace(interface, parent)
    , d(new GraphicsWorkspacePrivate(this, interface))
{
    setObjectName(QStringLiteral("graphics_workspace"));
    d->buildView();
    d->buildActions();
    d->buildZoomActions();
    d->view->selectBackEnd();
}

GraphicsWorkspace::~GraphicsWorkspace()
{
    release();
}

void GraphicsWorkspace::activate()
{
    for (const ViewKey &key : viewKeys) {
        QAction *action = d->actions[key.action];
        const QSignalBlocker blocker(action);
        action->setChecked(d->option(key.option).toBool());
    }
    const QVariant x = d->option("origin_x");
    const QVariant y = d->option("origin_y");
    d->centreWhenSized = !x.isValid() || !y.isValid();
    if (d->centreWhenSized) {
        d->view->installEventFilter(d);
        if (d->view->isVisible() && !d->view->size().isEmpty())
            QTimer::singleShot(0, d, [this] { d->eventFilter(d->view, nullptr); });
    } else {
        GraphicsRenderer::setOrigin(QPoint(x.toInt(), y.toInt()));
    }
    d->applyVisibility();
    update();
}

void GraphicsWorkspace::deactivate()
{
    if (!d->host)
        return;
    for (const ViewKey &key : viewKeys)
        d->host->setOption(QString::fromLatin1(key.option), d->actions[key.action]->isChecked());
    // A view never shown has no origin of its own to keep.
    if (d->centreWhenSized)
        return;
    const QPoint origin = GraphicsRenderer::origin();
    d->host->setOption(QStringLiteral("origin_x"), origin.x());
    d->host->setOption(QStringLiteral("origin_y"), origin.y());
}

void GraphicsWorkspace::reconfig()
{
    d->view->selectBackEnd();
    d->readBackground();
    GraphicsRenderer::setupContactBoxes(qvariant_cast<QColor>(d->option("attackbox")),
                                        qvariant_cast<QColor>(d->option("collisionbox")),
                                        d->option("box_opacity").toFloat());
    GraphicsRenderer::setCrossHair(GraphicsRenderer::CrossHairType(qBound(0, d->option("crosshair_type").toInt(), 2)),
                                   d->option("crosshair_main").toString(),
                                   d->option("crosshair_secondary").toString(),
                                   d->option("crosshair_extra").toString());
    GraphicsRenderer::setPriority(d->option("sprite_over_guides").toBool(), d->option("contact_over_cross").toBool());
    // Above 1 is the row of whole factors; a negative value is no row at all, and takes
    // the first.
    GraphicsRenderer::setZoomTable(static_cast<unsigned char>(qBound(0, d->option("zoom_mode").toInt(), 1)));
    GraphicsRenderer::setZoomMode(GraphicsRenderer::ZoomMode(qBound(0, d->option("zoom_center").toInt(), 1)));
    d->applyZoomLevel();
    update();
}

void GraphicsWorkspace::retranslate()
{
    for (int i = 0; i < GraphicsWorkspacePrivate::ViewActionCount; ++i) {
        d->actions[i]->setText(ovraTranslator()->text(viewActions[i].text));
        d->actions[i]->setToolTip(ovraTranslator()->tip(viewActions[i].text));
    }
    for (int i = 0; i < GraphicsWorkspacePrivate::ZoomActionCount; ++i) {
        d->zoomActions[i]->setText(zoomTexts()->text(zoomEntries[i].text));
        d->zoomActions[i]->setToolTip(zoomTexts()->tip(zoomEntries[i].text));
    }
    if (d->axisDialog)
        d->axisDialog->retranslate();
}

void GraphicsWorkspace::release()
{
    if (QObject *old = dynamic_cast<QObject *>(d->renderer))
        disconnect(old, nullptr, d, nullptr);
    d->renderer = nullptr;
    d->view->setRenderer(nullptr);
}

void GraphicsWorkspace::update()
{
    if (d->renderer)
        d->renderer->update();
    else if (RenderWidgetBase *widget = d->view->renderWidget())
        widget->update();
}

QWidget *GraphicsWorkspace::widget() const
{
    return const_cast<GraphicsWorkspace *>(this);
}

const char *GraphicsWorkspace::name() const
{
    return "graphics";
}

GraphicsRendererBase *GraphicsWorkspace::renderer() const
{
    return d->renderer;
}

void GraphicsWorkspace::setRenderer(GraphicsRendererBase *renderer)
{
    release();
    if (!renderer)
        return;
    d->renderer = renderer;
    d->view->setRenderer(renderer);
    if (GraphicsRenderer *canvas = d->graphicsRenderer()) {
        connect(canvas, &GraphicsRenderer::itemMoved, d, &GraphicsWorkspacePrivate::itemMoved);
        connect(canvas, &GraphicsRenderer::itemReleased, d, &GraphicsWorkspacePrivate::itemMoved);
    }
    d->readBackground();
    d->applyZoomLevel();
    d->placeExtraCross();
    d->applyVisibility();
    update();
}

RenderWidgetBase *GraphicsWorkspace::renderWidget() const
{
    return d->view->renderWidget();
}

TimeLineWidget *GraphicsWorkspace::timeLine() const
{
    return d->timeLine;
}

QToolBar *GraphicsWorkspace::toolBar() const
{
    return d->toolBar;
}

void GraphicsWorkspace::setSidePanel(QWidget *panel)
{
    if (panel == d->sidePanel)
        return;
    if (d->sidePanel)
        d->sidePanel->hide();
    d->sidePanel = panel;
    if (!panel)
        return;
    // Taking it into the splitter makes it our child; an earlier panel stays a child too,
    // hidden, so that its editor can show it again.
    if (d->splitter->indexOf(panel) < 0) {
        d->splitter->addWidget(panel);
        d->splitter->setStretchFactor(d->splitter->indexOf(panel), 0);
    }
    panel->show();
}

QWidget *GraphicsWorkspace::sidePanel() const
{
    return d->sidePanel;
}

void GraphicsWorkspace::setViewActionsVisible(bool visible)
{
    for (QAction *action : d->actions)
        action->setVisible(visible);
    for (QAction *separator : qAsConst(d->viewSeparators))
        separator->setVisible(visible);
}

void GraphicsWorkspace::setEditorActions(const QList<QAction *> &actions)
{
    for (QAction *action : qAsConst(d->editorActions))
        d->toolBar->removeAction(action);
    delete d->editorSeparator;
    d->editorSeparator = nullptr;
    d->editorActions = actions;
    if (actions.isEmpty())
        return;
    QAction *first = d->toolBar->actions().value(0);
    d->toolBar->insertActions(first, actions);
    d->editorSeparator = d->toolBar->insertSeparator(first);
}

void GraphicsWorkspace::enableCross(Cross cross, bool enabled)
{
    const int index = GraphicsWorkspacePrivate::MainCrossAction + int(cross);
    if (index >= GraphicsWorkspacePrivate::MainCrossAction && index <= GraphicsWorkspacePrivate::ExtraCrossAction)
        d->actions[index]->setEnabled(enabled);
}

QPoint GraphicsWorkspace::extraAxis() const
{
    return d->extraAxis;
}

void GraphicsWorkspace::setExtraAxis(QPoint axis)
{
    if (axis == d->extraAxis)
        return;
    d->extraAxis = axis;
    d->placeExtraCross();
    if (d->axisDialog && d->axisDialog->axis() != axis)
        d->axisDialog->setAxis(axis);
    emit extraAxisChanged(axis);
}

void GraphicsWorkspace::zoomIn()
{
    if (d->renderer)
        d->renderer->addZoom();
}

void GraphicsWorkspace::zoomOut()
{
    if (d->renderer)
        d->renderer->subZoom();
}

void GraphicsWorkspace::zoomFit()
{
    if (d->renderer)
        d->renderer->zoomFit();
}

void GraphicsWorkspace::zoomActual()
{
    if (d->renderer)
        d->renderer->zoomActual();
}

void GraphicsWorkspace::statusBarClicked()
{
    emit statusClicked();
}

} // namespace Ovra
