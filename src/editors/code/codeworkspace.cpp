#include "editors/code/codeworkspace.h"
#include "editors/code/codeworkspace_p.h"

#include "code/codedocument.h"
#include "editors/code/codeeditor.h"
#include "editors/code/gotodlg.h"
#include "editors/code/snipdlg.h"
#include "editors/code/snippetmanager.h"
#include "engine/engine.h"
#include "foundation/interface.h"
#include "foundation/messages.h"
#include "foundation/prompt.h"
#include "foundation/textcodecs.h"

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QSplitter>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QTextBlock>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace Ovra {
namespace {

// The code actions by the name the host keeps their icon and shortcut under, with the
// number of their text in the library's string table.
struct ActionEntry
{
    const char *name;
    uint text;
    const char *slot;
};

const ActionEntry codeActions[] = {
    {"code_snippet_insert", 14, SLOT(snipInsert())},
    {"code_snippet_new", 15, SLOT(snipNew())},
    {"code_snippet_edit", 16, SLOT(snipEdit())},
    {"code_goto", 18, SLOT(goToLine())},
    {"code_prev_error", 19, SLOT(prevError())},
    {"code_next_error", 20, SLOT(nextError())},
    {"code_prev_deprecation", 21, SLOT(prevDepr())},
    {"code_next_deprecation", 22, SLOT(nextDepr())},
    {"code_comment", 23, SLOT(comment())},
    {"code_fold_all", 24, SLOT(foldAll())},
    {"code_unfold_all", 25, SLOT(unfoldAll())},
    {"code_auto_indent", 26, SLOT(autoIndent())},
    {"code_auto_format", 27, SLOT(autoFormat())},
};
const uint NoDocumentText = 1;
const uint ReloadTitle = 2;
const uint ReloadText = 3;
const uint CodeBarText = 4;
const uint EncodingText = 28;

CodeBlockData *dataOf(const QTextBlock &block)
{
    return dynamic_cast<CodeBlockData *>(block.userData());
}

// An action made here when the host makes none, so that the view works without one.
QAction *ownAction(QObject *parent, const ActionEntry &entry, bool checkable, bool checked)
{
    Translator *strings = ovraTranslator();
    auto *action = new QAction(strings->text(entry.text), parent);
    action->setObjectName(QString::fromLatin1(entry.name));
    action->setToolTip(strings->tip(entry.text));
    action->setCheckable(checkable);
    action->setChecked(checked);
    if (checkable)
        QObject::connect(action, SIGNAL(toggled(bool)), parent, entry.slot);
    else
        QObject::connect(action, SIGNAL(triggered()), parent, entry.slot);
    return action;
}

} // namespace

CodeWorkspacePrivate::CodeWorkspacePrivate(CodeWorkspace *workspace)
    : QObject(workspace)
    , q(workspace)
{
}

void CodeWorkspacePrivate::buildWidgets()
{
    editor = new CodeEditor(q);
    editor->setObjectName(QStringLiteral("code_editor"));
    toolBar = new QToolBar(q);
    toolBar->setObjectName(QStringLiteral("code_toolbar"));
    messages = new QComboBox(q);
    messages->setObjectName(QStringLiteral("code_messages"));
    messages->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    noMessages = new QStandardItemModel(this);
    messages->setModel(noMessages);
    snippets = new SnippetManager(this);
    snippetBox = new QComboBox(q);
    snippetBox->setObjectName(QStringLiteral("code_snippets"));
    snippetBox->setModel(snippets);
    snippetBox->setSizeAdjustPolicy(QComboBox::AdjustToContents);

    codePage = new QWidget(q);
    auto *codeLayout = new QVBoxLayout(codePage);
    codeLayout->setContentsMargins(0, 0, 0, 0);
    codeLayout->setSpacing(0);
    codeLayout->addWidget(toolBar);
    codeLayout->addWidget(editor, 1);
    codeLayout->addWidget(messages);
    noDocument = new QLabel(q);
    noDocument->setObjectName(QStringLiteral("code_no_document"));
    noDocument->setAlignment(Qt::AlignCenter);
    pages = new QStackedWidget(q);
    pages->addWidget(codePage);
    pages->addWidget(noDocument);
    pages->setCurrentWidget(noDocument);
    side = new QStackedWidget(q);
    side->hide();

    splitter = new QSplitter(Qt::Horizontal, q);
    splitter->addWidget(pages);
    splitter->addWidget(side);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    splitter->installEventFilter(this);
    connect(splitter, &QSplitter::splitterMoved, this, [this] { userSized = true; });
    auto *layout = new QVBoxLayout(q);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);
    connect(messages, QOverload<int>::of(&QComboBox::activated), this, &CodeWorkspacePrivate::messageChosen);
}

