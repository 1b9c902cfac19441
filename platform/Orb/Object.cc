// The process-wide counting mode and live-object count.
#include "Orb/Object.h"

namespace Orb {

namespace detail {
std::atomic<bool> threadSafe{false};
std::atomic<long> liveCount{0};
}  // namespace detail

void threadSafePtrsIs(bool on) noexcept {
  detail::threadSafe.store(on, std::memory_order_seq_cst);
}

void Object::lastReferenceGone() const noexcept {
  delete this;
}

}  // namespace Orb
