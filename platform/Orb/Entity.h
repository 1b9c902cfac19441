// Entities (named objects with a parent that notify changes of their
// attributes) and the notifiees that watch them.
#pragma once

#include <vector>

#include "Orb/Api.h"
#include "Orb/Key.h"
#include "Orb/Ptr.h"
#include "Orb/String.h"

namespace Orb {

/// Identifies one attribute of an entity type; each type numbers its own.
using AttributeId = U32;

class Notifiee;

/// A named object with an optional parent. Its setters call `notify` with the
/// attribute and, for collections, the changed element's key.
class ROTOR_API Entity : public Object {
 public:
  Name const& name() const noexcept { return name_; }
  /// The owning entity, or null; not a reference, so parent and child never
  /// keep each other alive.
  Entity const* parent() const noexcept { return parent_; }
  void parentIs(Entity const* parent) noexcept { parent_ = parent; }

  /// Whether this entity sends notifications at all.
  bool hasNotificationActive() const noexcept { return active_; }
  void hasNotificationActiveIs(bool active) noexcept { active_ = active; }

  std::size_t notifiees() const noexcept;

 protected:
  explicit Entity(Name name, bool notificationActive = true)
      : name_(std::move(name)), active_(notificationActive) {}
  ~Entity() override;

  /// Tells every active notifiee registered now that `attribute` changed at
  /// `key`. Notifiees may register, unregister or be destroyed meanwhile;
  /// those that unregister are skipped, those that register wait for the next
  /// notification.
  void notify(AttributeId attribute, Key const& key = {}) const;

 private:
  friend class Notifiee;
  void notifieeAdd(Notifiee* n) const;
  void notifieeDel(Notifiee* n) const noexcept;

  Name name_;
  Entity const* parent_ = nullptr;
  bool active_;
  mutable std::vector<Notifiee*> notifiees_;
  mutable int notifying_ = 0;
  mutable bool holes_ = false;
};

/// Watches one entity. It registers at construction, unregisters at
/// destruction, and receives `onAttribute` only while its notification is on
/// (off at construction).
class ROTOR_API Notifiee {
 public:
  Notifiee(Notifiee const&) = delete;
  Notifiee& operator=(Notifiee const&) = delete;
  virtual ~Notifiee();

  virtual void onAttribute(AttributeId attribute, Key const& key) = 0;

  Ptr<Entity const> const& notifier() const noexcept { return notifier_; }
  bool hasNotificationActive() const noexcept { return active_; }
  virtual void hasNotificationActiveIs(bool active) { active_ = active; }

 protected:
  explicit Notifiee(Ptr<Entity const> notifier);

 private:
  Ptr<Entity const> notifier_;
  bool active_ = false;
};

}  // namespace Orb
