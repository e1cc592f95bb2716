#include "fuzz_sound.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Both sets of rules read the same bytes: they part in how they find and take the values.
    for (const Ovra::CodecRules rules : {Ovra::CodecRules::Designed, Ovra::CodecRules::Complete})
        decodeSound(data, size, [rules](QIODevice *device) { return Ovra::soundFromOGG(device, rules); });
    return 0;
}
