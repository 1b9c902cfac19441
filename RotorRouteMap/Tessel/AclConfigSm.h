// The standard IP access-list reactors of one VRF.
//
// Watches: the access-list configuration (its per-type configurations), the
// IP type's ACLs by name, and each ACL's current configuration.
// Sends: for a standard ACL whose current configuration changes (and when its
// reactor is made), the removal of the whole engine list with its own commit,
// then, unless it has no rules, the list and its entries with one commit. For
// an ACL that goes, its removal with a commit. Other ACL types, non-standard
// ACLs and ACLs without a current configuration send nothing.
#pragma once

#include "Acl/Config.h"
#include "Orb/Api.h"
#include "Orb/Reactor.h"
#include "Tessel/Root.h"

namespace Tessel {

class IpAclConfigSm;
class OrbAcl;

class ROTOR_API AclConfigSm : public Orb::Reactor {
 public:
  AclConfigSm(Root::AclConfigPtr aclConfig, L3::VrfName vrfName);
  ~AclConfigSm() override;

  Root::AclConfigPtr const& aclConfig() const noexcept { return aclConfig_; }
  L3::VrfName const& vrfName() const noexcept { return vrfName_; }
  bool initialized() const noexcept { return initialized_; }

  /// Keeps the IP reactor in line with the configuration of `type`; other
  /// types are not translated.
  void handleConfig(Acl::AclType type);
  /// handleConfig of the IP type.
  void handleConfig();

  IpAclConfigSm* ipConfigSm() const noexcept { return ipConfigSm_.get(); }
  /// Makes the IP reactor unless one already watches `config`.
  void ipConfigSmIs(Orb::Ptr<Acl::AclTypeConfig const> const& config);
  /// Takes the IP reactor out with its notifications off; it goes when the
  /// caller drops it.
  Orb::Ptr<IpAclConfigSm> ipConfigSmDel();

  void handleInitialized();

 private:
  class OrbAclConfig final : public Orb::ReactorNotifiee<AclConfigSm> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };
  /// The IP reactor as a part: it follows this reactor's switch and mark.
  class IpPart final : public Orb::ReactorPart {
   public:
    explicit IpPart(AclConfigSm* owner) : owner_(owner) { owner->partIs(this); }
    void partNotificationIs(bool active) override;
    void partZombieIs(bool zombie) override;

   private:
    AclConfigSm* owner_;
  };

  Root::AclConfigPtr aclConfig_;
  L3::VrfName vrfName_;
  OrbAclConfig configNotifiee_;
  Orb::ReactorSlot<IpAclConfigSm> ipConfigSm_;
  IpPart ipPart_{this};
  bool initialized_ = false;
};

/// The reactor of the IP type's ACLs.
class ROTOR_API IpAclConfigSm : public Orb::Reactor {
 public:
  IpAclConfigSm(Orb::Ptr<Acl::AclTypeConfig const> config, L3::VrfName vrfName);
  ~IpAclConfigSm() override;

  Orb::Ptr<Acl::AclTypeConfig const> const& ipConfig() const noexcept { return config_; }
  L3::VrfName const& vrfName() const noexcept { return vrfName_; }

  /// Removes the engine list of an ACL that left the configuration; a
  /// present ACL is its own reactor's work.
  void handleIpConfig(Orb::String const& name);

  OrbAcl* acl(Orb::Name const& name) const { return orbAcl_.find(name); }
  std::size_t acls() const noexcept { return orbAcl_.size(); }
  void aclIs(Orb::Ptr<Acl::AclConfig const> const& acl);
  void aclDel(Orb::Name const& name);
  void aclDelAll();

 private:
  class OrbIpConfig final : public Orb::ReactorNotifiee<IpAclConfigSm> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Orb::Ptr<Acl::AclTypeConfig const> config_;
  L3::VrfName vrfName_;
  OrbIpConfig configNotifiee_;
  Orb::ReactorColl<Orb::Name, OrbAcl> orbAcl_{this};
};

/// The reactor of one ACL.
class ROTOR_API OrbAcl : public Orb::Reactor {
 public:
  OrbAcl(Orb::Ptr<Acl::AclConfig const> acl, IpAclConfigSm* owner);

  Orb::Ptr<Acl::AclConfig const> const& aclConfig() const noexcept { return acl_; }
  Orb::Name const& name() const noexcept { return acl_->name(); }

  /// Rewrites the whole engine list in two transactions: delete, then add
  /// with every rule whose action is 0 or 1.
  void handleCurrCfg();

 private:
  class AclNotifiee final : public Orb::ReactorNotifiee<OrbAcl> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Orb::Ptr<Acl::AclConfig const> acl_;
  IpAclConfigSm* owner_;
  AclNotifiee notifiee_;
};

}  // namespace Tessel
