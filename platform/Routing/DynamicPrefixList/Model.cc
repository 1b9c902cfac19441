// Storage and notification of the dynamic prefix-list model.
#include "Routing/DynamicPrefixList/Config.h"

namespace Routing::DynamicPrefixList {

DynamicPrefixListEntry::DynamicPrefixListEntry(Orb::Name name, Orb::Entity const* parent)
    : Entity(std::move(name)) {
  parentIs(parent);
}

void DynamicPrefixListEntry::versionIs(Orb::U32 v) {
  versionValue_ = v;
  notify(version_);
}

void DynamicPrefixListEntry::ipv4PrefixListIs(Orb::String const& name) {
  if (ipv4Value_ == name) return;
  ipv4Value_ = name;
  notify(ipv4PrefixList_);
}

void DynamicPrefixListEntry::ipv6PrefixListIs(Orb::String const& name) {
  if (ipv6Value_ == name) return;
  ipv6Value_ = name;
  notify(ipv6PrefixList_);
}

void DynamicPrefixListEntry::matchMapIs(Orb::String const& name) {
  if (matchMapValue_ == name) return;
  matchMapValue_ = name;
  notify(matchMap_);
}

Orb::Ptr<DynamicPrefixListEntry> Config::dynamicPrefixList(Orb::Name const& name) const {
  auto const* p = lists_.get(name);
  return p ? *p : nullptr;
}

Orb::Ptr<DynamicPrefixListEntry> Config::dynamicPrefixListIs(Orb::Name const& name) {
  if (auto existing = dynamicPrefixList(name)) return existing;
  Orb::Ptr<DynamicPrefixListEntry> e =
      lists_.set(name, Orb::Ptr<DynamicPrefixListEntry>(new DynamicPrefixListEntry(name, this)));
  notify(dynamicPrefixList_, Orb::Key(name));
  return e;
}

void Config::dynamicPrefixListDel(Orb::Name name) {
  auto* p = lists_.get(name);
  if (!p) return;
  (*p)->parentIs(nullptr);
  lists_.erase(name);
  notify(dynamicPrefixList_, Orb::Key(name));
}

}  // namespace Routing::DynamicPrefixList
