// Prefix-list statements, IPv4 and IPv6: entries with their length range,
// empty lists, removals, and the version bump that sends a list's changes.
#include <array>

#include "Orb/RangeError.h"
#include "ScenarioParse.h"
#include "ScenarioRecords.h"

namespace Scenario {

using Orb::U32;

namespace {

/// What sets the two families' statements apart.
template <class List>
struct Family;

template <>
struct Family<Acl::PrefixList> {
  static constexpr ObjectKind kind = ObjectKind::ipv4PrefixList;
  static std::string id(Orb::Name const& n) { return n.str(); }
  static constexpr std::string_view prefixWhat = "an IPv4 prefix A.B.C.D/L";
  static Orb::Ptr<Acl::PrefixList> find(Inputs const& in, Orb::Name const& n) {
    return in.aclListConfig->prefixList(n);
  }
  static Orb::Ptr<Acl::PrefixList> make(Inputs& in, Orb::Name const& n) {
    if (n.view().starts_with(".ipv6.")) listRecords(in).ipv4ListsWithIpv6Id.insert(n);
    return in.aclListConfig->prefixListIs(n);
  }
  static void del(Inputs& in, Orb::Name const& n) { in.aclListConfig->prefixListDel(n); }
};

template <>
struct Family<Acl::Ipv6PrefixList> {
  static constexpr ObjectKind kind = ObjectKind::ipv6PrefixList;
  static std::string id(Orb::Name const& n) { return ".ipv6." + n.str(); }
  static constexpr std::string_view prefixWhat = "an IPv6 prefix X:X::X/L";
  static Orb::Ptr<Acl::Ipv6PrefixList> find(Inputs const& in, Orb::Name const& n) {
    return in.aclListConfig->ipv6PrefixList(n);
  }
  static Orb::Ptr<Acl::Ipv6PrefixList> make(Inputs& in, Orb::Name const& n) {
    return in.aclListConfig->ipv6PrefixListIs(n);
  }
  static void del(Inputs& in, Orb::Name const& n) { in.aclListConfig->ipv6PrefixListDel(n); }
};

/// The list's removed entries went out (or the list did, with them).
void forgetRemovals(std::set<std::pair<std::string, U32>>& removals, std::string const& id) {
  removals.erase(removals.lower_bound({id, 0}), removals.upper_bound({id, UINT32_MAX}));
}

Effect listEffect(Effect::Kind kind, ObjectKind object, Orb::Name const& name) {
  return {kind, object, name, {}, nullptr};
}

/// `permit`, `deny` or `action N` for any other number the configuration may
/// hold (sent as permit: only 1 denies).
Acl::MatchPermit actionOf(Words& w) {
  if (w.accept("action")) return Acl::MatchPermit(u32(w, "an action number"));
  static constexpr std::array<std::string_view, 2> actions = {"permit", "deny"};
  return oneOf(w, "permit, deny or action N", actions) == 0 ? Acl::permit : Acl::deny;
}

template <class List>
typename List::Prefix prefixOf(Words& w) {
  std::string const& text = w.take(Family<List>::prefixWhat);
  try {
    return List::Prefix::fromString(text);
  } catch (Orb::RangeError const& e) {
    throw Refusal("expected " + std::string(Family<List>::prefixWhat) + ", got " + quoted(text) +
                  ": " + e.what());
  }
}

/// `ip prefix-list NAME` (an empty list), or with `seq N ACTION PREFIX
/// [ge N] [le N]` one entry of it.
template <class List>
void parseList(Words& w, Context&, Statement& s) {
  using F = Family<List>;
  Orb::Name name(w.take("prefix-list name"));
  if (w.atEnd()) {
    // A new list goes out at once, empty; an existing one is left as it is.
    s.edit = [=](Inputs& in) { F::make(in, name); };
    return;
  }
  if (!w.accept("seq")) w.fail("'seq' or end of line", w.peek());
  typename List::Entry e;
  e.seqno = u32(w, "sequence number");
  e.action = actionOf(w);
  e.prefix = prefixOf<List>(w);
  if (w.accept("ge")) e.ge = u32(w, "ge length");
  if (w.accept("le")) e.le = u32(w, "le length");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    F::make(in, name)->prefixEntryIs(e);
    // Back in the list, the entry is replaced wherever it is sent.
    listRecords(in).unsentEntryRemovals.erase({F::id(name), e.seqno});
    listRecords(in).strandedEntryRemovals.erase({F::id(name), e.seqno});
  };
  s.effect = listEffect(Effect::Kind::changed, F::kind, name);
}

/// `no ip prefix-list NAME [seq N]`.
template <class List>
void parseNoList(Words& w, Context&, Statement& s) {
  using F = Family<List>;
  Orb::Name name(w.take("prefix-list name"));
  if (w.atEnd()) {
    s.edit = [=](Inputs& in) {
      ListRecords& records = listRecords(in);
      if (!F::find(in, name)) return;
      if (records.machineryUp) {
        // The list's node goes from the engine with every entry under it.
        forgetRemovals(records.unsentEntryRemovals, F::id(name));
        forgetRemovals(records.strandedEntryRemovals, F::id(name));
      } else {
        auto list = F::find(in, name);
        // Nothing deletes it; a list made again under the name finds these
        // entries still in its engine node.
        for (auto const& [seqno, entry] : list->prefixEntry())
          records.strandedEntryRemovals.insert({F::id(name), seqno});
      }
      F::del(in, name);
    };
    s.effect = listEffect(Effect::Kind::removed, F::kind, name);
    return;
  }
  if (!w.accept("seq")) w.fail("'seq' or end of line", w.peek());
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    auto list = F::find(in, name);
    // An entry change marks the list as changed; a list that is not there
    // has nothing to change.
    if (!list) throw Refusal("expected an existing prefix list, got " + quoted(name.view()));
    if (!list->prefixEntry(seqno)) return;
    list->prefixEntryDel(seqno);
    ListRecords& records = listRecords(in);
    (records.machineryUp ? records.unsentEntryRemovals : records.strandedEntryRemovals)
        .insert({F::id(name), seqno});
  };
  // Held back like any entry change until the version.
  s.effect = listEffect(Effect::Kind::changed, F::kind, name);
}

/// `version ip prefix-list NAME`: the writer's end of a batch.
template <class List>
void parseVersion(Words& w, Context&, Statement& s) {
  using F = Family<List>;
  Orb::Name name(w.take("prefix-list name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    // A list that is not there has nothing to send, and a shrunk random
    // scenario may keep the version of a list whose lines it dropped.
    auto list = F::find(in, name);
    if (!list) return;
    list->versionInc();
    if (listRecords(in).machineryUp)
      forgetRemovals(listRecords(in).unsentEntryRemovals, F::id(name));
  };
  s.effect = listEffect(Effect::Kind::sent, F::kind, name);
}

}  // namespace

Rows prefixListStatements() {
  static Row const rows[] = {
      {{"ip", "prefix-list"}, parseList<Acl::PrefixList>},
      {{"ipv6", "prefix-list"}, parseList<Acl::Ipv6PrefixList>},
      {{"no", "ip", "prefix-list"}, parseNoList<Acl::PrefixList>},
      {{"no", "ipv6", "prefix-list"}, parseNoList<Acl::Ipv6PrefixList>},
      {{"version", "ip", "prefix-list"}, parseVersion<Acl::PrefixList>},
      {{"version", "ipv6", "prefix-list"}, parseVersion<Acl::Ipv6PrefixList>},
  };
  return rows;
}

}  // namespace Scenario
