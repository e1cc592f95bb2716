#pragma once

#include "project/projectfile.h"

namespace Ovra {

class PropertyItem;

// A file that is a list of named items. Searching and replacing work on each item's
// "Identifier" property.
class OVRA_EXPORT SearchableProjectFile : public ProjectFile
{
public:
    QList<SearchResult> search(RegExp &expression, uint flags) override;
    void replace(QList<SearchResult> &results, const QString &replacement) override;

    virtual uint itemCount() const = 0;
    virtual uint currentItem() const = 0;
    virtual PropertyItem *item(uint index) const = 0;

private:
    bool matchItem(const RegExp &expression, uint index, QList<SearchResult> &results) const;
};

} // namespace Ovra
