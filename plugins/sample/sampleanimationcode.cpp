#include "sampleanimationcode.h"

#include "animationdocument.h"
#include "samplecode.h"
#include "samplelanguage.h"
#include "spriteid.h"

#include "code/codedocument.h"
#include "image/sprite.h"

using namespace Ovra;
using SampleLanguage::number;

namespace {

QString pair(double x, double y)
{
    return QStringLiteral("(%1, %2)").arg(number(x), number(y));
}

} // namespace

FrameCode::Blend SampleFrameData::defaultBlend()
{
    FrameCode::Blend blend;
    blend.source = 1.0;
    blend.destination = 1.0;
    return blend;
}

const QStringList &SampleFrameData::blendWords()
{
    // In the order of FrameCode::Blend::Mode.
    static const QStringList words{QStringLiteral("none"),      QStringLiteral("add"),   QStringLiteral("subtract"),
                                   QStringLiteral("overlay"),   QStringLiteral("hardlight"), QStringLiteral("dodge"),
                                   QStringLiteral("opacity")};
    return words;
}

const QStringList &SampleFrameData::easeWords()
{
    // Bit i stands for word i.
    static const QStringList words{QStringLiteral("offset"), QStringLiteral("scale"), QStringLiteral("angle"),
                                   QStringLiteral("blend")};
    return words;
}

QString SampleFrameData::text() const
{
    QString line = QStringLiteral("frame ") + pair(sprite.x(), sprite.y()) + QStringLiteral(" delay=")
        + QString::number(delay);
    if (!offset.isNull())
        line += QStringLiteral(" offset=") + pair(offset.x(), offset.y());
    if (flip & 3) {
        line += QStringLiteral(" flip=");
        if (flip & FrameCode::Horizontal)
            line += QLatin1Char('h');
        if (flip & FrameCode::Vertical)
            line += QLatin1Char('v');
    }
    if (scale != QPointF(1.0, 1.0))
        line += QStringLiteral(" scale=") + pair(scale.x(), scale.y());
    if (angle != 0.0)
        line += QStringLiteral(" angle=") + number(angle);
    const FrameCode::Blend plain = defaultBlend();
    const bool plainFactors = blend.source == plain.source && blend.destination == plain.destination;
    if (blend.mode != FrameCode::Blend::None || !plainFactors) {
        line += QStringLiteral(" blend=") + blendWords().value(int(blend.mode));
        if (!plainFactors)
            line += pair(blend.source, blend.destination);
    }
    if (ease) {
        QStringList words;
        for (int bit = 0; bit < easeWords().size(); ++bit) {
            if (ease & (1u << bit))
                words << easeWords().at(bit);
        }
        line += QStringLiteral(" ease=") + words.join(QLatin1Char('+'));
    }
    if (loop)
        line += QStringLiteral(" loop");
    if (!identifier.isEmpty())
        line += QStringLiteral(" id=") + identifier;
    return line;
}

bool SampleFrameData::looksLike(const SampleFrameData &other) const
{
    return sprite == other.sprite && offset == other.offset && flip == other.flip && scale == other.scale
        && angle == other.angle && blend.mode == other.blend.mode && blend.source == other.blend.source
        && blend.destination == other.blend.destination && ease == other.ease;
}

bool SampleFrameData::operator==(const SampleFrameData &other) const
{
    return looksLike(other) && delay == other.delay && loop == other.loop && identifier == other.identifier
        && writesDefaults == other.writesDefaults;
}

// Boxes

SampleBox::SampleBox(const QTextBlock &block, CodeNode *previous, BoxType type, const QRect &rect)
    : ContactBoxCode(block, previous)
    , m_type(type)
    , m_rect(rect)
{
}

QString SampleBox::word(BoxType type)
{
    return type == Attack ? QStringLiteral("attack") : QStringLiteral("body");
}

QString SampleBox::text(BoxType type, const QRect &rect)
{
    return word(type) + QStringLiteral(" (%1, %2, %3, %4)")
                            .arg(rect.left())
                            .arg(rect.top())
                            .arg(rect.right())
                            .arg(rect.bottom());
}

void SampleBox::setRect(const QRect &rect)
{
    SampleCode::rewriteLine(this, text(m_type, rect));
}

QStringList SampleBox::propertyNames() const
{
    return {QStringLiteral("Rect"), QStringLiteral("Type")};
}

QVariant SampleBox::property(const QString &name) const
{
    if (name == QLatin1String("Rect"))
        return m_rect;
    if (name == QLatin1String("Type"))
        return int(m_type);
    return QVariant();
}

