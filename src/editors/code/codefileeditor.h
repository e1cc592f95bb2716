#pragma once

#include "editors/editor.h"

#include <QList>
#include <QPoint>

class QAbstractItemModel;
class QModelIndex;
class QTreeView;

namespace Ovra {

class CodeDocument;
class CodeFileEditorPrivate;
class CodeWorkspace;
class RegExp;

// The file editor of code files. It shows its file in the shared code workspace, with a
// tree of the document's nodes beside the text, and tells the host's status bar where the
// cursor is. Subclasses name the file type and the action that opens the editor.
class OVRA_EXPORT CodeFileEditor : public FileEditor
{
    Q_OBJECT
public:
    CodeFileEditor(CodeWorkspace *workspace, const char *name);
    ~CodeFileEditor() override;

    const char *name() const override;
    QWidget *widget() override;
    void activate() override;
    void deactivate() override;
    void retranslate() override;
    void engineSwitched(bool hasEngine) override;
    void reconfig() override;
    void saveState() override;
    void restoreState() override;
    void navigateTo(uint line, uint column) override;
    void setCurrentFile(ProjectFile *file) override;
    void cut() override;
    void copy() override;
    void paste() override;

    CodeWorkspace *workspace() const;
    // The current file's document: the file itself, or the document a node file shows.
    CodeDocument *document() const;
    // Where the user works in this editor: the text, and the node tree.
    QList<QWidget *> areas() const;
    QTreeView *tree() const;
    void setCodeModel(QAbstractItemModel *model);

    // Selects the next match from the cursor on; false when there is none.
    bool find(RegExp &expression, uint flags);
    // With ProjectFile::All every match is replaced, else the selection if it is a match,
    // and the next one is selected; gives the number replaced.
    int replace(RegExp &expression, const QString &text, uint flags);
    // Writes the file in UTF-8 from now on, and saves it.
    void saveAsUTF8();

public slots:
    void selectedItem(const QModelIndex &index);
    void currLineChanged(int line);
    void cursorChanged(QPoint position);

private:
    friend class CodeFileEditorPrivate;
    CodeFileEditorPrivate *const d;
};

} // namespace Ovra
