#include "editors/code/snippet.h"

#include <QCoreApplication>
#include <QFile>
#include <QXmlStreamReader>

namespace Ovra {
namespace {

const QChar separator = QLatin1Char('|');

// Markup characters become references, so that any text survives a save and a read. The
// reader folds tabs and line ends inside attributes into spaces, so those are kept as
// references too.
QString escaped(const QString &text, bool attribute)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '&': out += QLatin1String("&amp;"); break;
        case '<': out += QLatin1String("&lt;"); break;
        case '>': out += QLatin1String("&gt;"); break;
        case '"': out += attribute ? QLatin1String("&quot;") : QLatin1String("\""); break;
        case '\t': out += attribute ? QLatin1String("&#9;") : QLatin1String("\t"); break;
        case '\n': out += attribute ? QLatin1String("&#10;") : QLatin1String("\n"); break;
        case '\r': out += attribute ? QLatin1String("&#13;") : QLatin1String("\r"); break;
        default: out += c;
        }
    }
    return out;
}

// Line ends of the code in the file are CR LF, whatever the text had.
QString withCrLf(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    return text;
}

SnipFieldInfo readField(const QXmlStreamAttributes &attributes)
{
    SnipFieldInfo field;
    field.name = attributes.value(QLatin1String("name")).toString();
    field.title = attributes.value(QLatin1String("title")).toString();
    const QString type = attributes.value(QLatin1String("type")).toString();
    if (!type.isEmpty())
        field.type = type;
    field.column = qMax(0, attributes.value(QLatin1String("column")).toInt());
    if (field.type == QLatin1String("items")) {
        const QString values = attributes.value(QLatin1String("value")).toString();
        if (!values.isEmpty())
            field.values = values.split(separator);
        const QStringList titles = attributes.value(QLatin1String("value_title")).toString().split(separator);
        // A choice without a title shows its value; titles without a value have nothing to choose.
        for (int i = 0; i < field.values.size(); ++i) {
            const QString title = titles.value(i);
            field.valueTitles << (title.isEmpty() ? field.values.at(i) : title);
        }
    }
    return field;
}

// The text between the tags holds the line break after <code> and the indent before
// </code> of the written layout; neither belongs to the code.
QString codeFromElementText(QString text)
{
    if (text.startsWith(QLatin1Char('\n')))
        text.remove(0, 1);
    if (text.endsWith(QLatin1Char('\t')))
        text.chop(1);
    return text;
}

} // namespace

bool SnipFieldInfo::operator==(const SnipFieldInfo &other) const
{
    return name == other.name && title == other.title && type == other.type && values == other.values
           && valueTitles == other.valueTitles && column == other.column;
}

bool Snippet::read(QIODevice *device, QString *error)
{
    QXmlStreamReader xml(device);
    xml.setNamespaceProcessing(false);
    QVector<SnipFieldInfo> readFields;
    QString readCode;
    if (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("snippet"))
            xml.raiseError(QCoreApplication::translate(translationContext(), "The file is not a code snippet."));
        while (!xml.hasError() && xml.readNextStartElement()) {
            if (xml.name() == QLatin1String("field")) {
                readFields << readField(xml.attributes());
                xml.skipCurrentElement();
            } else if (xml.name() == QLatin1String("code")) {
                readCode = codeFromElementText(xml.readElementText());
            } else {
                xml.skipCurrentElement();
            }
        }
    }
    // Whatever follows the root must still be well formed: a file cut short is an error.
    while (!xml.hasError() && !xml.atEnd())
        xml.readNext();
    if (xml.hasError()) {
        if (error)
            *error = QCoreApplication::translate(translationContext(), "%1\nLine %2, column %3")
                         .arg(xml.errorString())
                         .arg(xml.lineNumber())
                         .arg(xml.columnNumber());
        return false;
    }
    fields = readFields;
    code = readCode;
    return true;
}

bool Snippet::read(const QString &fileName, QString *error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QCoreApplication::translate(translationContext(), "Can't read %1: %2")
                         .arg(fileName, file.errorString());
        return false;
    }
    return read(&file, error);
}

QByteArray Snippet::toXml() const
{
    QString out = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<snippet>\r\n\r\n");
    for (const SnipFieldInfo &field : fields) {
        out += QLatin1String("\t<field name=\"") + escaped(field.name, true) + QLatin1String("\" title=\"")
               + escaped(field.title, true) + QLatin1String("\" type=\"") + escaped(field.type, true)
               + QLatin1Char('"');
        // The column is written only where it isn't the first, so plain snippets keep the layout.
        if (field.column > 0)
            out += QStringLiteral(" column=\"%1\"").arg(field.column);
        if (field.type == QLatin1String("items")) {
            out += QLatin1String(" value=\"") + escaped(field.values.join(separator), true)
                   + QLatin1String("\" value_title=\"") + escaped(field.valueTitles.join(separator), true)
                   + QLatin1Char('"');
        }
        out += QLatin1String("/>\r\n");
    }
    out += QLatin1String("\r\n\t<code>\r\n") + escaped(withCrLf(code), false)
           + QLatin1String("\t</code>\r\n\r\n</snippet>");
    return out.toUtf8();
}

QByteArray Snippet::toTranslationSource(const QString &name) const
{
    const QString comment = escaped(name, false);
    auto message = [&comment](const QString &text) -> QString {
        return QLatin1String("\t<message>\n\t\t<source>") + escaped(text, false)
               + QLatin1String("</source>\n\t\t<comment>") + comment
               + QLatin1String("</comment>\n\t\t<translation type=\"unfinished\"></translation>\n\t</message>\n");
    };
    QString out = QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<!DOCTYPE TS>\n<TS version=\"2.0\">\n"
                                 "<context>\n\t<name>Ovra::SnippetManager</name>\n");
    out += message(name);
    for (const SnipFieldInfo &field : fields) {
        out += message(field.title);
        if (field.type == QLatin1String("items")) {
            for (const QString &title : field.valueTitles)
                out += message(title);
        }
    }
    out += QLatin1String("</context>\n</TS>");
    return out.toUtf8();
}

QString Snippet::filled(const QHash<QString, QString> &values) const
{
    QString out;
    out.reserve(code.size());
    int at = 0;
    while (at < code.size()) {
        const QStringRef rest = code.midRef(at);
        int best = -1;
        for (int i = 0; i < fields.size(); ++i) {
            const QString &name = fields.at(i).name;
            if (!name.isEmpty() && rest.startsWith(name) && (best < 0 || name.size() > fields.at(best).name.size()))
                best = i;
        }
        if (best < 0) {
            out += code.at(at++);
            continue;
        }
        out += values.value(fields.at(best).name);
        at += fields.at(best).name.size();
    }
    return out;
}

const char *Snippet::translationContext()
{
    return "Ovra::SnippetManager";
}

QString Snippet::translated(const QString &text, const QString &snippetName)
{
    const QByteArray key = text.toUtf8();
    const QByteArray comment = snippetName.toUtf8();
    return QCoreApplication::translate(translationContext(), key.constData(), comment.constData());
}

} // namespace Ovra
