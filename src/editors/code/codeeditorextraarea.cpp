#include "editors/code/codeeditorextraarea.h"
#include "editors/code/codeeditor_p.h"

#include <QMouseEvent>

namespace Ovra {

CodeEditorExtraArea::CodeEditorExtraArea(CodeEditor *editor)
    : QWidget(editor)
    , m_editor(editor)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setAutoFillBackground(false);
}

QSize CodeEditorExtraArea::sizeHint() const
{
    return QSize(m_editor->d->marginWidth(), 0);
}

void CodeEditorExtraArea::paintEvent(QPaintEvent *event)
{
    m_editor->d->paintArea(event);
}

void CodeEditorExtraArea::mousePressEvent(QMouseEvent *event)
{
    m_editor->d->areaMousePress(event);
}

void CodeEditorExtraArea::mouseMoveEvent(QMouseEvent *event)
{
    m_editor->d->areaMouseMove(event);
}

void CodeEditorExtraArea::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
}

void CodeEditorExtraArea::leaveEvent(QEvent *)
{
    m_editor->d->areaLeave();
}

void CodeEditorExtraArea::wheelEvent(QWheelEvent *event)
{
    m_editor->wheelEvent(event);
}

} // namespace Ovra
