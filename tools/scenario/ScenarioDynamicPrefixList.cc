// Dynamic prefix-list statements: a list's prefix-list names and match map,
// version bumps and removals.
#include "ScenarioParse.h"

namespace Scenario {

namespace {

Effect listEffect(Effect::Kind kind, Orb::Name const& name) {
  return {kind, ObjectKind::dynamicPrefixList, name, {}, nullptr};
}

// Names left out are cleared, so the line states the whole list.
void parseDynamicPrefixList(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("dynamic prefix-list name"));
  Orb::String v4, v6, matchMap;
  while (!w.atEnd()) {
    if (w.accept("ipv4")) {
      v4 = w.take("IPv4 prefix-list name");
    } else if (w.accept("ipv6")) {
      v6 = w.take("IPv6 prefix-list name");
    } else if (w.accept("match-map")) {
      matchMap = w.take("route-map name");
    } else {
      w.fail("ipv4, ipv6 or match-map", w.peek());
    }
  }
  s.edit = [=](Inputs& in) {
    auto list = in.dynPfxListConfig->dynamicPrefixListIs(name);
    list->ipv4PrefixListIs(v4);
    list->ipv6PrefixListIs(v6);
    list->matchMapIs(matchMap);
  };
  s.effect = listEffect(Effect::Kind::changed, name);
}

void parseNoDynamicPrefixList(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("dynamic prefix-list name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) { in.dynPfxListConfig->dynamicPrefixListDel(name); };
  s.effect = listEffect(Effect::Kind::removed, name);
}

void parseVersionDynamicPrefixList(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("dynamic prefix-list name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    auto list = in.dynPfxListConfig->dynamicPrefixList(name);
    if (!list) {
      throw Refusal("expected an existing dynamic prefix list, got " + quoted(name.view()));
    }
    list->versionInc();
  };
  s.effect = listEffect(Effect::Kind::sent, name);
}

}  // namespace

Rows dynamicPrefixListStatements() {
  static Row const rows[] = {
      {{"dynamic-prefix-list"}, parseDynamicPrefixList},
      {{"no", "dynamic-prefix-list"}, parseNoDynamicPrefixList},
      {{"version", "dynamic-prefix-list"}, parseVersionDynamicPrefixList},
  };
  return rows;
}

}  // namespace Scenario
