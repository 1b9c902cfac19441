// Peer-filter statements: filters and their sequences, with the same clauses
// as route-map sequences, version bumps and removals.
#include <array>

#include "ScenarioRouteMap.h"

namespace Scenario {

using Orb::U32;

namespace {

Effect filterEffect(Effect::Kind kind, Orb::Name const& name) {
  return {kind, ObjectKind::peerFilter, name, {}, nullptr};
}

void parsePeerFilter(Words& w, Context& c, Statement& s) {
  Orb::Name name(w.take("peer-filter name"));
  static constexpr std::array<std::string_view, 2> actions = {"permit", "deny"};
  auto permit = oneOf(w, "permit or deny", actions) == 0 ? Acl::permit : Acl::deny;
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    in.peerFilterConfig->peerFilterIs(name)->mapEntryIs(seqno)->permitIs(permit);
  };
  s.effect = filterEffect(Effect::Kind::changed, name);
  c.block = Block{&peerFilterBlock(), name, seqno};
}

// A sequence removal is not sent by itself: it waits for the version, like
// every other change of a filter.
void parseNoPeerFilter(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("peer-filter name"));
  if (w.atEnd()) {
    s.edit = [=](Inputs& in) { in.peerFilterConfig->peerFilterDel(name); };
    s.effect = filterEffect(Effect::Kind::removed, name);
    return;
  }
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    if (auto filter = in.peerFilterConfig->peerFilter(name)) filter->mapEntryDel(seqno);
  };
  s.effect = filterEffect(Effect::Kind::changed, name);
}

void parseVersionPeerFilter(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("peer-filter name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    auto filter = in.peerFilterConfig->peerFilter(name);
    if (!filter) throw Refusal("expected an existing peer filter, got " + quoted(name.view()));
    filter->versionInc();
  };
  s.effect = filterEffect(Effect::Kind::sent, name);
}

}  // namespace

BlockKind const& peerFilterBlock() {
  static BlockKind const block{
      "a 'peer-filter NAME permit|deny SEQ' line",
      "its peer-filter line",
      routeMapBlock().clauses,
      {routeMapBlock().rows},
  };
  return block;
}

Rows peerFilterStatements() {
  static Row const rows[] = {
      {{"peer-filter"}, parsePeerFilter, &peerFilterBlock()},
      {{"no", "peer-filter"}, parseNoPeerFilter},
      {{"version", "peer-filter"}, parseVersionPeerFilter},
  };
  return rows;
}

}  // namespace Scenario
