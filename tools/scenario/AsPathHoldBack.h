// What the engine may hold of the AS-path lists apart from what a fresh root
// would send, worked out from the configuration alone: lists kept withdrawn
// by an entry corrected in place, and lists left behind while the list
// reactor was away.
#pragma once

#include <map>
#include <memory>
#include <set>

#include "Acl/AclListConfig.h"

namespace Scenario {

/// Follows one configuration through its notifications and applies the
/// reactor's rules for withdrawing lists, independently of the reactor.
class AsPathHoldBack {
 public:
  explicit AsPathHoldBack(Orb::Ptr<Acl::AclListConfig const> config);
  ~AsPathHoldBack();
  AsPathHoldBack(AsPathHoldBack const&) = delete;
  AsPathHoldBack& operator=(AsPathHoldBack const&) = delete;

  /// Whether the list reactor exists (every input present). Coming back, it
  /// empties the engine of every configured list and re-evaluates them.
  void upIs(bool up);
  /// A reconcile deleted the lists left behind. A list held back stays so
  /// in the list reactor, though the reconcile sent its entries.
  void reconciled() { stale_.clear(); }

  /// The list is withdrawn although every entry is valid under the mode: an
  /// entry made invalid was corrected in place, which a fresh root sends.
  bool correctedInPlace(Orb::Name const& name) const;
  /// The engine may still hold the list, or entries of it, from before the
  /// list was removed while the reactor was away.
  bool stale(Orb::Name const& name) const { return stale_.contains(name); }

 private:
  class ConfigWatch;
  class ListWatch;

  void listChanged(Orb::Name const& name);
  void entryChanged(Orb::Name const& name, Orb::U32 seqno);
  /// Every configured list deleted and re-evaluated, as after a mode change.
  void reevaluateAll();

  Orb::Ptr<Acl::AclListConfig const> config_;
  bool up_ = false;
  /// Per list, the entries holding it back.
  std::map<Orb::Name, std::set<Orb::U32>> held_;
  std::set<Orb::Name> stale_;
  std::unique_ptr<ConfigWatch> configWatch_;
  std::map<Orb::Name, std::unique_ptr<ListWatch>> listWatch_;
};

}  // namespace Scenario
