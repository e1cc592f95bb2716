// The animation editor's panel and actions: the selectors, the fields of the frame and the
// buttons under them, registered with the host by their option names, with the texts of
// the library's string table.
#include "editors/animation/animationeditor.h"
#include "editors/animation/animationeditor_p.h"

#include "editors/animation/animationicons_p.h"
#include "foundation/interface.h"

#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace Ovra {
namespace {

// When an action may be used: always with a file, with a current animation, or with a
// current frame. The host enables the last two by the editor's signals; the first the
// editor enables itself, as its signal (noFile) says the opposite.
enum Need { NeedFile, NeedAnimation, NeedFrame };

struct ActionEntry
{
    const char *name;
    uint text;
    bool checkable;
    const char *slot;
    Need need;
    // The group of buttons of the panel that shows it; -1 for none.
    int group;
};

// Texts of the editor that the library's string table has no entry for: numbers above
// the table's, read through AnimationStrings.
const uint OwnTexts = 1000;
const uint OnionAnimationText = OwnTexts + 0;
const uint OnionFrameText = OwnTexts + 1;
const uint OnionFindText = OwnTexts + 2;
const uint AnimationLabelText = OwnTexts + 3;
const uint FrameLabelText = 83;
const uint FlipTexts[] = {87, 89, 88, 90}; // in the order of the flip bits

// The panel's labels by name, with their texts.
const struct
{
    const char *name;
    uint text;
} panelLabels[] = {{"anim_sel_lb", AnimationLabelText}, {"anim_frame_sel_lb", FrameLabelText},
                   {"anim_frame_xaxis_lb", 84},         {"anim_frame_yaxis_lb", 85},
                   {"anim_frame_time_lb", 94},          {"anim_frame_flip_lb", 86},
                   {"anim_frame_xscale_lb", 91},        {"anim_frame_yscale_lb", 92},
                   {"anim_frame_angle_lb", 93}};
const uint EditorText = 51;

// Panel groups: playback and frames, contact boxes, onion skin.
const ActionEntry actionTable[] = {
    {"anim_editcode", 52, true, SLOT(editCode(bool)), NeedFile, -1},
    {"anim_add", 53, false, SLOT(add()), NeedFile, -1},
    {"anim_delete", 54, false, SLOT(del()), NeedAnimation, -1},
    {"anim_duplicate", 55, false, SLOT(duplicate()), NeedAnimation, -1},
    {"anim_code", 56, false, SLOT(editAnimCode()), NeedAnimation, -1},
    {"anim_save_gif", 57, false, SLOT(saveGIF()), NeedAnimation, -1},
    {"anim_prev_anim", 95, false, SLOT(prevAnimation()), NeedAnimation, -1},
    {"anim_next_anim", 96, false, SLOT(nextAnimation()), NeedAnimation, -1},
    {"anim_optimize", 74, false, SLOT(optimize()), NeedFile, -1},
    {"anim_export", 75, false, SLOT(exportTo()), NeedAnimation, -1},
    {"anim_import", 76, false, SLOT(importFrom()), NeedFile, -1},
    {"anim_import_proj", 77, false, SLOT(projImport()), NeedFile, -1},
    {"anim_find", 100, false, SLOT(find()), NeedAnimation, -1},
    {"anim_play", 58, true, SLOT(playChanged(bool)), NeedFrame, 0},
    {"anim_stop", 59, false, SLOT(stopChanged()), NeedFrame, 0},
    {"anim_prev_frame", 97, false, SLOT(prevFrame()), NeedFrame, 0},
    {"anim_next_frame", 98, false, SLOT(nextFrame()), NeedFrame, 0},
    {"anim_frame_add", 64, false, SLOT(frameAdd()), NeedAnimation, 0},
    {"anim_frame_delete", 65, false, SLOT(frameDel()), NeedFrame, 0},
    {"anim_frame_align", 82, false, SLOT(frameAlign()), NeedAnimation, 0},
    {"anim_pos_left", 60, false, SLOT(axisLeft()), NeedFrame, 1},
    {"anim_pos_right", 62, false, SLOT(axisRight()), NeedFrame, 1},
    {"anim_pos_up", 61, false, SLOT(axisUp()), NeedFrame, 1},
    {"anim_pos_down", 63, false, SLOT(axisDown()), NeedFrame, 1},
    {"anim_frameall_offset", 80, false, SLOT(frameAllOffset()), NeedFrame, 1},
    {"anim_frameall_time", 78, false, SLOT(frameAllTime()), NeedFrame, 1},
    {"anim_frameall_flip", 79, false, SLOT(frameAllFlip()), NeedFrame, 1},
    {"anim_frameall_scale", 81, false, SLOT(frameAllScale()), NeedFrame, 1},
    {"anim_box_add_attack", 66, true, SLOT(boxAddAChanged(bool)), NeedFrame, 2},
    {"anim_box_add_collision", 67, true, SLOT(boxAddCChanged(bool)), NeedFrame, 2},
    {"anim_box_del", 68, false, SLOT(boxDel()), NeedFrame, 2},
    {"anim_box_delall", 69, false, SLOT(boxDelAll()), NeedFrame, 2},
    {"anim_box_delall_anim", 70, false, SLOT(boxDelAllAnim()), NeedFrame, 2},
    {"anim_box_prev", 72, false, SLOT(boxPrev()), NeedFrame, 2},
    {"anim_box_type", 71, false, SLOT(boxSwType()), NeedFrame, 2},
    {"anim_box_allinst", 73, false, SLOT(boxAllInst()), NeedFrame, 2},
    {"anim_onion_skin", 99, true, SLOT(onionSkinChanged(bool)), NeedAnimation, 3},
    {"anim_onion_sel", OnionAnimationText, false, SLOT(onionSelect()), NeedAnimation, 3},
    {"anim_onion_framesel", OnionFrameText, false, SLOT(onionFrameSelect()), NeedAnimation, 3},
    {"anim_onion_find", OnionFindText, false, SLOT(onionFind()), NeedAnimation, 3},
    // The sprite explorer shows these four; see the slots for what each makes.
    {"anim_thumb_add", 208, false, SLOT(thumbAdd()), NeedAnimation, -1},
    {"anim_thumb_add_all", 209, false, SLOT(thumbAddAll()), NeedAnimation, -1},
    {"anim_thumb_new", 210, false, SLOT(thumbNew()), NeedFile, -1},
    {"anim_thumb_new_all", 211, false, SLOT(thumbNewAll()), NeedFile, -1},
};
const int GroupCount = 4;

// The library's table, and the few texts of this editor beyond it.
class AnimationStrings : public QObject, public Translator
{
    Q_OBJECT
public:
    QString text(uint id) override
    {
        switch (id) {
        case OnionAnimationText:
            return tr("Onion skin animation...");
        case OnionFrameText:
            return tr("Onion skin frame...");
        case OnionFindText:
            return tr("Find onion skin animation...");
        case AnimationLabelText:
            return tr("Animation:");
        default:
            return ovraTranslator()->text(id);
        }
    }
    QString tip(uint id) override
    {
        switch (id) {
        case OnionAnimationText:
            return tr("Choose the animation the onion skin frame comes from");
        case OnionFrameText:
            return tr("Choose the onion skin frame");
        case OnionFindText:
            return tr("Find the animation of the onion skin by its identifier");
        case AnimationLabelText:
            return QString();
        default:
            return ovraTranslator()->tip(id);
        }
    }
};

AnimationStrings &strings()
{
    static AnimationStrings table;
    return table;
}

template<class Box>
Box *makeSpin(QWidget *parent, const char *name, double minimum, double maximum)
{
    auto *box = new Box(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(typename std::conditional<std::is_same<Box, QSpinBox>::value, int, double>::type(minimum),
                  typename std::conditional<std::is_same<Box, QSpinBox>::value, int, double>::type(maximum));
    // A value counts when it is complete (Enter, focus out, arrows), not at each digit.
    box->setKeyboardTracking(false);
    box->setAccelerated(true);
    return box;
}

} // namespace

namespace {

QLabel *namedLabel(QWidget *panel, const char *name, uint text)
{
    auto *widget = new QLabel(strings().text(text), panel);
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

// The seven fields of the frame, each under its label, from the grid's fourth row on.
void addFields(AnimationEditorPrivate *d, QGridLayout *grid)
{
    d->xField = makeSpin<QSpinBox>(d->panel, "anim_frame_xaxis", -32768, 32767);
    d->yField = makeSpin<QSpinBox>(d->panel, "anim_frame_yaxis", -32768, 32767);
    // A negative time holds the frame for ever.
    d->timeField = makeSpin<QSpinBox>(d->panel, "anim_frame_time", -1, 32767);
    d->flipField = new QComboBox(d->panel);
    d->flipField->setObjectName(QStringLiteral("anim_frame_flip"));
    // The row is the frame's flags.
    for (uint text : FlipTexts)
        d->flipField->addItem(strings().text(text));
    d->xScaleField = makeSpin<QDoubleSpinBox>(d->panel, "anim_frame_xscale", -100.0, 100.0);
    d->yScaleField = makeSpin<QDoubleSpinBox>(d->panel, "anim_frame_yscale", -100.0, 100.0);
    d->angleField = makeSpin<QDoubleSpinBox>(d->panel, "anim_frame_angle", -360.0, 360.0);
    for (QDoubleSpinBox *field : {d->xScaleField, d->yScaleField})
        field->setSingleStep(0.1);
    const struct
    {
        const char *name;
        uint text;
        QWidget *field;
    } fields[] = {{"anim_frame_xaxis_lb", 84, d->xField},   {"anim_frame_yaxis_lb", 85, d->yField},
                  {"anim_frame_time_lb", 94, d->timeField}, {"anim_frame_flip_lb", 86, d->flipField},
                  {"anim_frame_xscale_lb", 91, d->xScaleField}, {"anim_frame_yscale_lb", 92, d->yScaleField},
                  {"anim_frame_angle_lb", 93, d->angleField}};
    int row = 3;
    for (const auto &field : fields) {
        QLabel *text = namedLabel(d->panel, field.name, field.text);
        text->setBuddy(field.field);
        grid->addWidget(text, row, 0);
        grid->addWidget(field.field, row++, 1);
        if (d->interface)
            d->interface->registerControl(QString::fromLatin1(field.name), text);
    }
}

// Each field writes its value into the current frame as it is completed.
void connectFields(AnimationEditorPrivate *d)
{
    using P = AnimationEditorPrivate;
    const auto comboIndex = QOverload<int>::of(&QComboBox::currentIndexChanged);
    const auto whole = QOverload<int>::of(&QSpinBox::valueChanged);
    const auto real = QOverload<double>::of(&QDoubleSpinBox::valueChanged);
    QObject::connect(d->animationBox, comboIndex, d, &P::selPosChanged);
    QObject::connect(d->frameBox, comboIndex, d, &P::frameSelPosChanged);
    QObject::connect(d->xField, whole, d, &P::frameXChanged);
    QObject::connect(d->yField, whole, d, &P::frameYChanged);
    QObject::connect(d->timeField, whole, d, &P::frameTimeChanged);
    QObject::connect(d->flipField, QOverload<int>::of(&QComboBox::activated), d, &P::frameFlipChanged);
    QObject::connect(d->xScaleField, real, d, &P::frameXScaleChanged);
    QObject::connect(d->yScaleField, real, d, &P::frameYScaleChanged);
    QObject::connect(d->angleField, real, d, &P::frameAngleChanged);
}

// The host knows the panel's widgets by their option names.
void registerControls(AnimationEditorPrivate *d)
{
    if (!d->interface)
        return;
    const QList<QPair<const char *, QWidget *>> controls = {
        {"anim_sel", d->animationBox},         {"anim_sel_lb", d->animationLabel},
        {"anim_frame_sel", d->frameBox},       {"anim_frame_sel_lb", d->frameLabel},
        {"anim_frame_lb", d->positionLabel},   {"anim_frame_xaxis", d->xField},
        {"anim_frame_yaxis", d->yField},       {"anim_frame_time", d->timeField},
        {"anim_frame_flip", d->flipField},     {"anim_frame_xscale", d->xScaleField},
        {"anim_frame_yscale", d->yScaleField}, {"anim_frame_angle", d->angleField},
        {"anim_onion_lb", d->onionLabel}};
    for (const auto &control : controls)
        d->interface->registerControl(QString::fromLatin1(control.first), control.second);
}

} // namespace

void AnimationEditorPrivate::buildPanel()
{
    panel = new QWidget;
    panel->setObjectName(QStringLiteral("anim_panel"));
    // The workspace that shows the panel owns it then, and may end before the editor:
    // the editor goes on without its widgets.
    connect(panel, &QObject::destroyed, this, [this] {
        disconnect(textConnection);
        disconnect(goneConnection);
        animations = nullptr;
        animationsFile = nullptr;
        animation = nullptr;
        frame = nullptr;
        player.change(nullptr, -1, true);
        panel = nullptr;
        animationBox = frameBox = flipField = nullptr;
        animationLabel = frameLabel = positionLabel = onionLabel = nullptr;
        xField = yField = timeField = nullptr;
        xScaleField = yScaleField = angleField = nullptr;
    });
    auto *layout = new QVBoxLayout(panel);
    auto *grid = new QGridLayout;
    layout->addLayout(grid);

    auto label = [this](const char *name, uint text) { return namedLabel(panel, name, text); };
    animationLabel = label("anim_sel_lb", AnimationLabelText);
    animationBox = new QComboBox(panel);
    animationBox->setObjectName(QStringLiteral("anim_sel"));
    animationBox->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    animationBox->setMinimumContentsLength(12);
    frameLabel = label("anim_frame_sel_lb", FrameLabelText);
    frameBox = new QComboBox(panel);
    frameBox->setObjectName(QStringLiteral("anim_frame_sel"));
    positionLabel = new QLabel(panel);
    positionLabel->setObjectName(QStringLiteral("anim_frame_lb"));
    grid->addWidget(animationLabel, 0, 0);
    grid->addWidget(animationBox, 0, 1);
    grid->addWidget(frameLabel, 1, 0);
    grid->addWidget(frameBox, 1, 1);
    grid->addWidget(positionLabel, 2, 1);

    addFields(this, grid);
    onionLabel = new QLabel(panel);
    onionLabel->setObjectName(QStringLiteral("anim_onion_lb"));
    onionLabel->setWordWrap(true);

    connectFields(this);
    registerControls(this);
}

// Every action of the table through the host, or one of our own without a host; the
// panel shows the grouped ones as buttons under the fields.
void AnimationEditorPrivate::buildActions()
{
    QList<QGridLayout *> groups;
    auto *layout = static_cast<QVBoxLayout *>(panel->layout());
    for (int i = 0; i < GroupCount; ++i) {
        auto *grid = new QGridLayout;
        grid->setSpacing(2);
        // The buttons keep to the left, in the same columns in every group.
        grid->setColumnStretch(6, 1);
        layout->addLayout(grid);
        if (i == 3)
            layout->addWidget(onionLabel);
        groups << grid;
    }
    layout->addStretch(1);
    editorAction = interface ? interface->editorAction(QStringLiteral("editor_anim"), &strings(), EditorText) : nullptr;
    if (!editorAction) {
        editorAction = new QAction(strings().text(EditorText), this);
        editorAction->setObjectName(QStringLiteral("editor_anim"));
    }
    const ActionScope scope{"anim", 0};
    for (const ActionEntry &entry : actionTable) {
        const char *enabling = entry.need == NeedFrame ? SIGNAL(frameEnabled(bool))
                               : entry.need == NeedAnimation ? SIGNAL(enabled(bool))
                                                             : nullptr;
        QAction *action = interface ? interface->createAction(scope, QString::fromLatin1(entry.name), &strings(),
                                                              entry.text, entry.checkable, this, entry.slot,
                                                              nullptr, false)
                                    : nullptr;
        if (!action) {
            action = new QAction(strings().text(entry.text), this);
            action->setObjectName(QString::fromLatin1(entry.name));
            action->setToolTip(strings().tip(entry.text));
            action->setCheckable(entry.checkable);
            connect(action, entry.checkable ? SIGNAL(toggled(bool)) : SIGNAL(triggered()), this, entry.slot);
        }
        // The editor's own signals carry the state whatever the host does with it.
        if (enabling)
            connect(q, enabling, action, SLOT(setEnabled(bool)));
        else
            fileActions << action;
        action->setEnabled(false);
        actions.insert(QString::fromLatin1(entry.name), action);
        if (entry.group < 0)
            continue;
        auto *button = new QToolButton(panel);
        button->setObjectName(QString::fromLatin1(entry.name) + QStringLiteral("_button"));
        button->setAutoRaise(true);
        button->setIconSize(QSize(24, 24));
        // A host without pictures (or with placeholders of a pixel or two) would leave
        // blank buttons, and the words are too wide for the panel: ours stand in.
        const QSize shown = action->icon().actualSize(button->iconSize());
        if (action->icon().isNull() || shown.width() < 8 || shown.height() < 8)
            action->setIcon(animationActionIcon(action->objectName()));
        button->setDefaultAction(action);
        button->setToolButtonStyle(Qt::ToolButtonIconOnly);
        QGridLayout *grid = groups.at(entry.group);
        const int count = grid->count();
        grid->addWidget(button, count / 6, count % 6);
    }
}

void AnimationEditor::retranslate()
{
    CodeFileEditor::retranslate();
    for (const ActionEntry &entry : actionTable) {
        if (QAction *action = d->actionNamed(entry.name)) {
            action->setText(strings().text(entry.text));
            action->setToolTip(strings().tip(entry.text));
        }
    }
    if (d->panel) {
        for (const auto &label : panelLabels) {
            if (auto *widget = d->panel->findChild<QLabel *>(QString::fromLatin1(label.name)))
                widget->setText(strings().text(label.text));
        }
        for (int row = 0; row < d->flipField->count() && row < 4; ++row)
            d->flipField->setItemText(row, strings().text(FlipTexts[row]));
    }
    d->updateState();
    d->updateOnion();
}

} // namespace Ovra

#include "animationeditorpanel.moc"
