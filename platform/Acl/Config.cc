// Storage and notification of the access-list configuration, and the range
// checks of the IP filter fields.
#include "Acl/Config.h"

#include <ostream>

#include "Orb/EnumText.h"
#include "Orb/RangeError.h"

namespace Acl {

namespace {
constexpr Orb::EnumName<AclType> kAclType[] = {
    {aclTypeIp, "ip"}, {aclTypeIpv6, "ipv6"}, {aclTypeMac, "mac"}};
}

std::string valueToStrep(AclType v) {
  return Orb::enumToStrep<AclType>(v, kAclType);
}

AclType aclTypeFromStrep(std::string_view text) {
  return Orb::enumFromStrep<AclType>(text, kAclType, "AclType");
}

std::ostream& operator<<(std::ostream& os, UniqueId id) {
  return os << id.value;
}

void IpFilterBase::vniIs(std::int64_t v) {
  if (v < 0 || v > maxVni) throw Orb::RangeError("IpFilterBase::vni < 0 or > 16777215 not allowed");
  vni_ = v;
}

void IpFilterBase::tniIs(std::int64_t v) {
  if (v < 0 || v > maxVni) throw Orb::RangeError("IpFilterBase::tni < 0 or > 16777215 not allowed");
  tni_ = v;
}

void IpFilterBase::check() const {
  if (vni_ < 0 || vni_ > maxVni)
    throw Orb::RangeError("IpFilterBase::vni < 0 or > 16777215 not allowed");
  if (tni_ < 0 || tni_ > maxVni)
    throw Orb::RangeError("IpFilterBase::tni < 0 or > 16777215 not allowed");
}

// ---- AclTypeConfig

AclTypeConfig::AclTypeConfig(AclType type, Orb::Entity const* parent)
    : Entity(Orb::Name(valueToStrep(type))), type_(type) {
  parentIs(parent);
}

Orb::Ptr<AclConfig> AclTypeConfig::aclIs(Orb::Name const& name) {
  if (auto a = acl(name)) return a;
  Orb::Ptr<AclConfig> a = AclConfig::create(name, this);
  acls_.set(name, a);
  notify(acl_, Orb::Key(name));
  return a;
}

void AclTypeConfig::aclDel(Orb::Name name) {
  auto const* p = acls_.get(name);
  if (!p) return;
  (*p)->parentIs(nullptr);
  acls_.erase(name);
  notify(acl_, Orb::Key(name));
}

// ---- Config

Orb::Ptr<AclTypeConfig> Config::aclTypeConfigIs(AclType type) {
  if (auto t = aclTypeConfig(type)) return t;
  Orb::Ptr<AclTypeConfig> t = AclTypeConfig::create(type, this);
  types_.set(type, t);
  notify(aclTypeConfig_, Orb::Key(Orb::U32(type)));
  return t;
}

void Config::aclTypeConfigDel(AclType type) {
  auto const* p = types_.get(type);
  if (!p) return;
  (*p)->parentIs(nullptr);
  types_.erase(type);
  notify(aclTypeConfig_, Orb::Key(Orb::U32(type)));
}

}  // namespace Acl
