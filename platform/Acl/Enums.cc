// Text forms of the access-list enumerations.
#include "Acl/Enums.h"

#include "Orb/EnumText.h"

namespace Acl {
namespace {
using Orb::EnumName;
constexpr EnumName<MatchPermit> kMatchPermit[] = {{permit, "permit"}, {deny, "deny"}};
constexpr EnumName<BGPOrigin> kOrigin[] = {
    {originIgp, "igp"}, {originEgp, "egp"}, {originIncomplete, "incomplete"}};
constexpr EnumName<CommSetFlag> kCommSetFlag[] = {{commSetReplace_, "commSetReplace"},
                                                  {commSetDelete_, "commSetDelete"},
                                                  {commSetNone_, "commSetNone"},
                                                  {commSetAdd_, "commSetAdd"}};
constexpr EnumName<CommunityType> kCommunityType[] = {
    {communityStandard, "standard"}, {communityExtended, "extended"}, {communityLarge, "large"}};
constexpr EnumName<CommunityListType> kListType[] = {
    {standardValues, "standardValues"}, {standardRegex, "standardRegex"},
    {extendedValues, "extendedValues"}, {extendedRegex, "extendedRegex"},
    {largeValues, "largeValues"},       {largeRegex, "largeRegex"}};
constexpr EnumName<RegexMode> kRegexMode[] = {{regexModeAsn, "asn"}, {regexModeString, "string"}};
constexpr EnumName<ExtCommLinkBandwidthSetFlag> kLbw[] = {{lbwNone, "none"},
                                                          {lbwAggregate, "aggregate"},
                                                          {lbwValue, "value"},
                                                          {lbwDivideEqual, "divideEqual"},
                                                          {lbwDivideRatio, "divideRatio"}};
}  // namespace

std::string valueToStrep(MatchPermit v) {
  return Orb::enumToStrep<MatchPermit>(v, kMatchPermit);
}
std::string valueToStrep(BGPOrigin v) {
  return Orb::enumToStrep<BGPOrigin>(v, kOrigin);
}
std::string valueToStrep(CommSetFlag v) {
  return Orb::enumToStrep<CommSetFlag>(v, kCommSetFlag);
}
std::string valueToStrep(CommunityType v) {
  return Orb::enumToStrep<CommunityType>(v, kCommunityType);
}
std::string valueToStrep(CommunityListType v) {
  return Orb::enumToStrep<CommunityListType>(v, kListType);
}
std::string valueToStrep(RegexMode v) {
  return Orb::enumToStrep<RegexMode>(v, kRegexMode);
}
std::string valueToStrep(ExtCommLinkBandwidthSetFlag v) {
  return Orb::enumToStrep<ExtCommLinkBandwidthSetFlag>(v, kLbw);
}

MatchPermit matchPermitFromStrep(std::string_view t) {
  return Orb::enumFromStrep<MatchPermit>(t, kMatchPermit, "MatchPermit");
}
BGPOrigin bgpOriginFromStrep(std::string_view t) {
  return Orb::enumFromStrep<BGPOrigin>(t, kOrigin, "BGPOrigin");
}
CommSetFlag commSetFlagFromStrep(std::string_view t) {
  return Orb::enumFromStrep<CommSetFlag>(t, kCommSetFlag, "CommSetFlag");
}
RegexMode regexModeFromStrep(std::string_view t) {
  return Orb::enumFromStrep<RegexMode>(t, kRegexMode, "RegexMode");
}
ExtCommLinkBandwidthSetFlag lbwFlagFromStrep(std::string_view t) {
  return Orb::enumFromStrep<ExtCommLinkBandwidthSetFlag>(t, kLbw, "ExtCommLinkBandwidthSetFlag");
}

}  // namespace Acl
