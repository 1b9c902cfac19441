// Route-map statements: maps and their sequences, version bumps, the
// operation mode, and the sequence block that clauses are indented under.
#include "ScenarioRouteMap.h"

#include <array>

namespace Scenario {

using Orb::U32;
using Routing::RouteMap::MapEntry;

namespace {

/// Whether the map has no sequence left, so removing its last one took the
/// whole map out of the engine.
bool mapEmptied(Inputs const& in, Orb::Name const& name) {
  auto map = in.routeMapConfig->routeMap(name);
  return map && map->mapEntry().empty();
}

Effect mapEffect(Effect::Kind kind, Orb::Name const& name) {
  return {kind, ObjectKind::routeMap, name, {}, nullptr};
}

void parseSubRouteMap(Words& w, Context& c, Statement& s) {
  Orb::String name = w.take("route-map name");
  w.expectEnd();
  clauseEdit(s, *c.block, [name](MapEntry& e) { e.subRouteMapIs(name); });
}

void parseNoSubRouteMap(Words& w, Context& c, Statement& s) {
  w.expectEnd();
  clauseEdit(s, *c.block, [](MapEntry& e) { e.subRouteMapIs(""); });
}

Rows subRouteMapClauses() {
  static Row const rows[] = {
      {{"sub-route-map"}, parseSubRouteMap},
      {{"no", "sub-route-map"}, parseNoSubRouteMap},
  };
  return rows;
}

void parseRouteMap(Words& w, Context& c, Statement& s) {
  Orb::Name name(w.take("route-map name"));
  static constexpr std::array<std::string_view, 2> actions = {"permit", "deny"};
  auto permit = oneOf(w, "permit or deny", actions) == 0 ? Acl::permit : Acl::deny;
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    in.routeMapConfig->routeMapIs(name)->mapEntryIs(seqno)->permitIs(permit);
  };
  s.effect = mapEffect(Effect::Kind::changed, name);
  c.block = Block{&routeMapBlock(), name, seqno};
}

void parseNoRouteMap(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("route-map name"));
  if (w.atEnd()) {
    s.edit = [=](Inputs& in) { in.routeMapConfig->routeMapDel(name); };
    s.effect = mapEffect(Effect::Kind::removed, name);
    return;
  }
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    if (auto map = in.routeMapConfig->routeMap(name)) map->mapEntryDel(seqno);
  };
  s.effect = mapEffect(Effect::Kind::partRemoved, name);
  s.effect.emptied = mapEmptied;
}

void parseVersion(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("route-map name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    auto map = in.routeMapConfig->routeMap(name);
    if (!map) throw Refusal("expected an existing route map, got " + quoted(name.view()));
    map->versionInc();
  };
  s.effect = mapEffect(Effect::Kind::sent, name);
}

void parseRouteMapMode(Words& w, Context&, Statement& s) {
  static constexpr std::array<std::string_view, 2> modes = {"default", "alternate"};
  auto mode = oneOf(w, "default or alternate", modes) == 0
                  ? Routing::RouteMap::routeMapOpModeDefault
                  : Routing::RouteMap::routeMapOpModeAlternate;
  w.expectEnd();
  s.edit = [=](Inputs& in) { in.routeMapConfig->routeMapOpModeIs(mode); };
}

}  // namespace

BlockKind const& routeMapBlock() {
  static BlockKind const block{
      "a 'route-map NAME permit|deny SEQ' line",
      "its route-map line",
      "match, set and sub-route-map clauses",
      {matchClauses(), setClauses(), subRouteMapClauses()},
  };
  return block;
}

void clauseEdit(Statement& s, Block const& b, std::function<void(MapEntry&)> change) {
  s.edit = [map = b.name, seqno = b.number, change = std::move(change)](Inputs& in) {
    change(*in.routeMapConfig->routeMapIs(map)->mapEntryIs(seqno));
  };
  s.effect = mapEffect(Effect::Kind::changed, b.name);
}

Rows routeMapStatements() {
  static Row const rows[] = {
      {{"route-map"}, parseRouteMap, &routeMapBlock()},
      {{"no", "route-map"}, parseNoRouteMap},
      {{"version"}, parseVersion},
      {{"route-map-mode"}, parseRouteMapMode},
  };
  return rows;
}

}  // namespace Scenario
