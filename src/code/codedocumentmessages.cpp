// The messages of a code document: the parser's errors, deprecations and warnings of
// every line, as one list in document order.

#include "code/codedocument_p.h"

namespace Ovra {

ProjectFile *CodeDocumentPrivate::file() const
{
    return document;
}

uint CodeDocumentPrivate::count(Message::Type type) const
{
    switch (type) {
    case Message::Error: return errorCount;
    case Message::Warning: return warningCount;
    case Message::Information: return otherCount;
    default: return errorCount + warningCount + otherCount;
    }
}

namespace {

// The message kinds that pass each filter: errors; deprecations and warnings; others.
int kindMask(Message::Type type)
{
    switch (type) {
    case Message::Error: return 0x01;
    case Message::Warning: return 0x06;
    case Message::Information: return 0x08;
    default: return 0xFF;
    }
}

Message::Type messageType(int kind)
{
    return kind == 0 ? Message::Error : kind <= 2 ? Message::Warning : Message::Information;
}

} // namespace

Message CodeDocumentPrivate::at(uint index, Message::Type type) const
{
    const int mask = kindMask(type);
    for (CodeBlockData *data = firstMessageBlock; data; data = data->d->nextWithMessages) {
        for (const CodeBlockData::SyntaxMessage &message : qAsConst(data->d->syntaxMessages)) {
            if (!((1 << message.kind) & mask))
                continue;
            if (index-- == 0)
                return Message{messageType(message.kind), uint(data->d->block.blockNumber()),
                               uint(message.start), message.text};
        }
    }
    return Message();
}

void CodeDocumentPrivate::addMessage(TokenType type, int kind, const QString &text, int start,
                                     int end, const QColor &underline)
{
    if (currentData)
        currentData->d->parsed = true;
    QTextCharFormat format = CodeParserSyntax::format(type);
    format.setUnderlineStyle(QTextCharFormat::SpellCheckUnderline);
    format.setUnderlineColor(underline);
    paintColumns(start, end, formatIndex(format));
    pendingMessages.append(CodeBlockData::SyntaxMessage{kind, start, end, text});
}

void CodeDocumentPrivate::error(TokenType type, const QString &text, int start, int end)
{
    addMessage(type, CodeBlockData::SyntaxMessage::Error, text, start, end, Qt::red);
    ++errorCount;
}

void CodeDocumentPrivate::deprecated(TokenType type, const QString &text, int start, int end)
{
    addMessage(type, CodeBlockData::SyntaxMessage::Deprecation, text, start, end, QColor(255, 127, 0));
    ++warningCount;
}

void CodeDocumentPrivate::warning(TokenType type, const QString &text, int start, int end)
{
    addMessage(type, CodeBlockData::SyntaxMessage::Warning, text, start, end, QColor(255, 255, 0));
    ++warningCount;
}

int CodeDocumentPrivate::removeLineMessages(CodeBlockData *data)
{
    // Only lines with messages are in the list: most lines of a pass are not, and looking
    // for them would walk the whole list on every line.
    QVector<CodeBlockData::SyntaxMessage> &messages = data->d->syntaxMessages;
    if (messages.isEmpty())
        return -1;
    // The row where the line's messages stood: all messages of the lines before it.
    int row = 0;
    CodeBlockData **link = &firstMessageBlock;
    while (*link && *link != data) {
        row += (*link)->d->syntaxMessages.size();
        link = &(*link)->d->nextWithMessages;
    }
    // Announced from row 0 whatever the line's place: views read the list again.
    beginRemoveRows(QModelIndex(), 0, messages.size() - 1);
    for (const CodeBlockData::SyntaxMessage &message : qAsConst(messages)) {
        switch (messageType(message.kind)) {
        case Message::Error: --errorCount; break;
        case Message::Warning: --warningCount; break;
        default: --otherCount; break;
        }
    }
    if (*link == data) {
        *link = data->d->nextWithMessages;
        listedMessages -= messages.size();
    }
    messages.clear();
    data->d->nextWithMessages = nullptr;
    endRemoveRows();
    return row;
}

void CodeDocumentPrivate::notifyUpdate()
{
    if (MessageList *list = messageList())
        list->update();
}

} // namespace Ovra
