#include "project/searchableprojectfile.h"

#include "project/propertyitem.h"
#include "project/regexp.h"

namespace Ovra {
namespace {
const QString Identifier = QStringLiteral("Identifier");
}

bool SearchableProjectFile::matchItem(const RegExp &expression, uint index,
                                      QList<SearchResult> &results) const
{
    const PropertyItem *entry = item(index);
    if (!entry)
        return false;
    const QString text = entry->property(Identifier).toString();
    const QRegularExpressionMatch match = expression.match(text);
    if (!match.hasMatch())
        return false;
    SearchResult result;
    result.item = index;
    result.start = match.capturedStart(0);
    result.length = match.capturedLength(0);
    result.text = text;
    result.captures = match.capturedTexts();
    results.append(result);
    return true;
}

QList<ProjectFile::SearchResult> SearchableProjectFile::search(RegExp &expression, uint flags)
{
    QList<SearchResult> results;
    const uint count = itemCount();
    if (count == 0)
        return results;

    if (flags & All) {
        for (uint i = 0; i < count; ++i)
            matchItem(expression, i, results);
        return results;
    }

    const bool wrap = (flags & Wrap) && !(flags & FromEnd);
    if (!(flags & Backwards)) {
        const uint start = (flags & FromEnd) ? 0 : currentItem() + 1;
        for (uint i = start; i < count; ++i) {
            if (matchItem(expression, i, results))
                return results;
        }
        if (wrap) {
            for (uint i = 0; i <= start && i < count; ++i) {
                if (matchItem(expression, i, results))
                    return results;
            }
        }
        return results;
    }

    // Backwards: `start` is one past the first item to look at.
    const uint start = (flags & FromEnd) ? count : qMin(currentItem(), count);
    for (uint i = start; i-- > 0;) {
        if (matchItem(expression, i, results))
            return results;
    }
    if (wrap) {
        for (uint i = count; i-- > start;) {
            if (matchItem(expression, i, results))
                return results;
        }
    }
    return results;
}

void SearchableProjectFile::replace(QList<SearchResult> &results, const QString &replacement)
{
    for (const SearchResult &result : qAsConst(results)) {
        PropertyItem *entry = item(result.item);
        if (!entry)
            continue;
        QString text = replacement;
        for (const QString &capture : result.captures)
            text = text.arg(capture);
        entry->setProperty(Identifier, text);
    }
    if (results.size() >= 2)
        endChange();
}

} // namespace Ovra
