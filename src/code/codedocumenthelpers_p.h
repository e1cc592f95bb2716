#pragma once

// Private to the code document: small helpers that the parts of its implementation share.

#include "code/codedocument.h"
#include "code/codedocument_p.h"

namespace Ovra {

inline CodeDocumentUserData *codecData(const CodeDocument *document)
{
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
    return static_cast<CodeDocumentUserData *>(document->userData(CodeDocumentUserData::UserDataId));
QT_WARNING_POP
}

inline bool optionOn(const ProjectFile *file, const char *name)
{
    return file->option(QLatin1String(name), true).toBool();
}

inline bool isHeader(const CodeNode *node)
{
    return node && (node->type() == CodeNode::Group || node->type() == CodeNode::Animation);
}

} // namespace Ovra