void CodeWorkspacePrivate::buildActions()
{
    Interface *host = q->host();
    const ActionScope scope{"code", 0};
    const bool shown = host ? host->option(QStringLiteral("show_code_bar"), true).toBool() : true;
    const ActionEntry bar{"view_code_bar", CodeBarText, SLOT(showTextBar(bool))};
    QAction *barAction = host ? host->createAction(scope, QString::fromLatin1(bar.name), ovraTranslator(), bar.text,
                                                   true, q, bar.slot, nullptr, shown)
                              : nullptr;
    actions << (barAction ? barAction : ownAction(q, bar, true, shown));
    for (const ActionEntry &entry : codeActions) {
        QAction *action = host ? host->createAction(scope, QString::fromLatin1(entry.name), ovraTranslator(),
                                                    entry.text, false, q, entry.slot, nullptr, false)
                               : nullptr;
        actions << (action ? action : ownAction(q, entry, false, false));
        toolBar->addAction(actions.last());
        if (qstrcmp(entry.name, "code_snippet_edit") == 0)
            toolBar->addWidget(snippetBox);
        if (qstrcmp(entry.name, "code_snippet_edit") == 0 || qstrcmp(entry.name, "code_next_deprecation") == 0
            || qstrcmp(entry.name, "code_unfold_all") == 0)
            toolBar->addSeparator();
    }
    buildEncodingMenu();
    toolBar->setVisible(shown);
}

void CodeWorkspacePrivate::buildEncodingMenu()
{
    encodingMenu = new QMenu(q);
    encodingMenu->setObjectName(QStringLiteral("code_encoding"));
    encodings = new QActionGroup(this);
    encodings->setExclusive(true);
    // Two hundred codecs make the menu the costliest part of a new workspace: it is
    // filled when it first opens.
    connect(encodingMenu, &QMenu::aboutToShow, this, &CodeWorkspacePrivate::fillEncodingMenu);
    connect(encodingMenu, &QMenu::triggered, this, &CodeWorkspacePrivate::encodingChosen);
    encodingButton = new QToolButton(q);
    encodingButton->setMenu(encodingMenu);
    encodingButton->setPopupMode(QToolButton::InstantPopup);
    encodingButton->setToolButtonStyle(Qt::ToolButtonTextOnly);
    toolBar->addSeparator();
    toolBar->addWidget(encodingButton);
    updateEncodingTitle();
}

void CodeWorkspacePrivate::fillEncodingMenu()
{
    if (!encodingMenu->isEmpty())
        return;
    for (int i = 0; i < TextCodecs::count(); ++i) {
        QAction *action = encodingMenu->addAction(TextCodecs::name(i));
        action->setObjectName(QString::number(i));
        action->setCheckable(true);
        encodings->addAction(action);
    }
    updateEncodingTitle();
}

void CodeWorkspacePrivate::updateEncodingTitle()
{
    Translator *strings = ovraTranslator();
    QString title = strings->text(EncodingText);
    if (document) {
        const int codec = document->codecId();
        title += QStringLiteral(": %1").arg(TextCodecs::name(codec));
        if (QAction *action = encodingMenu->findChild<QAction *>(QString::number(codec)))
            action->setChecked(true);
    }
    encodingMenu->setTitle(title);
    encodingMenu->setToolTip(strings->tip(EncodingText));
    encodingButton->setText(title);
    encodingButton->setToolTip(strings->tip(EncodingText));
}

