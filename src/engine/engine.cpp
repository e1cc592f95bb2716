#include "engine/engine.h"

#include "engine/extension.h"
#include "engine/extensionmanager.h"

namespace Ovra {

QSize Engine::gameSize() const
{
    return QSize(320, 240);
}

QPointF Engine::scaleFactors() const
{
    return QPointF(1.0, 1.0);
}

QSize Engine::viewSize() const
{
    const QSize size = gameSize();
    const QPointF scale = scaleFactors();
    // A factor of zero or below would say nothing sensible: the size stands.
    const int width = scale.x() > 0 ? int(size.width() / scale.x()) : size.width();
    const int height = scale.y() > 0 ? int(size.height() / scale.y()) : size.height();
    return QSize(width, height);
}

EngineExtension *EngineExtension::forProjectFile(const QString &fileName)
{
    for (Extension *extension : ExtensionManager::list(Extension::Named)) {
        auto *engine = dynamic_cast<EngineExtension *>(extension);
        if (engine && engine->isProjectFile(fileName))
            return engine;
    }
    return nullptr;
}

} // namespace Ovra
