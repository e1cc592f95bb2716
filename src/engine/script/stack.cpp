#include "engine/script/stack.h"

namespace Ovra {
namespace Script {

namespace Detail {

bool isInteger(lua_State *L, int index)
{
    if (lua_type(L, index) != LUA_TNUMBER)
        return false;
    int isNumber = 0;
    lua_tointegerx(L, index, &isNumber);
    return isNumber;
}

// A float with an integral value (2.0) is accepted where an integer is wanted, as Lua's
// own functions do; 2.5 and strings are not.
lua_Integer toInteger(lua_State *L, int index)
{
    checkPresent(L, index);
    if (!isInteger(L, index))
        argumentError(L, index, "integer");
    return lua_tointeger(L, index);
}

bool isSequence(lua_State *L, int index)
{
    return lua_type(L, index) == LUA_TTABLE;
}

namespace {

// Tables nest into lists and maps; a table holding itself would never end.
constexpr int maximumDepth = 32;

void pushVariant(lua_State *L, const QVariant &value, int depth);

void pushList(lua_State *L, const QVariantList &list, int depth)
{
    lua_createtable(L, list.size(), 0);
    lua_Integer i = 0;
    for (const QVariant &element : list) {
        pushVariant(L, element, depth + 1);
        lua_rawseti(L, -2, ++i);
    }
}

void pushVariant(lua_State *L, const QVariant &value, int depth)
{
    if (depth > maximumDepth) {
        lua_pushnil(L);
        return;
    }
    switch (int(value.type())) {
    case QVariant::Invalid:
        lua_pushnil(L);
        return;
    case QVariant::Bool:
        lua_pushboolean(L, value.toBool());
        return;
    case QMetaType::Char: case QMetaType::SChar: case QMetaType::UChar: case QMetaType::Short:
    case QMetaType::UShort: case QMetaType::Int: case QMetaType::UInt: case QMetaType::Long:
    case QMetaType::ULong: case QMetaType::LongLong: case QMetaType::ULongLong:
        lua_pushinteger(L, lua_Integer(value.toLongLong()));
        return;
    case QMetaType::Float: case QMetaType::Double:
        lua_pushnumber(L, value.toDouble());
        return;
    case QMetaType::QByteArray:
        Stack<QByteArray>::push(L, value.toByteArray());
        return;
    case QMetaType::QStringList:
        Stack<QStringList>::push(L, value.toStringList());
        return;
    case QMetaType::QVariantList:
        pushList(L, value.toList(), depth);
        return;
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        const QVariantMap map = value.toMap();
        lua_createtable(L, 0, map.size());
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            Stack<QString>::push(L, it.key());
            pushVariant(L, it.value(), depth + 1);
            lua_rawset(L, -3);
        }
        return;
    }
    case QMetaType::QPoint:
        Stack<QPoint>::push(L, value.toPoint());
        return;
    case QMetaType::QPointF:
        Stack<QPointF>::push(L, value.toPointF());
        return;
    case QMetaType::QSize:
        Stack<QSize>::push(L, value.toSize());
        return;
    case QMetaType::QRect:
        Stack<QRect>::push(L, value.toRect());
        return;
    default:
        break;
    }
    if (value.canConvert<QString>())
        Stack<QString>::push(L, value.toString());
    else
        lua_pushnil(L);
}

bool fields(lua_State *L, int index, std::initializer_list<const char *> names, lua_Number *values, bool integer);

// A table of exactly the keys of a point, a size or a rectangle, as that; else invalid.
QVariant geometryOf(lua_State *L, int index, lua_Integer keys)
{
    lua_Number v[4];
    if (keys == 2 && fields(L, index, {"x", "y"}, v, true))
        return QPoint(int(v[0]), int(v[1]));
    if (keys == 2 && fields(L, index, {"x", "y"}, v, false))
        return QPointF(v[0], v[1]);
    if (keys == 2 && fields(L, index, {"width", "height"}, v, true))
        return QSize(int(v[0]), int(v[1]));
    if (keys == 4 && fields(L, index, {"x", "y", "width", "height"}, v, true))
        return QRect(int(v[0]), int(v[1]), int(v[2]), int(v[3]));
    return QVariant();
}

QVariant toVariant(lua_State *L, int index, int depth)
{
    switch (lua_type(L, index)) {
    case LUA_TNONE:
    case LUA_TNIL:
        return QVariant();
    case LUA_TBOOLEAN:
        return QVariant(bool(lua_toboolean(L, index)));
    case LUA_TNUMBER:
        if (lua_isinteger(L, index)) {
            lua_Integer value = lua_tointeger(L, index);
            if (inRange<int>(value))
                return QVariant(int(value));
            return QVariant(qlonglong(value));
        }
        return QVariant(double(lua_tonumber(L, index)));
    case LUA_TSTRING:
        return Stack<QString>::get(L, index);
    case LUA_TTABLE:
        break;
    default:
        argumentError(L, index, "nil, boolean, number, string or table");
    }
    if (depth > maximumDepth)
        argumentError(L, index, "a table nested less deeply");
    index = lua_absindex(L, index);
    // A table with keys 1..n only is a list; anything else a map of string keys.
    lua_Integer length = lua_Integer(lua_rawlen(L, index));
    lua_Integer keys = 0;
    bool stringKeys = true;
    lua_pushnil(L);
    while (lua_next(L, index)) {
        ++keys;
        if (lua_type(L, -2) != LUA_TSTRING)
            stringKeys = false;
        lua_pop(L, 1);
    }
    if (keys == length) {
        QVariantList list;
        for (lua_Integer i = 1; i <= length; ++i) {
            lua_rawgeti(L, index, i);
            list.append(toVariant(L, lua_gettop(L), depth + 1));
            lua_pop(L, 1);
        }
        return list;
    }
    if (!stringKeys)
        argumentError(L, index, "a sequence or a table of string keys");
    // The tables that points, sizes and rectangles become on the way out come back as
    // what they were, so that identifiers and geometry go through a QVariant unchanged.
    if (const QVariant geometry = geometryOf(L, index, keys); geometry.isValid())
        return geometry;
    QVariantMap map;
    lua_pushnil(L);
    while (lua_next(L, index)) {
        QString key = Stack<QString>::get(L, lua_gettop(L) - 1);
        map.insert(key, toVariant(L, lua_gettop(L), depth + 1));
        lua_pop(L, 1);
    }
    return map;
}

// Reads a numeric field of a geometry table; false when it is missing or not a number.
bool field(lua_State *L, int index, const char *name, lua_Number *value, bool integer)
{
    // Raw access: a metamethod raising a Lua error here would jump over C++ frames.
    lua_pushstring(L, name);
    lua_rawget(L, index);
    bool fits = integer ? isInteger(L, -1) && inRange<int>(lua_tointeger(L, -1)) : lua_type(L, -1) == LUA_TNUMBER;
    if (fits)
        *value = lua_tonumber(L, -1);
    lua_pop(L, 1);
    return fits;
}

bool fields(lua_State *L, int index, std::initializer_list<const char *> names, lua_Number *values, bool integer)
{
    if (lua_type(L, index) != LUA_TTABLE)
        return false;
    index = lua_absindex(L, index);
    for (const char *name : names) {
        if (!field(L, index, name, values++, integer))
            return false;
    }
    return true;
}

void setFields(lua_State *L, std::initializer_list<const char *> names, std::initializer_list<lua_Number> values,
               bool integer)
{
    lua_createtable(L, 0, int(names.size()));
    auto value = values.begin();
    for (const char *name : names) {
        if (integer)
            lua_pushinteger(L, lua_Integer(*value++));
        else
            lua_pushnumber(L, *value++);
        lua_setfield(L, -2, name);
    }
}

} // namespace

void pushVariant(lua_State *L, const QVariant &value)
{
    pushVariant(L, value, 0);
}

QVariant toVariant(lua_State *L, int index)
{
    return toVariant(L, index, 0);
}

} // namespace Detail

