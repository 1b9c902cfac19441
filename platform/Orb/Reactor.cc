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

}  // namespace Orb
