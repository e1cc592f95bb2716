#pragma once

#include <QObject>
#include <QPointer>

class QAction;
class QListView;
class QMenu;
class QToolButton;
class QWidget;

namespace Ovra {

class ThumbnailsEditor;
class ThumbnailsModel;

class ThumbnailsEditorPrivate : public QObject
{
    Q_OBJECT
public:
    explicit ThumbnailsEditorPrivate(ThumbnailsEditor *editor);
    ~ThumbnailsEditorPrivate() override;

    void buildActions();
    void buildWidgets();
    void applySize(int size);
    void showActions(QAction **given);
    QString startDirectory() const;
    void storeDirectory(const QString &directory);

    // The sizes the thumbnails come in; the option "thumb_size" keeps the one chosen.
    static const int Sizes[5];
    // The step nearest to `size`.
    static int stepFor(int size);

public slots:
    void toggleView(bool icons);
    void nextSize();
    void save();

public:
    ThumbnailsEditor *q;
    QPointer<QWidget> widget;
    QListView *view = nullptr;
    ThumbnailsModel *model = nullptr;
    QToolButton *actionButtons[4] = {};
    QAction *viewAction = nullptr;
    QAction *sizeAction = nullptr;
    QAction *saveAction = nullptr;
    QMenu *sizeMenu = nullptr;
    int size = 64;
};

} // namespace Ovra
