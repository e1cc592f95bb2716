#pragma once

// The palette file formats PaletteObject reads and writes by itself. Each reader fills a
// table prepared by the caller and answers whether the file was one of its kind; where
// the designed and the complete rules differ, the reader takes them.
#include "image/imagedata.h"

#include <QByteArray>

class QIODevice;

namespace Ovra {
namespace PaletteFiles {

// Entry i and entry 255 - i exchanged: the designed order of colour tables and RIFF
// palettes on disk.
void reverse(RGBA (&table)[256]);

// 768 bytes of red, green, blue. Designed: the table reversed. Complete: in index order,
// and a transparent index in the four bytes that may follow is honoured.
bool readAct(QIODevice *device, RGBA (&table)[256], CodecRules rules);
bool readAco(QIODevice *device, RGBA (&table)[256]);
// Designed: the size less 8 bytes of entries, so the last of 256 is dropped, reversed.
// Complete: as many entries as the data chunk and its count say, in index order.
bool readRiff(QIODevice *device, RGBA (&table)[256], CodecRules rules);
// Designed: CRLF lines only, the count line passed over. Complete: LF or CRLF, at most
// as many entries as the count line says.
bool readJasc(QIODevice *device, RGBA (&table)[256], CodecRules rules);
// Designed: the blocks walked by their contents. Complete: by their lengths, so any
// number of groups and blocks of unknown kinds are passed over.
bool readAse(QIODevice *device, RGBA (&table)[256], CodecRules rules);
bool readRows(QIODevice *device, RGBA (&table)[256]);
// The colour table of an indexed picture.
bool readImagePalette(QIODevice *device, const char *format, RGBA (&table)[256], CodecRules rules);

// The files written, 256 entries each; alpha isn't stored by any of them.
QByteArray actBytes(const RGBA (&table)[256], CodecRules rules);
QByteArray riffBytes(const RGBA (&table)[256]);
QByteArray jascBytes(const RGBA (&table)[256]);
QByteArray aseBytes(const RGBA (&table)[256]);

} // namespace PaletteFiles
} // namespace Ovra
