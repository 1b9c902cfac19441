// The reactors of one prefix list, IPv4 (`OrbPrefixList`) or IPv6
// (`OrbIpv6PrefixList`).
//
// Watches: the list's entries and its version.
// Sends: nothing when an entry changes; the change is noted by sequence
// number. At each version of the list, every noted entry goes to the engine
// as an add (present, replacing what the engine holds under that number) or a
// delete (gone), all in one commit, also when nothing was noted. Making the
// reactor notes every entry and applies them at once.
#pragma once

#include "Acl/PrefixList.h"
#include "L3/VrfName.h"
#include "Orb/Api.h"
#include "Orb/HashMap.h"
#include "Orb/Reactor.h"
#include "Tessel/Cog.h"

namespace Tessel {

class AclListConfigSm;

/// What sets the two families apart: the list type, the engine commands and
/// the names the traces give.
struct ROTOR_API Ipv4PrefixListKind {
  using List = Acl::PrefixList;
  static constexpr Cog::PrefixListFamily family = Cog::ipv4;
  static constexpr char const* entrySignature =
      "void Tessel::OrbPrefixList::handlePrefixEntry(U32 seqno)";
  static constexpr char const* versionSignature =
      "void Tessel::OrbPrefixList::handlePrefixListVersion()";
  static void doAddEntry(Cog& cog, Orb::String const& name, List::Entry const& e) {
    cog.doAddIpPrefixListEntry(name, e.seqno, e.action, e.prefix, e.ge, e.le);
  }
};

struct ROTOR_API Ipv6PrefixListKind {
  using List = Acl::Ipv6PrefixList;
  static constexpr Cog::PrefixListFamily family = Cog::ipv6;
  static constexpr char const* entrySignature =
      "void Tessel::OrbIpv6PrefixList::handleIpv6PrefixEntry(U32 seqno)";
  static constexpr char const* versionSignature =
      "void Tessel::OrbIpv6PrefixList::handleIpv6PrefixListVersion()";
  static void doAddEntry(Cog& cog, Orb::String const& name, List::Entry const& e) {
    cog.doAddIpv6PrefixListEntry(name, e.seqno, e.action, e.prefix, e.ge, e.le);
  }
};

/// The batching shared by both families.
template <class Kind>
class ROTOR_API BasicOrbPrefixList : public Orb::Reactor {
 public:
  using List = typename Kind::List;

  BasicOrbPrefixList(Orb::Ptr<List const> list, AclListConfigSm* owner);

  Orb::Ptr<List const> const& prefixList() const noexcept { return list_; }
  Orb::Name const& name() const noexcept { return list_->name(); }
  AclListConfigSm* owner() const noexcept { return owner_; }

  /// Sequence numbers changed since the last version; the value is always
  /// true.
  Orb::HashMap<Orb::U32, bool> const& modifiedSeqNum() const noexcept { return modifiedSeqNum_; }
  void modifiedSeqNumIs(Orb::U32 seqno, bool modified) { modifiedSeqNum_.set(seqno, modified); }
  void modifiedSeqNumDel(Orb::U32 seqno) { modifiedSeqNum_.erase(seqno); }
  void modifiedSeqNumDelAll() { modifiedSeqNum_.clear(); }

 protected:
  /// Notes one changed entry; sends nothing.
  void entryChanged(Orb::U32 seqno);
  /// Notes every entry, in ascending sequence number.
  void allEntriesChanged();
  /// Sends every noted entry and commits once.
  void versionChanged();

 private:
  class ListNotifiee final : public Orb::ReactorNotifiee<BasicOrbPrefixList> {
   public:
    using Orb::ReactorNotifiee<BasicOrbPrefixList>::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Orb::Ptr<List const> list_;
  AclListConfigSm* owner_;
  ListNotifiee notifiee_;
  Orb::HashMap<Orb::U32, bool> modifiedSeqNum_;
};

class ROTOR_API OrbPrefixList final : public BasicOrbPrefixList<Ipv4PrefixListKind> {
 public:
  OrbPrefixList(Orb::Ptr<Acl::PrefixList const> list, AclListConfigSm* owner);

  void handlePrefixEntry(Orb::U32 seqno) { entryChanged(seqno); }
  /// Notes every entry; the walk survives changes made to the list during it.
  void handlePrefixEntry() { allEntriesChanged(); }
  void handlePrefixListVersion() { versionChanged(); }
};

class ROTOR_API OrbIpv6PrefixList final : public BasicOrbPrefixList<Ipv6PrefixListKind> {
 public:
  OrbIpv6PrefixList(Orb::Ptr<Acl::Ipv6PrefixList const> list, AclListConfigSm* owner);

  void handleIpv6PrefixEntry(Orb::U32 seqno) { entryChanged(seqno); }
  void handleIpv6PrefixEntry() { allEntriesChanged(); }
  void handleIpv6PrefixListVersion() { versionChanged(); }
};

extern template class BasicOrbPrefixList<Ipv4PrefixListKind>;
extern template class BasicOrbPrefixList<Ipv6PrefixListKind>;

}  // namespace Tessel
