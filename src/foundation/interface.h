#pragma once

#include "foundation/translator.h"

#include <QPoint>
#include <QRect>
#include <QString>
#include <QVariant>

class QAbstractItemModel;
class QAction;
class QColor;
class QIcon;
class QMenu;
class QObject;
class QTextCharFormat;
class QWidget;

namespace Ovra {

class Editor;
class Engine;
class ExtraEditor;
class FileEditor;
class ItemsDialog;
class ProgressProvider;
class Project;
class ProjectFile;
class Workspace;

// Where an action lives: a scope word and an index. "all" with 0 keeps an action
// in place across editors.
struct ActionScope
{
    const char *scope;
    int index;
};

// The head of a variable-length request for a host control: a kind and the
// record's size in bytes, followed by the payload of that kind.
struct ControlSpec
{
    int kind;
    int size;
};

// Kind 0: a control that shows one action.
struct ActionControlSpec : ControlSpec
{
    enum { Kind = 0, Size = 12 };
    QAction *action;
};

// Kind 12: a control that reports a chosen item to a receiver's slot.
struct ItemSelectorControlSpec : ControlSpec
{
    enum { Kind = 12 };
    QObject *receiver;
    const char *slot;
    void *reserved1;
    void *reserved2;
    bool flag;
};

// The one seam between the library and the program that hosts it. The host
// subclasses it and installs it with setGlobalInterface(); everything in the
// library reaches the host through instance(), and model code copes with null.
class OVRA_EXPORT Interface : public Translator
{
public:
    virtual QWidget *mainWidget() = 0;
    virtual QString userDataPath() = 0;
    virtual QString installPath() = 0;
    virtual QString configPath() = 0;
    virtual ProgressProvider *progressProvider() = 0;
    virtual Engine *engine() = 0;
    virtual Editor *currentEditor() = 0;
    virtual FileEditor *editorForFile(ProjectFile *file, int fileType) = 0;
    virtual uint projectCount() = 0;
    virtual Project *project(uint index) = 0;
    virtual Project *currentProject() = 0;
    virtual int scaleToDPI(int length) = 0;
    virtual QIcon icon(const QString &name) = 0;
    virtual QColor color(const QString &name, const QColor &defaultColor) = 0;
    virtual QTextCharFormat textFormat(const QString &name, const QTextCharFormat &defaultFormat) = 0;
    virtual QVariant option(const QString &name, const QVariant &defaultValue) = 0;
    virtual void setOption(const QString &name, const QVariant &value) = 0;
    virtual void setStatusText(int field, const QString &text) = 0;
    virtual QWidget *addControl(const QString &name, const ControlSpec &request) = 0;
    virtual void registerControl(const QString &name, QObject *object) = 0;
    virtual QObject *control(const QString &name) = 0;
    virtual QWidget *actionControl(const QString &name, QAction *action, QMenu *menu);
    virtual QMenu *menu(const QString &name) = 0;
    virtual QAction *createAction(ActionScope scope, const QString &name, Translator *translator,
                                  uint textId, bool checkable, QObject *receiver, const char *slot,
                                  const char *enablingSignal, bool checked) = 0;
    virtual QAction *action(const char *name) = 0;
    virtual QAction *editorAction(const QString &name, Translator *translator, uint textId) = 0;
    virtual ExtraEditor *extraEditor(int index) = 0;
    virtual void projectsRestored() = 0;
    virtual void activateEditor(Editor *editor) = 0;
    virtual void setExtraEditor(ExtraEditor *editor) = 0;
    virtual void setWorkspace(Workspace *workspace) = 0;

    static Interface *instance();

    QPoint scaleToDPI(const QPoint &point);
    // Scales left, top, width and height each, so that the right edge is not
    // scaled as a coordinate of its own.
    QRect scaleToDPI(const QRect &rect);

    // A new list dialog over a model, for picking items; the caller owns it.
    ItemsDialog *itemsDialog(QWidget *parent, const QString &name, const QString &title,
                             QAbstractItemModel *model, int column);
};

// Installs the host's interface; returns the same pointer.
OVRA_EXPORT Interface *setGlobalInterface(Interface *interface);

} // namespace Ovra
