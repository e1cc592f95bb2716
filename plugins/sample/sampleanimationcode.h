#pragma once

// The nodes of the sample engine's animation language:
//   animation ID ["name"]
//       frame (GROUP, NUMBER) delay=T offset=(X, Y) ... loop id=WORD
//           attack (X1, Y1, X2, Y2)
//           body (X1, Y1, X2, Y2)
// Every setter rewrites the line in its regular form; the parse brings the node up to
// date. FORMATS.md has the whole syntax.
#include "code/animationcode.h"
#include "code/contactboxcode.h"
#include "code/framecode.h"

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QStringList>

// What one frame line says, with the defaults of the fields it leaves out.
struct SampleFrameData
{
    enum Ease : uint { EaseOffset = 1, EaseScale = 2, EaseAngle = 4, EaseBlend = 8 };

    QPoint sprite;
    int delay = 1;
    QPoint offset;
    uint flip = 0;
    QPointF scale = QPointF(1.0, 1.0);
    double angle = 0.0;
    Ovra::FrameCode::Blend blend = defaultBlend();
    uint ease = 0;
    bool loop = false;
    QString identifier;
    // The line writes a field at its default value (which optimizing drops).
    bool writesDefaults = false;

    static Ovra::FrameCode::Blend defaultBlend();
    static const QStringList &blendWords();
    static const QStringList &easeWords();
    // The regular text of the frame, without indentation; fields at their defaults are
    // left out, the delay is always written.
    QString text() const;
    // The same picture on screen: everything but the delay, the loop mark and the name.
    bool looksLike(const SampleFrameData &other) const;
    bool operator==(const SampleFrameData &other) const;
};

class SampleFrame;

class SampleBox : public Ovra::ContactBoxCode
{
public:
    SampleBox(const QTextBlock &block, Ovra::CodeNode *previous, BoxType type, const QRect &rect);

    static QString text(BoxType type, const QRect &rect);
    static QString word(BoxType type);

    BoxType boxType() const override { return m_type; }
    QRect rect() const override { return m_rect; }
    void setRect(const QRect &rect) override;
    // "Rect" and "Type" (0 collision, 1 attack); only the rectangle can be set.
    QStringList propertyNames() const override;
    QVariant property(const QString &name) const override;
    void setProperty(const QString &name, const QVariant &value) override;

    // The frame this box belongs to: the frame above it, past other boxes.
    Ovra::FrameCode *frame() const;
    // From the parser.
    void update(BoxType type, const QRect &rect);

private:
    BoxType m_type;
    QRect m_rect;
};

// The boxes of one type of a frame: the box lines right below the frame, found anew on
// each call, so that nothing points at a line that went.
class SampleBoxes : public Ovra::ContactBoxesCode
{
public:
    SampleBoxes(SampleFrame *frame, Ovra::ContactBoxCode::BoxType type) : m_frame(frame), m_type(type) {}

    Ovra::FrameCode *frame() const override;
    Ovra::ContactBoxCode::BoxType boxType() const override { return m_type; }
    uint count() const override;
    Ovra::ContactBoxCode *at(uint index) const override;
    // A new line behind the frame's last box of either type.
    Ovra::ContactBoxCode *append(const QRect &rect) override;
    void remove(uint index) override;
    // One undo step.
    void clear() override;

private:
    QList<Ovra::ContactBoxCode *> boxes() const;

    SampleFrame *m_frame;
    Ovra::ContactBoxCode::BoxType m_type;
};

class SampleFrame : public Ovra::FrameCode
{
public:
    SampleFrame(const QTextBlock &block, Ovra::CodeNode *previous, const SampleFrameData &data);

    // A frame's lines run from behind the frame before it (or its own line, for the first
    // frame) down to its last box: lines above a frame travel with it, its boxes too.
    int firstLine() const override;
    int lastLine() const override;

    const SampleFrameData &data() const { return m_data; }
    // Rewrites the line; the parse brings the data back.
    void write(const SampleFrameData &data);
    // From the parser.
    void update(const SampleFrameData &data);
    // The last node that belongs to the frame: its last box, or the frame itself.
    Ovra::CodeNode *lastNode() const;
    bool hasBoxes() const;

    QVariant property(const QString &name) const override;
    void setProperty(const QString &name, const QVariant &value) override;

    // The sprite of the animation document's sprite list, found by its packed number
    // (spriteid.h); null without sprites or where it has no such sprite.
    Ovra::Sprite *sprite() const override;
    // The sprite's group and number as a QPoint.
    QVariant spriteId() const override { return m_data.sprite; }
    void setSpriteId(const QVariant &id) override;
    int offsetX() const override { return m_data.offset.x(); }
    void setOffsetX(int x) override;
    int offsetY() const override { return m_data.offset.y(); }
    void setOffsetY(int y) override;
    QString identifier() const override { return m_data.identifier; }
    void setIdentifier(const QString &identifier) override;
    int delay() const override { return m_data.delay; }
    void setDelay(int ticks) override;
    double scaleX() const override { return m_data.scale.x(); }
    void setScaleX(double scale) override;
    double scaleY() const override { return m_data.scale.y(); }
    void setScaleY(double scale) override;
    QPointF scale() const override { return m_data.scale; }
    void setScale(const QPointF &scale) override;
    double angle() const override { return m_data.angle; }
    void setAngle(double degrees) override;
    bool isLoopPoint() const override { return m_data.loop; }
    quint8 flipFlags() const override { return quint8(m_data.flip); }
    void setFlipFlags(uint flags) override;
    Blend::Mode blendMode() const override { return m_data.blend.mode; }
    void setBlendMode(Blend::Mode mode) override;
    double blendSource() const override { return m_data.blend.source; }
    void setBlendSource(double factor) override;
    double blendDestination() const override { return m_data.blend.destination; }
    void setBlendDestination(double factor) override;
    Blend blend() const override { return m_data.blend; }
    void setBlend(const Blend &blend) override;
    void setLoopPoint(bool loop) override;
    // Bits of SampleFrameData::Ease.
    uint interpolation() const override { return m_data.ease; }
    void setInterpolation(uint flags) override;

private:
    SampleFrameData m_data;
};

class SampleAnimation : public Ovra::AnimationCode
{
public:
    SampleAnimation(const QTextBlock &block, Ovra::CodeNode *previous, const QString &identifier,
                    const QString &title);

    static QString headerText(const QString &identifier, const QString &title);

    QString identifier() const { return m_identifier; }
    void setIdentifier(const QString &identifier);
    // The name in quotes behind the identifier.
    QString name() const override { return m_title; }
    // "ID name", or "Animation ID" without a name.
    QString displayName() const override;
    void setName(const QString &name) override;
    QVariant property(const QString &name) const override;
    void setProperty(const QString &name, const QVariant &value) override;

    // The first frame marked as the loop point, else 0.
    uint loopPoint() const override;
    // A frame "frame (0, 0) delay=1" before the frame at `index`, or behind the last one
    // and its boxes.
    Ovra::FrameCode *insertFrame(uint index) override;
    Ovra::FrameCode *addFrame() override;

    // From the parser.
    void update(const QString &identifier, const QString &title);

private:
    QString m_identifier;
    QString m_title;
};
