#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codedocumenthelpers_p.h"
#include "code/codenodefile.h"
#include "engine/engine.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "foundation/archive.h"
#include "foundation/progress.h"
#include "foundation/textcodecs.h"

#include <QFont>

namespace Ovra {

CodeDocumentPrivate::CodeDocumentPrivate(CodeDocument *document)
    : document(document)
    , cursor(document)
{
}

CodeDocumentPrivate::~CodeDocumentPrivate()
{
    forgetCodeDocumentLayoutOwner(document->documentLayout());
}

CodeBlockData *CodeDocumentPrivate::testBlockData(const QTextBlock &block)
{
    return static_cast<CodeBlockData *>(block.userData());
}

CodeBlockData *CodeDocumentPrivate::blockData(const QTextBlock &block)
{
    CodeBlockData *data = testBlockData(block);
    if (!data && block.isValid()) {
        data = new CodeBlockDataInOne(this, block);
        QTextBlock(block).setUserData(data);
    }
    return data;
}

CodeDocument::CodeDocument(short int fileType)
    : m_root(this, fileType)
    , d(new CodeDocumentPrivate(this))
{
    auto *data = new CodeDocumentUserData;
    data->codec = TextCodecs::index("UTF-8");
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
    setUserData(CodeDocumentUserData::UserDataId, data);
QT_WARNING_POP
    setDocumentLayout(makeCodeDocumentLayout(this, d));
    QFont font(QStringLiteral("Courier"), 10);
    font.setFixedPitch(true);
    font.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
    setDefaultFont(font);
    d->modelEnabled = optionOn(this, "modelCode");

    connect(this, &QTextDocument::contentsChange, d, &CodeDocumentPrivate::contentsChange);
    connect(&m_root, &RootCode::versionChanged, this, &CodeDocument::rehighlight);
    connect(&m_root, &RootCode::typeChanged, this, &CodeDocument::rehighlight);
    connect(d, &CodeDocumentPrivate::saveFinished, this, &CodeDocument::finishSave, Qt::QueuedConnection);
}

CodeDocument::~CodeDocument()
{
    d->waitForSave();
    const QList<CodeNodeFile *> files = d->distinctNodeFiles();
    // Views see the rows go at once, not node by node.
    d->freezeModel();
    m_root.destroy();
    d->parser = nullptr;
    d->destroying = true;
    d->firstMessageBlock = nullptr;
    d->listedMessages = 0;
    QTextDocument::clear();
    d->destroying = false;
    d->unfreezeModel();
    // The files no longer see a document: they must not give a reference back to it.
    d->nodeFiles.clear();
    delete d;
    d = nullptr;
    for (CodeNodeFile *file : files) {
        file->m_document = nullptr;
        file->release();
    }
}

ProjectFile::Capabilities CodeDocument::capabilities() const
{
    return Capabilities(AsynchronousSave | CodeDocumentFile);
}

bool CodeDocument::canSave() const
{
    return true;
}

bool CodeDocument::isModified() const
{
    return QTextDocument::isModified();
}

bool CodeDocument::isEmpty() const
{
    return QTextDocument::isEmpty();
}

QString CodeDocument::fileName() const
{
    return metaInformation(DocumentUrl);
}

void CodeDocument::setFileName(const QString &name)
{
    setMetaInformation(DocumentTitle, name.isEmpty() ? QString() : name.split(QLatin1Char('/')).constLast());
    setMetaInformation(DocumentUrl, name);
}

QString CodeDocument::commentMarker() const
{
    const ParentProject *parent = project() ? project()->parentProject() : nullptr;
    const Engine *engine = parent ? parent->engine() : nullptr;
    return engine ? engine->queryString(Engine::CommentMarker, 0) : QString();
}

QString CodeDocument::title() const
{
    return metaInformation(DocumentTitle);
}

void CodeDocument::setTitle(const QString &title)
{
    setMetaInformation(DocumentTitle, title);
}

Messages *CodeDocument::fileMessages() const
{
    return d;
}

void CodeDocument::release()
{
    // The last holder besides the node files lets go: each node file gets a reference
    // to give back when it goes, and goes.
    if (refCount() == 1) {
        const QList<CodeNodeFile *> files = d->distinctNodeFiles();
        for (CodeNodeFile *file : files) {
            addRef();
            file->release();
        }
    }
    ProjectFile::release();
}

void CodeDocument::free()
{
    delete this;
}

void CodeDocument::codeUpdated()
{
}

QString CodeDocument::toString() const
{
    return toPlainText();
}

short CodeDocument::fileType() const
{
    return m_root.fileType();
}

void CodeDocument::setFileType(short fileType, bool notify)
{
    m_root.setFileType(fileType, notify);
}

ushort CodeDocument::version() const
{
    return m_root.version();
}

void CodeDocument::setVersion(ushort version)
{
    m_root.setVersion(version, false);
}

CodeParser *CodeDocument::parser() const
{
    return d->parser;
}

void CodeDocument::setParser(CodeParser *parser)
{
    if (parser == d->parser)
        return;
    d->parser = parser;
    reparse();
}

} // namespace Ovra
