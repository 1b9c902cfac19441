// Which engine nodes the deliberate divergences of community lists and
// community clauses account for.
#include "CheckCommunity.h"

#include <set>
#include <string>
#include <string_view>

#include "ScenarioRecords.h"
#include "Tessel/CommListUsers.h"

namespace Scenario {

namespace {

using Kind = Rib::PathElement::Kind;
using Routing::RouteMap::MapEntry;

constexpr std::string_view kListPrefix = "/policy/commlist ";
constexpr std::string_view kSetPrefix = "/policy/commset ";

bool isPath(Rib::PathElement const& e, Orb::U32 tag) {
  return e.kind == Kind::pathId && e.tag == tag;
}

/// The name of the community list or set `path` lies in (or is), or empty.
std::string_view communityObjectOf(std::vector<Rib::PathElement> const& path, bool& isList) {
  if (path.size() < 3 || !isPath(path[0], 512) || path[2].kind != Kind::stringKey) return {};
  std::string_view const key = path[2].text.view();
  if (isPath(path[1], 528) && path[2].tag == 529 && key.starts_with(kListPrefix)) {
    isList = true;
    return key.substr(kListPrefix.size());
  }
  bool const setNode = (isPath(path[1], 524) && path[2].tag == 525) ||
                       (isPath(path[1], 526) && path[2].tag == 527) ||
                       (isPath(path[1], 631) && path[2].tag == 632);
  if (setNode && key.starts_with(kSetPrefix)) {
    isList = false;
    return key.substr(kSetPrefix.size());
  }
  return {};
}

bool isPrivateName(std::string_view name) {
  return name.starts_with(".cl") || name.starts_with(".cs") || name.starts_with(".e") ||
         name.starts_with(".l");
}

std::string variant(Acl::CommSetFlag flag) {
  return flag == Acl::commSetDelete_ ? "del" : "ar";
}

/// The private objects a configured clause of `entry` of map `map` has.
void addOwnedNames(std::set<std::string>& names, std::string const& map, MapEntry const& entry) {
  std::string const seq = map + std::to_string(entry.seqno());
  auto const flags = entry.setFlags();
  for (auto [bit, set] :
       {std::pair{MapEntry::SetFlags::communityAddReplace, entry.communityAddReplace()},
        std::pair{MapEntry::SetFlags::communityDelete, entry.communityDelete()}}) {
    if (!flags.has(bit) || !set) continue;
    names.insert(".cl" + seq + variant(set->flag()));
    names.insert(".cs" + seq + variant(set->flag()));
  }
  if (flags.has(MapEntry::SetFlags::extCommunity)) names.insert(".e" + seq);
  if (flags.has(MapEntry::SetFlags::largeCommunity)) names.insert(".l" + seq);
}

}  // namespace

bool sharedSetNameCovers(std::vector<Rib::PathElement> const& path, bool, World const& world) {
  bool isList = false;
  std::string_view const name = communityObjectOf(path, isList);
  if (isList || name.size() < 3 || name[0] != '.') return false;
  // Every way of reading the name as list name and sequence number, over
  // the lists ever made: the list that went may have deleted the set.
  auto const& lists = listRecords(world.shadow()).communityListsMade;
  int readings = 0;
  for (std::size_t digits = name.size() - 1; digits > 1; --digits) {
    char const c = name[digits];
    if (c < '0' || c > '9') break;
    if (lists.contains(Orb::Name(name.substr(1, digits - 1)))) ++readings;
  }
  return readings >= 2;
}

bool leftClauseObjectCovers(std::vector<Rib::PathElement> const& path, bool incremental,
                            World const& world) {
  if (!incremental) return false;
  bool isList = false;
  std::string_view const name = communityObjectOf(path, isList);
  if (!isPrivateName(name)) return false;
  std::set<std::string> owned;
  for (auto const& [mapName, map] : world.shadow().routeMapConfig->routeMap()) {
    for (auto const& [seqno, entry] : map->mapEntry())
      addOwnedNames(owned, mapName.str(), *entry);
  }
  return !owned.contains(std::string(name));
}

bool incompleteEntryCovers(std::vector<Rib::PathElement> const& path, bool, World const& world) {
  bool isList = false;
  std::string_view const name = communityObjectOf(path, isList);
  if (!isList || !name.starts_with(".cl") || path.size() < 5) return false;
  if (path[4].kind != Kind::stringKey || path[4].tag != 531) return false;
  std::string_view const key = path[4].text.view();
  std::size_t const dot = key.find('.');
  if (dot == std::string_view::npos) return false;
  std::string_view const setName = key.substr(dot);
  for (auto const& [listName, list] : world.shadow().aclListConfig->communityList()) {
    if (!setName.substr(1).starts_with(listName.view())) continue;
    for (auto const& [seqno, entry] : list->communityListEntry()) {
      if (entry->version() == 0 && setName == "." + listName.str() + std::to_string(seqno))
        return true;
    }
  }
  return false;
}

bool communityListRemovedWhileAwayCovers(std::vector<Rib::PathElement> const& path,
                                         bool incremental, World const& world) {
  if (!incremental) return false;
  bool isList = false;
  std::string_view name = communityObjectOf(path, isList);
  if (!isList || name.empty()) return false;
  if (name.starts_with(".exact.")) name.remove_prefix(7);
  auto const& removed = world.removedWhileAway(ObjectKind::communityList);
  if (removed.contains(Orb::Name(name))) return true;
  // An entry, recorded as "LIST SEQ": its key ends in the set name.
  if (path.size() < 5 || path[4].kind != Kind::stringKey || path[4].tag != 531) return false;
  std::string_view const key = path[4].text.view();
  std::size_t const dot = key.find('.');
  if (dot == std::string_view::npos) return false;
  std::string_view const setName = key.substr(dot + 1);
  if (!setName.starts_with(name)) return false;
  return removed.contains(
      Orb::Name(std::string(name) + " " + std::string(setName.substr(name.size()))));
}

}  // namespace Scenario
