// The code group: cursors, code documents and the nodes of their parsed text.
#include "engine/script/classes_p.h"

#include "code/animationcode.h"
#include "code/codedocument.h"
#include "code/framecode.h"
#include "code/groupcode.h"
#include "code/valuecode.h"

namespace Ovra {

void Script::Stack<ScriptClasses::NodeRef>::push(lua_State *L, const ScriptClasses::NodeRef &value)
{
    CodeNode *node = value.node;
    // Most derived first: a frame is a ParentCode too.
    if (auto *frame = dynamic_cast<FrameCode *>(node))
        Detail::pushPointer(L, frame);
    else if (auto *animation = dynamic_cast<AnimationCode *>(node))
        Detail::pushPointer(L, animation);
    else if (auto *group = dynamic_cast<GroupCode *>(node))
        Detail::pushPointer(L, group);
    else if (auto *value = dynamic_cast<ValueCode *>(node))
        Detail::pushPointer(L, value);
    else if (auto *box = dynamic_cast<ContactBoxCode *>(node))
        Detail::pushPointer(L, box);
    else if (auto *parent = dynamic_cast<ParentCode *>(node))
        Detail::pushPointer(L, parent);
    else
        Detail::pushPointer(L, node);
}

namespace ScriptClasses {

namespace {

// Scripts see line ends as "\n", not as the paragraph separators of the text layout.
QString selectedCode(const QTextCursor &cursor)
{
    QString text = cursor.selectedText();
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    return text;
}

void registerCodeCursor(Script::Table &table)
{
    // A line of code is a block of the text, whatever the layout makes of it on screen.
    table.usertype<QTextCursor>("CodeCursor")
        .property("atLineStart", &QTextCursor::atBlockStart)
        .property("atLineEnd", &QTextCursor::atBlockEnd)
        .property("atStart", &QTextCursor::atStart)
        .property("atEnd", &QTextCursor::atEnd)
        .property("lineNumber", &QTextCursor::blockNumber)
        .property("columnNumber", &QTextCursor::positionInBlock)
        .property("position", &QTextCursor::position, [](QTextCursor &self, int position) { self.setPosition(position); })
        .property("selectedCode", &selectedCode)
        .function("movePosition",
                  Script::overload(
                      [](QTextCursor &self, QTextCursor::MoveOperation operation) { return self.movePosition(operation); },
                      [](QTextCursor &self, QTextCursor::MoveOperation operation, QTextCursor::MoveMode mode) {
                          return self.movePosition(operation, mode);
                      },
                      [](QTextCursor &self, QTextCursor::MoveOperation operation, QTextCursor::MoveMode mode, int count) {
                          return self.movePosition(operation, mode, count);
                      }))
        .function("select", &QTextCursor::select)
        .function("clearSelection", &QTextCursor::clearSelection)
        .function("removeSelectedCode", &QTextCursor::removeSelectedText)
        .function("insertCode", [](QTextCursor &self, const QString &text) { self.insertText(text); })
        .enumeration("MoveOperation", {{"NoMove", QTextCursor::NoMove},
                                       {"Start", QTextCursor::Start},
                                       {"StartOfLine", QTextCursor::StartOfBlock},
                                       {"StartOfWord", QTextCursor::StartOfWord},
                                       {"PreviousLine", QTextCursor::PreviousBlock},
                                       {"PreviousCharacter", QTextCursor::PreviousCharacter},
                                       {"PreviousWord", QTextCursor::PreviousWord},
                                       {"End", QTextCursor::End},
                                       {"EndOfLine", QTextCursor::EndOfBlock},
                                       {"EndOfWord", QTextCursor::EndOfWord},
                                       {"NextLine", QTextCursor::NextBlock},
                                       {"NextCharacter", QTextCursor::NextCharacter},
                                       {"NextWord", QTextCursor::NextWord}})
        .enumeration("MoveMode", {{"MoveAnchor", QTextCursor::MoveAnchor}, {"KeepAnchor", QTextCursor::KeepAnchor}})
        .enumeration("SelectionType", {{"Document", QTextCursor::Document},
                                       {"LineUnderCursor", QTextCursor::LineUnderCursor},
                                       {"WordUnderCursor", QTextCursor::WordUnderCursor}});
}

void registerCodeDocument(Script::Table &table)
{
    table.usertype<CodeDocument>("CodeDocument")
        .base<ProjectFile>()
        .base<QTextDocument>()
        .property("cursor", &CodeDocument::cursor)
        .property("codec", &CodeDocument::codecName,
                  [](CodeDocument &self, const QString &name) { self.setCodec(name.toLatin1().constData()); })
        .property("title", &CodeDocument::title, &CodeDocument::setTitle)
        .property("syntaxHighlight", &CodeDocument::hasSyntaxHighlight, &CodeDocument::setSyntaxHighlight)
        // The way from a document to its nodes.
        .property("root", [](CodeDocument &self) { return NodeRef{self.root()}; })
        .function("fromString", &CodeDocument::fromString)
        .function("insertCode", &CodeDocument::insert)
        .function("insertCodeOnCursor", [](CodeDocument &self, const QString &text, const QTextCursor &cursor) {
            self.insertOnCursor(text, cursor);
        })
        .function("insertCodeAfter",
                  Script::overload([](CodeDocument &self, CodeNode &node, const QString &text) {
                                       self.insertAfter(&node, text, false);
                                   },
                                   [](CodeDocument &self, CodeNode &node, const QString &text, bool nodeOnly) {
                                       self.insertAfter(&node, text, nodeOnly);
                                   }))
        .function("insertCodeBefore",
                  Script::overload([](CodeDocument &self, CodeNode &node, const QString &text) {
                                       self.insertBefore(&node, text, false);
                                   },
                                   [](CodeDocument &self, CodeNode &node, const QString &text, bool nodeOnly) {
                                       self.insertBefore(&node, text, nodeOnly);
                                   }));
}

void registerCodeNode(Script::Table &table)
{
    table.usertype<CodeNode>("CodeNode")
        .property("type", &CodeNode::type)
        .property("lineNo", &CodeNode::lineNo)
        .property("firstLineNo", &CodeNode::firstLine)
        .property("lastLineNo", &CodeNode::lastLine)
        .property("code", &CodeNode::code)
        .property("document", &CodeNode::document)
        .property("parent", [](const CodeNode &self) { return NodeRef{self.parent()}; })
        .property("previous", [](const CodeNode &self) { return NodeRef{self.previous()}; })
        .property("next", [](const CodeNode &self) { return NodeRef{self.next()}; })
        .function("select", &CodeNode::select)
        .function("selectAll", &CodeNode::selectAll)
        .function("remove", Script::overload([](CodeNode &self) { self.remove(false); }, &CodeNode::remove))
        .enumeration("Type", {{"Root", CodeNode::Root},
                              {"Group", CodeNode::Group},
                              {"Value", CodeNode::Value},
                              {"Animation", CodeNode::Animation},
                              {"Frame", CodeNode::Frame},
                              {"HitBox", CodeNode::HitBox}});
}

// The bases of nodes with children and of nodes with a name.
void registerNodeBases(Script::Table &table)
{
    table.usertype<ParentCode>("ParentCode")
        .base<CodeNode>()
        .function("childCount", &ParentCode::childCount)
        .function("childAt", [](const ParentCode &self, uint index) { return NodeRef{self.childAt(index)}; })
        .function("childIndex", [](const ParentCode &self, const CodeNode &child) { return self.childIndex(&child); });

    table.usertype<NamedCode>("NamedCode")
        .base<PropertyItem>()
        .property("displayName", &NamedCode::displayName)
        .property("text", &NamedCode::name, &NamedCode::setName);
}

} // namespace

void registerCode(Script::Table &table)
{
    registerCodeCursor(table);
    registerCodeDocument(table);
    registerCodeNode(table);
    registerNodeBases(table);
}

} // namespace ScriptClasses
} // namespace Ovra
