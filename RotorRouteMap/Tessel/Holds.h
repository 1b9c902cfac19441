// Which live reactors hold something the engine or the policy map keeps for
// them. A new machine is built before the one it replaces is retired, so for
// a while two reactors hold the same policy-map reason, the same dynamic
// prefix list in the engine or the same community set; the one that goes must
// leave it to the one that stays. In every other flow one reactor holds each
// thing, and letting go sends what it always sent.
#pragma once

#include <algorithm>
#include <vector>

#include "Orb/HashMap.h"

namespace Tessel {

/// The holders of each key, by identity. Only looked up, never walked, so
/// its order does not matter.
template <class K>
class Holds {
 public:
  void holdIs(K const& key, void const* holder) {
    std::vector<void const*>* holders = m_.get(key);
    if (!holders) holders = &m_.set(key, std::vector<void const*>());
    if (std::find(holders->begin(), holders->end(), holder) == holders->end())
      holders->push_back(holder);
  }
  /// Lets go of `key` for `holder`; true when another holder keeps it, so
  /// that nothing may be withdrawn or deleted on its behalf.
  bool holdDel(K const& key, void const* holder) {
    std::vector<void const*>* holders = m_.get(key);
    if (!holders) return false;
    std::erase(*holders, holder);
    if (!holders->empty()) return true;
    m_.erase(key);
    return false;
  }
  bool held(K const& key) const { return m_.get(key) != nullptr; }
  std::size_t size() const noexcept { return m_.size(); }

 private:
  Orb::HashMap<K, std::vector<void const*>> m_;
};

}  // namespace Tessel
