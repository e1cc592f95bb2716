#pragma once

// Private to the code document: the document's messages and the callbacks of its
// parser in one object, and the state of parsing and saving.

#include "code/codeblockdata.h"
#include "code/codedocument.h"
#include "foundation/messages.h"

#include <QFuture>
#include <QHash>
#include <QMap>
#include <QObjectUserData>
#include <QTextCharFormat>
#include <QVector>

namespace Ovra {

struct CodeBlockDataPrivate
{
    CodeBlockData *nextWithMessages = nullptr;
    CodeDocumentPrivate *owner = nullptr;
    CodeNode *node = nullptr;
    bool folded = false;
    bool parsed = false;
    uint foldingIndent = 0;
    // The state of the line above when this line was parsed: a pass runs on into this
    // line when that no longer holds. The line's own state may have come from a block
    // that an edit split or joined, so it cannot tell.
    int stateBefore = -2;
    QTextBlock block;
    QList<CodeMark *> marks;
    QList<CodeLink *> links;
    QVector<CodeBlockData::SyntaxMessage> syntaxMessages;
    QVector<CodeBlockData::Parenthesis> parenthesis;
};

// Stored on the document's QObject under UserDataId rather than in the private part, so
// that a background save reads the codec without touching anything else.
class CodeDocumentUserData : public QObjectUserData
{
public:
    static constexpr uint UserDataId = 0xC0DE;
    int codec = 0; // an index of TextCodecs
};

class CodeDocumentPrivate : public Messages, public CodeParserSyntax
{
    Q_OBJECT
public:
    explicit CodeDocumentPrivate(CodeDocument *document);
    ~CodeDocumentPrivate() override;

    // Messages: the messages of all lines, in document order.
    ProjectFile *file() const override;
    uint count(Message::Type type) const override;
    Message at(uint index, Message::Type type) const override;

    // CodeParserSyntax: what the parser reports of the line being parsed.
    void token(TokenType type, int start, int end) override;
    void error(TokenType type, const QString &text, int start, int end) override;
    void deprecated(TokenType type, const QString &text, int start, int end) override;
    void warning(TokenType type, const QString &text, int start, int end) override;
    void parenthesis(bool opening, QChar character, int position) override;
    void link(CodeLink *link) override;

    void addMessage(TokenType type, int kind, const QString &text, int start, int end,
                    const QColor &underline);

    // The block's data, made on first need; testBlockData() only looks.
    CodeBlockData *blockData(const QTextBlock &block);
    static CodeBlockData *testBlockData(const QTextBlock &block);

    void contentsChange(int position, int removed, int added);
    // The pass over the lines an edit touched, and on while line states change.
    void parsePass(int position, int removed, int added);
    void wholeDocumentPass();
    void notifyUpdate();
    // The node the line's node must follow: that of the nearest line above with one,
    // else the last implicit node behind the root.
    CodeNode *previousNode(const QTextBlock &block) const;
    static void unlinkNode(CodeNode *node);
    static void relinkNode(CodeNode *node);
    void parseLine(const QTextBlock &block, bool highlight);
    // Hands one line to the parser; with a null syntax only the tree follows.
    // True when the line's node is another one afterwards.
    bool parseNode(const QTextBlock &block, CodeParserSyntax *syntax);
    int removeLineMessages(CodeBlockData *data);
    void updateFoldingIndent(CodeBlockData *data);
    void paintColumns(int start, int end, const QTextCharFormat &format);
    void applyFormats(const QTextBlock &block);

    QList<CodeNodeFile *> distinctNodeFiles() const;

    void freezeModel();
    void unfreezeModel();
    void waitForSave();
    void takeRevision();
    void advanceRevision();

    CodeDocument *document;
    CodeParser *parser = nullptr;
    CodeBlockData *currentData = nullptr;
    QTextCursor cursor;
    quint16 changeDepth = 0;
    quint16 notifyLock = 0;
    QMap<uint, CodeNodeFile *> nodeFiles;
    // Top-level nodes by node-file kind in the first `rootRowsCounted` root rows, so that a
    // node appended to the root (every node of a load) finds its place in its file without
    // counting; anything but an append starts the count again.
    QHash<uint, uint> rootNodesByKind;
    uint rootRowsCounted = 0;
    QFuture<void> saveFuture;
    bool saveInProgress = false;
    uint errorCount = 0;
    uint warningCount = 0;
    uint otherCount = 0;
    QVector<CodeBlockData::SyntaxMessage> pendingMessages;
    CodeBlockData *firstMessageBlock = nullptr;
    // The formats of the line being parsed: an index into lineFormatTable per column,
    // 0 for the default format. Indexes keep the per-column work to a word.
    QVector<quint16> lineFormats;
    QVector<QTextCharFormat> lineFormatTable;
    QTextBlock currentBlock;
    bool ignoreContentsChange = false;
    bool parsing = false;
    bool wholePass = false;
    bool reparsePending = false;
    bool rehighlightPending = false;
    // Passes over the whole text, one inside the other: each asks for the next one when its
    // lines changed the file's settings (version, file type).
    int wholePassDepth = 0;
    bool modelEnabled = true;
    int modelFreeze = 0;
    int publishedRows = 0;
    bool destroying = false;
    // Nodes came or went where no pass saw it (with deleted lines, or inside a change
    // bracket); the next pass looks past the headers behind its last line.
    bool unseenNodeChange = false;
    int revision = 0;
    // The name the file watcher knows the document by: the file name is empty while a
    // save runs, but the watch stays with the file.
    QString watchedName;

signals:
    void saveFinished(Ovra::Archive *archive, QIODevice *device, const QString &name, uint flags,
                      Ovra::JobStats *stats);
};

} // namespace Ovra
