// Standard IP ACLs into the engine: the IP type's reactor, one reactor per
// ACL, and the whole-list rewrite.
#include "Tessel/AclConfigSm.h"

#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

namespace {
Orb::TypeRegistration aclConfigSmType({"Tessel::AclConfigSm", {}, {}});
Orb::TypeRegistration ipAclConfigSmType({"Tessel::IpAclConfigSm", {}, {}});
}  // namespace

// ---- AclConfigSm

AclConfigSm::AclConfigSm(Root::AclConfigPtr aclConfig, L3::VrfName vrfName)
    : aclConfig_(std::move(aclConfig)),
      vrfName_(std::move(vrfName)),
      configNotifiee_(this, aclConfig_) {
  configNotifiee_.hasNotificationActiveIs(true);
  handleConfig();
  handleInitialized();
}

AclConfigSm::~AclConfigSm() = default;

void AclConfigSm::handleInitialized() {
  initialized_ = true;
}

void AclConfigSm::handleConfig() {
  handleConfig(Acl::aclTypeIp);
}

void AclConfigSm::handleConfig(Acl::AclType type) {
  ORB_TRACE(traceHandler, "void Tessel::AclConfigSm::handleConfig(Acl::AclType type)"
                              << " type: " << Acl::valueToStrep(type) << " vrf: " << vrfName_);
  if (type != Acl::aclTypeIp) return;
  if (auto ip = aclConfig_->aclTypeConfig(type)) {
    ipConfigSmIs(ip);
  } else {
    ipConfigSmDel();
  }
}

void AclConfigSm::ipConfigSmIs(Orb::Ptr<Acl::AclTypeConfig const> const& config) {
  if (ipConfigSm_ && ipConfigSm_->ipConfig() == config) return;
  ipConfigSm_ = Orb::make<IpAclConfigSm>(config, vrfName_);
  ipConfigSm_->hasNotificationActiveIs(true);
}

Orb::Ptr<IpAclConfigSm> AclConfigSm::ipConfigSmDel() {
  return ipConfigSm_.take();
}

void AclConfigSm::OrbAclConfig::onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) {
  if (attribute == Acl::Config::aclTypeConfig_ && key.isU32()) {
    owner()->handleConfig(Acl::AclType(key.u32()));
  }
}

void AclConfigSm::IpPart::partNotificationIs(bool active) {
  if (owner_->ipConfigSm_) owner_->ipConfigSm_->hasNotificationActiveIs(active);
}

void AclConfigSm::IpPart::partZombieIs(bool zombie) {
  if (owner_->ipConfigSm_) owner_->ipConfigSm_->orbDoZombieReactors(zombie);
}

// ---- IpAclConfigSm

IpAclConfigSm::IpAclConfigSm(Orb::Ptr<Acl::AclTypeConfig const> config, L3::VrfName vrfName)
    : config_(std::move(config)), vrfName_(std::move(vrfName)), configNotifiee_(this, config_) {
  configNotifiee_.hasNotificationActiveIs(true);
  auto const& acls = config_->acl();
  orbAcl_.delUnless([&](Orb::Name const& name) { return acls.contains(name); });
  for (auto const& [name, acl] : acls)
    aclIs(acl);
}

IpAclConfigSm::~IpAclConfigSm() = default;

void IpAclConfigSm::handleIpConfig(Orb::String const& name) {
  ORB_TRACE(traceHandler, "void Tessel::IpAclConfigSm::handleIpConfig(Orb::String name)"
                              << " name: " << name << " vrf: " << vrfName_);
  if (config_->acl().contains(name)) return;
  ORB_TRACE(traceDelete, "handleIpConfig: remove ip acl std list " << name);
  auto cog = cogFactory(vrfName_);
  cog->doDelIpStdAcl(name);
  cog->doCommit();
}

void IpAclConfigSm::aclIs(Orb::Ptr<Acl::AclConfig const> const& acl) {
  if (OrbAcl* existing = orbAcl_.find(acl->name()); existing && existing->aclConfig() == acl) {
    return;
  }
  orbAcl_.insert(acl->name(), Orb::make<OrbAcl>(acl, this));
}

void IpAclConfigSm::aclDel(Orb::Name const& name) {
  orbAcl_.del(name);
}

void IpAclConfigSm::aclDelAll() {
  orbAcl_.delAll();
}

void IpAclConfigSm::OrbIpConfig::onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) {
  if (attribute != Acl::AclTypeConfig::acl_ || !key.isName()) return;
  IpAclConfigSm* sm = owner();
  Orb::Name const& name = key.name();
  sm->handleIpConfig(name);
  if (auto acl = sm->config_->acl(name)) {
    sm->aclIs(acl);
  } else {
    sm->aclDel(name);
  }
}

// ---- OrbAcl

OrbAcl::OrbAcl(Orb::Ptr<Acl::AclConfig const> acl, IpAclConfigSm* owner)
    : acl_(std::move(acl)), owner_(owner), notifiee_(this, acl_) {
  notifiee_.hasNotificationActiveIs(true);
  handleCurrCfg();
}

void OrbAcl::handleCurrCfg() {
  ORB_TRACE(traceHandler, "void Tessel::OrbAcl::handleCurrCfg()"
                              << " name: " << name() << " vrf: " << owner_->vrfName());
  auto const& curr = acl_->currCfg();
  if (!acl_->standard() || !curr) return;
  auto cog = cogFactory(owner_->vrfName());
  cog->doDelIpStdAcl(name());
  cog->doCommit();
  if (curr->seqToId().empty()) return;
  cog->doAddIpStdAcl(name());
  for (auto const& [seqno, id] : curr->seqToId()) {
    // A missing rule is one with default values; copying validates it.
    Acl::IpRuleConfig rule;
    if (Acl::IpRuleConfig const* found = curr->rule(id)) rule = *found;
    // The configuration's 0 denies and 1 permits, the other way round from
    // the match action.
    Acl::MatchPermit action;
    if (rule.action == 0) {
      action = Acl::deny;
    } else if (rule.action == 1) {
      action = Acl::permit;
    } else {
      continue;
    }
    cog->doAddIpStdAclEntry(name(), seqno, action, rule.filter.source());
  }
  cog->doCommit();
}

void OrbAcl::AclNotifiee::onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const&) {
  if (attribute == Acl::AclConfig::currCfg_) owner()->handleCurrCfg();
}

}  // namespace Tessel
