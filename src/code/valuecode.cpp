#include "code/valuecode.h"

#include <QDate>

namespace Ovra {
namespace {

bool isList(const QVariant &value)
{
    return value.userType() == QMetaType::QVariantList;
}

// A list as it is; a single value as a list of one.
template <typename Convert>
QVariant listOf(const QVariant &value, Convert convert)
{
    if (isList(value))
        return value;
    return QVariantList{convert(value)};
}

} // namespace

ValueCode::ValueCode(Type type, const QTextBlock &block, CodeNode *previous, const QVariant &value)
    : CodeNode(Value, block, previous)
    , m_type(type)
    , m_raw(ValueCode::convertFrom(type, value))
{
    joinFromBehind(Group, Animation);
}

bool ValueCode::isScalar(Type type)
{
    switch (type) {
    case String:
    case File:
    case Date:
    case Keyword:
    case KeywordVector:
    case Float:
    case Int:
        return true;
    default:
        return false;
    }
}

QVariant ValueCode::convertFrom(Type type, const QVariant &value) const
{
    switch (type) {
    case String:
    case File:
        return value.toString();
    case Bool:
        return value.toBool();
    case Date:
        return value.toDate();
    case Keyword:
        return value.toUInt();
    case Float:
        return value.toReal();
    case Int:
        return value.toInt();
    case KeywordVector:
        return listOf(value, [](const QVariant &v) { return QVariant(v.toUInt()); });
    case FloatVec3:
    case FloatVec4:
    case FloatVector:
        return listOf(value, [](const QVariant &v) { return QVariant(v.toReal()); });
    case IntVec3:
    case IntVec4:
    case IntVector:
        return listOf(value, [](const QVariant &v) { return QVariant(v.toInt()); });
    case FloatVec2:
        if (value.userType() == QMetaType::QPointF)
            return value;
        if (isList(value)) {
            const QVariantList items = value.toList();
            return QPointF(items.value(0).toReal(), items.value(1).toReal());
        }
        return value.toPointF();
    case IntVec2:
        if (value.userType() == QMetaType::QPoint)
            return value;
        if (isList(value)) {
            const QVariantList items = value.toList();
            return QPoint(items.value(0).toInt(), items.value(1).toInt());
        }
        return value.toPoint();
    default:
        return value;
    }
}

QVariant ValueCode::value() const
{
    if (m_type == Keyword)
        return keyword(m_raw.toUInt());
    return m_raw;
}

void ValueCode::setValue(const QVariant &value)
{
    m_raw = convertFrom(m_type, value);
}

void ValueCode::valueChanged(const QVariant &value)
{
    m_raw = convertFrom(m_type, value);
    CodeNode::valueChanged(value);
}

bool ValueCode::asBool() const
{
    return m_raw.toBool();
}

int ValueCode::asInt() const
{
    return m_raw.toInt();
}

uint ValueCode::asUInt() const
{
    return m_raw.toUInt();
}

double ValueCode::asReal() const
{
    return m_raw.toReal();
}

QVector<int> ValueCode::asIntVector() const
{
    if (isScalar(m_type))
        return {asInt()};
    QVector<int> items;
    for (const QVariant &item : m_raw.toList())
        items.append(item.toInt());
    return items;
}

QVector<double> ValueCode::asRealVector() const
{
    if (isScalar(m_type))
        return {asReal()};
    QVector<double> items;
    for (const QVariant &item : m_raw.toList())
        items.append(item.toReal());
    return items;
}

QVariantList ValueCode::asVector() const
{
    if (isScalar(m_type))
        return {m_raw};
    return m_raw.toList();
}

QPoint ValueCode::asPoint() const
{
    if (m_raw.userType() == QMetaType::QPoint)
        return m_raw.toPoint();
    if (isScalar(m_type))
        return QPoint(asInt(), 0);
    if (m_type == IntVec2)
        return m_raw.toPoint();
    const QVariantList items = m_raw.toList();
    return QPoint(items.value(0).toInt(), items.value(1).toInt());
}

QPointF ValueCode::asPointF() const
{
    if (m_raw.userType() == QMetaType::QPointF)
        return m_raw.toPointF();
    if (isScalar(m_type))
        return QPointF(asReal(), 0.0);
    if (m_type == FloatVec2)
        return m_raw.toPointF();
    const QVariantList items = m_raw.toList();
    return QPointF(items.value(0).toReal(), items.value(1).toReal());
}

QSize ValueCode::asSize() const
{
    const QPoint point = asPoint();
    return QSize(point.x(), point.y());
}

QRect ValueCode::asRect() const
{
    if (m_raw.userType() == QMetaType::QRect)
        return m_raw.toRect();
    QRect rect;
    if (isScalar(m_type)) {
        rect.setLeft(asInt());
        return rect;
    }
    const QVariantList items = m_raw.toList();
    if (items.size() > 0)
        rect.setLeft(items.at(0).toInt());
    if (items.size() > 1)
        rect.setTop(items.at(1).toInt());
    if (items.size() > 2)
        rect.setRight(items.at(2).toInt());
    if (items.size() > 3)
        rect.setBottom(items.at(3).toInt());
    return rect;
}

QString ValueCode::asString(Type type, const QVariant &value, const QChar &separator) const
{
    if (value.userType() == QMetaType::QString)
        return value.toString();
    const QString glue = separator.isNull() ? QStringLiteral(" ") : QString(separator) + QLatin1Char(' ');
    switch (type) {
    case Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case Date:
        return value.toDate().toString(Qt::ISODate);
    case Keyword:
        return keyword(value.toUInt());
    case FloatVec2: {
        const QPointF point = value.toPointF();
        return QString::number(point.x(), 'g', 6) + glue + QString::number(point.y(), 'g', 6);
    }
    case IntVec2: {
        const QPoint point = value.toPoint();
        return QString::number(point.x()) + glue + QString::number(point.y());
    }
    case FloatVec3:
    case FloatVec4:
    case FloatVector:
    case IntVec3:
    case IntVec4:
    case IntVector: {
        QStringList items;
        for (const QVariant &item : value.toList())
            items.append(item.toString());
        return items.join(glue);
    }
    default:
        return value.toString();
    }
}

} // namespace Ovra
