#pragma once

#include <QWidget>

namespace Ovra {

class CodeEditor;

// The side area beside the text: line marks, line numbers, fold handles and change bars.
// It only passes its events on to the editor, which knows the lines.
class CodeEditorExtraArea : public QWidget
{
    Q_OBJECT
public:
    explicit CodeEditorExtraArea(CodeEditor *editor);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    CodeEditor *m_editor;
};

} // namespace Ovra
