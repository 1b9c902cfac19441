// Notifier lists that survive changes made by the notifiees they call.
#include "Orb/Entity.h"

#include <algorithm>
#include <ostream>

namespace Orb {

std::ostream& operator<<(std::ostream& os, Key const& k) {
  if (k.isU32()) return os << k.u32();
  if (k.isName()) return os << k.name();
  if (k.isNone()) return os << "-";
  return os << "<key>";
}

Entity::~Entity() {
  // Notifiees hold a reference to their entity, so none is left here.
}

std::size_t Entity::notifiees() const noexcept {
  return static_cast<std::size_t>(std::count_if(notifiees_.begin(), notifiees_.end(),
                                                [](Notifiee* n) { return n != nullptr; }));
}

void Entity::notifieeAdd(Notifiee* n) const {
  notifiees_.push_back(n);
}

void Entity::notifieeDel(Notifiee* n) const noexcept {
  auto it = std::find(notifiees_.begin(), notifiees_.end(), n);
  if (it == notifiees_.end()) return;
  if (notifying_ > 0) {
    *it = nullptr;  // compacted when the outermost notify ends
    holes_ = true;
  } else {
    notifiees_.erase(it);
  }
}

void Entity::notify(AttributeId attribute, Key const& key) const {
  if (!active_) return;
  // A notifiee may drop the last other reference; an entity still under
  // construction has none yet and must not be deleted by this one.
  Ptr<Entity const> self(references() > 0 ? this : nullptr);
  ++notifying_;
  std::size_t count = notifiees_.size();
  for (std::size_t i = 0; i < count; ++i) {
    Notifiee* n = notifiees_[i];
    if (n && n->hasNotificationActive()) n->onAttribute(attribute, key);
  }
  if (--notifying_ == 0 && holes_) {
    notifiees_.erase(std::remove(notifiees_.begin(), notifiees_.end(), nullptr), notifiees_.end());
    holes_ = false;
  }
}

Notifiee::Notifiee(Ptr<Entity const> notifier) : notifier_(std::move(notifier)) {
  if (notifier_) notifier_->notifieeAdd(this);
}

Notifiee::~Notifiee() {
  if (notifier_) notifier_->notifieeDel(this);
}

}  // namespace Orb
