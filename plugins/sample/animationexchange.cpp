#include "animationexchange.h"

#include "code/animationcode.h"
#include "code/animations.h"
#include "code/codedocument.h"
#include "code/framecode.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QStringList>

#include <cmath>
#include <limits>

using namespace Ovra;

namespace {

const char formatName[] = "ovra-animations";
constexpr int formatVersion = 1;
// Offsets and box corners beyond this are no picture anyone draws.
constexpr qint64 maxCoordinate = 1000000;
constexpr double maxScale = 1000.0;
constexpr double maxFactor = 1000000.0;
constexpr int maxText = 1024;

const char *const blendNames[] = {"none", "addition", "subtraction", "overlay", "hard-light", "dodge", "opacity"};
const char *const flipNames[] = {"none", "horizontal", "vertical", "both"};

QString key(const char *name)
{
    return QString::fromLatin1(name);
}

struct FrameData
{
    QVariant sprite;
    QPoint offset;
    int delay = 0;
    uint flip = FrameCode::None;
    QPointF scale{1.0, 1.0};
    double angle = 0.0;
    FrameCode::Blend blend; // mode None when the file has none
    uint interpolation = 0;
    bool loop = false;
    QString identifier;
    QList<QRect> attack;
    QList<QRect> collision;
};

struct AnimationData
{
    QString identifier;
    QString name;
    QList<FrameData> frames;
};

// ---- Writing

// Numbers stay numbers and a sprite's (group, number) a pair, so that what the language
// reads back is what it gave.
QJsonValue variantValue(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QPoint:
        return QJsonArray{value.toPoint().x(), value.toPoint().y()};
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return double(value.toLongLong());
    case QMetaType::QVariantList: {
        QJsonArray items;
        for (const QVariant &item : value.toList())
            items.append(variantValue(item));
        return items;
    }
    default:
        return value.toString();
    }
}

QJsonArray boxesArray(const ContactBoxesCode *boxes)
{
    QJsonArray list;
    for (uint i = 0; boxes && i < boxes->count(); ++i) {
        if (const ContactBoxCode *box = boxes->at(i)) {
            const QRect rect = box->rect();
            list.append(QJsonArray{rect.left(), rect.top(), rect.right(), rect.bottom()});
        }
    }
    return list;
}

// Values at their defaults are left out, which keeps hand-written files short.
QJsonObject frameObject(const FrameCode *frame)
{
    QJsonObject object;
    object.insert(key("sprite"), variantValue(frame->spriteId()));
    object.insert(key("offset"), QJsonArray{frame->offsetX(), frame->offsetY()});
    object.insert(key("delay"), frame->delay());
    if (const uint flip = frame->flipFlags() & FrameCode::Both)
        object.insert(key("flip"), key(flipNames[flip]));
    const QPointF scale = frame->scale();
    if (scale != QPointF(1.0, 1.0))
        object.insert(key("scale"), QJsonArray{scale.x(), scale.y()});
    if (frame->angle() != 0.0)
        object.insert(key("angle"), frame->angle());
    const FrameCode::Blend blend = frame->blend();
    // Without a mode the factors do nothing; languages differ in what they keep there.
    if (blend.mode != FrameCode::Blend::None) {
        const int mode = qBound(0, int(blend.mode), int(FrameCode::Blend::Opacity));
        object.insert(key("blend"), QJsonObject{{key("mode"), key(blendNames[mode])},
                                                {key("source"), blend.source},
                                                {key("destination"), blend.destination}});
    }
    if (frame->interpolation())
        object.insert(key("interpolation"), double(frame->interpolation()));
    if (frame->isLoopPoint())
        object.insert(key("loop"), true);
    if (!frame->identifier().isEmpty())
        object.insert(key("identifier"), frame->identifier());
    const QJsonArray attack = boxesArray(frame->contactBoxes(ContactBoxCode::Attack));
    if (!attack.isEmpty())
        object.insert(key("attack"), attack);
    const QJsonArray collision = boxesArray(frame->contactBoxes(ContactBoxCode::Collision));
    if (!collision.isEmpty())
        object.insert(key("collision"), collision);
    return object;
}

