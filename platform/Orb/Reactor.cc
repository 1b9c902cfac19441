// Notification switching and zombie marking passed down a reactor's parts.
#include "Orb/Reactor.h"

namespace Orb {

void Reactor::hasNotificationActiveIs(bool active) {
  active_ = active;
  for (ReactorPart* p : parts_)
    p->partNotificationIs(active);
}

void Reactor::orbDoZombieReactors(bool zombie) {
  zombie_ = zombie;
  if (zombie && !handledDel_) {
    handledDel_ = true;
    handleDel();
  }
  for (ReactorPart* p : parts_)
    p->partZombieIs(zombie);
}

void Reactor::retire() {
  hasNotificationActiveIs(false);
  orbDoZombieReactors(true);
}

void Reactor::lastReferenceGone() const noexcept {
  if (lastReferenceSeen_) {
    delete this;
    return;
  }
  // Reached from deleteRef, which is const; the object is ours alone now.
  auto* self = const_cast<Reactor*>(this);
  self->lastReferenceSeen_ = true;
  newRef();  // handlers may take and drop references while retiring
  self->retire();
  deleteRef();  // back here, now deleting, unless a handler kept one
}

}  // namespace Orb
