#pragma once

#include "foundation/global.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

class QIODevice;

namespace Ovra {

// One named field of a snippet as the file keeps it. The types are "string", "int", "float"
// and "items"; "items" offers the choices of `values`, shown to the user by `valueTitles`.
struct OVRA_EXPORT SnipFieldInfo
{
    QString name;
    QString title;
    QString type = QStringLiteral("string");
    QStringList values;
    QStringList valueTitles;
    // The column of the form the field stands in.
    int column = 0;

    bool operator==(const SnipFieldInfo &other) const;
    bool operator!=(const SnipFieldInfo &other) const { return !(*this == other); }
};

// The contents of a snippet file: its fields and its code, the code holding the fields by
// name and "CURSOR" where the cursor goes after an insertion.
class OVRA_EXPORT Snippet
{
public:
    QVector<SnipFieldInfo> fields;
    QString code;

    // Reads a snippet file. On a reader error, `error` gets the reader's message with its
    // line and column, and the snippet is left as it was.
    bool read(QIODevice *device, QString *error = nullptr);
    bool read(const QString &fileName, QString *error = nullptr);

    // The file in its fixed layout: CR LF line ends, one line a field, UTF-8.
    QByteArray toXml() const;
    // A translation source with the snippet's name and the titles of its fields and choices,
    // in the context the titles are looked up in.
    QByteArray toTranslationSource(const QString &name) const;

    // The code with every field's name replaced by its value. Where names overlap, the
    // longest one that matches wins, and inserted values are not searched again.
    QString filled(const QHash<QString, QString> &values) const;

    // The context the titles of snippets and their fields are translated in.
    static const char *translationContext();
    // A title as the user reads it: looked up under the snippet's name, then without it.
    static QString translated(const QString &text, const QString &snippetName);
};

} // namespace Ovra
