#include "foundation/textcodecs.h"

#include "foundation/translator.h"

#include <QTextCodec>

#include <uchardet/uchardet.h>

#include <memory>

namespace Ovra {
namespace {

// The names of all codecs but the system's own, which stands at index 0 under a
// translated name. Filled once, on first use, and read only after that.
const QList<QByteArray> &codecNames()
{
    static const QList<QByteArray> names = [] {
        QList<QByteArray> list = QTextCodec::availableCodecs();
        list.removeAll(QByteArrayLiteral("System"));
        return list;
    }();
    return names;
}

int defaultCodecIndex = 0;

QTextCodec *detectedByStatistics(const QByteArray &data)
{
    std::unique_ptr<std::remove_pointer_t<uchardet_t>, void (*)(uchardet_t)> detector(uchardet_new(),
                                                                                     uchardet_delete);
    if (!detector || uchardet_handle_data(detector.get(), data.constData(), size_t(data.size())) != 0)
        return nullptr;
    uchardet_data_end(detector.get());
    const char *charset = uchardet_get_charset(detector.get());
    if (!charset || !*charset)
        return nullptr;
    return QTextCodec::codecForName(charset);
}

} // namespace

int TextCodecs::count()
{
    return codecNames().size() + 1;
}

QString TextCodecs::name(int index)
{
    if (index == 0)
        return ovraTranslator()->text(0);
    const QList<QByteArray> &names = codecNames();
    return index > 0 && index <= names.size() ? QString::fromLatin1(names.at(index - 1)) : QString();
}

int TextCodecs::index(const char *name)
{
    if (!name || QString::fromLatin1(name) == TextCodecs::name(0))
        return 0;
    return codecNames().indexOf(QByteArray(name)) + 1;
}

QTextCodec *TextCodecs::codecAt(int index)
{
    const QList<QByteArray> &names = codecNames();
    if (index > 0 && index <= names.size())
        return QTextCodec::codecForName(names.at(index - 1));
    return nullptr;
}

QTextCodec *TextCodecs::get(const QByteArray &data)
{
    if (QTextCodec *codec = QTextCodec::codecForUtfText(data, nullptr))
        return codec;
    if (QTextCodec *codec = detectedByStatistics(data))
        return codec;
    // After the detector on purpose: plain ASCII is valid UTF-8 too, and the detector
    // knows the legacy encodings whose bytes happen to form valid UTF-8 sequences.
    QTextCodec *utf8 = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state;
    utf8->toUnicode(data.constData(), data.size(), &state);
    if (state.invalidChars == 0)
        return utf8;
    if (defaultCodecIndex > 0) {
        if (QTextCodec *codec = codecAt(defaultCodecIndex))
            return codec;
    }
    return QTextCodec::codecForLocale();
}

void TextCodecs::setDefaultCodec(int index)
{
    defaultCodecIndex = index;
}

int TextCodecs::defaultCodec()
{
    return defaultCodecIndex;
}

QString TextCodecs::stringFromData(const QByteArray &data, int *codec)
{
    int requested = codec ? *codec : -1;
    QTextCodec *chosen = requested < 0    ? get(data)
                         : requested == 0 ? QTextCodec::codecForLocale()
                                          : codecAt(requested);
    if (!chosen)
        chosen = QTextCodec::codecForLocale();
    if (codec) {
        // A codec found under an alias isn't in the list by that name and reports 0,
        // while the text is still decoded with it.
        const QByteArray used = chosen->name();
        *codec = used == "System" ? 0 : codecNames().indexOf(used) + 1;
    }
    return chosen->toUnicode(data);
}

QByteArray TextCodecs::stringToData(const QString &text, int codec)
{
    QTextCodec *chosen = codec == 0 ? QTextCodec::codecForLocale() : codecAt(codec);
    if (!chosen)
        chosen = QTextCodec::codecForLocale();
    return chosen->fromUnicode(text);
}

} // namespace Ovra
