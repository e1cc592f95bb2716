#pragma once

#include "foundation/global.h"

#include <QObject>
#include <QPointer>

class QTreeView;

namespace Ovra {
namespace Private {

// Puts a tree view back at its scroll place once a model reset has been processed: made
// before the reset, its reset() queued behind it.
class OVRA_EXPORT ResetScrollPos : public QObject
{
    Q_OBJECT
public:
    ResetScrollPos(QTreeView *view, int position);

public slots:
    void reset();

private:
    QPointer<QTreeView> m_view;
    int m_position;
};

} // namespace Private
} // namespace Ovra
