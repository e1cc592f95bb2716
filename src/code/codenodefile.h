#pragma once

#include "project/projectfile.h"

namespace Ovra {

class CodeDocument;
class CodeNode;

// Some nodes of a code document seen as a project file of its own (the animations of
// a file, say). Almost everything goes to the document; the file hears of the nodes of
// its kind as they enter, leave and change.
class OVRA_EXPORT CodeNodeFile : public ProjectFile
{
public:
    explicit CodeNodeFile(CodeDocument *document);
    // Forgets its registrations and gives up its reference on the document.
    ~CodeNodeFile() override;

    CodeDocument *document() const { return m_document; }

    Project *project() const override;
    QAbstractItemModel *model() override;
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
    QVariant option(const QString &name, const QVariant &defaultValue) const override;
    QVariant option(const QString &name) const override;
    void setOption(const QString &name, const QVariant &value, bool toProject, bool toHost) override;
    Messages *fileMessages() const override;
    // Only a file held by no one else may save, and only if the document can.
    bool canSave() const override;
    // The document's, without its own code-document bit; shared when the document is.
    Capabilities capabilities() const override;

    virtual void insertChild(CodeNode *node, uint index);
    virtual void removeChild(CodeNode *node);
    virtual void childChanged(CodeNode *node);

private:
    friend class CodeDocument;
    CodeDocument *m_document;
};

} // namespace Ovra
