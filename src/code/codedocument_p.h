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
#include <QSet>
#include <QTextCharFormat>
#include <QVector>

#include <memory>

class QAbstractTextDocumentLayout;

namespace Ovra {

// A run of columns of one format in a line's highlighting; `format` indexes the
// document's table of formats.
struct FormatRun
{
    int start = 0;
    int length = 0;
    int format = 0;

    bool operator==(const FormatRun &other) const
    {
        return start == other.start && length == other.length && format == other.format;
    }
};

inline uint qHash(const FormatRun &run, uint seed = 0)
{
    return ::qHash(run.start, seed) ^ ::qHash(run.length, seed + 1) ^ ::qHash(run.format, seed + 2);
}

using FormatRuns = QVector<FormatRun>;

inline bool operator==(const CodeBlockData::Parenthesis &a, const CodeBlockData::Parenthesis &b)
{
    return a.type == b.type && a.character == b.character && a.position == b.position;
}

inline uint qHash(const CodeBlockData::Parenthesis &parenthesis, uint seed = 0)
{
    return ::qHash(parenthesis.position, seed) ^ ::qHash(parenthesis.character.unicode(), seed + parenthesis.type);
}

// Lines that look alike share one vector: those in use are kept in a set, which drops the
// ones no line holds any more whenever it has doubled.
template <typename T>
class SharedVectors
{
public:
    QVector<T> share(const QVector<T> &vector)
    {
        if (vector.isEmpty())
            return QVector<T>();
        // Neighbouring lines often look alike, or repeat a short pattern: the last few
        // handed out come before the set, which hashes the whole vector.
        for (const QVector<T> &recent : m_recent) {
            if (recent == vector)
                return recent;
        }
        const auto found = m_inUse.constFind(vector);
        if (found != m_inUse.constEnd())
            return remember(*found);
        if (m_inUse.size() >= m_limit) {
            for (auto it = m_inUse.begin(); it != m_inUse.end();) {
                if (it->isDetached()) // only the set holds it
                    it = m_inUse.erase(it);
                else
                    ++it;
            }
            m_limit = qMax(1024, m_inUse.size() * 2);
        }
        m_inUse.insert(vector);
        return remember(vector);
    }

private:
    const QVector<T> &remember(const QVector<T> &vector)
    {
        m_next = (m_next + 1) % RecentCount;
        m_recent[m_next] = vector;
        return m_recent[m_next];
    }

    static constexpr int RecentCount = 4;
    QSet<QVector<T>> m_inUse;
    QVector<T> m_recent[RecentCount];
    int m_next = 0;
    int m_limit = 1024;
};

// What few lines have: marks beside them and links found in them.
struct CodeBlockExtras
{
    QList<CodeMark *> marks;
    QList<CodeLink *> links;
};

struct CodeBlockDataPrivate
{
    // Kept small and in this order: a long file has one of these a line.
    CodeBlockData *nextWithMessages = nullptr;
    CodeDocumentPrivate *owner = nullptr;
    CodeNode *node = nullptr;
    uint foldingIndent = 0;
    // The state of the line above when this line was parsed: a pass runs on into this
    // line when that no longer holds. The line's own state may have come from a block
    // that an edit split or joined, so it cannot tell.
    int stateBefore = -2;
    bool folded = false;
    bool parsed = false;
    // The line's formats differ from what its layout holds.
    bool formatsPending = false;
    // The line has been laid out: a change of its formats must reach the view.
    bool laidOut = false;
    QTextBlock block;
    std::unique_ptr<CodeBlockExtras> extras; // made on first need
    QVector<CodeBlockData::SyntaxMessage> syntaxMessages;
    // Shared by lines that look alike, as the formats are.
    QVector<CodeBlockData::Parenthesis> parenthesis;
    // The line's highlighting, kept here rather than in a QTextLayout per line: its layout
    // gets it when the line is laid out (see makeCodeDocumentLayout). Lines that look alike
    // share one vector.
    FormatRuns formats;

