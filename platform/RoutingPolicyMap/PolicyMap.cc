// Storage, notification and text forms of the policy map.
#include "RoutingPolicyMap/PolicyMap.h"

#include <locale>
#include <ostream>
#include <sstream>

#include "Orb/EnumText.h"

namespace RoutingPolicyMap {

namespace {
constexpr Orb::EnumName<PolicyType> kPolicyType[] = {
    {policyTypeRouteMap, "routeMap"},
    {policyTypeDynamicPrefixList, "dynamicPrefixList"},
    {policyTypeRedistributedDynPfx, "redistributedDynPfx"}};

// The attribute that notifies a change of the collection of `type`.
Orb::AttributeId attributeOf(PolicyType type) {
  return Orb::AttributeId(type) + PolicyMap::routeMap_;
}
}  // namespace

std::string valueToStrep(PolicyType v) {
  return Orb::enumToStrep<PolicyType>(v, kPolicyType);
}
PolicyType policyTypeFromStrep(std::string_view text) {
  return Orb::enumFromStrep<PolicyType>(text, kPolicyType, "PolicyType");
}
std::ostream& operator<<(std::ostream& os, PolicyType v) {
  return os << valueToStrep(v);
}

std::ostream& operator<<(std::ostream& os, Requester const& r) {
  return os << "plugin=" << Orb::U32(r.pluginType) << " mode=" << Orb::U32(r.cliMode) << " cli=\""
            << r.configCli << "\" key=\"" << r.configKey << "\"";
}

// ---- PolicyRequester

PolicyRequester::PolicyRequester(Orb::Name name, Orb::Entity const* parent)
    : Entity(std::move(name)) {
  parentIs(parent);
}

void PolicyRequester::reasonIs(Requester const& r) {
  if (reasons_.insert(r, true).second) notify(reason_, Orb::Key::of(r));
}

void PolicyRequester::reasonDel(Requester const& r) {
  if (reasons_.erase(r)) notify(reason_, Orb::Key::of(r));
}

// ---- PolicyMap

Orb::Ptr<PolicyRequester> PolicyMap::lookup(PolicyType type, Orb::Name const& name) const {
  auto const* p = coll_[type].get(name);
  return p ? *p : nullptr;
}

Orb::Ptr<PolicyRequester> PolicyMap::add(PolicyType type, Orb::Name const& name) {
  if (auto existing = lookup(type, name)) return existing;
  Orb::Ptr<PolicyRequester> r =
      coll_[type].set(name, Orb::Ptr<PolicyRequester>(new PolicyRequester(name, this)));
  notify(attributeOf(type), Orb::Key(name));
  return r;
}

void PolicyMap::del(PolicyType type, Orb::Name const& name) {
  auto* p = coll_[type].get(name);
  if (!p) return;
  (*p)->parentIs(nullptr);
  coll_[type].erase(name);
  notify(attributeOf(type), Orb::Key(name));
}

Orb::Ptr<PolicyRequester> PolicyMap::routeMap(Orb::Name const& name) const {
  return lookup(policyTypeRouteMap, name);
}
Orb::Ptr<PolicyRequester> PolicyMap::routeMapIs(Orb::Name const& name) {
  return add(policyTypeRouteMap, name);
}
void PolicyMap::routeMapDel(Orb::Name name) {
  del(policyTypeRouteMap, name);
}

Orb::Ptr<PolicyRequester> PolicyMap::dynamicPrefixList(Orb::Name const& name) const {
  return lookup(policyTypeDynamicPrefixList, name);
}
Orb::Ptr<PolicyRequester> PolicyMap::dynamicPrefixListIs(Orb::Name const& name) {
  return add(policyTypeDynamicPrefixList, name);
}
void PolicyMap::dynamicPrefixListDel(Orb::Name name) {
  del(policyTypeDynamicPrefixList, name);
}

Orb::Ptr<PolicyRequester> PolicyMap::redistributedDynPfx(Orb::Name const& name) const {
  return lookup(policyTypeRedistributedDynPfx, name);
}
Orb::Ptr<PolicyRequester> PolicyMap::redistributedDynPfxIs(Orb::Name const& name) {
  return add(policyTypeRedistributedDynPfx, name);
}
void PolicyMap::redistributedDynPfxDel(Orb::Name name) {
  del(policyTypeRedistributedDynPfx, name);
}

std::string stateText(PolicyMap const& policyMap) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  auto collection = [&](PolicyType type, PolicyMap::Requesters const& coll) {
    for (auto const& [name, requester] : coll) {
      if (requester->reason().empty()) out << type << " \"" << name << "\"\n";
      for (auto const& kv : requester->reason())
        out << type << " \"" << name << "\" " << kv.first << "\n";
    }
  };
  collection(policyTypeRouteMap, policyMap.routeMap());
  collection(policyTypeDynamicPrefixList, policyMap.dynamicPrefixList());
  collection(policyTypeRedistributedDynPfx, policyMap.redistributedDynPfx());
  return out.str();
}

}  // namespace RoutingPolicyMap
