#include "textedits.h"

#include "animationdocument.h"
#include "animationexchange.h"

#include <QBuffer>

// The animation exchange file, imported into a document that holds animations already.
// A refused file changes nothing; an imported one leaves a tree that a fresh parse of the
// text builds as well, and one undo brings the old text back.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    TextEdits::startApplication();
    static const QString before = QStringLiteral("@version 1\n\nanimation 0 \"Idle\"\n    frame (0, 0) delay=8\n"
                                                 "        body (-8, -50, 8, 0)\n\nanimation 5\n    frame (5, 1) delay=3 loop\n");
    auto *document = new AnimationDocument;
    document->fromString(before);
    auto *animations = new SampleAnimations(document); // takes the document's reference
    const bool replace = size > 0 && (data[0] & 1);
    QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    AnimationExchangeImporter importer;
    const bool imported = importer.importAnimations(
        &buffer, *animations, [replace](const QString &) { return replace; }, nullptr);
    if (!imported && document->toString() != before) {
        std::fprintf(stderr, "a refused file changed the document\n");
        std::abort();
    }
    if (imported) {
        AnimationDocument fresh;
        fresh.fromString(document->toString());
        if (TextEdits::shape(*document) != TextEdits::shape(fresh)) {
            std::fprintf(stderr, "the tree after the import differs from a fresh parse\n");
            std::abort();
        }
        document->undo();
        if (document->toString() != before) {
            std::fprintf(stderr, "undo didn't bring the old text back\n");
            std::abort();
        }
    }
    animations->release();
    return 0;
}
