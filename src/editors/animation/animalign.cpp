#include "editors/animation/animalign.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/framecode.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace Ovra {

namespace {

// The limits of the value fields: far beyond any sprite, and small enough that a
// percentage times a coordinate stays inside an int.
constexpr int ValueLimit = 100000;

QRect changedBox(QRect box, AnimAlign::Operation operation, int x, int y)
{
    switch (operation) {
    case AnimAlign::OffsetBoxes:
        box.translate(x, y);
        break;
    case AnimAlign::ScaleBoxes:
        box = QRect(box.left() * x / 100, box.top() * y / 100, box.width() * x / 100, box.height() * y / 100);
        break;
    case AnimAlign::ResizeTopLeft:
        box.setLeft(box.left() - x);
        box.setTop(box.top() - y);
        break;
    case AnimAlign::ResizeBottomRight:
        box.setRight(box.right() + x);
        box.setBottom(box.bottom() + y);
        break;
    case AnimAlign::OffsetAxis:
        break;
    }
    return box;
}

void applyToFrame(FrameCode *frame, AnimAlign::Operation operation, int x, int y)
{
    if (operation == AnimAlign::OffsetAxis) {
        const QPoint offset = frame->offset();
        frame->setOffsetX(offset.x() + x);
        frame->setOffsetY(offset.y() + y);
        return;
    }
    for (ContactBoxCode::BoxType type : {ContactBoxCode::Attack, ContactBoxCode::Collision}) {
        ContactBoxesCode *boxes = frame->contactBoxes(type);
        for (uint i = 0; boxes && i < boxes->count(); ++i) {
            if (ContactBoxCode *box = boxes->at(i))
                box->setRect(changedBox(box->rect(), operation, x, y));
        }
    }
}

} // namespace

AnimAlign::AnimAlign(Animations *animations, QWidget *parent)
    : QDialog(parent)
    , m_animations(animations)
    , m_list(new QListWidget(this))
    , m_operation(new QComboBox(this))
    , m_x(new QSpinBox(this))
    , m_y(new QSpinBox(this))
{
    setObjectName(QStringLiteral("anim_frame_align"));
    setWindowTitle(tr("Alignment tool"));

    m_list->setObjectName(QStringLiteral("animations"));
    const int rows = animations ? animations->rowCount() : 0;
    for (int row = 0; row < rows; ++row) {
        auto *item = new QListWidgetItem(animations->data(animations->index(row), Qt::DisplayRole).toString(), m_list);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        item->setCheckState(Qt::Unchecked);
    }

    auto *selectAllButton = new QPushButton(tr("Select all"), this);
    auto *invertButton = new QPushButton(tr("Invert selection"), this);
    auto *clearButton = new QPushButton(tr("Clear selection"), this);
    connect(selectAllButton, &QPushButton::clicked, this, &AnimAlign::selectAll);
    connect(invertButton, &QPushButton::clicked, this, &AnimAlign::invertSelection);
    connect(clearButton, &QPushButton::clicked, this, &AnimAlign::clearSelection);
    auto *selection = new QHBoxLayout;
    selection->addWidget(selectAllButton);
    selection->addWidget(invertButton);
    selection->addWidget(clearButton);

    m_operation->setObjectName(QStringLiteral("operation"));
    m_operation->addItems({tr("Offset axis"), tr("Offset Contact boxes"), tr("Scale Contact boxes"),
                           tr("Resize Contact boxes (top-left)"), tr("Resize Contact boxes (bottom-right)")});
    for (QSpinBox *field : {m_x, m_y})
        field->setRange(-ValueLimit, ValueLimit);
    m_x->setObjectName(QStringLiteral("x"));
    m_y->setObjectName(QStringLiteral("y"));
    auto *fields = new QFormLayout;
    fields->addRow(tr("Operation:"), m_operation);
    fields->addRow(tr("X:"), m_x);
    fields->addRow(tr("Y:"), m_y);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *applyButton = buttons->addButton(tr("Apply"), QDialogButtonBox::ApplyRole);
    QPushButton *closeButton = buttons->addButton(tr("Close"), QDialogButtonBox::RejectRole);
    applyButton->setAutoDefault(false);
    closeButton->setAutoDefault(false);
    connect(applyButton, &QPushButton::clicked, this, &AnimAlign::applyChosen);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(selection);
    layout->addLayout(fields);
    layout->addWidget(buttons);
}

AnimAlign::~AnimAlign() = default;

void AnimAlign::apply(Animations *animations, const QList<int> &rows, Operation operation, int x, int y)
{
    if (!animations || rows.isEmpty())
        return;
    animations->beginChange();
    for (int row : rows) {
        AnimationCode *animation = row >= 0 ? animations->at(uint(row)) : nullptr;
        if (!animation)
            continue;
        // The list of frames is read once: the setters rewrite lines, not frames.
        const QList<FrameCode *> frames = animation->frames();
        for (FrameCode *frame : frames)
            applyToFrame(frame, operation, x, y);
    }
    animations->endChange();
}

QList<int> AnimAlign::selectedRows() const
{
    QList<int> rows;
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->checkState() == Qt::Checked)
            rows.append(row);
    }
    return rows;
}

void AnimAlign::setSelected(int row, bool selected)
{
    if (QListWidgetItem *item = m_list->item(row))
        item->setCheckState(selected ? Qt::Checked : Qt::Unchecked);
}

AnimAlign::Operation AnimAlign::operation() const
{
    return Operation(m_operation->currentIndex());
}

void AnimAlign::setOperation(Operation operation)
{
    m_operation->setCurrentIndex(int(operation));
}

int AnimAlign::xValue() const
{
    return m_x->value();
}

int AnimAlign::yValue() const
{
    return m_y->value();
}

void AnimAlign::setValues(int x, int y)
{
    m_x->setValue(x);
    m_y->setValue(y);
}

void AnimAlign::selectAll()
{
    for (int row = 0; row < m_list->count(); ++row)
        setSelected(row, true);
}

void AnimAlign::invertSelection()
{
    for (int row = 0; row < m_list->count(); ++row)
        setSelected(row, m_list->item(row)->checkState() != Qt::Checked);
}

void AnimAlign::clearSelection()
{
    for (int row = 0; row < m_list->count(); ++row)
        setSelected(row, false);
}

void AnimAlign::applyChosen()
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty())
        return;
    apply(m_animations, rows, operation(), m_x->value(), m_y->value());
    emit applied();
}

} // namespace Ovra