void CodeWorkspacePrivate::encodingChosen(QAction *action)
{
    bool isNumber = false;
    const int codec = action ? action->objectName().toInt(&isNumber) : -1;
    if (!document || !isNumber || codec < 0 || codec >= TextCodecs::count())
        return;
    document->setCodecId(codec);
    if (QFileInfo::exists(document->fileName())) {
        Translator *strings = ovraTranslator();
        Prompt question;
        question.icon = QMessageBox::Question;
        question.title = strings->text(ReloadTitle);
        question.text = strings->text(ReloadText);
        question.buttons = QMessageBox::Yes | QMessageBox::No;
        question.defaultButton = QMessageBox::Yes;
        question.parent = q;
        if (ask(question) == QMessageBox::Yes)
            document->reloadFile();
    }
    updateEncodingTitle();
}

void CodeWorkspacePrivate::messageChosen(int row)
{
    const auto *list = document ? qobject_cast<Messages *>(document->fileMessages()) : nullptr;
    if (!list || row < 0 || uint(row) >= list->count(Message::All))
        return;
    const Message message = list->at(uint(row), Message::All);
    q->goTo(int(message.line), int(message.column));
}

bool CodeWorkspacePrivate::canEdit() const
{
    return document && !editor->isReadOnly();
}

void CodeWorkspacePrivate::selectedLines(int *first, int *last) const
{
    const QTextCursor cursor = editor->textCursor();
    const QTextBlock start = editor->document()->findBlock(cursor.selectionStart());
    const QTextBlock end = editor->document()->findBlock(cursor.selectionEnd());
    *first = start.blockNumber();
    *last = end.blockNumber() + 1;
    if (end != start && cursor.selectionEnd() == end.position())
        --*last;
}

void CodeWorkspacePrivate::goToMessage(int kind, bool forward)
{
    if (!document)
        return;
    const QTextCursor cursor = editor->textCursor();
    const QTextBlock here = cursor.block();
    const int column = cursor.positionInBlock();
    for (QTextBlock block = here; block.isValid(); block = forward ? block.next() : block.previous()) {
        const CodeBlockData *data = dataOf(block);
        if (!data)
            continue;
        // In the cursor's own line a message counts from the cursor's column on, that
        // column included; beyond it, the line's first message of the kind (its last
        // going backwards).
        const QVector<CodeBlockData::SyntaxMessage> &messages = data->syntaxMessages();
        for (int i = 0; i < messages.size(); ++i) {
            const CodeBlockData::SyntaxMessage &message = messages.at(forward ? i : messages.size() - 1 - i);
            if (message.kind != kind)
                continue;
            if (block == here && (forward ? message.start < column : message.start > column))
                continue;
            q->goTo(block.blockNumber(), message.start);
            return;
        }
    }
}

void CodeWorkspacePrivate::formatSelection(bool indentOnly)
{
    if (!canEdit())
        return;
    QTextCursor cursor = editor->textCursor();
    const QTextDocument *text = editor->document();
    document->formatLines(text->findBlock(cursor.selectionStart()).blockNumber(),
                          text->findBlock(cursor.selectionEnd()).blockNumber(), indentOnly);
    cursor = editor->textCursor();
    cursor.clearSelection();
    editor->setTextCursor(cursor);
}

QString CodeWorkspacePrivate::commentMarker() const
{
    return document ? document->commentMarker() : QString();
}

// ---- the workspace ---------------------------------------------------------------------

CodeWorkspace::CodeWorkspace(Interface *interface, QWidget *parent)
    : Workspace(interface, parent)
    , d(new CodeWorkspacePrivate(this))
{
    setObjectName(QStringLiteral("code_workspace"));
    d->buildWidgets();
    d->buildActions();
    retranslate();
    reconfig();
}

