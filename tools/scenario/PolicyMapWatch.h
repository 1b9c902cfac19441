// Watches the live policy map and writes each change of it as one canonical
// line, noting where in the engine command stream it happened:
//   policy-map TYPE "NAME" listed
//   policy-map TYPE "NAME" + plugin=P mode=M cli="TEXT" key="KEY"
//   policy-map TYPE "NAME" - plugin=P mode=M cli="TEXT" key="KEY"
//   policy-map TYPE "NAME" unlisted
// TYPE is routeMap, dynamicPrefixList or redistributedDynPfx.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "RoutingPolicyMap/PolicyMap.h"

namespace Scenario {

class PolicyMapWatch {
 public:
  /// `position` tells how many engine records came before a change.
  PolicyMapWatch(Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap,
                 std::function<std::size_t()> position);
  ~PolicyMapWatch();
  PolicyMapWatch(PolicyMapWatch const&) = delete;
  PolicyMapWatch& operator=(PolicyMapWatch const&) = delete;

  struct Change {
    /// Engine records sent before the change.
    std::size_t position;
    std::string line;
  };
  std::vector<Change> const& changes() const noexcept { return changes_; }

 private:
  class MapNotifiee;
  class RequesterNotifiee;
  void entryChanged(RoutingPolicyMap::PolicyType type, Orb::Name const& name);
  void note(std::string line) { changes_.push_back({position_(), std::move(line)}); }

  Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap_;
  std::function<std::size_t()> position_;
  std::unique_ptr<MapNotifiee> mapNotifiee_;
  std::map<std::pair<RoutingPolicyMap::PolicyType, Orb::Name>, std::unique_ptr<RequesterNotifiee>>
      requesters_;
  std::vector<Change> changes_;
};

}  // namespace Scenario
