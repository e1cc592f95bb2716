#pragma once

#include "foundation/global.h"

#include <QAbstractListModel>

#include <memory>

class QWidget;

namespace Ovra {

class SnippetManagerPrivate;

// The snippets of an engine, one XML file each in its "snippets" directory, listed by name
// for the combo box of the code tool bar.
class OVRA_EXPORT SnippetManager : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit SnippetManager(QObject *parent = nullptr);
    ~SnippetManager() override;

    // Lists the ".xml" files of the directory; a missing directory lists none.
    void load(const QString &directory);
    QString directory() const;

    int count() const;
    // The file's name without ".xml": the key of the snippet.
    QString name(int row) const;
    // The name as the user reads it, translated in this class's context.
    QString title(int row) const;
    QString fileName(int row) const;

    // Shows the form of the snippet's fields and gives its code filled in, "CURSOR" still in
    // it; a null string when the user cancels or the file can't be read (the reader's error
    // is shown to the user then).
    QString fillIn(int row, QWidget *parent);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    std::unique_ptr<SnippetManagerPrivate> d;
};

} // namespace Ovra
