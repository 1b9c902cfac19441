// Printing and parsing of the community clause records' text forms.
#include "TesselUtil/CommSetClauseText.h"

#include <ostream>

#include "Orb/TypeRegistry.h"

namespace Tessel {

namespace {
constexpr char kKeyHead[] = "Value('Tessel::MapEntryCommSetClause', ** {";
constexpr char kRecordHead[] = "Value('Tessel::CommSetClauseInMapEntry', ** {";

// Runs `read` and reports a range error inside it under `field`.
template <class Read>
auto field(char const* name, Read read) {
  try {
    return read();
  } catch (Orb::RangeError const& e) {
    throw e.within(name);
  }
}
}  // namespace

std::string valueToStrep(MapEntryCommSetClause const& key) {
  return std::string(kKeyHead) + "'mapName': " + Orb::valueToStrep(key.mapName()) +
         ", 'mapSeqno': " + std::to_string(key.mapSeqno()) +
         ", 'flag': " + Acl::valueToStrep(key.flag()) + "})";
}

std::string valueToStrep(CommSetClauseInMapEntry const& record) {
  return std::string(kRecordHead) + "'mapEntryClause': " + valueToStrep(record.mapEntryClause()) +
         ", 'commSet': " + Orb::pointerToStrep(record.commSet().get()) + "})";
}

std::ostream& operator<<(std::ostream& os, MapEntryCommSetClause const& key) {
  return os << valueToStrep(key);
}
std::ostream& operator<<(std::ostream& os, CommSetClauseInMapEntry const& record) {
  return os << valueToStrep(record);
}

MapEntryCommSetClause readMapEntryCommSetClause(Orb::TextReader& in) {
  in.expect(kKeyHead);
  in.expect("'mapName': ");
  Orb::String name = field("mapName", [&] { return in.readQuoted(); });
  in.expect(", 'mapSeqno': ");
  Orb::U32 seqno = field("mapSeqno", [&] { return in.readU32(); });
  in.expect(", 'flag': ");
  Acl::CommSetFlag flag =
      field("flag", [&] { return Acl::commSetFlagFromStrep(in.readUntil("}")); });
  in.expect("})");
  return MapEntryCommSetClause(std::move(name), seqno, flag);
}

CommSetClauseInMapEntry readCommSetClauseInMapEntry(Orb::TextReader& in) {
  in.expect(kRecordHead);
  in.expect("'mapEntryClause': ");
  MapEntryCommSetClause key =
      field("mapEntryClause", [&] { return readMapEntryCommSetClause(in); });
  in.expect(", 'commSet': ");
  auto commSet = field("commSet", [&] {
    std::uintptr_t address = in.readPointer();
    auto set = Routing::RouteMap::CommunitySet::liveAt(address);
    if (address != 0 && !set) throw Orb::RangeError("no live community set at that address");
    return set;
  });
  in.expect("})");
  return CommSetClauseInMapEntry(std::move(key), std::move(commSet));
}

namespace {
// The records' text forms are also the runtime's generic conversion.
Orb::TypeRegistration keyType(
    Orb::TypeInfo("Tessel::MapEntryCommSetClause")
        .valuesOf<MapEntryCommSetClause>(
            [](std::string_view text) { return MapEntryCommSetClause(text); },
            [](MapEntryCommSetClause const& key) { return valueToStrep(key); }));
Orb::TypeRegistration recordType(
    Orb::TypeInfo("Tessel::CommSetClauseInMapEntry")
        .valuesOf<CommSetClauseInMapEntry>(
            [](std::string_view text) { return CommSetClauseInMapEntry(text); },
            [](CommSetClauseInMapEntry const& record) { return valueToStrep(record); }));
}  // namespace

MapEntryCommSetClause::MapEntryCommSetClause(std::string_view text) {
  Orb::TextReader in(text);
  *this = readMapEntryCommSetClause(in);
  in.expectEnd();
}

CommSetClauseInMapEntry::CommSetClauseInMapEntry(std::string_view text) {
  Orb::TextReader in(text);
  *this = readCommSetClauseInMapEntry(in);
  in.expectEnd();
}

}  // namespace Tessel
