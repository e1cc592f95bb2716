// A plug-in with extensions of several kinds, one of them registered twice.
#include "engine/extensionmanager.h"

namespace {

const char Zip[] = "ZIP";
const char Wav[] = "WAV";
const char Sparkle[] = "sparkle";

// Counts deleted extensions of this plug-in down, in a place the test can see.
int *liveCounter = nullptr;

class TestExtension : public Ovra::Extension
{
public:
    // Only extensions handed over to the manager on the heap are counted; the ones the
    // manager drops live in static storage and end with the library.
    TestExtension(Type type, const char *format, const char *name, bool counted = true)
        : m_type(type), m_format(format), m_name(name), m_counted(counted)
    {
    }
    ~TestExtension() override
    {
        if (liveCounter && m_counted)
            --*liveCounter;
    }
    Type type() const override { return m_type; }
    const char *format() const override { return m_format; }
    const char *name() const override { return m_name; }

private:
    Type m_type;
    const char *m_format;
    const char *m_name;
    bool m_counted;
};

} // namespace

extern "C" Q_DECL_EXPORT void setLiveCounter(int *counter)
{
    liveCounter = counter;
}

extern "C" Q_DECL_EXPORT void registerExtension(Ovra::ExtensionManager *)
{
    using Ovra::Extension;
    Ovra::ExtensionManager::add(new TestExtension(Extension::Container, Zip, "zip archive"));
    Ovra::ExtensionManager::add(new TestExtension(Extension::SoundLoader, Wav, "wave reader"));
    Ovra::ExtensionManager::add(new TestExtension(Extension::SoundSaver, Wav, "wave writer"));
    // The same format string again in one kind: the manager drops it (and it stays ours).
    static TestExtension duplicate(Extension::SoundLoader, Wav, "second wave reader", false);
    Ovra::ExtensionManager::add(&duplicate);
    // Kind 16 goes by name: a new name is a new extension even with the same format.
    Ovra::ExtensionManager::add(new TestExtension(Extension::Named, Wav, Sparkle));
    Ovra::ExtensionManager::add(new TestExtension(Extension::Named, Wav, "glitter"));
    static TestExtension sameName(Extension::Named, Zip, Sparkle, false);
    Ovra::ExtensionManager::add(&sameName);
}
