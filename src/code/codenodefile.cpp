#include "code/codenodefile.h"

#include "code/codedocument.h"

namespace Ovra {

CodeNodeFile::CodeNodeFile(CodeDocument *document)
    : m_document(document)
{
}

CodeNodeFile::~CodeNodeFile()
{
    if (m_document && m_document->unregisterNodeFile(this))
        m_document->release();
}

Project *CodeNodeFile::project() const { return m_document->project(); }
QAbstractItemModel *CodeNodeFile::model() { return m_document->model(); }
bool CodeNodeFile::isModified() const { return m_document->isModified(); }
bool CodeNodeFile::isEmpty() const { return m_document->isEmpty(); }
void CodeNodeFile::reset() { m_document->reset(); }
// The document reads and writes; the view keeps the archive it lives in too, so that
// the work's save finds it a place to write to.
bool CodeNodeFile::toFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    const bool saved = m_document->toFile(archive, name, flags, stats);
    if (saved)
        ProjectFile::toFile(archive, name, flags, stats);
    return saved;
}
bool CodeNodeFile::fromFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    const bool loaded = m_document->fromFile(archive, name, flags, stats);
    if (loaded)
        ProjectFile::fromFile(archive, name, flags, stats);
    return loaded;
}
QString CodeNodeFile::fileName() const { return m_document->fileName(); }
void CodeNodeFile::beginChange() { m_document->beginChange(); }
void CodeNodeFile::endChange() { m_document->endChange(); }
void CodeNodeFile::undo() { m_document->undo(); }
void CodeNodeFile::redo() { m_document->redo(); }
QList<ProjectFile::SearchResult> CodeNodeFile::search(RegExp &expression, uint flags)
{
    return m_document->search(expression, flags);
}
void CodeNodeFile::replace(QList<SearchResult> &results, const QString &replacement)
{
    m_document->replace(results, replacement);
}
QVariant CodeNodeFile::option(const QString &name, const QVariant &defaultValue) const
{
    return m_document->option(name, defaultValue);
}
QVariant CodeNodeFile::option(const QString &name) const { return m_document->option(name); }
void CodeNodeFile::setOption(const QString &name, const QVariant &value, bool toProject, bool toHost)
{
    m_document->setOption(name, value, toProject, toHost);
}
Messages *CodeNodeFile::fileMessages() const { return m_document->fileMessages(); }

bool CodeNodeFile::canSave() const
{
    return refCount() == 1 && m_document->canSave();
}

ProjectFile::Capabilities CodeNodeFile::capabilities() const
{
    Capabilities flags = m_document->capabilities() & ~Capabilities(CodeDocumentFile);
    if (m_document->refCount() >= 2)
        flags |= SharedDocument;
    return flags;
}

void CodeNodeFile::insertChild(CodeNode *, uint)
{
}

void CodeNodeFile::removeChild(CodeNode *)
{
}

void CodeNodeFile::childChanged(CodeNode *)
{
}

} // namespace Ovra
