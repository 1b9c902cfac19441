// Watches the live policy map and hands each change of it, as it happens, to
// its reader as one canonical line, so the line lands in the engine command
// stream right where the change happened:
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
  using Reader = std::function<void(std::string const& line)>;
  /// `reader` sees every change line; the watch keeps none of them.
  PolicyMapWatch(Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap, Reader reader);
  ~PolicyMapWatch();
  PolicyMapWatch(PolicyMapWatch const&) = delete;
  PolicyMapWatch& operator=(PolicyMapWatch const&) = delete;

 private:
  class MapNotifiee;
  class RequesterNotifiee;
  void entryChanged(RoutingPolicyMap::PolicyType type, Orb::Name const& name);
  void note(std::string const& line) { reader_(line); }

  Orb::Ptr<RoutingPolicyMap::PolicyMap> policyMap_;
  Reader reader_;
  std::unique_ptr<MapNotifiee> mapNotifiee_;
  std::map<std::pair<RoutingPolicyMap::PolicyType, Orb::Name>, std::unique_ptr<RequesterNotifiee>>
      requesters_;
};

}  // namespace Scenario
