// The sample engine's plug-in: what the library leaves to engines, for a small game format
// of our own. The extension manager calls registerExtension once, at load.
#include "animationexchange.h"
#include "engine/extensionmanager.h"
#include "gimppalette.h"
#include "sampleanimationeditor.h"
#include "sampleengine.h"
#include "soundeffects.h"
#include "ziparchive.h"

extern "C" Q_DECL_EXPORT void registerExtension(Ovra::ExtensionManager *)
{
    Ovra::ExtensionManager::add(new SampleEngineExtension);
    Ovra::ExtensionManager::add(new ZipExtension);
    Ovra::ExtensionManager::add(new GimpPaletteLoader);
    Ovra::ExtensionManager::add(new GimpPaletteSaver);
    Ovra::ExtensionManager::add(new NormalizeEffect);
    Ovra::ExtensionManager::add(new ReverseEffect);
    Ovra::ExtensionManager::add(new EchoEffect);
    Ovra::ExtensionManager::add(new AnimationExchangeExporter);
    Ovra::ExtensionManager::add(new AnimationExchangeImporter);
    Ovra::ExtensionManager::add(new SampleAnimationEditorExtension);
}
