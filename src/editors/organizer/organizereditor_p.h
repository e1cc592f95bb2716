#pragma once

#include <QIcon>
#include <QListView>
#include <QObject>
#include <QPointer>
#include <QToolButton>

class QAction;
class QWidget;

namespace Ovra {

class OrganizableObject;
class OrganizerEditor;

// The list of the organizer. A drop of its own rows goes through the model's dropMimeData
// with the row where the block should end up, and is then reported as a copy, so that the
// view never asks the model to remove the rows it has just moved.
class OrganizerListView : public QListView
{
    Q_OBJECT
public:
    explicit OrganizerListView(QWidget *parent = nullptr);

    // The row a block starting at `firstRow` lands on when dropped into the gap before
    // row `gap` (0 to rowCount): upwards the first moved row takes the gap's place,
    // downwards the last moved row ends just above it.
    static int dropTarget(int gap, int firstRow);

protected:
    void dropEvent(QDropEvent *event) override;
};

// A tool button that shows the action's icon when the host gives a usable one, and a
// drawn one of its own otherwise.
class OrganizerButton : public QToolButton
{
    Q_OBJECT
public:
    OrganizerButton(QAction *action, const QIcon &fallback, QWidget *parent);

protected:
    void actionEvent(QActionEvent *event) override;

private:
    void applyIcon();
    QIcon m_fallback;
};

class OrganizerEditorPrivate : public QObject
{
    Q_OBJECT
public:
    explicit OrganizerEditorPrivate(OrganizerEditor *editor);
    ~OrganizerEditorPrivate() override;

    void buildWidgets();
    void buildActions();
    // The selected rows in ascending order, each once.
    QList<uint> selectedRows() const;
    void moveBlockUp(const QList<uint> &rows, uint target);
    void moveBlockDown(const QList<uint> &rows, uint target);
    void selectBlock(int first, int last);
    void deleteSelected();
    void removeRow(uint row);

    bool eventFilter(QObject *watched, QEvent *event) override;

public slots:
    void moveUp();
    void moveDown();
    void moveUp10();
    void moveDown10();
    void moveTop();
    void moveBottom();
    void moveAuto();
    void itemDblClick(const QModelIndex &index);

public:
    OrganizerEditor *q;
    QPointer<QWidget> widget;
    OrganizerListView *list = nullptr;
    QList<QAction *> actions;
    QPointer<OrganizableObject> object;
    // Set by our own changes of a list that keeps no saved state of its own.
    bool modified = false;
};

} // namespace Ovra
