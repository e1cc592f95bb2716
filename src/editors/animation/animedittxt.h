#pragma once

#include "foundation/global.h"

#include <QDialog>

namespace Ovra {

class AnimationCode;
class Animations;
class CodeDocument;
class CodeEditor;

// The text of one animation in an editor of its own: the user rewrites it there, and
// "Apply" puts it in place of the animation in the file, as one undo step of the file.
class OVRA_EXPORT AnimEditTxt : public QDialog
{
    Q_OBJECT
public:
    explicit AnimEditTxt(QWidget *parent = nullptr);
    ~AnimEditTxt() override;

    // Shows the animation's text; the file must outlive the dialog or be unset first.
    void setAnimation(Animations *animations, AnimationCode *animation);
    AnimationCode *animation() const { return m_animation; }
    CodeEditor *editor() const { return m_editor; }
    QString text() const;
    void setText(const QString &text);

public slots:
    // Writes the text in place of the animation. False when the animation is gone from
    // the file, which is then left alone.
    bool apply();

signals:
    void applied();

private:
    CodeDocument *m_document;
    CodeEditor *m_editor;
    Animations *m_animations = nullptr;
    AnimationCode *m_animation = nullptr;
};

} // namespace Ovra
