// What the route-map statement files share: the sequence block that match,
// set and sub-route-map clauses edit.
#pragma once

#include <functional>
#include <string_view>

#include "ScenarioParse.h"

namespace Scenario {

/// The route-map sequence block; its name is the map's, its number the
/// sequence number.
BlockKind const& routeMapBlock();

/// Turns a change of the block's sequence into the statement's edit and
/// effect; the sequence is made when missing, so a clause also stands on
/// its own.
void clauseEdit(Statement& s, Block const& b,
                std::function<void(Routing::RouteMap::MapEntry&)> change);

/// A metric type, written "type-1" and "type-2" as the engine's users know
/// them, or as a number.
Orb::U32 metricTypeOf(Words& w, std::string_view what);

/// `match` and `no match`.
Rows matchClauses();
/// `set` and `no set`.
Rows setClauses();

}  // namespace Scenario