QString Stack<QString>::get(lua_State *L, int index)
{
    Detail::checkPresent(L, index);
    if (!check(L, index))
        Detail::argumentError(L, index, "string");
    size_t length = 0;
    const char *data = lua_tolstring(L, index, &length);
    return QString::fromUtf8(data, int(length));
}

void Stack<QString>::push(lua_State *L, const QString &value)
{
    const QByteArray utf8 = value.toUtf8();
    lua_pushlstring(L, utf8.constData(), size_t(utf8.size()));
}

QByteArray Stack<QByteArray>::get(lua_State *L, int index)
{
    Detail::checkPresent(L, index);
    if (!check(L, index))
        Detail::argumentError(L, index, "string");
    size_t length = 0;
    const char *data = lua_tolstring(L, index, &length);
    return QByteArray(data, int(length));
}

void Stack<QByteArray>::push(lua_State *L, const QByteArray &value)
{
    lua_pushlstring(L, value.constData(), size_t(value.size()));
}

bool Stack<QVariant>::check(lua_State *L, int index)
{
    int type = lua_type(L, index);
    return type == LUA_TNIL || type == LUA_TBOOLEAN || type == LUA_TNUMBER || type == LUA_TSTRING
        || type == LUA_TTABLE;
}

bool Stack<QStringList>::check(lua_State *L, int index)
{
    return Detail::isObject(L, index, typeid(QStringList), false) || SequenceStack<QList<QString>>::check(L, index);
}

