// One AS-path list in the engine: entries sent as they change, the whole list
// withdrawn while one of its expressions is invalid under the current mode.
#include "Tessel/OrbPathList.h"

#include "Orb/Trace.h"
#include "Tessel/AclListConfigSm.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

using Acl::AsPathEntry;
using Acl::AsPathList;

bool aspathEntryValidRegex(AsPathEntry const& entry, Acl::RegexMode mode) {
  switch (mode) {
    case Acl::regexModeAsn:
      return entry.validInMode0;
    case Acl::regexModeString:
      return entry.validInMode1;
  }
  return false;
}

OrbPathList::OrbPathList(Orb::Ptr<AsPathList const> list, AclListConfigSm* owner)
    : list_(std::move(list)), owner_(owner), notifiee_(this, list_) {
  notifiee_.hasNotificationActiveIs(true);
  // Entries are not walked here: before the list reactor is initialized they
  // wait for its re-evaluation, afterwards they arrive by notification.
  handleAsPathListVersion();
}

void OrbPathList::handlePathEntry(Orb::U32 seqno) {
  ORB_TRACE(traceHandler, "void Tessel::OrbPathList::handlePathEntry(U32 seqno)"
                              << " name: " << name() << " seqno: " << seqno);
  auto cog = cogFactory(owner_->vrfName());
  AsPathEntry const* entry = list_->pathEntry(seqno);
  if (!entry) {
    if (inapplicableSeqno_.contains(seqno)) {
      inapplicableSeqnoDel(seqno);
      if (inapplicableSeqno_.empty()) {
        doAddPathListEntriesToRotor();
        cog->doCommit();
      }
    } else {
      cog->doDelAsPathListEntry(name(), seqno);
    }
    return;
  }
  if (!aspathEntryValidRegex(*entry, owner_->aclListConfig()->regexMode())) {
    ORB_TRACE(traceHandler, "adding as-path entry to an invalid ACL: seqno: "
                                << seqno << " as-path-list:" << name());
    inapplicableSeqnoIs(seqno, true);
    if (inapplicableSeqno_.size() == 1) {
      ORB_TRACE(traceDelete, "Deactivate as-path ACL: " << name());
      doDelPathListEntriesFromRotor();
      cog->doCommit();
    }
    return;
  }
  if (inapplicableSeqno_.empty()) {
    cog->doAddAsPathListEntry(name(), seqno, entry->action, entry->regex, entry->origin);
  }
}

void OrbPathList::handleAsPathListVersion() {
  ORB_TRACE(traceHandler, "void Tessel::OrbPathList::handleAsPathListVersion()"
                              << " name: " << name());
  ORB_TRACE(traceDetail, "as-path-name = " << name() << " source = " << list_->name());
  ORB_TRACE(traceDetail, "Committing as-path access list name = " << name() << " version = "
                                                                  << list_->version());
  cogFactory(owner_->vrfName())->doCommit();
}

void OrbPathList::reevaluatePathList() {
  ORB_TRACE(traceHandler, "void Tessel::OrbPathList::reevaluatePathList()"
                              << " name: " << name());
  auto cog = cogFactory(owner_->vrfName());
  Acl::RegexMode const mode = owner_->aclListConfig()->regexMode();
  cog->doAddAsPathList(name());
  inapplicableSeqnoDelAll();
  for (auto const& [seqno, entry] : list_->pathEntry()) {
    if (aspathEntryValidRegex(entry, mode)) continue;
    ORB_TRACE(traceDetail,
              "As-path ACL: inapplicable entry: " << seqno << " as-path ACL: " << name());
    inapplicableSeqnoIs(seqno, true);
  }
  if (inapplicableSeqno_.empty()) {
    doAddPathListEntriesToRotor();
  } else {
    ORB_TRACE(traceHandler, "as-path ACL is deactivated after regex mode change: " << name());
  }
}

void OrbPathList::doAddPathListEntriesToRotor() {
  ORB_TRACE(traceCommand,
            "void Tessel::OrbPathList::doAddPathListEntriesToRotor( " << name() << " )");
  auto cog = cogFactory(owner_->vrfName());
  for (auto const& [seqno, entry] : list_->pathEntry())
    cog->doAddAsPathListEntry(name(), seqno, entry.action, entry.regex, entry.origin);
}

void OrbPathList::doDelPathListEntriesFromRotor() {
  ORB_TRACE(traceDelete,
            "void Tessel::OrbPathList::doDelPathListEntriesFromRotor( " << name() << " )");
  auto cog = cogFactory(owner_->vrfName());
  for (auto const& [seqno, entry] : list_->pathEntry())
    cog->doDelAsPathListEntry(name(), seqno);
}

void OrbPathList::ListNotifiee::onOwnerAttribute(Orb::AttributeId attribute, Orb::Key const& key) {
  OrbPathList* pl = owner();
  switch (attribute) {
    case AsPathList::pathEntry_:
      pl->handlePathEntry(key.u32());
      break;
    case AsPathList::version_:
      pl->handleAsPathListVersion();
      break;
    default:
      break;
  }
}

}  // namespace Tessel
