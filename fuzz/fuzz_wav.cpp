#include "fuzz_sound.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return decodeSound(data, size, Ovra::soundFromWAV);
}