QJsonObject animationObject(const AnimationCode *animation)
{
    QJsonObject object;
    object.insert(key("identifier"), variantValue(animation->property(QStringLiteral("Identifier"))));
    if (!animation->name().isEmpty())
        object.insert(key("name"), animation->name());
    QJsonArray frames;
    for (const FrameCode *frame : animation->frames())
        frames.append(frameObject(frame));
    object.insert(key("frames"), frames);
    return object;
}

// ---- Reading

// Reads a whole document into plain records, or tells where it is wrong. Nothing is
// changed while reading, so a bad file leaves the animations as they were.
class Reader
{
public:
    bool read(const QByteArray &bytes, QList<AnimationData> &animations);
    QString error;

private:
    bool fail(const QString &what)
    {
        error = m_where.isEmpty() ? what : m_where + QStringLiteral(": ") + what;
        return false;
    }
    bool readAnimation(const QJsonValue &value, AnimationData &animation);
    bool readFrame(const QJsonValue &value, FrameData &frame);
    bool readBoxes(const QJsonObject &object, const char *name, QList<QRect> &boxes);

    static bool integer(const QJsonValue &value, qint64 min, qint64 max, qint64 &result);
    static bool real(const QJsonValue &value, double limit, double &result);
    static bool text(const QJsonValue &value, QString &result);
    bool pair(const QJsonValue &value, const char *name, qint64 limit, QPoint &result);

    QString m_where;
    int m_totalFrames = 0;
};

bool Reader::integer(const QJsonValue &value, qint64 min, qint64 max, qint64 &result)
{
    if (!value.isDouble())
        return false;
    const double number = value.toDouble();
    if (!std::isfinite(number) || std::floor(number) != number || number < double(min) || number > double(max))
        return false;
    result = qint64(number);
    return true;
}

bool Reader::real(const QJsonValue &value, double limit, double &result)
{
    if (!value.isDouble())
        return false;
    result = value.toDouble();
    return std::isfinite(result) && std::fabs(result) <= limit;
}

// Texts end up inside lines of the engine's language: a line break or another control
// character in one would write lines that no one asked for.
bool Reader::text(const QJsonValue &value, QString &result)
{
    if (!value.isString())
        return false;
    result = value.toString();
    if (result.size() > maxText)
        return false;
    for (const QChar c : qAsConst(result)) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            return false;
    }
    return true;
}

bool Reader::pair(const QJsonValue &value, const char *name, qint64 limit, QPoint &result)
{
    const QJsonArray items = value.toArray();
    qint64 x = 0;
    qint64 y = 0;
    if (!value.isArray() || items.size() != 2 || !integer(items.at(0), -limit, limit, x)
        || !integer(items.at(1), -limit, limit, y))
        return fail(QStringLiteral("\"%1\" must be two whole numbers").arg(key(name)));
    result = QPoint(int(x), int(y));
    return true;
}

bool Reader::read(const QByteArray &bytes, QList<AnimationData> &animations)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return fail(QStringLiteral("Not a JSON document (%1 at byte %2)").arg(parseError.errorString()).arg(parseError.offset));
    if (!document.isObject())
        return fail(QStringLiteral("The document is not a JSON object"));
    const QJsonObject root = document.object();
    if (root.value(key("format")).toString() != key(formatName))
        return fail(QStringLiteral("Not an animation exchange file (\"format\" must be \"%1\")").arg(key(formatName)));
    qint64 version = 0;
    if (!integer(root.value(key("version")), 1, std::numeric_limits<int>::max(), version))
        return fail(QStringLiteral("\"version\" must be a whole number from 1 on"));
    if (version > formatVersion)
        return fail(QStringLiteral("The file is of version %1; only version %2 can be read").arg(version).arg(formatVersion));
    const QJsonValue list = root.value(key("animations"));
    if (!list.isArray())
        return fail(QStringLiteral("\"animations\" must be a list"));
    const QJsonArray items = list.toArray();
    if (items.size() > AnimationExchange::MaxAnimations)
        return fail(QStringLiteral("%1 animations are more than the %2 a file may hold")
                        .arg(items.size()).arg(AnimationExchange::MaxAnimations));
    animations.clear();
    for (int i = 0; i < items.size(); ++i) {
        m_where = QStringLiteral("Animation %1").arg(i + 1);
        AnimationData animation;
        if (!readAnimation(items.at(i), animation))
            return false;
        animations.append(animation);
    }
    m_where.clear();
    return true;
}

