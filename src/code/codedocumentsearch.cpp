// Search and replace in a code document.

#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "project/regexp.h"

namespace Ovra {

namespace {

ProjectFile::SearchResult resultOf(const QTextDocument *document, const QRegularExpressionMatch &match)
{
    ProjectFile::SearchResult result;
    const QTextBlock block = document->findBlock(match.capturedStart(0));
    result.item = uint(block.blockNumber());
    result.start = match.capturedStart(0) - block.position();
    result.length = match.capturedLength(0);
    // The line, and the lines the match runs on into, as far as it covers them.
    QString text = block.text();
    int covered = result.start + result.length - block.length();
    for (QTextBlock next = block.next(); covered > 0 && next.isValid(); next = next.next()) {
        text += QLatin1Char('\n') + next.text().left(covered);
        covered -= next.length();
    }
    result.text = text;
    result.captures = match.capturedTexts().mid(1);
    return result;
}

} // namespace

QList<ProjectFile::SearchResult> CodeDocument::search(RegExp &expression, uint flags)
{
    QList<SearchResult> results;
    const QString text = toString();
    if (flags & All) {
        auto matches = expression.globalMatch(text);
        while (matches.hasNext())
            results.append(resultOf(this, matches.next()));
        return results;
    }
    const bool retry = (flags & Wrap) && !(flags & FromEnd);
    if (!(flags & Backwards)) {
        QRegularExpressionMatch match = expression.match(text, (flags & FromEnd) ? 0 : d->cursor.position());
        if (!match.hasMatch() && retry)
            match = expression.match(text, 0);
        if (match.hasMatch())
            results.append(resultOf(this, match));
        return results;
    }
    // Backwards: an offset counted from the end of the text (-1 from the edge, else from
    // the cursor through the end of the last block), and the last match that starts
    // below the text's length plus that offset less one: from the cursor, that is
    // three characters before it.
    auto lastBefore = [&](int fromEnd) {
        const int limit = text.size() + fromEnd - 1;
        QRegularExpressionMatch found;
        for (int offset = 0; offset <= text.size();) {
            const QRegularExpressionMatch match = expression.match(text, offset);
            if (!match.hasMatch() || match.capturedStart(0) >= limit)
                break;
            found = match;
            offset = match.capturedStart(0) + 1;
        }
        return found;
    };
    const QTextBlock last = lastBlock();
    const int fromCursor = d->cursor.selectionStart() - 1 - last.position() - last.length();
    QRegularExpressionMatch match = lastBefore((flags & FromEnd) ? -1 : fromCursor);
    if (!match.hasMatch() && retry)
        match = lastBefore(-1);
    if (match.hasMatch())
        results.append(resultOf(this, match));
    return results;
}

void CodeDocument::replace(QList<SearchResult> &results, const QString &replacement)
{
    if (results.isEmpty())
        return;
    const bool bracket = results.size() > 1;
    if (bracket)
        beginChange();
    // From the last to the first, so that earlier positions stay where they were.
    for (int i = results.size() - 1; i >= 0; --i) {
        const SearchResult &result = results.at(i);
        QString text = replacement;
        for (const QString &capture : result.captures)
            text = text.arg(capture);
        const QTextBlock block = findBlockByNumber(int(result.item));
        if (!block.isValid())
            continue;
        QTextCursor cursor(this);
        cursor.setPosition(block.position() + result.start);
        cursor.setPosition(block.position() + result.start + result.length, QTextCursor::KeepAnchor);
        cursor.insertText(text);
    }
    if (bracket)
        endChange();
}

} // namespace Ovra
