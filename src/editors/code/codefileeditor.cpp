#include "editors/code/codefileeditor.h"

#include "code/codedocument.h"
#include "code/codenodefile.h"
#include "code/parentcode.h"
#include "editors/code/codeeditor.h"
#include "editors/code/codeworkspace.h"
#include "foundation/interface.h"
#include "foundation/messages.h"
#include "project/regexp.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QPointer>
#include <QTextBlock>
#include <QTreeView>

namespace Ovra {

class CodeFileEditorPrivate : public QObject
{
public:
    CodeFileEditorPrivate(CodeFileEditor *editor, CodeWorkspace *workspace, const char *name);

    void requestTree();
    void buildTreeActions();
    CodeNode *currentNode() const;
    bool canEdit() const;
    void copyNode();
    void pasteNode(bool after);
    void removeNode();

    CodeFileEditor *q;
    CodeWorkspace *workspace;
    const char *name;
    QPointer<QTreeView> tree;
    bool ownTree = false;
    bool following = false;
    QAction *copyAction = nullptr;
    QAction *pasteAfterAction = nullptr;
    QAction *pasteBeforeAction = nullptr;
    QAction *removeAction = nullptr;
    QMetaObject::Connection lineConnection;
    QMetaObject::Connection cursorConnection;
    QMetaObject::Connection modifiedConnection;
};

CodeFileEditorPrivate::CodeFileEditorPrivate(CodeFileEditor *editor, CodeWorkspace *workspace, const char *name)
    : QObject(editor)
    , q(editor)
    , workspace(workspace)
    , name(name)
{
}

// The host makes the tree control and reports the item the user picks; a host that makes
// none gets a tree of ours, beside the text in the workspace.
void CodeFileEditorPrivate::requestTree()
{
    Interface *host = Interface::instance();
    QWidget *control = nullptr;
    if (host) {
        ItemSelectorControlSpec request{};
        request.kind = ItemSelectorControlSpec::Kind;
        request.size = int(sizeof(ItemSelectorControlSpec));
        request.receiver = q;
        request.slot = "1selectedItem(QModelIndex)";
        control = host->addControl(QString::fromLatin1(name) + QStringLiteral("_tree"), request);
    }
    tree = qobject_cast<QTreeView *>(control);
    if (!tree && control)
        tree = control->findChild<QTreeView *>();
    if (!tree) {
        ownTree = true;
        tree = new QTreeView(workspace);
        tree->setObjectName(QString::fromLatin1(name) + QStringLiteral("_tree"));
        tree->header()->hide();
        tree->setUniformRowHeights(true);
        connect(tree, &QTreeView::activated, q, &CodeFileEditor::selectedItem);
        connect(tree, &QTreeView::clicked, q, &CodeFileEditor::selectedItem);
        workspace->addSidePanel(tree);
    }
}

void CodeFileEditorPrivate::buildTreeActions()
{
    copyAction = new QAction(this);
    copyAction->setObjectName(QStringLiteral("copy"));
    pasteAfterAction = new QAction(this);
    pasteAfterAction->setObjectName(QStringLiteral("paste_after"));
    pasteBeforeAction = new QAction(this);
    pasteBeforeAction->setObjectName(QStringLiteral("paste_before"));
    removeAction = new QAction(this);
    removeAction->setObjectName(QStringLiteral("remove"));
    connect(copyAction, &QAction::triggered, this, &CodeFileEditorPrivate::copyNode);
    connect(pasteAfterAction, &QAction::triggered, this, [this] { pasteNode(true); });
    connect(pasteBeforeAction, &QAction::triggered, this, [this] { pasteNode(false); });
    connect(removeAction, &QAction::triggered, this, &CodeFileEditorPrivate::removeNode);
    if (tree) {
        tree->setContextMenuPolicy(Qt::ActionsContextMenu);
        tree->addActions({copyAction, pasteAfterAction, pasteBeforeAction, removeAction});
    }
}

CodeNode *CodeFileEditorPrivate::currentNode() const
{
    CodeDocument *document = q->document();
    if (!document || !tree || tree->model() != document->model())
        return nullptr;
    CodeNode *node = document->nodeFromIndex(tree->currentIndex());
    return CodeNode::isValid(node) ? node : nullptr;
}

bool CodeFileEditorPrivate::canEdit() const
{
    return q->document() && !workspace->editor()->isReadOnly();
}

// Down from the root, each level's children from the last to the first: the node on the
// line, or the nearest node before it, inside the nearest parent before it.
void CodeFileEditorPrivate::copyNode()
{
    if (CodeNode *node = currentNode())
        QApplication::clipboard()->setText(node->code());
}

void CodeFileEditorPrivate::pasteNode(bool after)
{
    CodeNode *node = currentNode();
    QString text = QApplication::clipboard()->text();
    if (!node || !canEdit() || text.isEmpty())
        return;
    // The document puts its own line break between the nodes' lines and the new text.
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    if (after)
        q->document()->insertAfter(node, text, false);
    else
        q->document()->insertBefore(node, text, false);
}

void CodeFileEditorPrivate::removeNode()
{
    CodeNode *node = currentNode();
    if (node && canEdit())
        node->remove(true);
}

// ---- the editor ------------------------------------------------------------------------

CodeFileEditor::CodeFileEditor(CodeWorkspace *workspace, const char *name)
    : d(new CodeFileEditorPrivate(this, workspace, name))
{
    d->requestTree();
    d->buildTreeActions();
    retranslate();
}

CodeFileEditor::~CodeFileEditor()
{
    if (d->ownTree)
        delete d->tree;
}

const char *CodeFileEditor::name() const
{
    return d->name;
}

QWidget *CodeFileEditor::widget()
{
    return d->workspace;
}

CodeWorkspace *CodeFileEditor::workspace() const
{
    return d->workspace;
}

QTreeView *CodeFileEditor::tree() const
{
    return d->tree;
}

CodeDocument *CodeFileEditor::document() const
{
    if (auto *document = dynamic_cast<CodeDocument *>(m_currentFile))
        return document;
    if (auto *nodes = dynamic_cast<CodeNodeFile *>(m_currentFile))
        return nodes->document();
    return nullptr;
}

QList<QWidget *> CodeFileEditor::areas() const
{
    QList<QWidget *> widgets{d->workspace->editor()};
    if (d->tree)
        widgets << d->tree;
    return widgets;
}

void CodeFileEditor::setCodeModel(QAbstractItemModel *model)
{
    if (d->tree)
        d->tree->setModel(model);
}

void CodeFileEditor::activate()
{
    FileEditor::activate();
    CodeEditor *editor = d->workspace->editor();
    disconnect(d->lineConnection);
    disconnect(d->cursorConnection);
    d->lineConnection = connect(editor, &CodeEditor::currentLineChanged, this, &CodeFileEditor::currLineChanged);
    d->cursorConnection = connect(editor, &CodeEditor::cursorChanged, this, &CodeFileEditor::cursorChanged);
    d->workspace->setDocument(document());
    d->workspace->showSidePanel(d->ownTree ? d->tree.data() : nullptr);
    if (m_interface)
        m_interface->setWorkspace(d->workspace);
    const QTextCursor cursor = editor->textCursor();
    cursorChanged(QPoint(cursor.positionInBlock(), cursor.blockNumber()));
}

void CodeFileEditor::deactivate()
{
    disconnect(d->lineConnection);
    disconnect(d->cursorConnection);
    FileEditor::deactivate();
}

void CodeFileEditor::retranslate()
{
    d->copyAction->setText(tr("Copy"));
    d->pasteAfterAction->setText(tr("Paste after"));
    d->pasteBeforeAction->setText(tr("Paste before"));
    d->removeAction->setText(tr("Remove"));
    d->workspace->retranslate();
}

void CodeFileEditor::engineSwitched(bool)
{
    d->workspace->engineSwitched();
}

void CodeFileEditor::reconfig()
{
    d->workspace->reconfig();
}

// The workspace keeps what it shows in the host's settings as it changes.
void CodeFileEditor::saveState()
{
}

void CodeFileEditor::restoreState()
{
}

void CodeFileEditor::setCurrentFile(ProjectFile *file)
{
    disconnect(d->modifiedConnection);
    FileEditor::setCurrentFile(file);
    CodeDocument *current = document();
    setCodeModel(current ? current->model() : nullptr);
    if (current)
        d->modifiedConnection = connect(current, &QTextDocument::modificationChanged, this, &FileEditor::modified);
    if (isActive())
        d->workspace->setDocument(current);
}

void CodeFileEditor::navigateTo(uint line, uint column)
{
    switchToThis();
    if (document() && d->workspace->document() == document())
        d->workspace->goTo(int(line), int(column));
}

void CodeFileEditor::cut()
{
    if (d->canEdit())
        d->workspace->editor()->cut();
}

void CodeFileEditor::copy()
{
    if (document())
        d->workspace->editor()->copy();
}

void CodeFileEditor::paste()
{
    if (d->canEdit())
        d->workspace->editor()->paste();
}

bool CodeFileEditor::find(RegExp &expression, uint flags)
{
    CodeDocument *current = document();
    if (!current || !expression.isValid())
        return false;
    CodeEditor *editor = d->workspace->editor();
    current->setCursor(editor->textCursor());
    const QList<ProjectFile::SearchResult> results = current->search(expression, flags);
    if (results.isEmpty())
        return false;
    const ProjectFile::SearchResult &hit = results.first();
    const QTextBlock block = current->findBlockByNumber(int(hit.item));
    if (!block.isValid())
        return false;
    QTextCursor cursor(current);
    cursor.setPosition(block.position() + hit.start);
    cursor.setPosition(qMin(block.position() + hit.start + hit.length, current->characterCount() - 1),
                       QTextCursor::KeepAnchor);
    editor->setTextCursor(cursor);
    editor->ensureCursorVisible();
    return true;
}

int CodeFileEditor::replace(RegExp &expression, const QString &text, uint flags)
{
    CodeDocument *current = document();
    if (!d->canEdit() || !expression.isValid())
        return 0;
    QList<ProjectFile::SearchResult> results;
    if (flags & ProjectFile::All) {
        results = current->search(expression, flags);
    } else {
        // The selection is replaced only when it is a whole match, as find left it.
        const QTextCursor cursor = d->workspace->editor()->textCursor();
        const QString selected = cursor.selectedText();
        const QRegularExpressionMatch match = expression.match(selected);
        if (cursor.hasSelection() && match.hasMatch() && match.capturedStart() == 0
            && match.capturedLength() == selected.size()) {
            const QTextBlock block = current->findBlock(cursor.selectionStart());
            ProjectFile::SearchResult hit;
            hit.item = uint(block.blockNumber());
            hit.start = cursor.selectionStart() - block.position();
            hit.length = selected.size();
            hit.text = block.text();
            hit.captures = match.capturedTexts().mid(1);
            results << hit;
        }
    }
    const int count = results.size();
    current->replace(results, text);
    if (!(flags & ProjectFile::All))
        find(expression, flags);
    return count;
}

void CodeFileEditor::saveAsUTF8()
{
    CodeDocument *current = document();
    if (!current || !current->canSave())
        return;
    current->setCodec("UTF-8");
    // A new encoding is a change of the file even when the text is the same.
    current->setModified(true);
    save();
}

void CodeFileEditor::selectedItem(const QModelIndex &index)
{
    CodeDocument *current = document();
    if (!current || d->following)
        return;
    const int line = current->lineNo(index);
    if (line >= 0 && d->workspace->document() == current)
        d->workspace->goTo(line, 0);
}

void CodeFileEditor::currLineChanged(int line)
{
    if (!d->tree || !document() || !m_interface
        || !m_interface->option(QStringLiteral("auto_expand_tree"), false).toBool())
        return;
    const QModelIndex index = document()->indexInLine(line);
    if (!index.isValid())
        return;
    // Following the cursor must not move the cursor back through a host's tree.
    d->following = true;
    d->tree->setCurrentIndex(index);
    d->tree->scrollTo(index);
    d->following = false;
}

void CodeFileEditor::cursorChanged(QPoint position)
{
    CodeDocument *current = document();
    if (!m_interface || !current)
        return;
    const Messages *messages = qobject_cast<Messages *>(current->fileMessages());
    m_interface->setStatusText(0, tr("Line: %1, Column: %2, Line count: %3")
                                      .arg(position.y() + 1)
                                      .arg(position.x() + 1)
                                      .arg(current->blockCount()));
    m_interface->setStatusText(1, tr("Syntax error count: %1").arg(messages ? messages->count(Message::Error) : 0));
}

} // namespace Ovra
