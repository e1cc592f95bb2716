#include "soundbankformat.h"

#include <cstdint>
#include <cstdlib>

// A sound bank that reads writes back as the very same bytes; one that doesn't read gives
// a reason and no entries.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    QList<SoundBankEntry> entries;
    QString reason;
    if (readSoundBank(bytes, entries, reason)) {
        if (writeSoundBank(entries) != bytes)
            std::abort();
    } else if (reason.isEmpty() || !entries.isEmpty()) {
        std::abort();
    }
    return 0;
}
