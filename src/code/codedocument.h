#pragma once

#include "code/codeblockdata.h"
#include "code/codeparser.h"
#include "code/rootcode.h"
#include "foundation/filewatcher.h"
#include "project/projectfile.h"

#include <QTextCursor>
#include <QTextDocument>

namespace Ovra {

class CodeDocument;
class CodeDocumentPrivate;
class CodeNodeFile;

// The root inside a code document: it shows the tree only while the document lets it,
// and tells the document (and through it the node files) of top-level changes.
class OVRA_EXPORT CodeDocumentRoot : public RootCode
{
    Q_OBJECT
public:
    CodeDocumentRoot(CodeDocument *document, short fileType);

    CodeDocument *document() const override { return m_document; }
    void insertChild(CodeNode *child, uint row) override;
    void removeChild(CodeNode *child) override;
    void childChanged(CodeNode *child) override;

protected:
    QIcon nodeIcon(const CodeNode *node) const override;
    bool isModelShown() const override;

private:
    CodeDocument *m_document;
};

// One text definition file in memory: the text with its undo stack and layout, a file
// of a project, and the root of the parsed node tree. The text is the only truth:
// nothing of the tree is saved, and every change of a node is an edit of the text,
// which is parsed again line by line. Engines subclass it and give it their parser.
class OVRA_EXPORT CodeDocument : public QTextDocument, public ProjectFile, public FileWatchObject
{
    Q_OBJECT
public:
    explicit CodeDocument(short int fileType);
    ~CodeDocument() override;

    // ProjectFile
    QAbstractItemModel *model() override;
    Capabilities capabilities() const override;
    bool canSave() const override;
    bool isModified() const override;
    bool isEmpty() const override;
    void reset() override;
    bool toFile(Archive &archive, const QString &name, uint flags, JobStats *stats) override;
    bool fromFile(Archive &archive, const QString &name, uint flags, JobStats *stats) override;
    QString fileName() const override;
    void beginChange() override;
    void endChange() override;
    void undo() override;
    void redo() override;
    QList<SearchResult> search(RegExp &expression, uint flags) override;
    void replace(QList<SearchResult> &results, const QString &replacement) override;
    Messages *fileMessages() const override;
    void release() override;
    void free() override;

    // FileWatchObject
    QString watchedFileName() const override;
    void reloadFile() override;

    virtual void setVersion(ushort version);
    virtual void fromString(const QString &text);
    // Indents or formats lines in the language's way.
    virtual void formatLines(int firstBlock, int lastBlock, bool indentOnly) = 0;
    virtual QIcon nodeIcon(const CodeNode *node) const;
    // After each parse pass that left no request behind.
    virtual void codeUpdated();

    QString toString() const;
    void insert(const QString &text);
    void insertOnCursor(const QString &text, QTextCursor cursor);
    void insertAfter(CodeNode *node, const QString &text, bool nodeOnly);
    void insertBefore(CodeNode *node, const QString &text, bool nodeOnly);

    short fileType() const;
    void setFileType(short fileType, bool notify);
    ushort version() const;
    RootCode *root();
    CodeNode *nodeFromIndex(const QModelIndex &index) const;
    // The tree's item of the node on a line (counted from 0), or of the nearest before it.
    QModelIndex indexInLine(int line);
    // The line of an item's node, or -1.
    int lineNo(const QModelIndex &index) const;
    CodeNode *nodeInBlock(const QTextBlock &block) const;

    CodeParser *parser() const;
    void setParser(CodeParser *parser);
    bool hasSyntaxHighlight() const;
    void setSyntaxHighlight(bool enabled);
    static void setSyntaxFormat(CodeParserSyntax::TokenType type, const QTextCharFormat &format);

    // Lines count from 1.
    bool addMark(CodeMark *mark, int line);
    void removeMark(CodeMark *mark);
    void updateMark(CodeMark *mark);
    bool hasMark(CodeMark *mark) const;
    QList<CodeMark *> marksAt(int line) const;

    bool isCodeBeingChanged() const;
    QTextCursor cursor() const;
    void setCursor(const QTextCursor &cursor);

    // The text codec, as an index of TextCodecs.
    int codecId() const;
    void setCodecId(int codec);
    void setCodec(const char *name);
    QString codecName() const;

    // Lets a node file hear of the nodes of one type (and, for groups, one subtype); it
    // gets every such node at once, and holds a reference on the document.
    void registerNodeFile(CodeNodeFile *file, int type, uint subType);
    CodeNodeFile *nodeFile(int type, uint subType) const;
    // Drops every registration of the file; false if it had none.
    bool unregisterNodeFile(CodeNodeFile *file);

    // The language's comment marker, from the engine of the project's parent; empty
    // when the document belongs to no engine.
    QString commentMarker() const;

    QString title() const;
    void setTitle(const QString &title);

    // The text's revision when it was last loaded or saved. A line whose own revision
    // differs has changed since: a negative one holds changes that have been saved.
    int savedRevision() const;

protected:
    virtual void insertChild(CodeNode *node, uint row);
    virtual void removeChild(CodeNode *node);
    virtual void childChanged(CodeNode *node);

public slots:
    void rehighlight();
    void reparse();

private:
    friend class CodeDocumentPrivate;
    friend class CodeDocumentRoot;
    void setFileName(const QString &name);
    void setText(const QString &text);
    void watchLoaded(Archive &archive, const QString &name, bool isCopy);
    void watchSaved(Archive &archive, const QString &name, bool isCopy);
    // The one road by which text for nodes comes in; keeps the tree current inside brackets.
    void insertCode(QTextCursor &cursor, const QString &text);
    bool load(Archive &archive, const QString &name, int codec, uint flags, JobStats *stats);
    void finishSave(Archive *archive, QIODevice *device, const QString &name, uint flags, JobStats *stats);

    CodeDocumentRoot m_root;
    CodeDocumentPrivate *d;
};

} // namespace Ovra
