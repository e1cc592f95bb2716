#pragma once

#include "code/codenode.h"
#include "code/namedcode.h"

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QSize>
#include <QVector>

namespace Ovra {

// One typed value of a group: a key with its data. The engine's parser reads the text
// into a variant; the node keeps it in the form of its type and converts it to what
// callers ask for. Editing goes through the text: an engine rewrites the line with
// change() and asString(), and the parse brings the new value back.
class OVRA_EXPORT ValueCode : public CodeNode, public NamedCode
{
public:
    enum Type {
        Unknown = 0,
        String = 3,
        Bool = 4,
        File = 5,
        Date = 6,
        Keyword = 7,
        KeywordVector = 8,
        Float = 9,
        FloatVec2 = 10,
        FloatVec3 = 11,
        FloatVec4 = 12,
        FloatVector = 13,
        Int = 14,
        IntVec2 = 15,
        IntVec3 = 16,
        IntVec4 = 17,
        IntVector = 18,
    };

    // Finds its group by walking back: behind a value it joins that value's group one
    // place after it, right behind a group it becomes the group's first value, and
    // behind an animation it stays without a group.
    ValueCode(Type type, const QTextBlock &block, CodeNode *previous, const QVariant &value);

    // The keyword text for a Keyword, else the stored form.
    virtual QVariant value() const;
    // Stores the value in the form of the type; the text and the views are not told.
    virtual void setValue(const QVariant &value);
    // The words a Keyword value can take, in the order of their numbers.
    virtual QStringList keywords() const = 0;
    virtual bool asBool() const;
    virtual int asInt() const;
    virtual uint asUInt() const;
    virtual QVector<int> asIntVector() const;
    virtual double asReal() const;
    virtual QVector<double> asRealVector() const;
    virtual QVariantList asVector() const;
    virtual QPoint asPoint() const;
    virtual QPointF asPointF() const;
    virtual QSize asSize() const;
    // Items 0 to 3 are the two corners: left, top, right, bottom.
    virtual QRect asRect() const;
    virtual QString keyword(uint index) const = 0;
    virtual QVariant convertFrom(Type type, const QVariant &value) const;

    Type valueType() const { return m_type; }
    QVariant rawValue() const { return m_raw; }

    // String, File, Date, Keyword, KeywordVector, Float and Int hold one item.
    static bool isScalar(Type type);

protected:
    // Stores the value as setValue() does, then tells the group and the views.
    void valueChanged(const QVariant &value) override;

    // The text form of a value of the type, for writing it back. Text stays as it is,
    // whatever the type. Items of a vector are joined by the separator (unless it is
    // the null character) and one blank.
    QString asString(Type type, const QVariant &value, const QChar &separator) const;

private:
    Type m_type;
    QVariant m_raw;
};

} // namespace Ovra