QStringList Stack<QStringList>::get(lua_State *L, int index)
{
    Detail::checkPresent(L, index);
    if (Detail::isObject(L, index, typeid(QStringList), false))
        return Detail::toReference<QStringList>(L, index);
    if (!check(L, index))
        Detail::argumentError(L, index, "sequence of strings");
    return QStringList(SequenceStack<QList<QString>>::get(L, index));
}

void Stack<QStringList>::push(lua_State *L, const QStringList &value)
{
    SequenceStack<QList<QString>>::push(L, value);
}

bool Stack<QPoint>::check(lua_State *L, int index)
{
    lua_Number values[2];
    return Detail::fields(L, index, {"x", "y"}, values, true);
}

QPoint Stack<QPoint>::get(lua_State *L, int index)
{
    Detail::checkPresent(L, index);
    lua_Number v[2];
    if (!Detail::fields(L, index, {"x", "y"}, v, true))
        Detail::argumentError(L, index, "point {x, y}");
    return QPoint(int(v[0]), int(v[1]));
}

void Stack<QPoint>::push(lua_State *L, const QPoint &value)
{
    Detail::setFields(L, {"x", "y"}, {lua_Number(value.x()), lua_Number(value.y())}, true);
}

bool Stack<QPointF>::check(lua_State *L, int index)
{
    lua_Number values[2];
    return Detail::fields(L, index, {"x", "y"}, values, false);
}

QPointF Stack<QPointF>::get(lua_State *L, int index)
{
    Detail::checkPresent(L, index);
    lua_Number v[2];
    if (!Detail::fields(L, index, {"x", "y"}, v, false))
        Detail::argumentError(L, index, "point {x, y}");
    return QPointF(v[0], v[1]);
}

void Stack<QPointF>::push(lua_State *L, const QPointF &value)
{
    Detail::setFields(L, {"x", "y"}, {value.x(), value.y()}, false);
}

bool Stack<QSize>::check(lua_State *L, int index)
{
    lua_Number values[2];
    return Detail::fields(L, index, {"width", "height"}, values, true);
}

QSize Stack<QSize>::get(lua_State *L, int index)
{
    Detail::checkPresent(L, index);
    lua_Number v[2];
    if (!Detail::fields(L, index, {"width", "height"}, v, true))
        Detail::argumentError(L, index, "size {width, height}");
    return QSize(int(v[0]), int(v[1]));
}

void Stack<QSize>::push(lua_State *L, const QSize &value)
{
    Detail::setFields(L, {"width", "height"}, {lua_Number(value.width()), lua_Number(value.height())}, true);
}

bool Stack<QRect>::check(lua_State *L, int index)
{
    lua_Number values[4];
    return Detail::fields(L, index, {"x", "y", "width", "height"}, values, true);
}

QRect Stack<QRect>::get(lua_State *L, int index)
{
    Detail::checkPresent(L, index);
    lua_Number v[4];
    if (!Detail::fields(L, index, {"x", "y", "width", "height"}, v, true))
        Detail::argumentError(L, index, "rectangle {x, y, width, height}");
    return QRect(int(v[0]), int(v[1]), int(v[2]), int(v[3]));
}

void Stack<QRect>::push(lua_State *L, const QRect &value)
{
    Detail::setFields(L, {"x", "y", "width", "height"},
                      {lua_Number(value.x()), lua_Number(value.y()), lua_Number(value.width()),
                       lua_Number(value.height())},
                      true);
}

} // namespace Script
} // namespace Ovra
