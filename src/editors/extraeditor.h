#pragma once

#include "foundation/object.h"

#include <QObject>

class QWidget;

namespace Ovra {

class Interface;
class Project;

// A tool beside the editors that works on no file of its own (the palettes beside the
// sprite painter, the sprite explorer); the host shows it in its side place.
class OVRA_EXPORT ExtraEditor : public QObject, public Object
{
    Q_OBJECT
public:
    ExtraEditor();
    void release() override;

    virtual QWidget *widget() = 0;
    virtual void activate();
    virtual void deactivate();
    virtual void engineSwitched(bool hasEngine);
    virtual void projectSwitched(Project *project);
    virtual void reconfig();
    virtual void retranslate();

    bool isActive() const { return m_active; }

signals:
    void modified();

protected:
    virtual void contentsChanged();

    Interface *m_interface;

private:
    bool m_active = false;
};

} // namespace Ovra
