// Community-list statements: lists, their entries of every kind and form, an
// entry's version (an entry can be written at version zero and completed
// later), and the removal of an entry or a list. Every change reaches the
// engine at once.
#include <array>
#include <optional>

#include "ScenarioParse.h"
#include "ScenarioRecords.h"

namespace Scenario {

using Orb::U32;

namespace {

/// A writer completes an entry once; an entry already written does not go
/// back to version zero.
void checkVersion(Acl::CommunityListEntry const* entry, std::optional<U32> version) {
  if (entry && entry->version() != 0 && version && *version == 0) {
    throw Refusal("expected a version above 0 for an entry already written, got 'version 0'");
  }
}

Effect listEffect(Effect::Kind kind, Orb::Name const& name) {
  return {kind, ObjectKind::communityList, name, {}, nullptr};
}

struct EntryFields {
  Acl::MatchPermit permit = Acl::permit;
  Acl::CommunityListType listType = Acl::standardValues;
  Acl::CommunityListEntry::Values values;
  Orb::String regex;
};

/// "permit", "deny" or "action N", N being any 32-bit value the library reads
/// (1 denies, everything else permits).
Acl::MatchPermit actionOf(Words& w) {
  if (w.accept("action")) return Acl::MatchPermit(u32(w, "action value"));
  static constexpr std::array<std::string_view, 2> actions = {"permit", "deny"};
  return oneOf(w, "permit, deny or action N", actions) == 0 ? Acl::permit : Acl::deny;
}

/// The entry's kind and content: values of a kind, a regular expression (the
/// rest of the line), or "type N" with values as A:B:C triples.
void contentOf(Words& w, EntryFields& f) {
  static constexpr std::array<std::string_view, 7> kinds = {
      "standard", "standard-regex", "extended", "extended-regex", "large", "large-regex", "type"};
  std::size_t const kind =
      oneOf(w, "standard, extended, large, their -regex forms or type N", kinds);
  if (kind == 6) {
    f.listType = Acl::CommunityListType(u32(w, "list type"));
    while (!w.atEnd())
      f.values.insert(largeValue(w));
    return;
  }
  f.listType = Acl::CommunityListType(kind);
  if (kind % 2 == 1) {
    std::string regex = w.take("regular expression");
    while (!w.atEnd())
      regex += " " + w.take("regular expression");
    f.regex = regex;
    return;
  }
  while (!w.atEnd()) {
    f.values.insert(kind == 0 ? standardValue(w) : kind == 2 ? extendedValue(w) : largeValue(w));
  }
}

void parseCommunityList(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("community-list name"));
  s.effect = listEffect(Effect::Kind::sent, name);
  if (w.atEnd()) {
    s.edit = [=](Inputs& in) {
      in.aclListConfig->communityListIs(name);
      listRecords(in).communityListsMade.insert(name);
    };
    return;
  }
  U32 const seqno = u32(w, "sequence number");
  std::optional<U32> version;
  if (w.accept("version")) version = u32(w, "version");
  EntryFields f;
  f.permit = actionOf(w);
  contentOf(w, f);
  s.edit = [=](Inputs& in) {
    if (auto list = in.aclListConfig->communityList(name))
      checkVersion(list->communityListEntry(seqno).get(), version);
    listRecords(in).communityListsMade.insert(name);
    auto entry = in.aclListConfig->communityListIs(name)->communityListEntryIs(seqno);
    entry->permitIs(f.permit);
    entry->listTypeIs(f.listType);
    entry->communityValueIs(f.values);
    entry->regexIs(f.regex);
    entry->versionIs(version ? *version : entry->version() + 1);
  };
}

void parseCommunityListVersion(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("community-list name"));
  U32 const seqno = u32(w, "sequence number");
  std::optional<U32> version;
  if (!w.atEnd()) version = u32(w, "version");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    auto list = in.aclListConfig->communityList(name);
    auto entry = list ? list->communityListEntry(seqno) : nullptr;
    if (!entry) {
      throw Refusal("expected an existing community-list entry, got " +
                    quoted(name.str() + " " + std::to_string(seqno)));
    }
    checkVersion(entry.get(), version);
    entry->versionIs(version ? *version : entry->version() + 1);
  };
  s.effect = listEffect(Effect::Kind::sent, name);
}

void parseNoCommunityList(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("community-list name"));
  if (w.atEnd()) {
    s.edit = [=](Inputs& in) { in.aclListConfig->communityListDel(name); };
    s.effect = listEffect(Effect::Kind::removed, name);
    return;
  }
  U32 const seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    if (auto list = in.aclListConfig->communityList(name)) list->communityListEntryDel(seqno);
  };
  // The entry is sent by itself at once. Reported as the removal of an
  // object named "LIST SEQ", so that the world remembers an entry removed
  // while an input was away, which the new reactor does not delete.
  s.effect = listEffect(Effect::Kind::removed, Orb::Name(name.str() + " " + std::to_string(seqno)));
}

}  // namespace

Rows communityListStatements() {
  static Row const rows[] = {
      {{"community-list"}, parseCommunityList},
      {{"community-list-version"}, parseCommunityListVersion},
      {{"no", "community-list"}, parseNoCommunityList},
  };
  return rows;
}

}  // namespace Scenario
