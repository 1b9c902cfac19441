// The exported option and set-flag tables, built once on first use.
#include "TesselUtil/RibLookup.h"

#include <unordered_map>
#include <utility>

namespace {

using Tags = std::pair<uint32_t, uint32_t>;
using OptionTable = std::unordered_map<uint32_t, Tags>;

int lookUp(OptionTable const& table, uint32_t option, uint32_t* keyTag, uint32_t* valueTag) {
  auto it = table.find(option);
  if (it == table.end()) return 0;
  *keyTag = it->second.first;
  *valueTag = it->second.second;
  return 1;
}

}  // namespace

extern "C" {

int ribIsMatchOptionInt(uint32_t option, uint32_t* keyTag, uint32_t* valueTag) {
  static OptionTable const table = {
      {100, {581, 2}},  {105, {600, 21}}, {108, {590, 4}}, {109, {609, 18}},
      {110, {608, 17}}, {111, {606, 26}}, {115, {589, 3}},
  };
  return lookUp(table, option, keyTag, valueTag);
}

int ribIsMatchOptionStr(uint32_t option, uint32_t* keyTag, uint32_t* valueTag) {
  // 103 is claimed by the community match before this table is asked; the
  // row stays for other callers.
  static OptionTable const table = {
      {101, {582, 9}},
      {102, {583, 10}},
      {103, {585, 13}},
      {120, {621, 27}},
  };
  return lookUp(table, option, keyTag, valueTag);
}

bool ribIsSetActionIntValue(Routing::RouteMap::MapEntry::SetFlags flags, uint32_t* tag) {
  using SetFlags = Routing::RouteMap::MapEntry::SetFlags;
  struct Row {
    SetFlags flags;
    uint32_t tag;
  };
  // Tested in this order; the first equal value wins.
  static Row const rows[] = {
      {{SetFlags::metric}, 1},
      {{SetFlags::setValue19}, 19},
      {{SetFlags::setValue26}, 26},
      {{SetFlags::origin}, 6},
      {{SetFlags::setValue25}, 25},
      {{SetFlags::nextHopPeerAddr}, 27},
      {{SetFlags::ipv6NextHopPeerAddr}, 28},
      {{SetFlags::level}, 0},
      {{SetFlags::nextHopUnchanged}, 31},
      {{SetFlags::ipv6NextHopUnchanged}, 32},
      {{SetFlags::setValue35}, 35},
  };
  for (Row const& row : rows) {
    if (row.flags == flags) {
      *tag = row.tag;
      return true;
    }
  }
  return false;
}

}  // extern "C"