    CodeBlockExtras &madeExtras()
    {
        if (!extras)
            extras = std::make_unique<CodeBlockExtras>();
        return *extras;
    }
    bool hasMark(const CodeMark *mark) const { return extras && extras->marks.contains(const_cast<CodeMark *>(mark)); }
};

// A line's data and its private part in one allocation. The part is a base so that it
// outlives the destructor of CodeBlockData, which still reads it.
struct CodeBlockDataStorage
{
    CodeBlockDataPrivate part;
};

class CodeBlockDataInOne final : private CodeBlockDataStorage, public CodeBlockData
{
public:
    CodeBlockDataInOne(CodeDocumentPrivate *owner, const QTextBlock &block)
        : CodeBlockData(&part)
    {
        part.owner = owner;
        part.block = block;
    }
};

// The document's layout: a plain text layout that hands each line its formats just
// before it lays the line out, which every view does before painting it.
QAbstractTextDocumentLayout *makeCodeDocumentLayout(QTextDocument *document, CodeDocumentPrivate *owner);
// The document's private part goes before its layout does: the layout lets go of it.
void forgetCodeDocumentLayoutOwner(QAbstractTextDocumentLayout *layout);

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
    // What a pass asks for when it ends: another pass, a whole one, or the news of the
    // update; and the notification once the outermost pass is done.
    void finishPass(bool outerParsing);
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
    // Takes the line's messages out of the list; the row they stood at, or -1 for a line
    // that had none (which costs no walk of the list).
    int removeLineMessages(CodeBlockData *data);
    void updateFoldingIndent(CodeBlockData *data);
    // Paints the columns of the line being parsed in a format of the document's table.
    void paintColumns(int start, int end, int format);
    int tokenFormatIndex(TokenType type);
    // Keeps the formats the parser painted into the line's data.
    void storeFormats(const QTextBlock &block, CodeBlockData *data);
    // The line's formats as its layout takes them.
    QVector<QTextLayout::FormatRange> formatRanges(const QTextBlock &block, const FormatRuns &runs) const;
    // Gives the line's layout its formats when they changed since it got them last; true
    // if it did, which drops the lines the layout had.
    bool handFormats(const QTextBlock &block);
    int formatIndex(const QTextCharFormat &format);

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
    // The messages of the lines in that list, kept as lines join and leave it.
    int listedMessages = 0;
    // The formats of the line being parsed: an index into formatTable per column, 0 for
    // the plain format. Indexes keep the per-column work to a word.
    QVector<quint16> lineFormats;
    FormatRuns lineRuns;
    QVector<CodeBlockData::Parenthesis> lineParentheses;
    // Every format the lines use, once, the plain one first; runs of lines name them by
    // index. The formats of token types are looked up once while they stay the same.
    QVector<QTextCharFormat> formatTable;
    struct TokenFormat
    {
        QTextCharFormat format;
        int index = -1;
    };
    TokenFormat tokenFormats[TokenTypeCount];
    SharedVectors<FormatRun> sharedRuns;
    SharedVectors<CodeBlockData::Parenthesis> sharedParentheses;
    QTextBlock currentBlock;
    // The text a pass over the whole document reads its lines from: a line's own text()
    // looks its position up in the document's tree, dear on every line of a long file.
    struct PassText
    {
        QString text;
        int at = -1; // where `next` starts, or -1: lines are read from the document
        // Sits at the end of the document: any edit moves it, which asking the document's
        // size would tell only at the cost of a walk of its tree on every line.
        QTextCursor end;
        int endPosition = 0;
        QTextBlock next;
        // Holds the line handed out last: a line costs no allocation while no one keeps
        // the one before (a copy that is kept makes the next line a string of its own).
        QString lineBuffer;

        // Where the line ends in `text`; -1 when it can't be read from there.
        int lineEnd(const QTextBlock &block) const;
        QString line(const QTextBlock &block);
        // On to `following`, the line below `block`.
        void advance(const QTextBlock &block, const QTextBlock &following);
    };
    PassText passText;
    // The text being put into the document by a load, while it is.
    QString loadingText;
    bool ignoreContentsChange = false;
    // The characters of the edit being parsed, first and last: the layout lays the lines
    // they touch out again by itself. -1 outside an edit.
    int editFirst = -1;
    int editLast = -1;
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
