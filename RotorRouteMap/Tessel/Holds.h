// What the reactors of a new machine hold while it replaces another. The new
// machine replays before the old one is retired, so for a while both hold the
// same policy-map reasons, dynamic prefix lists in the engine and community
// sets; the old one's tear-down must leave those to the new one. Only then are
// holds kept: every other flow has one reactor for each thing, sends what it
// always sent, and pays nothing for the bookkeeping.
#pragma once

#include <algorithm>
#include <vector>

#include "Orb/Api.h"
#include "Orb/HashMap.h"

namespace Tessel {

/// Whether a new machine is being built beside the one it replaces, or the
/// old one is being retired after it.
ROTOR_API bool machineReplacing() noexcept;

/// While it lives, a new machine replaces an old one. When the outermost
/// one ends, every hold is dropped.
class ROTOR_API MachineReplacement {
 public:
  MachineReplacement() noexcept;
  ~MachineReplacement();
  MachineReplacement(MachineReplacement const&) = delete;
  MachineReplacement& operator=(MachineReplacement const&) = delete;
};

/// One kind of thing held; every kind is dropped at the end of a replacement.
class ROTOR_API HoldsBase {
 public:
  HoldsBase();
  virtual ~HoldsBase();
  HoldsBase(HoldsBase const&) = delete;
  HoldsBase& operator=(HoldsBase const&) = delete;
  virtual void clear() noexcept = 0;
  virtual std::size_t size() const noexcept = 0;
};

/// How many things are held now, of every kind: none outside a replacement.
ROTOR_API std::size_t holdsLeft() noexcept;

/// The holders of each key, by identity. Only looked up, never walked, so
/// its order does not matter.
template <class K>
class Holds final : public HoldsBase {
 public:
  /// Notes that `holder` holds `key`; outside a replacement, nothing to note.
  void holdIs(K const& key, void const* holder) {
    if (!machineReplacing()) return;
    std::vector<void const*>* holders = m_.get(key);
    if (!holders) holders = &m_.set(key, std::vector<void const*>());
    if (std::find(holders->begin(), holders->end(), holder) == holders->end())
      holders->push_back(holder);
  }
  /// Lets go of `key` for `holder`; true when another holder keeps it, so
  /// that nothing may be withdrawn or deleted on its behalf.
  bool holdDel(K const& key, void const* holder) {
    std::vector<void const*>* holders = m_.empty() ? nullptr : m_.get(key);
    if (!holders) return false;
    std::erase(*holders, holder);
    if (!holders->empty()) return true;
    m_.erase(key);
    return false;
  }
  std::size_t size() const noexcept override { return m_.size(); }
  void clear() noexcept override { m_.clear(); }

 private:
  Orb::HashMap<K, std::vector<void const*>> m_;
};

}  // namespace Tessel