bool Reader::readAnimation(const QJsonValue &value, AnimationData &animation)
{
    if (!value.isObject())
        return fail(QStringLiteral("not a JSON object"));
    const QJsonObject object = value.toObject();
    const QJsonValue identifier = object.value(key("identifier"));
    qint64 number = 0;
    if (integer(identifier, 0, std::numeric_limits<int>::max(), number))
        animation.identifier = QString::number(number);
    else if (!text(identifier, animation.identifier) || animation.identifier.trimmed().isEmpty())
        return fail(QStringLiteral("\"identifier\" must be a whole number or a text of one line"));
    if (object.contains(key("name")) && !text(object.value(key("name")), animation.name))
        return fail(QStringLiteral("\"name\" must be a text of one line"));
    const QJsonValue frames = object.value(key("frames"));
    if (frames.isUndefined())
        return true;
    const QJsonArray items = frames.toArray();
    if (!frames.isArray())
        return fail(QStringLiteral("\"frames\" must be a list"));
    m_totalFrames += items.size();
    if (items.size() > AnimationExchange::MaxFramesPerAnimation || m_totalFrames > AnimationExchange::MaxFrames)
        return fail(QStringLiteral("too many frames"));
    const QString where = m_where;
    for (int i = 0; i < items.size(); ++i) {
        m_where = where + QStringLiteral(", frame %1").arg(i + 1);
        FrameData frame;
        if (!readFrame(items.at(i), frame))
            return false;
        animation.frames.append(frame);
    }
    m_where = where;
    return true;
}

bool Reader::readFrame(const QJsonValue &value, FrameData &frame)
{
    if (!value.isObject())
        return fail(QStringLiteral("not a JSON object"));
    const QJsonObject object = value.toObject();
    auto has = [&object](const char *name) { return object.contains(key(name)); };
    auto at = [&object](const char *name) { return object.value(key(name)); };
    qint64 number = 0;

    // The sprite as the language refers to it: a name, a number, or a (group, number) pair.
    const QJsonValue sprite = at("sprite");
    QString name;
    QPoint pairValue;
    if (integer(sprite, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), number))
        frame.sprite = int(number);
    else if (text(sprite, name))
        frame.sprite = name;
    else if (sprite.isArray() && pair(sprite, "sprite", std::numeric_limits<int>::max(), pairValue))
        frame.sprite = pairValue;
    else
        return fail(QStringLiteral("\"sprite\" must be a text, a whole number or a pair of them"));

    if (has("offset") && !pair(at("offset"), "offset", maxCoordinate, frame.offset))
        return false;
    if (!integer(at("delay"), std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), number))
        return fail(QStringLiteral("\"delay\" must be a whole number of ticks"));
    frame.delay = int(number);
    if (has("flip")) {
        int flip = -1;
        for (int i = 0; i < 4 && at("flip").isString(); ++i) {
            if (at("flip").toString() == key(flipNames[i]))
                flip = i;
        }
        if (flip < 0)
            return fail(QStringLiteral("\"flip\" must be \"none\", \"horizontal\", \"vertical\" or \"both\""));
        frame.flip = uint(flip);
    }
    if (has("scale")) {
        const QJsonArray items = at("scale").toArray();
        double x = 0.0;
        double y = 0.0;
        if (!at("scale").isArray() || items.size() != 2 || !real(items.at(0), maxScale, x) || !real(items.at(1), maxScale, y))
            return fail(QStringLiteral("\"scale\" must be two numbers"));
        frame.scale = QPointF(x, y);
    }
    if (has("angle") && !real(at("angle"), maxFactor, frame.angle))
        return fail(QStringLiteral("\"angle\" must be a number of degrees"));
    if (has("blend")) {
        const QJsonObject blend = at("blend").toObject();
        int mode = -1;
        for (int i = 0; i <= FrameCode::Blend::Opacity && blend.value(key("mode")).isString(); ++i) {
            if (blend.value(key("mode")).toString() == key(blendNames[i]))
                mode = i;
        }
        if (!at("blend").isObject() || mode < 0)
            return fail(QStringLiteral("\"blend\" must be an object with a known \"mode\""));
        frame.blend.mode = FrameCode::Blend::Mode(mode);
        if ((blend.contains(key("source")) && !real(blend.value(key("source")), maxFactor, frame.blend.source))
            || (blend.contains(key("destination")) && !real(blend.value(key("destination")), maxFactor, frame.blend.destination)))
            return fail(QStringLiteral("the factors of \"blend\" must be numbers"));
    }
    if (has("interpolation")) {
        if (!integer(at("interpolation"), 0, std::numeric_limits<uint>::max(), number))
            return fail(QStringLiteral("\"interpolation\" must be a whole number from 0 on"));
        frame.interpolation = uint(number);
    }
    if (has("loop")) {
        if (!at("loop").isBool())
            return fail(QStringLiteral("\"loop\" must be true or false"));
        frame.loop = at("loop").toBool();
    }
    if (has("identifier") && !text(at("identifier"), frame.identifier))
        return fail(QStringLiteral("\"identifier\" must be a text of one line"));
    return readBoxes(object, "attack", frame.attack) && readBoxes(object, "collision", frame.collision);
}