CodeWorkspace::~CodeWorkspace() = default;

CodeEditor *CodeWorkspace::editor() const
{
    return d->editor;
}

CodeDocument *CodeWorkspace::document() const
{
    return d->document;
}

QToolBar *CodeWorkspace::toolBar() const
{
    return d->toolBar;
}

QMenu *CodeWorkspace::encodingMenu() const
{
    d->fillEncodingMenu();
    return d->encodingMenu;
}

QComboBox *CodeWorkspace::messageBox() const
{
    return d->messages;
}

QComboBox *CodeWorkspace::snippetBox() const
{
    return d->snippetBox;
}

SnippetManager *CodeWorkspace::snippets() const
{
    return d->snippets;
}

void CodeWorkspace::setDocument(CodeDocument *document)
{
    d->messages->setModel(document ? static_cast<QAbstractItemModel *>(document->fileMessages()) : d->noMessages);
    if (d->document) {
        const CodeEditor::LinePos place = d->editor->currentLine();
        d->document->setObjectName(QStringLiteral("%1,%2,%3").arg(place.line).arg(place.column).arg(place.scroll));
    }
    d->document = document;
    d->editor->setDocument(document);
    const QString stored = document && !document->objectName().isEmpty() ? document->objectName()
                                                                         : QStringLiteral("0,0,0");
    const QStringList place = stored.split(QLatin1Char(','));
    if (document && place.size() == 3) {
        // The page must be shown before the scroll place can be set.
        d->pages->setCurrentWidget(d->codePage);
        d->editor->setCurrentLine(CodeEditor::LinePos{place.at(0).toInt(), place.at(1).toInt(), place.at(2).toInt()});
    }
    d->pages->setCurrentWidget(document ? d->codePage : static_cast<QWidget *>(d->noDocument));
    d->updateEncodingTitle();
    d->editor->setFocus();
}

void CodeWorkspace::goTo(int line, int column)
{
    const QTextBlock block = d->editor->document()->findBlockByNumber(line);
    if (!block.isValid())
        return;
    QTextCursor cursor(block);
    cursor.setPosition(block.position() + qBound(0, column, block.length() - 1));
    d->editor->setTextCursor(cursor);
    d->editor->ensureCursorVisible();
    d->editor->setFocus();
}

void CodeWorkspace::reconfig()
{
    d->toolBar->setIconSize(QSize(16, 16));
    Interface *host = m_interface;
    if (!host)
        return;
    auto setting = [host](const char *name) { return host->option(QString::fromLatin1(name), true).toBool(); };
    CodeEditor::SyntaxFormatting formatting = d->editor->syntaxFormatting();
    formatting.lineNumbers = setting("code_line_numbers");
    formatting.highlightLine = setting("code_highlight_line");
    formatting.highlightBlocks = setting("code_highlight_blocks");
    formatting.foldingMarkers = setting("code_folding_markers");
    formatting.parenMatching = setting("code_paren_matching");
    formatting.lineColor = host->color(QStringLiteral("line"), QColor(232, 242, 254));
    formatting.blockRangeColor = host->color(QStringLiteral("block_range"), QColor(244, 244, 236));
    formatting.parenRangeFormat.setBackground(host->color(QStringLiteral("paren_range"), QColor(226, 234, 200)));
    QTextCharFormat paren;
    paren.setBackground(QColor(180, 238, 180));
    formatting.parenFormat = host->textFormat(QStringLiteral("paren"), paren);
    d->editor->setSyntaxFormatting(formatting);
    const QColor foreground = host->color(QStringLiteral("foreground"), QColor(Qt::black));
    const QColor background = host->color(QStringLiteral("background"), QColor(Qt::white));
    d->editor->setStyleSheet(QStringLiteral("QPlainTextEdit { background-color: %1; color: %2; }")
                                 .arg(background.name(), foreground.name()));
    QFont font(host->option(QStringLiteral("font_name"), QStringLiteral("Courier")).toString(),
               host->option(QStringLiteral("font_size"), 10).toInt());
    font.setFixedPitch(true);
    font.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
    d->editor->setFont(font);
}

