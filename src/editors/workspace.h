#pragma once

#include "foundation/global.h"

#include <QWidget>

namespace Ovra {

class Interface;

// The visual place that several editors share (the code view, the graphics view, the
// sound view). The host shows one workspace at a time; its editors fill it in turn.
class OVRA_EXPORT Workspace : public QWidget
{
    Q_OBJECT
public:
    explicit Workspace(Interface *interface, QWidget *parent = nullptr);
    ~Workspace() override;

    Interface *host() const { return m_interface; }

protected:
    Interface *m_interface;
};

} // namespace Ovra
