// The policy map's changes as canonical lines.
#include "PolicyMapWatch.h"

#include <sstream>

namespace Scenario {

using RoutingPolicyMap::PolicyMap;
using RoutingPolicyMap::PolicyRequester;
using RoutingPolicyMap::PolicyType;

namespace {
std::string head(PolicyType type, Orb::Name const& name) {
  std::ostringstream out;
  out << "policy-map " << type << " \"" << name << "\"";
  return out.str();
}
}  // namespace

class PolicyMapWatch::MapNotifiee final : public Orb::Notifiee {
 public:
  MapNotifiee(Orb::Ptr<PolicyMap> const& map, PolicyMapWatch* watch)
      : Notifiee(map), watch_(watch) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId attribute, Orb::Key const& key) override {
    if (attribute < PolicyMap::routeMap_ || attribute > PolicyMap::redistributedDynPfx_) return;
    watch_->entryChanged(PolicyType(attribute - PolicyMap::routeMap_), key.name());
  }

 private:
  PolicyMapWatch* watch_;
};

class PolicyMapWatch::RequesterNotifiee final : public Orb::Notifiee {
 public:
  RequesterNotifiee(Orb::Ptr<PolicyRequester> const& requester, PolicyMapWatch* watch,
                    std::string head)
      : Notifiee(requester), requester_(requester), watch_(watch), head_(std::move(head)) {
    hasNotificationActiveIs(true);
  }
  void onAttribute(Orb::AttributeId, Orb::Key const& key) override {
    auto const* reason = key.as<RoutingPolicyMap::Requester>();
    if (!reason) return;
    std::ostringstream out;
    out << head_ << (requester_->hasReason(*reason) ? " + " : " - ") << *reason;
    watch_->note(out.str());
  }

 private:
  Orb::Ptr<PolicyRequester> requester_;
  PolicyMapWatch* watch_;
  std::string head_;
};

PolicyMapWatch::PolicyMapWatch(Orb::Ptr<PolicyMap> policyMap, Reader reader)
    : policyMap_(std::move(policyMap)), reader_(std::move(reader)) {
  mapNotifiee_ = std::make_unique<MapNotifiee>(policyMap_, this);
}

PolicyMapWatch::~PolicyMapWatch() = default;

void PolicyMapWatch::entryChanged(PolicyType type, Orb::Name const& name) {
  Orb::Ptr<PolicyRequester> entry;
  switch (type) {
    case RoutingPolicyMap::policyTypeRouteMap:
      entry = policyMap_->routeMap(name);
      break;
    case RoutingPolicyMap::policyTypeDynamicPrefixList:
      entry = policyMap_->dynamicPrefixList(name);
      break;
    case RoutingPolicyMap::policyTypeRedistributedDynPfx:
      entry = policyMap_->redistributedDynPfx(name);
      break;
  }
  std::string const h = head(type, name);
  if (entry) {
    note(h + " listed");
    requesters_[{type, name}] = std::make_unique<RequesterNotifiee>(entry, this, h);
  } else {
    note(h + " unlisted");
    requesters_.erase({type, name});
  }
}

}  // namespace Scenario