bool Reader::readBoxes(const QJsonObject &object, const char *name, QList<QRect> &boxes)
{
    if (!object.contains(key(name)))
        return true;
    const QJsonValue value = object.value(key(name));
    const QJsonArray items = value.toArray();
    if (!value.isArray() || items.size() > AnimationExchange::MaxBoxes)
        return fail(QStringLiteral("\"%1\" must be a list of at most %2 boxes").arg(key(name)).arg(AnimationExchange::MaxBoxes));
    for (const QJsonValue item : items) {
        const QJsonArray corners = item.toArray();
        qint64 edges[4] = {};
        bool ok = item.isArray() && corners.size() == 4;
        for (int i = 0; ok && i < 4; ++i)
            ok = integer(corners.at(i), -maxCoordinate, maxCoordinate, edges[i]);
        if (!ok || edges[0] > edges[2] || edges[1] > edges[3])
            return fail(QStringLiteral("a box of \"%1\" must be [left, top, right, bottom], left not right of right "
                                       "and top not below bottom").arg(key(name)));
        boxes.append(QRect(QPoint(int(edges[0]), int(edges[1])), QPoint(int(edges[2]), int(edges[3]))));
    }
    return true;
}

// ---- Importing

// The frame of the animation at `row`, looked up anew.
FrameCode *frameAt(Animations &animations, int row, uint index)
{
    AnimationCode *owner = animations.at(uint(row));
    return owner ? owner->frameAt(index) : nullptr;
}

// Adds frames at the end of the animation at `row`, or removes them there, until it has
// `total`; false where an edit doesn't take or the animation goes.
bool matchFrameCount(Animations &animations, int row, uint total)
{
    AnimationCode *animation = nullptr;
    while ((animation = animations.at(uint(row))) && animation->frameCount() < total) {
        const uint before = animation->frameCount();
        if (!animation->addFrame() || !(animation = animations.at(uint(row))) || animation->frameCount() <= before)
            return false;
    }
    while ((animation = animations.at(uint(row))) && animation->frameCount() > total) {
        const uint before = animation->frameCount();
        animation->removeFrame(before - 1);
        if ((animation = animations.at(uint(row))) && animation->frameCount() >= before)
            return false;
    }
    return animation != nullptr;
}

// No blend stays no blend whatever factors the frame keeps.
void fillBlend(FrameCode *frame, const FrameCode::Blend &wanted)
{
    const FrameCode::Blend blend = frame->blend();
    if (wanted.mode == FrameCode::Blend::None) {
        if (blend.mode != FrameCode::Blend::None)
            frame->setBlendMode(FrameCode::Blend::None);
    } else if (blend.mode != wanted.mode || blend.source != wanted.source || blend.destination != wanted.destination) {
        frame->setBlend(wanted);
    }
}

bool fillBoxes(Animations &animations, int row, uint index, const FrameData &wanted)
{
    for (const auto type : {ContactBoxCode::Attack, ContactBoxCode::Collision}) {
        const QList<QRect> &rects = type == ContactBoxCode::Attack ? wanted.attack : wanted.collision;
        FrameCode *frame = frameAt(animations, row, index);
        if (!frame)
            return false;
        ContactBoxesCode *boxes = frame->contactBoxes(type);
        if (!boxes) {
            if (!rects.isEmpty())
                return false;
            continue;
        }
        if (boxes->count())
            boxes->clear();
        for (const QRect &rect : rects) {
            if (!boxes->append(rect))
                return false;
        }
    }
    return true;
}

