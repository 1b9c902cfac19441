// Acl::IpRuleConfig and Acl::IpFilter: one rule of an IP access list, its
// action and the traffic it matches. The policy translation reads only the
// action and the source address with its mask.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "Kiwi/Prefix.h"
#include "Orb/Api.h"
#include "Orb/Hash.h"
#include "Orb/Types.h"

namespace Acl {

/// Identifies one rule within an ACL's configuration, apart from its
/// sequence number.
struct ROTOR_API UniqueId {
  Orb::U64 value = 0;

  friend auto operator<=>(UniqueId const&, UniqueId const&) = default;
  Orb::HashValue hash(Orb::HashValue seed) const noexcept {
    return Orb::hashFinish(
        Orb::hashMix(Orb::hashMix(seed, Orb::U32(value)), Orb::U32(value >> 32)));
  }
};

ROTOR_API std::ostream& operator<<(std::ostream& os, UniqueId id);

/// The fields every IP filter shares. VNI and TNI are 24-bit identifiers;
/// each store (and each copy) checks them, so an out-of-range value never
/// travels further than where it was made.
class ROTOR_API IpFilterBase {
 public:
  static constexpr std::int64_t maxVni = 16777215;

  IpFilterBase() = default;
  IpFilterBase(IpFilterBase const& other) : vni_(other.vni_), tni_(other.tni_) { check(); }
  IpFilterBase& operator=(IpFilterBase const& other) {
    vni_ = other.vni_;
    tni_ = other.tni_;
    check();
    return *this;
  }

  std::int64_t vni() const noexcept { return vni_; }
  /// Raises Orb::RangeError "IpFilterBase::vni < 0 or > 16777215 not allowed".
  void vniIs(std::int64_t v);
  std::int64_t tni() const noexcept { return tni_; }
  /// Raises Orb::RangeError "IpFilterBase::tni < 0 or > 16777215 not allowed".
  void tniIs(std::int64_t v);

  friend bool operator==(IpFilterBase const&, IpFilterBase const&) = default;

 private:
  void check() const;
  std::int64_t vni_ = 0;
  std::int64_t tni_ = 0;
};

class ROTOR_API IpFilter : public IpFilterBase {
 public:
  Kiwi::IpAddrWithFullMask const& source() const noexcept { return source_; }
  void sourceIs(Kiwi::IpAddrWithFullMask const& v) { source_ = v; }

  friend bool operator==(IpFilter const&, IpFilter const&) = default;

 private:
  Kiwi::IpAddrWithFullMask source_;
};

/// One rule. The action is kept as the configuration wrote it: 0 denies, 1
/// permits, other values occur.
struct ROTOR_API IpRuleConfig {
  Orb::U32 action = 0;
  IpFilter filter;

  friend bool operator==(IpRuleConfig const&, IpRuleConfig const&) = default;
};

}  // namespace Acl
