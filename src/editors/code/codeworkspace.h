#pragma once

#include "editors/workspace.h"

class QComboBox;
class QMenu;
class QToolBar;

namespace Ovra {

class CodeDocument;
class CodeEditor;
class CodeWorkspacePrivate;
class SnippetManager;

// The one visible code view of the program: the code editor with its tool bar of code
// actions, a combo box of the file's messages, and a "No document." page while no file is
// shown. The code file editors take turns in it; each document keeps its own cursor and
// scroll place (in its object name), so switching files needs no store of its own.
class OVRA_EXPORT CodeWorkspace : public Workspace
{
    Q_OBJECT
public:
    explicit CodeWorkspace(Interface *interface, QWidget *parent = nullptr);
    ~CodeWorkspace() override;

    CodeEditor *editor() const;
    CodeDocument *document() const;
    // Shows the document (or the empty page for null), and puts back the line, column and
    // scroll place it had when it was last shown.
    void setDocument(CodeDocument *document);
    // Moves the cursor to a line and column (both from 0), shows them and gives the
    // editor the focus.
    void goTo(int line, int column);

    QToolBar *toolBar() const;
    QMenu *encodingMenu() const;
    QComboBox *messageBox() const;
    QComboBox *snippetBox() const;
    SnippetManager *snippets() const;

    // Settings, colours and font from the host.
    void reconfig();
    // The completion words and the snippets of the engine now selected.
    void engineSwitched();
    void retranslate();

    // A panel beside the text (the node tree of a file editor); one is shown at a time,
    // none for null.
    void addSidePanel(QWidget *panel);
    void showSidePanel(QWidget *panel);

    // Puts filled snippet code in at the cursor; the cursor ends where the word "CURSOR"
    // stood (the word itself goes), or after the code without it.
    void insertSnippet(const QString &code);

public slots:
    void showTextBar(bool shown);
    void snipInsert();
    void snipNew();
    void snipEdit();
    void goToLine();
    void prevError();
    void nextError();
    void prevDepr();
    void nextDepr();
    void comment();
    void foldAll();
    void unfoldAll();
    void autoIndent();
    void autoFormat();

private:
    friend class CodeWorkspacePrivate;
    CodeWorkspacePrivate *const d;
};

} // namespace Ovra
