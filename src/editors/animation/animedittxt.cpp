#include "editors/animation/animedittxt.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "editors/code/codeeditor.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace Ovra {

namespace {

// The text being edited, apart from the file: it has no language, so nothing of the
// file changes until the user applies.
class DraftDocument : public CodeDocument
{
public:
    DraftDocument() : CodeDocument(-1) {}
    void formatLines(int, int, bool) override {}
};

} // namespace

AnimEditTxt::AnimEditTxt(QWidget *parent)
    : QDialog(parent)
    , m_document(new DraftDocument)
    , m_editor(new CodeEditor(this))
{
    setObjectName(QStringLiteral("anim_code"));
    setWindowTitle(tr("Edit animation code"));
    m_editor->setDocument(m_document);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *applyButton = buttons->addButton(tr("Apply"), QDialogButtonBox::ApplyRole);
    QPushButton *closeButton = buttons->addButton(tr("Close"), QDialogButtonBox::RejectRole);
    applyButton->setAutoDefault(false);
    closeButton->setAutoDefault(false);
    connect(applyButton, &QPushButton::clicked, this, &AnimEditTxt::apply);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_editor);
    layout->addWidget(buttons);
    resize(480, 360);
}

AnimEditTxt::~AnimEditTxt()
{
    // The editor lets go of the document before the document goes.
    m_editor->setDocument(nullptr);
    m_document->release();
}

void AnimEditTxt::setAnimation(Animations *animations, AnimationCode *animation)
{
    m_animations = animations;
    m_animation = animations && animations->indexOf(animation) >= 0 ? animation : nullptr;
    m_document->fromString(m_animation ? m_animation->code() : QString());
}

QString AnimEditTxt::text() const
{
    return m_document->toPlainText();
}

void AnimEditTxt::setText(const QString &text)
{
    m_document->fromString(text);
}

bool AnimEditTxt::apply()
{
    const int row = m_animations ? m_animations->indexOf(m_animation) : -1;
    // An empty text would delete the animation: that is the delete action's business.
    if (row < 0 || text().trimmed().isEmpty())
        return false;
    const uint count = m_animations->count();
    m_animations->beginChange();
    m_animation->setCode(text());
    m_animations->endChange();
    // The new text makes a new node at the same place, unless it made no animation or
    // more than one: then the dialog no longer knows which one it shows.
    m_animation = m_animations->count() == count ? m_animations->at(uint(row)) : nullptr;
    emit applied();
    return true;
}

} // namespace Ovra
