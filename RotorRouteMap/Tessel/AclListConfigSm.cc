// The list reactor's frame and its prefix-list side: list nodes appear and go
// with the configuration, the list reactors follow.
#include "Tessel/AclListConfigSm.h"

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

using Acl::AclListConfig;

namespace {
Orb::TypeRegistration aclListConfigSmType({"Tessel::AclListConfigSm", {}, {}});
}  // namespace

Orb::Ptr<AclListConfigSm> aclListConfigSmFactory(Root::AclListConfigPtr const& aclListConfig,
                                                 L3::VrfName const& vrfName) {
  return Orb::make<AclListConfigSm>(aclListConfig, vrfName);
}

AclListConfigSm::AclListConfigSm(Root::AclListConfigPtr aclListConfig, L3::VrfName vrfName)
    : aclListConfig_(std::move(aclListConfig)),
      vrfName_(std::move(vrfName)),
      configNotifiee_(this, aclListConfig_) {
  configNotifiee_.hasNotificationActiveIs(true);
  // The mode goes first so that no AS-path list meets the engine under the
  // wrong one; list nodes go before the reactors that send their entries.
  handleRegexMode();
  handlePathList();
  handlePrefixList();
  handleIpv6PrefixList();
  handleCommunityList();
  pathListsFollow();
  prefixListsFollow();
  ipv6PrefixListsFollow();
  communityListsFollow();
  handleInitialized();
}

AclListConfigSm::~AclListConfigSm() = default;

void AclListConfigSm::hasNotificationActiveIs(bool active) {
  if (active == hasNotificationActive()) return;
  Reactor::hasNotificationActiveIs(active);
}

void AclListConfigSm::handleInitialized() {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handleInitialized()"
                              << " vrf: " << vrfName_);
  initializedIs(true);
  handlePathList();
}

// ---- prefix lists

namespace {

/// The list node of one family: sent when configured, removed when not.
template <class L>
void syncListNode(L3::VrfName const& vrfName, Orb::String const& name,
                  AclListConfig::Lists<L> const& lists, Cog::PrefixListFamily family) {
  auto cog = cogFactory(vrfName);
  if (lists.contains(name)) {
    ORB_TRACE(traceHandler, "Add prefix-list " << name);
    if (family == Cog::ipv4) {
      cog->doAddIpPrefixList(name);
    } else {
      cog->doAddIpv6PrefixList(name);
    }
  } else {
    ORB_TRACE(traceDelete, "Del prefix-list " << name);
    cog->doDelIpPrefixList(name, family);
  }
  cog->doCommit();
}

}  // namespace

void AclListConfigSm::handlePrefixList(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handlePrefixList(Orb::String name)"
                              << " name: " << name << " vrf: " << vrfName_);
  syncListNode(vrfName_, name, aclListConfig_->prefixList(), Cog::ipv4);
}

void AclListConfigSm::handlePrefixList() {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handlePrefixList()"
                              << " vrf: " << vrfName_);
  for (auto const& [name, list] : aclListConfig_->prefixList())
    handlePrefixList(name);
}

void AclListConfigSm::handleIpv6PrefixList(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handleIpv6PrefixList(Orb::String name)"
                              << " name: " << name << " vrf: " << vrfName_);
  syncListNode(vrfName_, name, aclListConfig_->ipv6PrefixList(), Cog::ipv6);
}

void AclListConfigSm::handleIpv6PrefixList() {
  ORB_TRACE(traceHandler, "void Tessel::AclListConfigSm::handleIpv6PrefixList()"
                              << " vrf: " << vrfName_);
  for (auto const& [name, list] : aclListConfig_->ipv6PrefixList())
    handleIpv6PrefixList(name);
}

void AclListConfigSm::prefixListIs(Orb::Ptr<Acl::PrefixList const> const& list) {
  if (OrbPrefixList* existing = orbPrefixList_.find(list->name());
      existing && existing->prefixList() == list) {
    return;
  }
  orbPrefixList_.insert(list->name(), Orb::make<OrbPrefixList>(list, this));
}

void AclListConfigSm::prefixListDel(Orb::Name const& name) {
  orbPrefixList_.del(name);
}

void AclListConfigSm::prefixListDelAll() {
  orbPrefixList_.delAll();
}

void AclListConfigSm::ipv6PrefixListIs(Orb::Ptr<Acl::Ipv6PrefixList const> const& list) {
  if (OrbIpv6PrefixList* existing = orbIpv6PrefixList_.find(list->name());
      existing && existing->prefixList() == list) {
    return;
  }
  orbIpv6PrefixList_.insert(list->name(), Orb::make<OrbIpv6PrefixList>(list, this));
}

void AclListConfigSm::ipv6PrefixListDel(Orb::Name const& name) {
  orbIpv6PrefixList_.del(name);
}

void AclListConfigSm::ipv6PrefixListDelAll() {
  orbIpv6PrefixList_.delAll();
}

void AclListConfigSm::prefixListsFollow() {
  auto const& lists = aclListConfig_->prefixList();
  orbPrefixList_.delUnless([&](Orb::Name const& name) { return lists.contains(name); });
  for (auto const& [name, list] : lists)
    prefixListIs(list);
}

void AclListConfigSm::prefixListFollow(Orb::Name const& name) {
  if (auto list = aclListConfig_->prefixList(name)) {
    prefixListIs(list);
  } else {
    prefixListDel(name);
  }
}

void AclListConfigSm::ipv6PrefixListsFollow() {
  auto const& lists = aclListConfig_->ipv6PrefixList();
  orbIpv6PrefixList_.delUnless([&](Orb::Name const& name) { return lists.contains(name); });
  for (auto const& [name, list] : lists)
    ipv6PrefixListIs(list);
}

void AclListConfigSm::ipv6PrefixListFollow(Orb::Name const& name) {
  if (auto list = aclListConfig_->ipv6PrefixList(name)) {
    ipv6PrefixListIs(list);
  } else {
    ipv6PrefixListDel(name);
  }
}

// ---- notifications

void AclListConfigSm::OrbAclListConfig::onOwnerAttribute(Orb::AttributeId attribute,
                                                         Orb::Key const& key) {
  AclListConfigSm* sm = owner();
  switch (attribute) {
    case AclListConfig::regexMode_:
      sm->handleRegexMode();
      break;
    case AclListConfig::asPathList_:
      sm->handlePathList(key.name());
      sm->pathListFollow(key.name());
      break;
    case AclListConfig::prefixList_:
      sm->handlePrefixList(key.name());
      sm->prefixListFollow(key.name());
      break;
    case AclListConfig::ipv6PrefixList_:
      sm->handleIpv6PrefixList(key.name());
      sm->ipv6PrefixListFollow(key.name());
      break;
    case AclListConfig::communityList_:
      sm->handleCommunityList(key.name());
      sm->communityListFollow(key.name());
      break;
    default:
      break;
  }
}

}  // namespace Tessel
