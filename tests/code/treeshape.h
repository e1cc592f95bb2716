#pragma once

// The tree of a code document as text: every node of the list with its line, type, name and
// parent's line, the state every line hands on, the number of messages and the root's rows.
// Two documents of the same text must give the same; the property test and the language
// fuzz targets compare an edited document with a fresh parse this way.
#include "code/codedocument.h"
#include "code/codenode.h"
#include "code/namedcode.h"
#include "code/rootcode.h"
#include "foundation/messages.h"

#include <QStringList>
#include <QTextBlock>

inline QStringList codeTreeShape(Ovra::CodeDocument &document)
{
    QStringList lines;
    for (Ovra::CodeNode *node = document.root()->next(); node; node = node->next()) {
        const Ovra::CodeNode *parent = node->parent();
        const QString parentLine = !parent ? QStringLiteral("-")
                                   : parent == document.root() ? QStringLiteral("root")
                                                               : QString::number(parent->lineNo());
        const auto *named = dynamic_cast<const Ovra::NamedCode *>(node);
        lines << QStringLiteral("%1 %2 %3 <%4>")
                     .arg(node->lineNo())
                     .arg(int(node->type()))
                     .arg(named ? named->name() : QString())
                     .arg(parentLine);
    }
    // The state every line leaves for the next, which the pass runs on to keep right.
    // (Folding levels below an edit are only brought up to date where the state runs
    // on, so they are no part of the comparison.)
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        lines << QStringLiteral("line %1: state %2").arg(block.blockNumber()).arg(block.userState());
    lines << QStringLiteral("messages %1").arg(document.messages()->count(Ovra::Message::All));
    Ovra::RootCode *root = document.root();
    for (uint i = 0; i < root->childCount(); ++i)
        lines << QStringLiteral("row %1: line %2").arg(i).arg(root->childAt(i)->lineNo());
    return lines;
}
