// Storage and notification of community lists and their entries.
#include "Acl/CommunityList.h"

#include <string>

namespace Acl {

CommunityListEntry::CommunityListEntry(Orb::U32 seqno, CommunityList const* list)
    : Entity(Orb::Name(std::to_string(seqno))), seqno_(seqno) {
  parentIs(list);
}

CommunityList const* CommunityListEntry::communityList() const noexcept {
  return static_cast<CommunityList const*>(parent());
}

void CommunityListEntry::permitIs(MatchPermit v) {
  if (permitValue_ == v) return;
  permitValue_ = v;
  notify(permit_);
}

void CommunityListEntry::listTypeIs(CommunityListType v) {
  if (listTypeValue_ == v) return;
  listTypeValue_ = v;
  notify(listType_);
}

void CommunityListEntry::communityValueIs(Values v) {
  if (values_ == v) return;
  values_ = std::move(v);
  notify(communityValue_);
}

void CommunityListEntry::regexIs(Orb::String const& v) {
  if (regexValue_ == v) return;
  regexValue_ = v;
  notify(regex_);
}

void CommunityListEntry::versionIs(Orb::U32 v) {
  versionValue_ = v;
  notify(version_);
}

Orb::Ptr<CommunityListEntry> CommunityList::communityListEntry(Orb::U32 seqno) const {
  auto const* p = entries_.get(seqno);
  return p ? *p : nullptr;
}

Orb::Ptr<CommunityListEntry> CommunityList::communityListEntryIs(Orb::U32 seqno) {
  if (auto* p = entries_.get(seqno)) return *p;
  Orb::Ptr<CommunityListEntry> e(new CommunityListEntry(seqno, this));
  entries_.set(seqno, e);
  notify(communityListEntry_, Orb::Key(seqno));
  return e;
}

void CommunityList::communityListEntryDel(Orb::U32 seqno) {
  auto* p = entries_.get(seqno);
  if (!p) return;
  Orb::Ptr<CommunityListEntry> gone = *p;
  entries_.erase(seqno);
  gone->parentIs(nullptr);
  notify(communityListEntry_, Orb::Key(seqno));
}

}  // namespace Acl
