#pragma once

#include "editors/code/codeeditor.h"

#include <QObject>

namespace Ovra {

// The editor's state: formatting, completion, folding, block ranges and its timers.
class CodeEditorPrivate : public QObject
{
    Q_OBJECT
public:
    explicit CodeEditorPrivate(CodeEditor *editor);

    CodeEditor *q;
    CodeEditor::SyntaxFormatting formatting;
};

} // namespace Ovra
