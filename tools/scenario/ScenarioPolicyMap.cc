// Policy-map statements: listing and unlisting a route map or a dynamic
// prefix list as another part of the agent does, under a requester key.
#include <array>

#include "ScenarioParse.h"

namespace Scenario {

namespace {

using RoutingPolicyMap::PolicyMap;
using RoutingPolicyMap::PolicyRequester;

struct Collection {
  Orb::Ptr<PolicyRequester> (PolicyMap::*find)(Orb::Name const&) const;
  Orb::Ptr<PolicyRequester> (PolicyMap::*add)(Orb::Name const&);
  void (PolicyMap::*remove)(Orb::Name);
};

Collection collectionOf(Words& w) {
  static constexpr std::array<std::string_view, 2> kinds = {"route-map", "dynamic-prefix-list"};
  if (oneOf(w, "route-map or dynamic-prefix-list", kinds) == 0)
    return {&PolicyMap::routeMap, &PolicyMap::routeMapIs, &PolicyMap::routeMapDel};
  return {&PolicyMap::dynamicPrefixList, &PolicyMap::dynamicPrefixListIs,
          &PolicyMap::dynamicPrefixListDel};
}

/// The reason another part of the agent lists a policy under: only its key
/// is the scenario's to choose.
RoutingPolicyMap::Requester requesterOf(Words& w) {
  if (!w.accept("by")) {
    if (w.atEnd()) throw Refusal("expected 'by REQUESTER', got end of line");
    w.fail("'by REQUESTER'", w.peek());
  }
  Orb::String key(w.take("requester"));
  w.expectEnd();
  return {RoutingPolicyMap::pluginTypeNone, RoutingPolicyMap::cliModeNone, "", key};
}

void parseList(Words& w, Context&, Statement& s) {
  Collection coll = collectionOf(w);
  Orb::Name name(w.take("policy name"));
  auto reason = requesterOf(w);
  s.edit = [=](Inputs& in) { ((*in.policyMap).*coll.add)(name)->reasonIs(reason); };
}

// As the agent does: the entry goes with its last reason.
void parseUnlist(Words& w, Context&, Statement& s) {
  Collection coll = collectionOf(w);
  Orb::Name name(w.take("policy name"));
  auto reason = requesterOf(w);
  s.edit = [=](Inputs& in) {
    auto entry = ((*in.policyMap).*coll.find)(name);
    if (!entry) return;
    entry->reasonDel(reason);
    if (entry->reason().empty()) ((*in.policyMap).*coll.remove)(name);
  };
}

}  // namespace

Rows policyMapStatements() {
  static Row const rows[] = {
      {{"list"}, parseList},
      {{"unlist"}, parseUnlist},
  };
  return rows;
}

}  // namespace Scenario
