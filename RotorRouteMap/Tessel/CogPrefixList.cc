// Prefix lists in the engine: the family, the engine's identifier of a
// configured list, and the list and entry commands of both families.
#include <iterator>
#include <ostream>

#include "Orb/Assert.h"
#include "Orb/EnumText.h"
#include "Orb/RangeError.h"
#include "Orb/ShortText.h"
#include "Orb/Trace.h"
#include "Orb/TypeRegistry.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

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

Cog::PrefixListFamily PrefixListFamilyInstance(U32 v) {
  return Cog::PrefixListFamily(v);
}

Cog::PrefixListFamily PrefixListFamilyInstance(std::string_view text) {
  return prefixListFamilyFromStrep(text);
}

std::string stringValue(Cog::PrefixListFamily v) {
  return valueToStrep(v);
}

template <>
Cog::PrefixListFamily sequenceToValue<Cog::PrefixListFamily>(U32 position) {
  if (position >= std::size(kFamily)) {
    throw Orb::RangeError("PrefixListFamily: no value at position " + std::to_string(position));
  }
  return kFamily[position].value;
}

Orb::String Cog::prefixListId(Orb::String const& name, PrefixListFamily family) {
  if (family == ipv4) return name;
  // A number outside the family's values here is a caller's bug, not input.
  ORB_ASSERT(family == ipv6);
  // An IPv4 list named ".ipv6.X" meets the IPv6 list X in the engine; names
  // are not checked against that.
  return ".ipv6." + name;
}

namespace {

// The engine id as prefixListId builds it, without a String per command.
Orb::ShortText listIdText(Orb::String const& name, Cog::PrefixListFamily family) {
  if (family == Cog::ipv4) return Orb::ShortText(name);
  ORB_ASSERT(family == Cog::ipv6);
  return Orb::ShortText(".ipv6.", name);
}

RibPath listPath(Cog const& cog, Orb::String const& name, Cog::PrefixListFamily family) {
  RibPath path = cog.ribPathIs(512);
  path->doPushPath(603);
  path->doPushString(515, listIdText(name, family));
  return path;
}

RibPath entryPath(Cog const& cog, Orb::String const& name, U32 seqno,
                  Cog::PrefixListFamily family) {
  RibPath path = listPath(cog, name, family);
  path->doPushU32(516, seqno);
  return path;
}

void addList(Cog const& cog, std::string_view opName, Orb::String const& name,
             Cog::PrefixListFamily family) {
  Orb::Ptr<Rib::CogOp> op = ribOpIs(opName, listPath(cog, name, family));
  op->values->doPushString(0, Cog::prefixListId(name, family));
  op->doExecute();
}

/// Everything after the address: its length, then the length range. With no
/// bound configured the prefix's own length is sent as both, so the entry
/// matches that length exactly.
void pushLengths(Rib::CogValueTagArray& values, U32 lengthTag, U32 length, U32 ge, U32 le) {
  values.doPushU32(lengthTag, length);
  if (ge == 0 && le == 0) {
    values.doPushU32(6, length);
    values.doPushU32(7, length);
    return;
  }
  if (ge != 0) values.doPushU32(6, ge);
  if (le != 0) values.doPushU32(7, le);
}

}  // namespace

void Cog::doAddIpPrefixList(Orb::String const& name) {
  addList(*this, "doAddIpPrefixList", name, ipv4);
}

void Cog::doAddIpv6PrefixList(Orb::String const& name) {
  addList(*this, "doAddIpv6PrefixList", name, ipv6);
}

void Cog::doDelIpPrefixList(Orb::String const& name, PrefixListFamily family) {
  Orb::Ptr<Rib::CogOp> op = ribOpIs("doDelIpPrefixList", listPath(*this, name, family));
  op->isDelete = true;
  op->doExecute();
}

void Cog::doAddIpPrefixListEntry(Orb::String const& name, U32 seqno, Acl::MatchPermit action,
                                 Kiwi::Prefix const& prefix, U32 ge, U32 le) {
  ORB_TRACE(traceCommand, "doAddIpPrefixListEntry " << seqno << " " << prefix);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("doAddIpPrefixListEntry", entryPath(*this, name, seqno, ipv4));
  op->values->doPushU32(9, seqno);
  op->values->doPushFlag(8, action != Acl::deny);
  op->values->doPushIpAddr(0, prefix.address());
  pushLengths(*op->values, 2, prefix.length(), ge, le);
  op->doExecute();
}

void Cog::doAddIpv6PrefixListEntry(Orb::String const& name, U32 seqno, Acl::MatchPermit action,
                                   Kiwi::Ip6Prefix const& prefix, U32 ge, U32 le) {
  Orb::Ptr<Rib::CogOp> op =
      ribOpIs("doAddIpv6PrefixListEntry", entryPath(*this, name, seqno, ipv6));
  op->values->doPushU32(9, seqno);
  op->values->doPushFlag(8, action != Acl::deny);
  op->values->doPushIp6Addr(1, prefix.address());
  pushLengths(*op->values, 3, prefix.length(), ge, le);
  op->doExecute();
}

void Cog::doDelIpPrefixListEntry(Orb::String const& name, U32 seqno, PrefixListFamily family) {
  ORB_TRACE(traceCommand, "doDelIpPrefixListEntry " << seqno);
  Orb::Ptr<Rib::CogOp> op =
      ribOpIs("doDelIpPrefixListEntry", entryPath(*this, name, seqno, family));
  op->isDelete = true;
  op->doExecute();
}

}  // namespace Tessel
