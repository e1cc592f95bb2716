#pragma once

// What the registration files of registerScriptClasses share.
#include "engine/script/script.h"

#include <stdexcept>
#include <string>

namespace Ovra {

class CodeNode;

namespace ScriptClasses {

void registerIo(Script::Table &table);
void registerProjects(Script::Table &table);
void registerCode(Script::Table &table);
void registerValues(Script::Table &table);
void registerRest(Script::Table &table);

// A node handed to a script as the most specific library class it is: a child of the
// root is a GroupCode or an AnimationCode to scripts, not a bare CodeNode, even where
// the engine registers no script type of its own for its node classes.
struct NodeRef
{
    CodeNode *node = nullptr;
};

// A value that a script passes where C++ takes a pointer it will use at once, so a
// nil there is refused with a message instead of becoming a null pointer.
template <class T>
T &required(T *pointer, const char *what)
{
    if (!pointer)
        throw std::invalid_argument(std::string(what) + " is nil");
    return *pointer;
}

} // namespace ScriptClasses

namespace Script {

template <>
struct Stack<ScriptClasses::NodeRef>
{
    static constexpr bool builtin = true;
    static void push(lua_State *L, const ScriptClasses::NodeRef &value);
};

} // namespace Script
} // namespace Ovra
