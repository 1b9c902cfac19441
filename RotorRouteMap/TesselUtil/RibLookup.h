// Exported tables that say which match options and set flags travel to the
// engine as a plain number or string, and under which tags. Unmangled, so the
// agent can look them up in the shared library by name.
#pragma once

#include <cstdint>

#include "Orb/Api.h"
#include "Routing/RouteMap/MapEntry.h"

extern "C" {

/// 1, with the key and value tags filled in, when the match option is sent as
/// a plain number; otherwise 0 and both tags are left as they were.
ROTOR_API int ribIsMatchOptionInt(uint32_t option, uint32_t* keyTag, uint32_t* valueTag);

/// As ribIsMatchOptionInt, for match options sent as a plain string.
ROTOR_API int ribIsMatchOptionStr(uint32_t option, uint32_t* keyTag, uint32_t* valueTag);

/// True, with the value tag filled in, when `flags` is exactly one set flag
/// that the engine takes as a plain integer; otherwise false and the tag is
/// left as it was. Flags sent as integers by a route map's translation are
/// not all listed here.
ROTOR_API bool ribIsSetActionIntValue(Routing::RouteMap::MapEntry::SetFlags flags, uint32_t* tag);
}