void SampleBox::setProperty(const QString &name, const QVariant &value)
{
    if (name == QLatin1String("Rect"))
        setRect(value.toRect());
}

FrameCode *SampleBox::frame() const
{
    CodeNode *node = previous();
    while (node && node->type() == HitBox)
        node = node->previous();
    return node && node->type() == Frame ? static_cast<FrameCode *>(node) : nullptr;
}

void SampleBox::update(BoxType type, const QRect &rect)
{
    m_type = type;
    m_rect = rect;
}

FrameCode *SampleBoxes::frame() const
{
    return m_frame;
}

QList<ContactBoxCode *> SampleBoxes::boxes() const
{
    QList<ContactBoxCode *> list;
    for (CodeNode *node = m_frame->next(); node && node->type() == CodeNode::HitBox; node = node->next()) {
        auto *box = static_cast<ContactBoxCode *>(node);
        if (box->boxType() == m_type)
            list << box;
    }
    return list;
}

uint SampleBoxes::count() const
{
    return uint(boxes().size());
}

ContactBoxCode *SampleBoxes::at(uint index) const
{
    return boxes().value(int(index));
}

ContactBoxCode *SampleBoxes::append(const QRect &rect)
{
    CodeDocument *owner = m_frame->document();
    if (!owner)
        return nullptr;
    const uint before = count();
    owner->insertAfter(m_frame->lastNode(), SampleLanguage::indent(2) + SampleBox::text(m_type, rect), true);
    return count() > before ? at(count() - 1) : nullptr;
}

void SampleBoxes::remove(uint index)
{
    if (ContactBoxCode *box = at(index))
        box->remove(false);
}

void SampleBoxes::clear()
{
    CodeDocument *owner = m_frame->document();
    if (!owner)
        return;
    owner->beginChange();
    while (count())
        remove(count() - 1);
    owner->endChange();
}

// Frames

SampleFrame::SampleFrame(const QTextBlock &block, CodeNode *previous, const SampleFrameData &data)
    : FrameCode(block, previous, new SampleBoxes(this, ContactBoxCode::Attack),
                new SampleBoxes(this, ContactBoxCode::Collision))
    , m_data(data)
{
}

int SampleFrame::firstLine() const
{
    const ParentCode *animation = parent();
    const int row = animation ? animation->childIndex(this) : -1;
    if (row > 0)
        return static_cast<SampleFrame *>(animation->childAt(uint(row - 1)))->lastLine() + 1;
    return lineNo();
}

int SampleFrame::lastLine() const
{
    return lastNode()->lineNo();
}

CodeNode *SampleFrame::lastNode() const
{
    CodeNode *last = const_cast<SampleFrame *>(this);
    while (last->next() && last->next()->type() == HitBox)
        last = last->next();
    return last;
}

bool SampleFrame::hasBoxes() const
{
    return next() && next()->type() == HitBox;
}

void SampleFrame::write(const SampleFrameData &data)
{
    SampleCode::rewriteLine(this, data.text());
}

void SampleFrame::update(const SampleFrameData &data)
{
    if (data == m_data)
        return;
    m_data = data;
    valueChanged(QVariant());
}

QVariant SampleFrame::property(const QString &name) const
{
    switch (propertyNames().indexOf(name)) {
    case 0: return identifier();
    case 1: return offset();
    case 2: return delay();
    case 3: return scale();
    case 4: return angle();
    case 5: return uint(flipFlags());
    case 6: return isLoopPoint();
    default: return QVariant();
    }
}

void SampleFrame::setProperty(const QString &name, const QVariant &value)
{
    SampleFrameData next = m_data;
    switch (propertyNames().indexOf(name)) {
    case 0: next.identifier = value.toString(); break;
    case 1: next.offset = value.toPoint(); break;
    case 2: next.delay = value.toInt(); break;
    case 3: next.scale = value.toPointF(); break;
    case 4: next.angle = value.toDouble(); break;
    case 5: next.flip = value.toUInt() & 3; break;
    case 6: next.loop = value.toBool(); break;
    default: return;
    }
    write(next);
}

Sprite *SampleFrame::sprite() const
{
    const auto *owner = dynamic_cast<AnimationDocument *>(document());
    Sprites *sprites = owner ? owner->sprites() : nullptr;
    if (!sprites)
        return nullptr;
    const int index = sprites->find(0, SpriteId::pack(m_data.sprite));
    return index < 0 ? nullptr : sprites->at(uint(index));
}