// Each value is written only where it differs, so that a frame already right keeps its line.
bool fillFrame(Animations &animations, int row, uint index, const FrameData &wanted)
{
    FrameCode *frame = frameAt(animations, row, index);
    if (!frame)
        return false;
    if (variantValue(frame->spriteId()) != variantValue(wanted.sprite))
        frame->setSpriteId(wanted.sprite);
    if ((frame = frameAt(animations, row, index)) && frame->offsetX() != wanted.offset.x())
        frame->setOffsetX(wanted.offset.x());
    if ((frame = frameAt(animations, row, index)) && frame->offsetY() != wanted.offset.y())
        frame->setOffsetY(wanted.offset.y());
    if ((frame = frameAt(animations, row, index)) && frame->delay() != wanted.delay)
        frame->setDelay(wanted.delay);
    if ((frame = frameAt(animations, row, index)) && (frame->flipFlags() & FrameCode::Both) != wanted.flip)
        frame->setFlipFlags(wanted.flip);
    if ((frame = frameAt(animations, row, index)) && frame->scale() != wanted.scale)
        frame->setScale(wanted.scale);
    if ((frame = frameAt(animations, row, index)) && frame->angle() != wanted.angle)
        frame->setAngle(wanted.angle);
    if ((frame = frameAt(animations, row, index)))
        fillBlend(frame, wanted.blend);
    if ((frame = frameAt(animations, row, index)) && frame->interpolation() != wanted.interpolation)
        frame->setInterpolation(wanted.interpolation);
    if ((frame = frameAt(animations, row, index)) && frame->isLoopPoint() != wanted.loop)
        frame->setLoopPoint(wanted.loop);
    if ((frame = frameAt(animations, row, index)) && frame->identifier() != wanted.identifier)
        frame->setIdentifier(wanted.identifier);
    return fillBoxes(animations, row, index, wanted);
}

// Fills a fresh animation at `row` with the frames of the record. Nodes are looked up
// again after each edit, since a language is free to build a line's node anew.
bool fill(Animations &animations, int row, const AnimationData &data)
{
    AnimationCode *animation = animations.at(uint(row));
    if (!animation)
        return false;
    if (!data.name.isEmpty() && animation->name() != data.name)
        animation->setName(data.name);
    // All frames stand before any is filled in: a language may write a new frame right
    // behind the line of the last one, which would put it above that frame's boxes.
    // A template may come with frames of its own; those are used first, and any beyond
    // the file's go.
    const uint total = uint(data.frames.size());
    if (!matchFrameCount(animations, row, total))
        return false;
    for (uint index = 0; index < total; ++index) {
        if (!fillFrame(animations, row, index, data.frames.at(int(index))))
            return false;
    }
    return true;
}

QString identifierOf(const AnimationCode *animation)
{
    return animation->property(QStringLiteral("Identifier")).toString();
}

// Reads in pieces up to one byte past the limit: enough to tell that a file is too
// large without taking all of it, or a buffer of the limit's size, into memory.
bool readAtMostLimit(QIODevice *device, QByteArray &bytes)
{
    while (bytes.size() <= AnimationExchange::MaxFileSize) {
        const QByteArray piece = device->read(qMin<qint64>(1 << 20, AnimationExchange::MaxFileSize + 1 - bytes.size()));
        if (piece.isEmpty())
            break;
        bytes += piece;
    }
    return bytes.size() <= AnimationExchange::MaxFileSize;
}

// Every question is asked before the first edit: the list doesn't show while a
// change is open. An identifier that comes twice in the file clashes with itself.
QVector<bool> wantedAnimations(Animations &animations, const QList<AnimationData> &list,
                               const AnimationImporterExtension::ImportConflict &conflict)
{
    QSet<QString> taken;
    for (const AnimationCode *animation : animations.animations())
        taken.insert(identifierOf(animation));
    QVector<bool> wanted(list.size(), true);
    for (int i = 0; i < list.size(); ++i) {
        const QString &identifier = list.at(i).identifier;
        if (taken.contains(identifier))
            wanted[i] = conflict && conflict(identifier);
        taken.insert(identifier);
    }
    return wanted;
}

