#pragma once

#include "editors/code/codeworkspace.h"

#include <QObject>
#include <QPointer>

class QAction;
class QActionGroup;
class QLabel;
class QSplitter;
class QStackedWidget;
class QStandardItemModel;
class QToolButton;
class QTextBlock;

namespace Ovra {

// The widgets and actions of the code workspace.
class CodeWorkspacePrivate : public QObject
{
    Q_OBJECT
public:
    explicit CodeWorkspacePrivate(CodeWorkspace *workspace);

    void buildWidgets();
    void buildActions();
    // Gives the side panel a quarter of the view until the user moves the handle.
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keepSideQuarter();
    void buildEncodingMenu();
    void fillEncodingMenu();
    void updateEncodingTitle();
    // The editor can be changed, and shows a document.
    bool canEdit() const;
    // The first line and the line after the last of the selection; a selection that ends
    // at the start of a line doesn't take that line.
    void selectedLines(int *first, int *last) const;
    void goToMessage(int kind, bool forward);
    // The language's own formatting of the selected lines; the selection goes.
    void formatSelection(bool indentOnly);
    QString commentMarker() const;

    void encodingChosen(QAction *action);
    void messageChosen(int row);

    CodeWorkspace *q;
    CodeEditor *editor = nullptr;
    QToolBar *toolBar = nullptr;
    QComboBox *messages = nullptr;
    QComboBox *snippetBox = nullptr;
    SnippetManager *snippets = nullptr;
    QMenu *encodingMenu = nullptr;
    QActionGroup *encodings = nullptr;
    QToolButton *encodingButton = nullptr;
    QStackedWidget *pages = nullptr;
    QWidget *codePage = nullptr;
    QLabel *noDocument = nullptr;
    QStackedWidget *side = nullptr;
    QSplitter *splitter = nullptr;
    bool userSized = false;
    QStandardItemModel *noMessages = nullptr;
    QList<QAction *> actions;
    QPointer<CodeDocument> document;
};

} // namespace Ovra
