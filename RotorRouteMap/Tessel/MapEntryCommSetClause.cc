// Ordering and hashing of the community clause records.
#include "Tessel/MapEntryCommSetClause.h"

namespace Tessel {

bool operator<(MapEntryCommSetClause const& a, MapEntryCommSetClause const& b) noexcept {
  if (a.mapName_ != b.mapName_) return a.mapName_ < b.mapName_;
  if (a.mapSeqno_ != b.mapSeqno_) return a.mapSeqno_ < b.mapSeqno_;
  return static_cast<Orb::S32>(a.flag_) < static_cast<Orb::S32>(b.flag_);
}

Orb::HashValue MapEntryCommSetClause::hash(Orb::HashValue seed) const noexcept {
  Orb::HashValue h = seed;
  h = Orb::hashMix(h, Orb::hashBytes(mapName_.view()));
  h = Orb::hashMix(h, mapSeqno_);
  h = Orb::hashMix(h, static_cast<Orb::U32>(flag_));
  return Orb::hashFinish(h);
}

}  // namespace Tessel
