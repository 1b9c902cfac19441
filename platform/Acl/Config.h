// Acl::Config: the access-list configuration of all ACL types. Each type has
// its configuration (Acl::AclTypeConfig) with its ACLs by name; an ACL
// (Acl::AclConfig) has a current configuration that maps sequence numbers to
// rules, replaced whole whenever the ACL changes.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "Acl/IpRuleConfig.h"
#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/HashMap.h"
#include "Orb/OrderedMap.h"

namespace Acl {

/// The kind of traffic an ACL filters. Values outside the named ones can
/// occur and are kept as numbers.
enum AclType : Orb::U32 { aclTypeIp = 0, aclTypeIpv6 = 1, aclTypeMac = 2 };

ROTOR_API std::string valueToStrep(AclType v);
/// Reads a name ("ip", "ipv6", "mac") or a decimal number.
ROTOR_API AclType aclTypeFromStrep(std::string_view text);

/// The rules of an ACL as configured now: sequence numbers in order, each
/// naming a rule by its identifier. Not changed once shared; the writer
/// makes a new one for every change.
class ROTOR_API AclCurrentConfig : public Orb::Object {
 public:
  using SeqToId = Orb::OrderedMap<Orb::U32, UniqueId>;
  using IdToRule = Orb::HashMap<UniqueId, IpRuleConfig>;

  AclCurrentConfig() = default;
  AclCurrentConfig(SeqToId seqToId, IdToRule idToRule)
      : seqToId_(std::move(seqToId)), idToRule_(std::move(idToRule)) {}

  SeqToId const& seqToId() const noexcept { return seqToId_; }
  IdToRule const& idToRule() const noexcept { return idToRule_; }
  /// The rule of `id`, or null when the configuration holds none.
  IpRuleConfig const* rule(UniqueId id) const { return idToRule_.get(id); }

 private:
  SeqToId seqToId_;
  IdToRule idToRule_;
};

class ROTOR_API AclConfig : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    standard_ = 1,
    currCfg_,
  };

  static Orb::Ptr<AclConfig> create(Orb::Name name, Orb::Entity const* parent) {
    return new AclConfig(std::move(name), parent);
  }

  /// Whether this is a standard ACL (source address only).
  bool standard() const noexcept { return standardValue_; }
  void standardIs(bool v) {
    if (standardValue_ == v) return;
    standardValue_ = v;
    notify(standard_);
  }

  /// The current configuration, or null when there is none.
  Orb::Ptr<AclCurrentConfig const> const& currCfg() const noexcept { return currCfgValue_; }
  /// Notifies every store: a new configuration is a change even when equal.
  void currCfgIs(Orb::Ptr<AclCurrentConfig const> v) {
    currCfgValue_ = std::move(v);
    notify(currCfg_);
  }

 private:
  AclConfig(Orb::Name name, Orb::Entity const* parent) : Entity(std::move(name)) {
    parentIs(parent);
  }
  bool standardValue_ = false;
  Orb::Ptr<AclCurrentConfig const> currCfgValue_;
};

/// The ACLs of one type, by name.
class ROTOR_API AclTypeConfig : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    acl_ = 1,  // key: the ACL's name
  };

  static Orb::Ptr<AclTypeConfig> create(AclType type, Orb::Entity const* parent) {
    return new AclTypeConfig(type, parent);
  }

  AclType type() const noexcept { return type_; }

  Orb::OrderedMap<Orb::Name, Orb::Ptr<AclConfig>> const& acl() const noexcept { return acls_; }
  Orb::Ptr<AclConfig> acl(Orb::Name const& name) const {
    auto const* p = acls_.get(name);
    return p ? *p : nullptr;
  }
  /// The ACL `name`, made (and notified) when absent.
  Orb::Ptr<AclConfig> aclIs(Orb::Name const& name);
  /// The name is taken by value: a caller may pass the key stored here.
  void aclDel(Orb::Name name);

 private:
  AclTypeConfig(AclType type, Orb::Entity const* parent);
  AclType type_;
  Orb::OrderedMap<Orb::Name, Orb::Ptr<AclConfig>> acls_;
};

class ROTOR_API Config : public Orb::Entity {
 public:
  enum Attribute : Orb::AttributeId {
    aclTypeConfig_ = 1,  // key: the type as a number
  };

  static Orb::Ptr<Config> create(Orb::Name name) { return new Config(std::move(name)); }

  Orb::OrderedMap<AclType, Orb::Ptr<AclTypeConfig>> const& aclTypeConfig() const noexcept {
    return types_;
  }
  Orb::Ptr<AclTypeConfig> aclTypeConfig(AclType type) const {
    auto const* p = types_.get(type);
    return p ? *p : nullptr;
  }
  /// The configuration of `type`, made (and notified) when absent.
  Orb::Ptr<AclTypeConfig> aclTypeConfigIs(AclType type);
  void aclTypeConfigDel(AclType type);

 private:
  explicit Config(Orb::Name name) : Entity(std::move(name)) {}
  Orb::OrderedMap<AclType, Orb::Ptr<AclTypeConfig>> types_;
};

}  // namespace Acl
