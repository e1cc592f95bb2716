#pragma once

#include "foundation/global.h"

namespace Ovra {

namespace Script {
class State;
class Table;
}

// Registers the library's model classes as usertypes in the table (the globals or a
// namespace of the host's), in a fixed order: files and their enumerations, projects,
// code documents, code values, then everything else. The host calls it once on its
// state before any script runs, then lets the engine add its own classes through
// EnginePrivate::registerScriptClasses.
OVRA_EXPORT void registerScriptClasses(Script::Table &table);

// Lets every engine of the loaded plug-ins add its own classes to the state.
OVRA_EXPORT void registerEngineScriptClasses(Script::State &state);

} // namespace Ovra
