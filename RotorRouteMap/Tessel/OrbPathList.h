// The reactor of one AS-path access list.
//
// Watches: the list's entries and its version.
// Sends: a changed entry at once, uncommitted, while the list is active; the
// removal of a gone entry. An entry invalid under the current regular-
// expression mode deactivates the list: the first one withdraws every entry
// from the engine (the list node stays) and commits. Removing the last such
// entry sends every entry again and commits. Each version of the list commits
// what was sent since the last one; making the reactor commits once as well.
#pragma once

#include "Acl/AsPathList.h"
#include "Orb/Api.h"
#include "Orb/HashMap.h"
#include "Orb/Reactor.h"

namespace Tessel {

class AclListConfigSm;

/// Whether `entry`'s expression compiles under `mode`, as its configuration
/// says; a mode other than 0 and 1 makes every entry invalid.
ROTOR_API bool aspathEntryValidRegex(Acl::AsPathEntry const& entry, Acl::RegexMode mode);

class ROTOR_API OrbPathList : public Orb::Reactor {
 public:
  OrbPathList(Orb::Ptr<Acl::AsPathList const> list, AclListConfigSm* owner);

  Orb::Ptr<Acl::AsPathList const> const& pathList() const noexcept { return list_; }
  Orb::Name const& name() const noexcept { return list_->name(); }
  AclListConfigSm* owner() const noexcept { return owner_; }

  /// Sequence numbers whose expression is invalid under the current mode;
  /// the value is always true. The list is in the engine exactly when this
  /// is empty.
  Orb::HashMap<Orb::U32, bool> const& inapplicableSeqno() const noexcept {
    return inapplicableSeqno_;
  }
  void inapplicableSeqnoIs(Orb::U32 seqno, bool inapplicable) {
    inapplicableSeqno_.set(seqno, inapplicable);
  }
  void inapplicableSeqnoDel(Orb::U32 seqno) { inapplicableSeqno_.erase(seqno); }
  void inapplicableSeqnoDelAll() { inapplicableSeqno_.clear(); }

  /// An entry was added, changed or removed. A valid entry never clears its
  /// own number: an expression corrected in place keeps the list withdrawn
  /// until the entry goes or the mode changes.
  void handlePathEntry(Orb::U32 seqno);
  /// Commits what the entry handler sent since the last version.
  void handleAsPathListVersion();
  /// Sends the list node and, when every entry is valid under the current
  /// mode, every entry; starts the inapplicable set afresh. Does not commit.
  void reevaluatePathList();
  /// Every entry, in ascending sequence number; no validity test, no commit.
  void doAddPathListEntriesToRotor();
  /// The removal of every entry; the list node stays. No commit.
  void doDelPathListEntriesFromRotor();

 private:
  class ListNotifiee final : public Orb::ReactorNotifiee<OrbPathList> {
   public:
    using ReactorNotifiee::ReactorNotifiee;
    void onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) override;
  };

  Orb::Ptr<Acl::AsPathList const> list_;
  AclListConfigSm* owner_;
  ListNotifiee notifiee_;
  Orb::HashMap<Orb::U32, bool> inapplicableSeqno_;
};

}  // namespace Tessel
