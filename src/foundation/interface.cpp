#include "foundation/interface.h"

#include "foundation/itemsdialog.h"

#include <QMenu>

namespace Ovra {
namespace {
// Installed once by the host before any worker thread starts, so a plain global serves.
Interface *globalInterface = nullptr;
} // namespace

Interface *setGlobalInterface(Interface *interface)
{
    globalInterface = interface;
    return interface;
}

Interface *Interface::instance()
{
    return globalInterface;
}

QPoint Interface::scaleToDPI(const QPoint &point)
{
    return QPoint(scaleToDPI(point.x()), scaleToDPI(point.y()));
}

QRect Interface::scaleToDPI(const QRect &rect)
{
    return QRect(scaleToDPI(rect.left()), scaleToDPI(rect.top()), scaleToDPI(rect.width()),
                 scaleToDPI(rect.height()));
}

QWidget *Interface::actionControl(const QString &name, QAction *action, QMenu *menu)
{
    if (menu)
        menu->addAction(action);
    ActionControlSpec request;
    request.kind = ActionControlSpec::Kind;
    request.size = ActionControlSpec::Size;
    request.action = action;
    return addControl(name, request);
}

ItemsDialog *Interface::itemsDialog(QWidget *parent, const QString &name, const QString &title,
                                    QAbstractItemModel *model, int column)
{
    auto *dialog = new ItemsDialog(parent, name, title, model, column);
    dialog->setWindowIcon(icon(name));
    return dialog;
}

} // namespace Ovra
