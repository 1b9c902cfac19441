// Prefix-list naming in the engine: the family and the engine's identifier of
// a configured list.
#include <ostream>

#include "Orb/Assert.h"
#include "Orb/EnumText.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Cog.h"

namespace Tessel {

namespace {
constexpr Orb::EnumName<Cog::PrefixListFamily> kFamily[] = {{Cog::ipv4, "ipv4"},
                                                            {Cog::ipv6, "ipv6"}};
}  // namespace

std::string valueToStrep(Cog::PrefixListFamily v) {
  return Orb::enumToStrep<Cog::PrefixListFamily>(v, kFamily);
}

Cog::PrefixListFamily prefixListFamilyFromStrep(std::string_view text) {
  return Orb::enumFromStrep<Cog::PrefixListFamily>(text, kFamily, "PrefixListFamily");
}

namespace {
Orb::TypeRegistration familyType(Orb::TypeInfo("Tessel::Cog::PrefixListFamily")
                                     .valuesOf<Cog::PrefixListFamily>(prefixListFamilyFromStrep,
                                                                      [](Cog::PrefixListFamily v) {
                                                                        return valueToStrep(v);
                                                                      }));
}  // namespace

std::ostream& operator<<(std::ostream& os, Cog::PrefixListFamily v) {
  return os << valueToStrep(v);
}

Orb::String Cog::prefixListId(Orb::String const& name, PrefixListFamily family) {
  if (family == ipv4) return name;
  // A number outside the family's values here is a caller's bug, not input.
  ORB_ASSERT(family == ipv6);
  // An IPv4 list named ".ipv6.X" meets the IPv6 list X in the engine; names
  // are not checked against that.
  return ".ipv6." + name;
}

}  // namespace Tessel
