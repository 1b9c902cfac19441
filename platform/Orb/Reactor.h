// Reactors: reference-counted state machines that watch entities through
// nested notifiees and keep per-element reactors for keyed collections.
//
// The pieces here carry the conventions every configuration reactor follows:
// switching notification on and off passes down to all parts; marking a
// reactor as a zombie passes down to its element reactors, each of which runs
// its `handleDel` exactly once before it goes; handlers do nothing on a zombie.
// Retirement (notification off, then the zombie mark) is the runtime's job,
// not each caller's: a reactor is retired when its last reference goes, when
// its slot or element collection lets go of it, whichever comes first.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "Orb/Api.h"
#include "Orb/Entity.h"
#include "Orb/HashMap.h"

namespace Orb {

/// Something a reactor owns that must follow its notification switch and its
/// zombie mark: a nested notifiee, a child slot, an element collection.
class ROTOR_API ReactorPart {
 public:
  virtual ~ReactorPart() = default;
  virtual void partNotificationIs(bool active) = 0;
  virtual void partZombieIs(bool zombie) = 0;
};

class ROTOR_API Reactor : public Object {
 public:
  bool hasNotificationActive() const noexcept { return active_; }
  /// Sets this reactor's switch, then every part's, in registration order.
  virtual void hasNotificationActiveIs(bool active);

  /// Whether the reactor is being deleted; handlers return at once when it is.
  bool isZombie() const noexcept { return zombie_; }
  /// Marks (or unmarks) this reactor and, recursively, its parts. The first
  /// mark runs `handleDel`, before the parts are marked.
  void orbDoZombieReactors(bool zombie);

  /// Switches notification off, then marks the reactor as a zombie: the
  /// steps of every removal. Harmless on a reactor already retired.
  void retire();

 protected:
  Reactor() = default;
  /// Runs once, when the reactor is first marked for deletion.
  virtual void handleDel() {}
  /// Retires the reactor while it is still whole, then deletes it. A handler
  /// that keeps a reference meanwhile postpones the deletion to its release.
  void lastReferenceGone() const noexcept override;

 public:
  /// Parts register in construction order; the reactor does not own them
  /// (they are its members).
  void partIs(ReactorPart* part) { parts_.push_back(part); }

 private:
  std::vector<ReactorPart*> parts_;
  bool active_ = false;
  bool zombie_ = false;
  bool handledDel_ = false;
  bool lastReferenceSeen_ = false;
};

/// Holds one child reactor. A reactor that leaves the slot by being
/// overwritten, cleared or dropped with the slot is retired, even while
/// others still hold it; only `take` hands it out unmarked.
template <class R>
class ReactorSlot {
 public:
  ReactorSlot() = default;
  ReactorSlot(ReactorSlot const&) = delete;
  ReactorSlot& operator=(ReactorSlot const&) = delete;
  ~ReactorSlot() { *this = nullptr; }

  /// Stores `r` and retires the reactor it replaces.
  ReactorSlot& operator=(Ptr<R> r) {
    Ptr<R> old = std::exchange(r_, std::move(r));
    if (old && old != r_) old->retire();
    return *this;
  }
  ReactorSlot& operator=(std::nullptr_t) { return *this = Ptr<R>(); }

  /// Empties the slot and returns its reactor with notification off; the
  /// reactor is marked when its last reference goes.
  Ptr<R> take() {
    Ptr<R> gone = std::exchange(r_, nullptr);
    if (gone) gone->hasNotificationActiveIs(false);
    return gone;
  }

  R* get() const noexcept { return r_.get(); }
  R* operator->() const noexcept { return r_.get(); }
  explicit operator bool() const noexcept { return bool(r_); }
  Ptr<R> const& ptr() const noexcept { return r_; }

 private:
  Ptr<R> r_;
};

/// A nested notifiee of reactor `Owner` on one entity. Notifications reach
/// `onAttribute` only while it is active and its owner is not a zombie.
template <class Owner>
class ReactorNotifiee : public Notifiee, public ReactorPart {
 public:
  ReactorNotifiee(Owner* owner, Ptr<Entity const> notifier)
      : Notifiee(std::move(notifier)), owner_(owner) {
    owner->partIs(this);
  }
  void onAttribute(AttributeId attribute, Key const& key) final {
    if (owner_->isZombie()) return;
    onOwnerAttribute(attribute, key);
  }
  void partNotificationIs(bool active) override { hasNotificationActiveIs(active); }
  void partZombieIs(bool) override {}

 protected:
  virtual void onOwnerAttribute(AttributeId attribute, Key const& key) = 0;
  Owner* owner() const noexcept { return owner_; }

 private:
  Owner* owner_;
};

/// Element reactors of type R keyed like their input collection. Removing one
/// switches its notification off and marks it as a zombie before it is
/// released.
template <class K, class R>
class ReactorColl final : public ReactorPart {
 public:
  template <class Owner>
  explicit ReactorColl(Owner* owner) {
    owner->partIs(this);
  }
  /// Retires the elements, also those still held elsewhere. An owner that
  /// went through its last reference has marked them already, so their
  /// `handleDel` does not run again here, on a half-destroyed owner.
  ~ReactorColl() override {
    for (K const& k : keys()) {
      if (auto const* p = m_.get(k)) retire(*p);
    }
  }

  std::size_t size() const noexcept { return m_.size(); }
  R* find(K const& k) const {
    auto const* p = m_.get(k);
    return p ? p->get() : nullptr;
  }
  /// Stores `r` under `k` (replacing and retiring any previous one) and
  /// switches its notification on.
  R* insert(K const& k, Ptr<R> r) {
    del(k);
    r->hasNotificationActiveIs(true);
    return m_.set(k, std::move(r)).get();
  }
  /// Retires the element of `k`, if any.
  void del(K const& k) {
    auto* p = m_.get(k);
    if (!p) return;
    Ptr<R> gone = *p;
    m_.erase(k);
    retire(gone);
  }
  /// Retires every element, in the collection's order.
  void delAll() {
    for (K const& k : keys())
      del(k);
  }
  /// The keys in the collection's order; a snapshot, safe to change the
  /// collection while walking it.
  std::vector<K> keys() const {
    std::vector<K> out;
    out.reserve(m_.size());
    for (auto const& kv : m_)
      out.push_back(kv.first);
    return out;
  }
  /// Retires the elements whose key `keep` rejects.
  template <class Keep>
  void delUnless(Keep keep) {
    for (K const& k : keys()) {
      if (!keep(k)) del(k);
    }
  }
  auto begin() const { return m_.begin(); }
  auto end() const { return m_.end(); }

  void partNotificationIs(bool active) override {
    for (auto& kv : m_)
      kv.second->hasNotificationActiveIs(active);
  }
  void partZombieIs(bool zombie) override {
    for (K const& k : keys()) {
      // Held for the call: the element's handleDel may remove it from here.
      if (auto const* p = m_.get(k)) Ptr<R>(*p)->orbDoZombieReactors(zombie);
    }
  }

 private:
  static void retire(Ptr<R> r) { r->retire(); }
  HashMap<K, Ptr<R>> m_;
};

}  // namespace Orb
