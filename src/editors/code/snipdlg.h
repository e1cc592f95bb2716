#pragma once

#include "foundation/global.h"

#include <QDialog>

#include <memory>

namespace Ovra {

class Snippet;
class SnipDlgPrivate;

// "Code snippet editor": makes and changes a snippet file (its fields and code), previews
// the filled code, and exports the titles for translation.
class OVRA_EXPORT SnipDlg : public QDialog
{
    Q_OBJECT
public:
    // An empty name, or the name of a directory, starts a new snippet (saved there by
    // default); a file that can't be read is reported and leaves the editor empty.
    explicit SnipDlg(const QString &fileName, QWidget *parent = nullptr);
    ~SnipDlg() override;

    QString fileName() const;
    // The key of the snippet: its file's name without ".xml".
    QString snippetName() const;
    Snippet snippet() const;
    void setSnippet(const Snippet &snippet);

    // Reads a snippet into the editor; on an error the user is told and nothing changes.
    bool load(const QString &fileName);
    // Writes the snippet or its translation source; false (and the user told) on failure,
    // an existing file then left as it was.
    bool saveTo(const QString &fileName);
    bool saveTranslationTo(const QString &fileName);

public slots:
    // Asks before changes that weren't saved are dropped.
    void reject() override;
    // Ask for a file name first; nothing happens when the user cancels.
    void save();
    void saveForTranslation();
    // Shows the code filled with the form's values.
    void preview();
    // Puts the selected field's name into the code at its cursor.
    void insertSelected();
    void addField();
    void editField();
    void removeField();
    void moveFieldUp();
    void moveFieldDown();

private:
    std::unique_ptr<SnipDlgPrivate> d;
};

} // namespace Ovra
