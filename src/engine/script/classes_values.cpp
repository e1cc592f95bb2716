// The values group: values and groups, boxes, frames, animations and their list. Every
// change a script makes here is an edit of the document's text, one undo step each.
#include "engine/script/classes_p.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/contactboxcode.h"
#include "code/framecode.h"
#include "code/groupcode.h"
#include "code/valuecode.h"
#include "image/sprite.h"

namespace Ovra {
namespace ScriptClasses {

namespace {

// A read with no argument and a write with one, under one name, as frames offer them:
// frame:delay() reads and frame:delay(4) rewrites the frame's line.
template <class Value, class Getter, class Setter>
auto readWrite(Getter getter, Setter setter)
{
    return Script::overload([getter](const FrameCode &self) { return (self.*getter)(); },
                            [setter](FrameCode &self, Value value) { (self.*setter)(value); });
}

// Several line rewrites of one frame as one undo step.
template <class F>
void asOneChange(FrameCode &frame, F change)
{
    CodeDocument *document = frame.document();
    if (document)
        document->beginChange();
    change();
    if (document)
        document->endChange();
}

void registerValueCode(Script::Table &table)
{
    table.usertype<ValueCode>("ValueCode")
        .base<CodeNode>()
        .base<NamedCode>()
        .property("type", &ValueCode::valueType)
        .property("value", &ValueCode::value, &ValueCode::setValue)
        .enumeration("Type", {{"Unknown", ValueCode::Unknown},     {"String", ValueCode::String},
                              {"Bool", ValueCode::Bool},           {"File", ValueCode::File},
                              {"Date", ValueCode::Date},           {"Keyword", ValueCode::Keyword},
                              {"KeywordVector", ValueCode::KeywordVector}, {"Float", ValueCode::Float},
                              {"FloatVec2", ValueCode::FloatVec2}, {"FloatVec3", ValueCode::FloatVec3},
                              {"FloatVec4", ValueCode::FloatVec4}, {"FloatVector", ValueCode::FloatVector},
                              {"Int", ValueCode::Int},             {"IntVec2", ValueCode::IntVec2},
                              {"IntVec3", ValueCode::IntVec3},     {"IntVec4", ValueCode::IntVec4},
                              {"IntVector", ValueCode::IntVector}});
}

void registerGroupCode(Script::Table &table)
{
    table.usertype<GroupCode>("GroupCode")
        .base<ParentCode>()
        .base<NamedCode>()
        .function("subType", &GroupCode::subType)
        .function("values", &GroupCode::values)
        .function("valueCount", &GroupCode::valueCount)
        .function("valueAt", &GroupCode::valueAt)
        .function("removeValueAt", &GroupCode::removeValue)
        .function("insertValue", &GroupCode::insertValue)
        .function("addValue", &GroupCode::addValue);
}

// A hit box, and the boxes of one kind in a frame.
void registerHitBoxes(Script::Table &table)
{
    table.usertype<ContactBoxCode>("HitBoxCode")
        .base<CodeNode>()
        .base<PropertyItem>()
        .function("boxType", &ContactBoxCode::boxType)
        .function("rect", Script::overload(&ContactBoxCode::rect, &ContactBoxCode::setRect))
        .enumeration("Type", {{"Attack", ContactBoxCode::Attack}, {"Collision", ContactBoxCode::Collision}});

    table.usertype<ContactBoxesCode>("HitBoxes")
        .property("parent", &ContactBoxesCode::frame)
        .property("boxType", &ContactBoxesCode::boxType)
        .property("count", &ContactBoxesCode::count)
        .function("at", &ContactBoxesCode::at)
        .function("add", &ContactBoxesCode::append)
        .function("remove", &ContactBoxesCode::remove)
        .function("clear", &ContactBoxesCode::clear);
}

void registerFrameBlend(Script::Table &table)
{
    // The name "source" stands twice: the second registration wins, so a script reaches
    // the destination factor under it, and the source factor through the frame.
    using Blend = FrameCode::Blend;
    table.usertype<Blend>("AnimationFrameBlend")
        .constructor<>()
        .constructor<Blend::Mode, double, double>()
        .field("mode", &Blend::mode)
        .field("source", &Blend::source)
        .field("source", &Blend::destination)
        .enumeration("Mode", {{"None", Blend::None},
                              {"Addition", Blend::Addition},
                              {"Subtraction", Blend::Subtraction},
                              {"Overlay", Blend::Overlay},
                              {"HardLight", Blend::HardLight},
                              {"Dodge", Blend::Dodge},
                              {"Opacity", Blend::Opacity}});
}

void registerFrameCode(Script::Table &table)
{
    using Blend = FrameCode::Blend;
    table.usertype<FrameCode>("AnimationFrameCode")
        .base<ParentCode>()
        .base<PropertyItem>()
        .function("sprite", &FrameCode::sprite)
        .function("offset", Script::overload(&FrameCode::offset,
                                             [](FrameCode &self, const QPoint &offset) {
                                                 asOneChange(self, [&] {
                                                     self.setOffsetX(offset.x());
                                                     self.setOffsetY(offset.y());
                                                 });
                                             }))
        .function("offsetX", readWrite<int>(&FrameCode::offsetX, &FrameCode::setOffsetX))
        .function("offsetY", readWrite<int>(&FrameCode::offsetY, &FrameCode::setOffsetY))
        .function("delay", readWrite<int>(&FrameCode::delay, &FrameCode::setDelay))
        .function("scale", readWrite<const QPointF &>(&FrameCode::scale, &FrameCode::setScale))
        .function("scaleX", readWrite<double>(&FrameCode::scaleX, &FrameCode::setScaleX))
        .function("scaleY", readWrite<double>(&FrameCode::scaleY, &FrameCode::setScaleY))
        .function("angle", readWrite<double>(&FrameCode::angle, &FrameCode::setAngle))
        .function("flipFlags", readWrite<uint>(&FrameCode::flipFlags, &FrameCode::setFlipFlags))
        .function("blend", readWrite<const Blend &>(&FrameCode::blend, &FrameCode::setBlend))
        .function("blendMode", readWrite<Blend::Mode>(&FrameCode::blendMode, &FrameCode::setBlendMode))
        .function("blendSource", readWrite<double>(&FrameCode::blendSource, &FrameCode::setBlendSource))
        .function("blendDestination", readWrite<double>(&FrameCode::blendDestination, &FrameCode::setBlendDestination))
        .function("collisionBoxes", [](const FrameCode &self) { return self.contactBoxes(ContactBoxCode::Collision); })
        .function("attackBoxes", [](const FrameCode &self) { return self.contactBoxes(ContactBoxCode::Attack); })
        .enumeration("Flip", {{"None", FrameCode::None},
                              {"Horizontal", FrameCode::Horizontal},
                              {"Vertical", FrameCode::Vertical},
                              {"Both", FrameCode::Both}});
}

void registerAnimationCode(Script::Table &table)
{
    table.usertype<AnimationCode>("AnimationCode")
        .base<ParentCode>()
        .base<NamedCode>()
        .property("code", &AnimationCode::code, &AnimationCode::setCode)
        .property("selectedFrame", &AnimationCode::selectedFrame, &AnimationCode::setSelectedFrame)
        .property("frames", &AnimationCode::frames)
        .property("frameCount", &AnimationCode::frameCount)
        .function("removeFrame", &AnimationCode::removeFrame)
        .function("addFrame", &AnimationCode::addFrame)
        .function("insertFrame", &AnimationCode::insertFrame)
        .function("frameAt", &AnimationCode::frameAt)
        .function("frameIndex", &AnimationCode::indexOfFrame);
}

void registerAnimations(Script::Table &table)
{
    table.usertype<Animations>("Animations")
        .base<ProjectFile>()
        .base<OrganizableObject>()
        .property("selected", &Animations::selected, &Animations::setSelected)
        .property("items", &Animations::animations)
        .property("count", &Animations::count)
        .function("at", &Animations::at)
        .function("add", &Animations::add)
        .function("insert", &Animations::insert)
        .function("remove", &Animations::remove)
        .function("duplicate", Script::overload([](Animations &self, uint index) { return self.duplicate(index, QString()); },
                                                &Animations::duplicate))
        .function("indexOf", &Animations::indexOf);
}

} // namespace

void registerValues(Script::Table &table)
{
    registerValueCode(table);
    registerGroupCode(table);
    registerHitBoxes(table);
    registerFrameBlend(table);
    registerFrameCode(table);
    registerAnimationCode(table);
    registerAnimations(table);
}

} // namespace ScriptClasses
} // namespace Ovra