void SampleFrame::setSpriteId(const QVariant &id)
{
    SampleFrameData next = m_data;
    if (id.userType() == QMetaType::QPoint) {
        next.sprite = id.toPoint();
    } else {
        next.sprite = SpriteId::unpack(id.toUInt()); // the number a sprite list gives
    }
    write(next);
}

#define SAMPLE_FRAME_SETTER(function, type, statement) \
    void SampleFrame::function(type value)             \
    {                                                  \
        SampleFrameData next = m_data;                 \
        statement;                                     \
        write(next);                                   \
    }

SAMPLE_FRAME_SETTER(setOffsetX, int, next.offset.setX(value))
SAMPLE_FRAME_SETTER(setOffsetY, int, next.offset.setY(value))
SAMPLE_FRAME_SETTER(setIdentifier, const QString &, next.identifier = value.trimmed())
SAMPLE_FRAME_SETTER(setDelay, int, next.delay = value)
SAMPLE_FRAME_SETTER(setScaleX, double, next.scale.setX(value))
SAMPLE_FRAME_SETTER(setScaleY, double, next.scale.setY(value))
SAMPLE_FRAME_SETTER(setScale, const QPointF &, next.scale = value)
SAMPLE_FRAME_SETTER(setAngle, double, next.angle = value)
SAMPLE_FRAME_SETTER(setFlipFlags, uint, next.flip = value & 3)
SAMPLE_FRAME_SETTER(setBlendMode, Blend::Mode, next.blend.mode = value)
SAMPLE_FRAME_SETTER(setBlendSource, double, next.blend.source = value)
SAMPLE_FRAME_SETTER(setBlendDestination, double, next.blend.destination = value)
SAMPLE_FRAME_SETTER(setBlend, const Blend &, next.blend = value)
SAMPLE_FRAME_SETTER(setLoopPoint, bool, next.loop = value)
SAMPLE_FRAME_SETTER(setInterpolation, uint, next.ease = value & 15)

#undef SAMPLE_FRAME_SETTER

// Animations

SampleAnimation::SampleAnimation(const QTextBlock &block, CodeNode *previous, const QString &identifier,
                                 const QString &title)
    : AnimationCode(block, previous)
    , m_identifier(identifier)
    , m_title(title)
{
}

QString SampleAnimation::headerText(const QString &identifier, const QString &title)
{
    QString line = QStringLiteral("animation ") + identifier;
    if (!title.isEmpty()) {
        QString escaped = title;
        escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
        escaped.replace(QLatin1Char('"'), QLatin1String("\\\""));
        line += QStringLiteral(" \"") + escaped + QLatin1Char('"');
    }
    return line;
}

void SampleAnimation::setIdentifier(const QString &identifier)
{
    SampleCode::rewriteLine(this, headerText(identifier.trimmed(), m_title));
}

QString SampleAnimation::displayName() const
{
    if (m_title.isEmpty())
        return QStringLiteral("Animation ") + m_identifier;
    return m_identifier + QLatin1Char(' ') + m_title;
}

void SampleAnimation::setName(const QString &name)
{
    SampleCode::rewriteLine(this, headerText(m_identifier, name));
}

QVariant SampleAnimation::property(const QString &name) const
{
    if (name == QLatin1String("Identifier"))
        return m_identifier;
    return AnimationCode::property(name);
}

void SampleAnimation::setProperty(const QString &name, const QVariant &value)
{
    if (name == QLatin1String("Identifier"))
        setIdentifier(value.toString());
    else
        AnimationCode::setProperty(name, value);
}

uint SampleAnimation::loopPoint() const
{
    for (uint i = 0; i < frameCount(); ++i) {
        if (frameAt(i)->isLoopPoint())
            return i;
    }
    return 0;
}

FrameCode *SampleAnimation::insertFrame(uint index)
{
    CodeDocument *owner = document();
    if (!owner)
        return nullptr;
    const QString text = SampleLanguage::indent(1) + SampleFrameData().text();
    const uint before = frameCount();
    const uint row = qMin(index, before);
    if (row < before)
        owner->insertBefore(frameAt(row), text, true);
    else if (before)
        owner->insertAfter(static_cast<SampleFrame *>(frameAt(before - 1))->lastNode(), text, true);
    else
        owner->insertAfter(this, text, true);
    return frameCount() > before ? frameAt(row) : nullptr;
}

FrameCode *SampleAnimation::addFrame()
{
    return insertFrame(frameCount());
}

void SampleAnimation::update(const QString &identifier, const QString &title)
{
    if (identifier == m_identifier && title == m_title)
        return;
    m_identifier = identifier;
    m_title = title;
    valueChanged(displayName());
}