// One animation of the file, in place of one of its identifier or at the end.
bool writeAnimation(Animations &animations, const AnimationData &data)
{
    int row = animations.find(0, data.identifier);
    AnimationCode *animation = nullptr;
    if (row >= 0) {
        // The new one takes the place of the old.
        animations.remove(uint(row));
        animation = animations.insert(uint(row), data.identifier);
    } else {
        animation = animations.add(data.identifier);
        row = int(animations.count()) - 1;
    }
    // The language must have read the identifier as it was given, or the text now
    // holds something else than the file.
    return animation && animations.indexOf(animation) == row && identifierOf(animation) == data.identifier
        && fill(animations, row, data);
}

// The wanted animations in the file's order, up to the first that fails (its message in `error`).
bool writeAnimations(Animations &animations, const QList<AnimationData> &list, const QVector<bool> &wanted,
                     QStringList &done, QString &error)
{
    for (int i = 0; i < list.size(); ++i) {
        if (!wanted.at(i))
            continue;
        const AnimationData &data = list.at(i);
        if (!writeAnimation(animations, data)) {
            error = QStringLiteral("The animation '%1' could not be written in the engine's language").arg(data.identifier);
            return false;
        }
        done << data.identifier;
    }
    return true;
}

} // namespace

QString AnimationExchangeExporter::filePattern() const
{
    return QStringLiteral("*.oan");
}

QString AnimationExchangeExporter::fileFilter() const
{
    return QStringLiteral("Animation exchange files (*.json)");
}

bool AnimationExchangeExporter::exportAnimations(Animations &animations, const QList<uint> &rows, QIODevice *device)
{
    m_error.clear();
    if (!device || !device->isWritable()) {
        m_error = QStringLiteral("The file is not open for writing");
        return false;
    }
    QJsonArray list;
    for (const uint row : rows) {
        const AnimationCode *animation = animations.at(row);
        if (!animation) {
            m_error = QStringLiteral("There is no animation in row %1").arg(row);
            return false;
        }
        list.append(animationObject(animation));
    }
    const QJsonObject root{{key("format"), key(formatName)}, {key("version"), formatVersion}, {key("animations"), list}};
    const QByteArray bytes = QJsonDocument(root).toJson(QJsonDocument::Indented);
    if (device->write(bytes) != bytes.size()) {
        m_error = QStringLiteral("The file could not be written: %1").arg(device->errorString());
        return false;
    }
    return true;
}

QString AnimationExchangeImporter::filePattern() const
{
    return QStringLiteral("*.oan");
}

QString AnimationExchangeImporter::fileFilter() const
{
    return QStringLiteral("Animation exchange files (*.json)");
}

bool AnimationExchangeImporter::importAnimations(QIODevice *device, Animations &animations, ImportConflict conflict,
                                                 QStringList *imported)
{
    m_error.clear();
    if (imported)
        imported->clear();
    if (!device || !device->isReadable()) {
        m_error = QStringLiteral("The file is not open for reading");
        return false;
    }
    QByteArray bytes;
    if (!readAtMostLimit(device, bytes)) {
        m_error = QStringLiteral("The file is larger than an animation exchange file may be");
        return false;
    }
    Reader reader;
    QList<AnimationData> list;
    if (!reader.read(bytes, list)) {
        m_error = reader.error;
        return false;
    }
    CodeDocument *document = animations.document();
    if (!document) {
        m_error = QStringLiteral("The animations belong to no document");
        return false;
    }
    const QVector<bool> wanted = wantedAnimations(animations, list, conflict);

    const bool outermost = !document->isCodeBeingChanged();
    const int undoSteps = document->availableUndoSteps();
    QStringList done;
    animations.beginChange();
    const bool ok = writeAnimations(animations, list, wanted, done, m_error);
    animations.endChange();
    if (!ok) {
        // Inside a change of the caller's, the caller's undo takes it all back.
        if (outermost && document->availableUndoSteps() > undoSteps)
            document->undo();
        return false;
    }
    if (imported)
        *imported = done;
    return true;
}
