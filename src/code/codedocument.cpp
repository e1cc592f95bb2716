#include "code/codedocument.h"

#include "code/codedocument_p.h"
#include "code/codenodefile.h"
#include "code/codetext.h"
#include "code/groupcode.h"
#include "code/valuecode.h"
#include "engine/engine.h"
#include "project/parentproject.h"
#include "project/project.h"
#include "project/regexp.h"
#include "foundation/archive.h"
#include "foundation/filesystemarchive.h"
#include "foundation/interface.h"
#include "foundation/progress.h"
#include "foundation/textcodecs.h"

#include <utility>

#include <QFont>
#include <QPlainTextDocumentLayout>
#include <QTextLayout>
#include <QtConcurrent>

namespace Ovra {

// ---- the root inside the document ----------------------------------------------------

CodeDocumentRoot::CodeDocumentRoot(CodeDocument *document, short fileType)
    : RootCode(fileType)
    , m_document(document)
{
}

void CodeDocumentRoot::insertChild(CodeNode *child, uint row)
{
    RootCode::insertChild(child, row);
    m_document->insertChild(child, row);
}

void CodeDocumentRoot::removeChild(CodeNode *child)
{
    if (childIndex(child) < 0)
        return;
    m_document->removeChild(child);
    RootCode::removeChild(child);
}

void CodeDocumentRoot::childChanged(CodeNode *child)
{
    m_document->childChanged(child);
}

QIcon CodeDocumentRoot::nodeIcon(const CodeNode *node) const
{
    return m_document->nodeIcon(node);
}

bool CodeDocumentRoot::isModelShown() const
{
    const CodeDocumentPrivate *d = m_document->d;
    return d && d->modelEnabled && d->modelFreeze == 0;
}

// ---- private part ----------------------------------------------------------------------

CodeDocumentPrivate::CodeDocumentPrivate(CodeDocument *document)
    : document(document)
    , cursor(document)
{
}

CodeDocumentPrivate::~CodeDocumentPrivate() = default;

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

void CodeDocumentPrivate::token(TokenType type, int start, int end)
{
    if (type != Comment && currentData)
        currentData->d->parsed = true;
    paintColumns(start, end, CodeParserSyntax::format(type));
}

void CodeDocumentPrivate::paintColumns(int start, int end, const QTextCharFormat &format)
{
    start = qMax(start, 0);
    end = qMin(end, lineFormats.size());
    if (start >= end)
        return;
    if (lineFormatTable.size() == 1 || !(lineFormatTable.last() == format)) {
        if (lineFormatTable.size() == 0xFFFF)
            return; // a line with that many formats keeps the ones it has
        lineFormatTable.append(format);
    }
    std::fill(lineFormats.begin() + start, lineFormats.begin() + end, quint16(lineFormatTable.size() - 1));
}

void CodeDocumentPrivate::addMessage(TokenType type, int kind, const QString &text, int start,
                                     int end, const QColor &underline)
{
    if (currentData)
        currentData->d->parsed = true;
    QTextCharFormat format = CodeParserSyntax::format(type);
    format.setUnderlineStyle(QTextCharFormat::SpellCheckUnderline);
    format.setUnderlineColor(underline);
    paintColumns(start, end, format);
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

void CodeDocumentPrivate::parenthesis(bool opening, QChar character, int position)
{
    if (currentData)
        currentData->d->parenthesis.append(
            CodeBlockData::Parenthesis{opening ? CodeBlockData::Parenthesis::Opening
                                               : CodeBlockData::Parenthesis::Closing,
                                       character, position});
}

void CodeDocumentPrivate::link(CodeLink *link)
{
    if (currentData)
        currentData->d->links.append(link);
    else
        delete link;
}

CodeBlockData *CodeDocumentPrivate::testBlockData(const QTextBlock &block)
{
    return static_cast<CodeBlockData *>(block.userData());
}

CodeBlockData *CodeDocumentPrivate::blockData(const QTextBlock &block)
{
    CodeBlockData *data = testBlockData(block);
    if (!data && block.isValid()) {
        data = new CodeBlockData(this, block);
        QTextBlock(block).setUserData(data);
    }
    return data;
}

void CodeDocumentPrivate::waitForSave()
{
    saveFuture.waitForFinished();
}

void CodeDocumentPrivate::freezeModel()
{
    RootCode &root = document->m_root;
    if (modelFreeze == 0 && modelEnabled && publishedRows > 0) {
        root.beginRemoveItems(QModelIndex(), 0, publishedRows - 1);
        ++modelFreeze;
        publishedRows = 0;
        root.endRemoveItems();
    } else {
        ++modelFreeze;
    }
}

void CodeDocumentPrivate::unfreezeModel()
{
    RootCode &root = document->m_root;
    const int rows = int(root.childCount());
    if (modelFreeze == 1 && modelEnabled && rows > 0) {
        root.beginInsertItems(QModelIndex(), 0, rows - 1);
        --modelFreeze;
        publishedRows = rows;
        root.endInsertItems();
    } else {
        --modelFreeze;
        if (modelFreeze == 0 && modelEnabled)
            publishedRows = rows;
    }
}

void CodeDocumentPrivate::takeRevision()
{
    revision = document->QTextDocument::revision();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        block.setRevision(revision);
}

void CodeDocumentPrivate::advanceRevision()
{
    const int current = document->QTextDocument::revision();
    if (current != revision) {
        const int old = revision;
        revision = current;
        for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
            // Changed before this save: marked as saved changes (negative); as loaded:
            // the new saved state.
            if (block.revision() < 0 || block.revision() != old)
                block.setRevision(~current);
            else
                block.setRevision(current);
        }
    }
    document->setModified(false);
}

namespace {

// The state a line leaves for the next: the header it belongs to, or what the line
// before left.
int lineState(const QTextBlock &block, const CodeNode *node)
{
    auto headerState = [](const CodeNode *header) -> int {
        if (header->type() == CodeNode::Animation)
            return 0x40000000;
        return int(static_cast<const GroupCode *>(header)->subType());
    };
    if (node) {
        if (node->type() == CodeNode::Group || node->type() == CodeNode::Animation)
            return headerState(node);
        if (const CodeNode *group = node->previous(CodeNode::Group, -11))
            return headerState(group);
        if (const CodeNode *animation = node->previous(CodeNode::Animation, -11))
            return headerState(animation);
    }
    const QTextBlock before = block.previous();
    return before.isValid() ? before.userState() : -1;
}

bool isHeader(const CodeNode *node)
{
    return node && (node->type() == CodeNode::Group || node->type() == CodeNode::Animation);
}

} // namespace

void CodeDocumentPrivate::contentsChange(int position, int removed, int added)
{
    if (!ignoreContentsChange)
        parsePass(position, removed, added);
}

void CodeDocumentPrivate::parsePass(int position, int removed, int added)
{
    QTextBlock block = document->findBlock(position);
    if (!block.isValid())
        return;
    ++notifyLock;
    const bool outerParsing = parsing;
    parsing = true;
    const bool highlight = document->hasSyntaxHighlight();

    QTextBlock last = document->findBlock(position + added + (removed > 0 ? 1 : 0));
    if (!last.isValid())
        last = document->lastBlock();
    const int end = last.position() + last.length();

    // The state of a line below a header depends on the run of headers directly behind
    // its node, so after a line that is or was a header, or that gained or lost its node,
    // the pass goes on to the next line with a node other than a header, even where no
    // state changed on the way; so too after nodes changed unseen.
    bool stateChanged = false;
    bool headerBehind = false;
    bool unseen = std::exchange(unseenNodeChange, false);
    while (block.isValid() && (block.position() < end || stateChanged || headerBehind || unseen)) {
        const int before = block.userState();
        const CodeBlockData *data = testBlockData(block);
        const CodeNode *was = data ? data->d->node : nullptr;
        const bool wasHeader = isHeader(was);
        parseLine(block, highlight);
        if (reparsePending || rehighlightPending)
            break;
        const CodeBlockData *below = testBlockData(block.next());
        stateChanged = below ? below->d->stateBefore != block.userState() : block.userState() != before;
        const CodeBlockData *parsed = testBlockData(block);
        const CodeNode *now = parsed ? parsed->d->node : nullptr;
        if (was || now)
            headerBehind = wasHeader || isHeader(now) || !was || !now;
        // Where in the range unseen changes were is not known: only a line behind it ends them.
        if (unseen && block.position() >= end && now && !isHeader(now))
            unseen = false;
        block = block.next();
    }
    lineFormats.clear();
    parsing = outerParsing;

    if (reparsePending) {
        reparsePending = false;
        document->reparse();
    } else if (rehighlightPending) {
        if (!outerParsing) {
            rehighlightPending = false;
            freezeModel();
            wholeDocumentPass();
            unfreezeModel();
        }
    } else {
        document->codeUpdated();
    }
    if (--notifyLock == 0)
        notifyUpdate();
}

void CodeDocumentPrivate::notifyUpdate()
{
    if (MessageList *list = messageList())
        list->update();
}

void CodeDocumentPrivate::wholeDocumentPass()
{
    // One insertion of the whole text, run directly: the edit block makes the repaints
    // of the pass one layout update.
    QTextCursor all(document);
    const bool ignoring = ignoreContentsChange;
    ignoreContentsChange = true;
    all.beginEditBlock();
    parsePass(all.position(), 0, document->characterCount() - all.position());
    all.endEditBlock();
    ignoreContentsChange = ignoring;
}

CodeNode *CodeDocumentPrivate::previousNode(const QTextBlock &block) const
{
    for (QTextBlock above = block.previous(); above.isValid(); above = above.previous()) {
        if (const CodeBlockData *data = testBlockData(above)) {
            if (data->d->node)
                return data->d->node;
        }
    }
    // No line above has a node: implicit nodes right behind the root come first.
    CodeNode *node = &document->m_root;
    while (node->next() && !node->next()->block().isValid())
        node = node->next();
    return node;
}

bool CodeDocumentPrivate::parseNode(const QTextBlock &block, CodeParserSyntax *syntax)
{
    CodeBlockData *data = blockData(block);
    CodeNode *old = data->d->node;
    CodeNode *previous = previousNode(block);
    if (old)
        CodeDocumentPrivate::unlinkNode(old);
    if (!previous || previous == old)
        previous = &document->m_root;
    CodeNode *node = parser->parse(block.text(), block, old, previous, &document->m_root, syntax);
    data->d->node = node;
    if (old && node != old) {
        // The old node keeps its links to its neighbours: a header that ends finds the
        // lines that followed it through them.
        old->release();
    } else if (old) {
        CodeDocumentPrivate::relinkNode(old);
    }
    return node != old;
}

void CodeDocumentPrivate::unlinkNode(CodeNode *node)
{
    node->unlink();
}

void CodeDocumentPrivate::relinkNode(CodeNode *node)
{
    node->linkBack();
}

void CodeDocumentPrivate::parseLine(const QTextBlock &block, bool highlight)
{
    currentBlock = block;
    lineFormats.fill(0, qMax(block.length() - 1, 0));
    lineFormatTable.resize(1);
    if (!parser)
        return;
    currentData = blockData(block);
    const int row = removeLineMessages(currentData);
    currentData->d->parenthesis.clear();
    currentData->d->parsed = false;
    QTextBlock(block).setUserState(0);

    parseNode(block, highlight ? this : nullptr);
    QTextBlock(block).setUserState(lineState(block, currentData->d->node));
    const QTextBlock above = block.previous();
    currentData->d->stateBefore = above.isValid() ? above.userState() : -1;

    if (!pendingMessages.isEmpty()) {
        CodeBlockData *above = nullptr;
        for (QTextBlock up = block.previous(); up.isValid() && !above; up = up.previous()) {
            CodeBlockData *data = testBlockData(up);
            if (data && !data->d->syntaxMessages.isEmpty())
                above = data;
        }
        beginInsertRows(QModelIndex(), row, row + pendingMessages.size() - 1);
        currentData->d->syntaxMessages.swap(pendingMessages);
        pendingMessages.clear();
        if (above) {
            currentData->d->nextWithMessages = above->d->nextWithMessages;
            above->d->nextWithMessages = currentData;
        } else {
            currentData->d->nextWithMessages = firstMessageBlock;
            firstMessageBlock = currentData;
        }
        endInsertRows();
    }
    updateFoldingIndent(currentData);
    applyFormats(block);
    currentData = nullptr;
}

int CodeDocumentPrivate::removeLineMessages(CodeBlockData *data)
{
    // The row where the line's messages stood: all messages of the lines before it.
    int row = 0;
    CodeBlockData **link = &firstMessageBlock;
    while (*link && *link != data) {
        row += (*link)->d->syntaxMessages.size();
        link = &(*link)->d->nextWithMessages;
    }
    QVector<CodeBlockData::SyntaxMessage> &messages = data->d->syntaxMessages;
    if (messages.isEmpty())
        return row;
    // Announced from row 0 whatever the line's place: views read the list again.
    beginRemoveRows(QModelIndex(), 0, messages.size() - 1);
    for (const CodeBlockData::SyntaxMessage &message : qAsConst(messages)) {
        switch (messageType(message.kind)) {
        case Message::Error: --errorCount; break;
        case Message::Warning: --warningCount; break;
        default: --otherCount; break;
        }
    }
    messages.clear();
    if (*link == data)
        *link = data->d->nextWithMessages;
    data->d->nextWithMessages = nullptr;
    endRemoveRows();
    return row;
}

void CodeDocumentPrivate::updateFoldingIndent(CodeBlockData *data)
{
    const QTextBlock block = data->d->block;
    CodeNode *node = data->d->node;
    CodeNode *previous = node ? node->previous() : previousNode(block);
    if (previous == &document->m_root)
        previous = nullptr;
    QTextBlock from = previous && previous->block().isValid() ? previous->block() : block.previous();
    const CodeBlockData *fromData = from.isValid() ? testBlockData(from) : nullptr;
    int level = previous && fromData ? int(fromData->d->foldingIndent) : 0;
    const CodeBlockData *before = block.previous().isValid() ? testBlockData(block.previous()) : nullptr;
    if (before && isHeader(before->d->node))
        ++level;
    if (isHeader(node)) {
        auto realParent = [this](const CodeNode *of) -> const CodeNode * {
            const CodeNode *up = of->parent();
            while (up && up != &document->m_root && !up->block().isValid())
                up = up->parent();
            return up ? up : &document->m_root;
        };
        const CodeNode *header = node->previous();
        while (header && !(isHeader(header) && header->block().isValid()))
            header = header->previous();
        const CodeNode *parent = realParent(node);
        if (header && header != parent) {
            --level;
            for (const CodeNode *up = realParent(header); up != parent && up != &document->m_root;
                 up = realParent(up))
                --level;
        }
    }
    data->d->foldingIndent = uint(qMax(level, 0));
    // Lines without a node right above take this level: comments in front of a header
    // fold with what stands above them.
    for (QTextBlock up = block.previous(); up.isValid(); up = up.previous()) {
        CodeBlockData *upData = testBlockData(up);
        if (upData && upData->d->node)
            break;
        blockData(up)->d->foldingIndent = data->d->foldingIndent;
    }
}

void CodeDocumentPrivate::applyFormats(const QTextBlock &block)
{
    QVector<QTextLayout::FormatRange> ranges;
    const QTextCharFormat plain;
    const int columns = lineFormats.size();
    for (int column = 0; column < columns;) {
        const QTextCharFormat &format = lineFormatTable.at(lineFormats.at(column));
        // Runs of one index, joined where two indexes hold equal formats.
        quint16 index = lineFormats.at(column);
        int end = column + 1;
        for (; end < columns; ++end) {
            const quint16 next = lineFormats.at(end);
            if (next != index) {
                if (!(lineFormatTable.at(next) == format))
                    break;
                index = next;
            }
        }
        if (format != plain)
            ranges.append(QTextLayout::FormatRange{column, end - column, format});
        column = end;
    }
    QTextLayout *layout = block.layout();
    if (!layout)
        return;
    // Text being composed by an input method stays where it is: ranges behind it move on.
    const int preeditAt = layout->preeditAreaPosition() - block.position();
    const int preeditLength = layout->preeditAreaText().size();
    if (preeditLength > 0 && preeditAt >= 0) {
        for (QTextLayout::FormatRange &range : ranges) {
            if (range.start >= preeditAt)
                range.start += preeditLength;
            else if (range.start + range.length > preeditAt)
                range.length += preeditLength;
        }
    }
    if (ranges.isEmpty() && layout->formats().isEmpty())
        return;
    layout->setFormats(ranges);
    // Repainting is no change of the text: the pass must not hear of it.
    const bool ignoring = ignoreContentsChange;
    ignoreContentsChange = true;
    document->markContentsDirty(block.position(), block.length());
    ignoreContentsChange = ignoring;
}

// ---- the document ---------------------------------------------------------------------

namespace {

CodeDocumentUserData *codecData(const CodeDocument *document)
{
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
    return static_cast<CodeDocumentUserData *>(document->userData(CodeDocumentUserData::UserDataId));
QT_WARNING_POP
}

bool optionOn(const ProjectFile *file, const char *name)
{
    return file->option(QLatin1String(name), true).toBool();
}

} // namespace

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
    setDocumentLayout(new QPlainTextDocumentLayout(this));
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

QAbstractItemModel *CodeDocument::model()
{
    return &m_root;
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

QString CodeDocument::watchedFileName() const
{
    return d->watchedName;
}

void CodeDocument::watchLoaded(Archive &archive, const QString &name, bool isCopy)
{
    fileLoaded(archive, name, isCopy);
    if (!isCopy && &archive == &FileSystemArchive::instance())
        d->watchedName = name;
}

void CodeDocument::watchSaved(Archive &archive, const QString &name, bool isCopy)
{
    fileSaved(archive, name, isCopy);
    if (!isCopy && &archive == &FileSystemArchive::instance())
        d->watchedName = name;
}

int CodeDocument::codecId() const
{
    return codecData(this)->codec;
}

void CodeDocument::setCodecId(int codec)
{
    d->waitForSave();
    codecData(this)->codec = codec;
}

void CodeDocument::setCodec(const char *name)
{
    setCodecId(TextCodecs::index(name));
}

QString CodeDocument::codecName() const
{
    return TextCodecs::name(codecId());
}

bool CodeDocument::fromFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    watchLoaded(archive, name, flags & Foreign);
    return load(archive, name, -1, flags, stats);
}

void CodeDocument::reloadFile()
{
    if (hasArchive() && !fileName().isEmpty())
        load(archive(), fileName(), codecId(), 0, nullptr);
}

void CodeDocument::setText(const QString &text)
{
    const QString expanded = option(QStringLiteral("open_tabToSpace"), false).toBool() ? expandTabs(text) : text;
    d->freezeModel();
    ++d->notifyLock;
    setPlainText(expanded);
    if (--d->notifyLock == 0)
        d->notifyUpdate();
    d->modelEnabled = optionOn(this, "modelCode");
    d->unfreezeModel();
}

bool CodeDocument::load(Archive &archive, const QString &name, int codec, uint flags, JobStats *stats)
{
    QIODevice *device = archive.openFile(name, QIODevice::ReadOnly);
    if (!device)
        return false;
    d->waitForSave();
    const QByteArray bytes = device->readAll();
    const QString text = TextCodecs::stringFromData(bytes, &codec);
    codecData(this)->codec = codec;
    setText(text);
    if (!(flags & Foreign)) {
        setFileName(name);
        d->takeRevision();
    }
    setModified(flags & Foreign);
    archive.closeFile(device);
    ProjectFile::fromFile(archive, name, flags, stats);
    return true;
}

void CodeDocument::fromString(const QString &text)
{
    d->waitForSave();
    watchLoaded(FileSystemArchive::instance(), QString(), false);
    setText(text);
    setFileName(QString());
    d->takeRevision();
    setModified(false);
    codecData(this)->codec = TextCodecs::index("UTF-8");
}

bool CodeDocument::toFile(Archive &archive, const QString &name, uint flags, JobStats *stats)
{
    if (!archive.isWritable(name))
        return false;
    QIODevice *device = archive.openFile(name, QIODevice::WriteOnly);
    if (!device)
        return false;
    d->waitForSave();
    if (stats) {
        stats->setMaximum(1);
        stats->setValue(0);
    }
    d->saveInProgress = true;
    watchSaved(archive, name, flags & Foreign);
    if (!(flags & Foreign))
        setFileName(QString());
    const bool spacesToTabs = option(QStringLiteral("save_spaceToTab"), false).toBool();
    const QString text = toPlainText();

    if (!(flags & Asynchronous)) {
        device->write(TextCodecs::stringToData(fileText(text, spacesToTabs), codecId()));
        finishSave(&archive, device, name, flags, stats);
        return true;
    }
    const uint packed = flags | (spacesToTabs ? Internal : 0);
    CodeDocumentUserData *data = codecData(this);
    CodeDocumentPrivate *signaller = d;
    Archive *target = &archive;
    d->saveFuture = QtConcurrent::run([signaller, data, text, target, device, name, packed, stats] {
        const bool fold = packed & Internal;
        device->write(TextCodecs::stringToData(fileText(text, fold), data->codec));
        emit signaller->saveFinished(target, device, name, packed & ~uint(Internal), stats);
    });
    return true;
}

void CodeDocument::finishSave(Archive *archive, QIODevice *device, const QString &name, uint flags,
                              JobStats *stats)
{
    if (!(flags & Foreign)) {
        setFileName(name);
        d->advanceRevision();
    }
    archive->closeFile(device);
    ProjectFile::toFile(*archive, name, flags, stats);
    if (stats)
        stats->setValue(1);
    d->saveInProgress = false;
}

void CodeDocument::reset()
{
    d->waitForSave();
    watchLoaded(FileSystemArchive::instance(), QString(), false);
    d->freezeModel();
    setFileName(QString());
    QTextDocument::clear();
    d->takeRevision();
    setModified(false);
    // A document that was not modified wouldn't say so by itself.
    emit modificationChanged(false);
    codecData(this)->codec = TextCodecs::index("UTF-8");
    d->modelEnabled = optionOn(this, "modelCode");
    d->unfreezeModel();
}

void CodeDocument::reparse()
{
    if (d->parsing) {
        d->reparsePending = true;
        return;
    }
    d->freezeModel();
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        if (CodeBlockData *data = CodeDocumentPrivate::testBlockData(block)) {
            if (CodeNode *node = data->d->node) {
                data->d->node = nullptr;
                node->release();
            }
        }
    }
    ++d->notifyLock;
    d->wholeDocumentPass();
    if (--d->notifyLock == 0)
        d->notifyUpdate();
    d->modelEnabled = optionOn(this, "modelCode");
    d->unfreezeModel();
}

