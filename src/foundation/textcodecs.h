#pragma once

#include "foundation/global.h"

#include <QByteArray>
#include <QString>

class QTextCodec;

namespace Ovra {

// The text encodings the system offers, and the one place where the bytes of a code
// file become text and back. Documents keep an index into this list rather than a
// codec: 0 is the system's own encoding, i > 0 the (i - 1)-th codec Qt knows, and a
// negative index lets the data decide.
class OVRA_EXPORT TextCodecs
{
public:
    static int count();
    // Index 0 is named by the string table, so it follows the user's language.
    static QString name(int index);
    // The index of a codec name; unknown names give 0.
    static int index(const char *name);

    // The codec that detection picks: a byte order mark, then the statistical detector,
    // then a trial decode as UTF-8, then the default codec, then the locale's.
    static QTextCodec *get(const QByteArray &data);

    static void setDefaultCodec(int index);
    static int defaultCodec();

    // Decodes with codec `*codec` (negative: detect) and reports the index it used.
    static QString stringFromData(const QByteArray &data, int *codec);
    static QByteArray stringToData(const QString &text, int codec);

private:
    static QTextCodec *codecAt(int index);
};

} // namespace Ovra
