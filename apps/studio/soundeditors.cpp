#include "soundeditors.h"

#include "studiohost.h"

#include "editors/sound/soundeditor.h"
#include "editors/sound/soundworkspace.h"

using namespace Ovra;

SoundEditors::SoundEditors(StudioHost *host, QWidget *parent)
    : m_host(host)
    , m_workspace(new SoundWorkspace(host, parent))
    , m_editor(std::make_unique<SoundEditor>(m_workspace, SoundFiles))
{
    host->addEditor(m_editor.get());
}

SoundEditors::~SoundEditors()
{
    m_host->removeEditor(m_editor.get());
}
