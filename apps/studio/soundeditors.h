#pragma once
// The sound editor over its workspace, for the sound files of the engines (type 2 in the
// sample engine's projects, as in every engine's that has sound banks).
#include <memory>

class QWidget;
class StudioHost;

namespace Ovra {
class SoundEditor;
class SoundWorkspace;
} // namespace Ovra

class SoundEditors
{
public:
    enum { SoundFiles = 2 };
    // Makes the workspace (a child of `parent`) and the editor, and registers the editor.
    SoundEditors(StudioHost *host, QWidget *parent);
    ~SoundEditors();

    Ovra::SoundWorkspace *workspace() const { return m_workspace; }
    Ovra::SoundEditor *editor() const { return m_editor.get(); }

private:
    StudioHost *m_host;
    Ovra::SoundWorkspace *m_workspace;
    std::unique_ptr<Ovra::SoundEditor> m_editor;
};
