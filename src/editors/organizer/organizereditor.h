#pragma once
#include "editors/extraeditor.h"

namespace Ovra {

class OrganizableObject;
class OrganizerEditorPrivate;

// The side editor that reorders an ordered list of a file (animations, sprites,
// palettes, sounds): move buttons, drag and drop through the list's model, an automatic
// sort by the list's own comparison, and the Delete key.
class OVRA_EXPORT OrganizerEditor : public ExtraEditor
{
    Q_OBJECT
public:
    OrganizerEditor();
    ~OrganizerEditor() override;

    QWidget *widget() override;
    void activate() override;
    void deactivate() override;
    void retranslate() override;
    void release() override;

    // The list shown; null shows nothing. The editor doesn't own it.
    void setObject(OrganizableObject *object);
    OrganizableObject *object() const;
    bool isModified() const;
    const char *name() const;
    QString displayName() const;

signals:
    void changed();
    // A row was double clicked.
    void itemClicked(int row);

private:
    friend class OrganizerEditorPrivate;
    OrganizerEditorPrivate *const d;
};

} // namespace Ovra
