#include "image/paletteobject.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>
#include <cstring>

// The first byte picks the format name and the rules (designed or complete); the rest is
// the file. Formats told by their
// first bytes (RIFF, JASC, ASEF, ROWS) are reached through any name that isn't taken.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    static const char *const formats[] = {"ACT", "ACO", "PAL", "PNG", "PCX", "BMP", "TXT", "ASE"};
    QByteArray file(reinterpret_cast<const char *>(data + 1), int(size - 1));
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    Ovra::RGBA table[256];
    memset(table, 0x5A, sizeof table);
    Ovra::PaletteObject palette(&table);
    const Ovra::CodecRules rules = data[0] & 8 ? Ovra::CodecRules::Complete : Ovra::CodecRules::Designed;
    const bool read = palette.fromFile(&buffer, formats[data[0] % 8], rules);
    // A palette that was read has a transparent entry 0; one that wasn't is untouched.
    if (read ? table[0].alpha != 0 : table[0].alpha != 0x5A)
        std::abort();
    return 0;
}
