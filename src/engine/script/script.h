#pragma once

// The library's Lua 5.3 binding: State, Table, Usertype and the conversions.
#include "engine/script/state.h"