void CodeWorkspace::engineSwitched()
{
    Engine *engine = m_interface ? m_interface->engine() : nullptr;
    if (!engine) {
        d->snippets->load(QString());
        return;
    }
    const QString directory = engine->installDirectory();
    d->editor->completerFromFile(directory + QStringLiteral("/completer.xml"));
    d->snippets->load(directory + QStringLiteral("/snippets"));
}

void CodeWorkspace::retranslate()
{
    d->noDocument->setText(ovraTranslator()->text(NoDocumentText));
    d->updateEncodingTitle();
}

void CodeWorkspace::addSidePanel(QWidget *panel)
{
    if (panel && d->side->indexOf(panel) < 0)
        d->side->addWidget(panel);
}

void CodeWorkspace::showSidePanel(QWidget *panel)
{
    if (panel && d->side->indexOf(panel) >= 0)
        d->side->setCurrentWidget(panel);
    const bool shown = panel && d->side->indexOf(panel) >= 0;
    d->side->setVisible(shown);
    // A panel hidden at the start has no width yet.
    if (shown && d->splitter->sizes().value(1) == 0)
        d->userSized = false;
    d->keepSideQuarter();
}

bool CodeWorkspacePrivate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == splitter && event->type() == QEvent::Resize)
        keepSideQuarter();
    return QObject::eventFilter(watched, event);
}

// The splitter on its own shares a new width by the panels' size hints, and a tree's is
// wide: until the user places the handle, the text keeps three quarters of the view.
void CodeWorkspacePrivate::keepSideQuarter()
{
    if (userSized || !side->isVisibleTo(q))
        return;
    const int total = qMax(splitter->width(), 4);
    splitter->setSizes({total - total / 4, total / 4});
}

void CodeWorkspace::showTextBar(bool shown)
{
    d->toolBar->setVisible(shown);
    if (m_interface)
        m_interface->setOption(QStringLiteral("show_code_bar"), shown);
}

void CodeWorkspace::snipInsert()
{
    const int row = d->snippetBox->currentIndex();
    if (!d->canEdit() || row < 0)
        return;
    const QString code = d->snippets->fillIn(row, this);
    if (!code.isNull())
        insertSnippet(code);
}

void CodeWorkspace::insertSnippet(const QString &code)
{
    if (!d->canEdit())
        return;
    QString text = code;
    static const QString cursorWord = QStringLiteral("CURSOR");
    const int place = text.indexOf(cursorWord);
    if (place >= 0)
        text.remove(place, cursorWord.size());
    const int start = d->editor->textCursor().selectionStart();
    d->editor->insertPlainText(text);
    QTextCursor cursor = d->editor->textCursor();
    cursor.setPosition(start + (place >= 0 ? place : text.size()));
    d->editor->setTextCursor(cursor);
    d->editor->setFocus();
}

void CodeWorkspace::snipNew()
{
    SnipDlg dialog(QString(), this);
    dialog.exec();
    d->snippets->load(d->snippets->directory());
}

void CodeWorkspace::snipEdit()
{
    const int row = d->snippetBox->currentIndex();
    const QString fileName = d->snippets->fileName(row);
    if (fileName.isEmpty())
        return;
    SnipDlg dialog(fileName, this);
    dialog.exec();
    d->snippets->load(d->snippets->directory());
    d->snippetBox->setCurrentIndex(qMin(row, d->snippets->count() - 1));
}

