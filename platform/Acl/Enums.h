// Value enumerations of the access-list model that the policy translation
// reads: actions, origins, community kinds and flags, regex modes. All are
// 32-bit; values outside the named ones can occur and are kept as numbers.
#pragma once

#include <compare>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Orb/Api.h"
#include "Orb/Hash.h"
#include "Orb/Types.h"

namespace Acl {

/// 0 permits; any other value denies.
enum MatchPermit : Orb::U32 { permit = 0, deny = 1 };

enum BGPOrigin : Orb::U32 { originIgp = 0, originEgp = 1, originIncomplete = 2 };

/// How a route-map clause applies its community set.
enum CommSetFlag : Orb::U32 {
  commSetReplace_ = 0,  // replaces the route's communities
  commSetDelete_ = 1,   // deletes the listed communities
  commSetNone_ = 2,     // sets an empty community set
  commSetAdd_ = 3,      // adds to the route's communities
};

enum CommunityType : Orb::U32 { communityStandard = 0, communityExtended = 1, communityLarge = 2 };

/// Kind and form of a community-list entry: values or a regular expression,
/// for each community kind.
enum CommunityListType : Orb::U32 {
  standardValues = 0,
  standardRegex = 1,
  extendedValues = 2,
  extendedRegex = 3,
  largeValues = 4,
  largeRegex = 5,
};

enum RegexMode : Orb::U32 { regexModeAsn = 0, regexModeString = 1 };

enum ExtCommLinkBandwidthSetFlag : Orb::U32 {
  lbwNone = 0,
  lbwAggregate = 1,
  lbwValue = 2,
  lbwDivideEqual = 3,
  lbwDivideRatio = 4,
};

ROTOR_API std::string valueToStrep(MatchPermit v);
ROTOR_API std::string valueToStrep(BGPOrigin v);
ROTOR_API std::string valueToStrep(CommSetFlag v);
ROTOR_API std::string valueToStrep(CommunityType v);
ROTOR_API std::string valueToStrep(CommunityListType v);
ROTOR_API std::string valueToStrep(RegexMode v);
ROTOR_API std::string valueToStrep(ExtCommLinkBandwidthSetFlag v);

/// Parse a name of the enumeration or a decimal number; anything else raises
/// Orb::RangeError naming the enumeration.
ROTOR_API MatchPermit matchPermitFromStrep(std::string_view text);
ROTOR_API BGPOrigin bgpOriginFromStrep(std::string_view text);
ROTOR_API CommSetFlag commSetFlagFromStrep(std::string_view text);
ROTOR_API RegexMode regexModeFromStrep(std::string_view text);
ROTOR_API ExtCommLinkBandwidthSetFlag lbwFlagFromStrep(std::string_view text);

/// One community of any kind as three 32-bit words: a standard community is
/// the third word, an extended one the second and third, a large one all three.
struct ROTOR_API CommunityValue {
  Orb::U32 word1 = 0;
  Orb::U32 word2 = 0;
  Orb::U32 word3 = 0;

  friend auto operator<=>(CommunityValue const&, CommunityValue const&) = default;
  Orb::HashValue hash(Orb::HashValue seed) const noexcept {
    return Orb::hashFinish(Orb::hashMix(Orb::hashMix(Orb::hashMix(seed, word1), word2), word3));
  }
};

}  // namespace Acl