void CodeDocument::rehighlight()
{
    if (d->parsing) {
        d->rehighlightPending = true;
        return;
    }
    d->freezeModel();
    d->wholeDocumentPass();
    d->unfreezeModel();
}

void CodeDocument::beginChange()
{
    if (d->changeDepth++ == 0)
        d->cursor.beginEditBlock();
}

void CodeDocument::endChange()
{
    if (d->changeDepth == 0)
        return;
    if (--d->changeDepth == 0)
        d->cursor.endEditBlock();
}

void CodeDocument::undo()
{
    QTextDocument::undo();
}

void CodeDocument::redo()
{
    QTextDocument::redo();
}

bool CodeDocument::isCodeBeingChanged() const
{
    return d->changeDepth > 0;
}

QTextCursor CodeDocument::cursor() const
{
    return d->cursor;
}

void CodeDocument::setCursor(const QTextCursor &cursor)
{
    d->cursor = cursor;
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

namespace {

uint nodeFileKey(int type, uint subType)
{
    return subType << 12 | uint(type);
}

uint nodeFileKey(const CodeNode *node)
{
    const uint subType = node->type() == CodeNode::Group ? static_cast<const GroupCode *>(node)->subType() : 0;
    return nodeFileKey(node->type(), subType);
}

} // namespace

QList<CodeNodeFile *> CodeDocumentPrivate::distinctNodeFiles() const
{
    QList<CodeNodeFile *> files;
    for (CodeNodeFile *file : nodeFiles) {
        if (!files.contains(file))
            files.append(file);
    }
    return files;
}

void CodeDocument::registerNodeFile(CodeNodeFile *file, int type, uint subType)
{
    const uint key = nodeFileKey(type, subType);
    d->nodeFiles.insert(key, file);
    addRef();
    uint index = 0;
    for (CodeNode *node = m_root.next(); node; node = node->next()) {
        if (nodeFileKey(node) == key)
            file->insertChild(node, index++);
    }
}

CodeNodeFile *CodeDocument::nodeFile(int type, uint subType) const
{
    return d->nodeFiles.value(nodeFileKey(type, subType));
}

bool CodeDocument::unregisterNodeFile(CodeNodeFile *file)
{
    bool had = false;
    for (auto it = d->nodeFiles.begin(); it != d->nodeFiles.end();) {
        if (it.value() == file) {
            it = d->nodeFiles.erase(it);
            had = true;
        } else {
            ++it;
        }
    }
    return had;
}

void CodeDocument::free()
{
    delete this;
}

QIcon CodeDocument::nodeIcon(const CodeNode *node) const
{
    Interface *host = Interface::instance();
    const auto *value = node && node->type() == CodeNode::Value ? dynamic_cast<const ValueCode *>(node) : nullptr;
    if (!host || !value)
        return QIcon();
    switch (value->valueType()) {
    case ValueCode::String: return host->icon(QStringLiteral("code_string"));
    case ValueCode::Bool: return host->icon(QStringLiteral("code_bool"));
    case ValueCode::File: return host->icon(QStringLiteral("code_file"));
    case ValueCode::Date: return host->icon(QStringLiteral("code_date"));
    case ValueCode::Keyword:
    case ValueCode::KeywordVector: return host->icon(QStringLiteral("code_keyword"));
    case ValueCode::Float:
    case ValueCode::FloatVec2:
    case ValueCode::FloatVec3:
    case ValueCode::FloatVec4:
    case ValueCode::FloatVector: return host->icon(QStringLiteral("code_float"));
    case ValueCode::Int:
    case ValueCode::IntVec2:
    case ValueCode::IntVec3:
    case ValueCode::IntVec4: return host->icon(QStringLiteral("code_int"));
    default: return QIcon();
    }
}

void CodeDocument::codeUpdated()
{
}

void CodeDocument::insertChild(CodeNode *node, uint row)
{
    const uint key = nodeFileKey(node);
    CodeNodeFile *file = d->nodeFiles.value(key);
    if (!file)
        return;
    // Its place in the file: the root rows before it that hold nodes of its kind.
    uint index = 0;
    for (uint i = 0; i < row && i < m_root.childCount(); ++i) {
        const CodeNode *before = m_root.childAt(i);
        if (before != node && nodeFileKey(before) == key)
            ++index;
    }
    file->insertChild(node, index);
}

void CodeDocument::removeChild(CodeNode *node)
{
    // A node leaves the root while it ends, when only its type can still be read: every
    // file of its type hears of it, and only the one that holds it acts.
    for (auto it = d->nodeFiles.cbegin(); it != d->nodeFiles.cend(); ++it) {
        if ((it.key() & 0xFFF) == uint(node->type()))
            it.value()->removeChild(node);
    }
}

void CodeDocument::childChanged(CodeNode *node)
{
    // A change deep in the tree belongs to the file of its top-level node.
    const CodeNode *top = node;
    while (top->parent() && top->parent() != &m_root)
        top = top->parent();
    if (CodeNodeFile *file = d->nodeFiles.value(nodeFileKey(top)))
        file->childChanged(node);
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

RootCode *CodeDocument::root()
{
    return &m_root;
}

CodeNode *CodeDocument::nodeFromIndex(const QModelIndex &index) const
{
    return RootCode::nodeFromIndex(index);
}

CodeNode *CodeDocument::nodeInBlock(const QTextBlock &block) const
{
    const CodeBlockData *data = CodeDocumentPrivate::testBlockData(block);
    return data ? data->d->node : nullptr;
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

bool CodeDocument::hasSyntaxHighlight() const
{
    return optionOn(this, "highlightCode");
}

void CodeDocument::setSyntaxHighlight(bool enabled)
{
    if (enabled == hasSyntaxHighlight())
        return;
    setOption(QStringLiteral("highlightCode"), enabled, false, false);
    reparse();
}

void CodeDocument::setSyntaxFormat(CodeParserSyntax::TokenType type, const QTextCharFormat &format)
{
    CodeParserSyntax::setFormat(type, format);
}

bool CodeDocument::addMark(CodeMark *mark, int line)
{
    if (line < 1)
        return false;
    const QTextBlock block = findBlockByNumber(line - 1);
    if (!block.isValid())
        return false;
    d->blockData(block)->d->marks.append(mark);
    mark->setLine(line, block);
    documentLayout()->update();
    return true;
}

void CodeDocument::removeMark(CodeMark *mark)
{
    bool removed = false;
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        if (CodeBlockData *data = CodeDocumentPrivate::testBlockData(block))
            removed |= data->d->marks.removeAll(mark) > 0;
    }
    if (removed)
        documentLayout()->update();
}

void CodeDocument::updateMark(CodeMark *mark)
{
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        const CodeBlockData *data = CodeDocumentPrivate::testBlockData(block);
        if (data && data->d->marks.contains(mark)) {
            mark->setLine(block.blockNumber() + 1, block);
            documentLayout()->update();
            return;
        }
    }
}

bool CodeDocument::hasMark(CodeMark *mark) const
{
    for (QTextBlock block = begin(); block.isValid(); block = block.next()) {
        const CodeBlockData *data = CodeDocumentPrivate::testBlockData(block);
        if (data && data->d->marks.contains(mark))
            return true;
    }
    return false;
}

QList<CodeMark *> CodeDocument::marksAt(int line) const
{
    if (line < 1)
        return {};
    const CodeBlockData *data = CodeDocumentPrivate::testBlockData(findBlockByNumber(line - 1));
    return data ? data->d->marks : QList<CodeMark *>();
}

// ---- text edits for nodes --------------------------------------------------------------

void CodeDocument::insertCode(QTextCursor &cursor, const QString &text)
{
    const int start = cursor.selectionStart();
    const QTextBlock after = findBlock(cursor.selectionEnd()).next();
    cursor.insertText(text);
    // Inside a change bracket the parse pass comes only at its end; nodes edited in
    // between need the tree current now, without any painting.
    if (d->changeDepth == 0 || !d->parser || !optionOn(this, "parseCode"))
        return;
    for (QTextBlock block = findBlock(start); block.isValid() && block != after; block = block.next())
        d->unseenNodeChange |= d->parseNode(block, nullptr);
}

void CodeDocument::insert(const QString &text)
{
    d->cursor.movePosition(QTextCursor::End);
    insertCode(d->cursor, text);
}

void CodeDocument::insertOnCursor(const QString &text, QTextCursor cursor)
{
    insertCode(cursor, text);
}

void CodeDocument::insertAfter(CodeNode *node, const QString &text, bool nodeOnly)
{
    QTextCursor cursor(this);
    if (!node) {
        cursor.movePosition(QTextCursor::End);
        insertCode(cursor, text + QLatin1Char('\n'));
        return;
    }
    const QTextBlock block = nodeOnly ? node->block() : findBlockByNumber(node->lastLine());
    if (block.isValid())
        cursor.setPosition(block.position() + block.length() - 1);
    else
        cursor.movePosition(QTextCursor::End);
    insertCode(cursor, QLatin1Char('\n') + text);
}

void CodeDocument::insertBefore(CodeNode *node, const QString &text, bool nodeOnly)
{
    QTextCursor cursor(this);
    if (!node) {
        cursor.movePosition(QTextCursor::Start);
        insertCode(cursor, text + QLatin1Char('\n'));
        return;
    }
    const QTextBlock block = nodeOnly ? node->block() : findBlockByNumber(node->firstLine());
    const QTextBlock before = block.previous();
    if (before.isValid()) {
        cursor.setPosition(before.position() + before.length() - 1);
        insertCode(cursor, QLatin1Char('\n') + text);
    } else {
        cursor.setPosition(block.isValid() ? block.position() : 0);
        insertCode(cursor, text + QLatin1Char('\n'));
    }
}

// ---- search and replace -------------------------------------------------------------

namespace {

ProjectFile::SearchResult resultOf(const QTextDocument *document, const QRegularExpressionMatch &match)
{
    ProjectFile::SearchResult result;
    const QTextBlock block = document->findBlock(match.capturedStart(0));
    result.item = uint(block.blockNumber());
    result.start = match.capturedStart(0) - block.position();
    result.length = match.capturedLength(0);
    // The line, and the lines the match runs on into, as far as it covers them.
    QString text = block.text();
    int covered = result.start + result.length - block.length();
    for (QTextBlock next = block.next(); covered > 0 && next.isValid(); next = next.next()) {
        text += QLatin1Char('\n') + next.text().left(covered);
        covered -= next.length();
    }
    result.text = text;
    result.captures = match.capturedTexts().mid(1);
    return result;
}

} // namespace

QList<ProjectFile::SearchResult> CodeDocument::search(RegExp &expression, uint flags)
{
    QList<SearchResult> results;
    const QString text = toString();
    if (flags & All) {
        auto matches = expression.globalMatch(text);
        while (matches.hasNext())
            results.append(resultOf(this, matches.next()));
        return results;
    }
    const bool retry = (flags & Wrap) && !(flags & FromEnd);
    if (!(flags & Backwards)) {
        QRegularExpressionMatch match = expression.match(text, (flags & FromEnd) ? 0 : d->cursor.position());
        if (!match.hasMatch() && retry)
            match = expression.match(text, 0);
        if (match.hasMatch())
            results.append(resultOf(this, match));
        return results;
    }
    // Backwards: an offset counted from the end of the text (-1 from the edge, else from
    // the cursor through the end of the last block), and the last match that starts
    // below the text's length plus that offset less one: from the cursor, that is
    // three characters before it.
    auto lastBefore = [&](int fromEnd) {
        const int limit = text.size() + fromEnd - 1;
        QRegularExpressionMatch found;
        for (int offset = 0; offset <= text.size();) {
            const QRegularExpressionMatch match = expression.match(text, offset);
            if (!match.hasMatch() || match.capturedStart(0) >= limit)
                break;
            found = match;
            offset = match.capturedStart(0) + 1;
        }
        return found;
    };
    const QTextBlock last = lastBlock();
    const int fromCursor = d->cursor.selectionStart() - 1 - last.position() - last.length();
    QRegularExpressionMatch match = lastBefore((flags & FromEnd) ? -1 : fromCursor);
    if (!match.hasMatch() && retry)
        match = lastBefore(-1);
    if (match.hasMatch())
        results.append(resultOf(this, match));
    return results;
}

void CodeDocument::replace(QList<SearchResult> &results, const QString &replacement)
{
    if (results.isEmpty())
        return;
    const bool bracket = results.size() > 1;
    if (bracket)
        beginChange();
    // From the last to the first, so that earlier positions stay where they were.
    for (int i = results.size() - 1; i >= 0; --i) {
        const SearchResult &result = results.at(i);
        QString text = replacement;
        for (const QString &capture : result.captures)
            text = text.arg(capture);
        const QTextBlock block = findBlockByNumber(int(result.item));
        if (!block.isValid())
            continue;
        QTextCursor cursor(this);
        cursor.setPosition(block.position() + result.start);
        cursor.setPosition(block.position() + result.start + result.length, QTextCursor::KeepAnchor);
        cursor.insertText(text);
    }
    if (bracket)
        endChange();
}

} // namespace Ovra