void CodeWorkspace::goToLine()
{
    if (!d->document)
        return;
    GoToDlg dialog(d->editor->textCursor().blockNumber() + 1, this);
    if (m_interface)
        dialog.setWindowIcon(m_interface->icon(dialog.objectName()));
    if (dialog.exec() != QDialog::Accepted)
        return;
    int line = dialog.line();
    const int lines = d->editor->document()->blockCount();
    if (line > lines) {
        Prompt question;
        question.icon = QMessageBox::Question;
        question.title = ovraTranslator()->text(18);
        question.text = tr("Invalid line! Do you want go to the last line?");
        question.buttons = QMessageBox::Yes | QMessageBox::No;
        question.defaultButton = QMessageBox::Yes;
        question.parent = this;
        if (ask(question) != QMessageBox::Yes)
            return;
        line = lines;
    }
    d->editor->setCurrentLine(uint(line - 1), CodeEditor::Top);
    d->editor->setFocus();
}

void CodeWorkspace::prevError()
{
    d->goToMessage(CodeBlockData::SyntaxMessage::Error, false);
}

void CodeWorkspace::nextError()
{
    d->goToMessage(CodeBlockData::SyntaxMessage::Error, true);
}

void CodeWorkspace::prevDepr()
{
    d->goToMessage(CodeBlockData::SyntaxMessage::Deprecation, false);
}

void CodeWorkspace::nextDepr()
{
    d->goToMessage(CodeBlockData::SyntaxMessage::Deprecation, true);
}

// The first selected line decides: a commented one makes every commented line lose one
// character of its marker (a marker of two characters takes two calls, which lets a
// doubled marker come off one level at a time); otherwise every line gets the marker.
void CodeWorkspace::comment()
{
    const QString marker = d->commentMarker();
    if (!d->canEdit() || marker.isEmpty())
        return;
    int first = 0;
    int last = 0;
    d->selectedLines(&first, &last);
    QTextDocument *text = d->editor->document();
    const QTextCursor selection = d->editor->textCursor();
    const bool uncomment = text->findBlockByNumber(first).text().startsWith(marker);
    const int startColumn = selection.selectionStart() - text->findBlockByNumber(first).position();
    QTextCursor end(text);
    end.setPosition(selection.selectionEnd());
    QTextCursor edit(text);
    edit.beginEditBlock();
    bool firstChanged = false;
    for (int line = first; line < last; ++line) {
        const QTextBlock block = text->findBlockByNumber(line);
        edit.setPosition(block.position());
        if (!uncomment) {
            edit.insertText(marker);
        } else if (block.text().startsWith(marker)) {
            edit.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
            edit.removeSelectedText();
        } else {
            continue;
        }
        firstChanged = firstChanged || line == first;
    }
    edit.endEditBlock();
    // The selection keeps its lines: its start moves with its first line's text.
    int column = startColumn;
    if (firstChanged && column > 0)
        column = uncomment ? column - 1 : column + marker.size();
    QTextCursor result(text);
    result.setPosition(text->findBlockByNumber(first).position() + column);
    result.setPosition(qMax(end.position(), result.position()), QTextCursor::KeepAnchor);
    d->editor->setTextCursor(result);
}

void CodeWorkspace::foldAll()
{
    if (!d->document)
        return;
    int lastLevel = -1;
    for (QTextBlock block = d->document->begin(); block.isValid(); block = block.next()) {
        const CodeBlockData *data = dataOf(block);
        if (!data)
            continue;
        const int level = int(data->foldingIndent());
        if (block.isVisible() && lastLevel >= 0 && level > lastLevel) {
            const QTextBlock header = block.previous();
            const CodeBlockData *headerData = dataOf(header);
            if (header.isValid() && !(headerData && headerData->isFolded()))
                d->editor->toggleBlockVisible(header);
        }
        lastLevel = level;
    }
}

void CodeWorkspace::unfoldAll()
{
    if (!d->document)
        return;
    for (QTextBlock block = d->document->begin(); block.isValid(); block = block.next()) {
        const CodeBlockData *data = dataOf(block);
        if (data && data->isFolded())
            d->editor->toggleBlockVisible(block);
    }
}

void CodeWorkspace::autoIndent()
{
    d->formatSelection(true);
}

void CodeWorkspace::autoFormat()
{
    d->formatSelection(false);
}

} // namespace Ovra
