// Reference counting with a process-wide choice between plain and atomic
// increments.
#include "Orb/Object.h"

namespace Orb {
namespace {
std::atomic<bool> threadSafe{false};
std::atomic<long> live{0};
}  // namespace

void threadSafePtrsIs(bool on) noexcept {
  threadSafe.store(on, std::memory_order_relaxed);
}
bool threadSafePtrs() noexcept {
  return threadSafe.load(std::memory_order_relaxed);
}

Object::Object() noexcept {
  live.fetch_add(1, std::memory_order_relaxed);
}
Object::~Object() {
  live.fetch_sub(1, std::memory_order_relaxed);
}

long Object::liveObjects() noexcept {
  return live.load(std::memory_order_relaxed);
}

void Object::newRef() const noexcept {
  if (threadSafePtrs()) {
    refs_.fetch_add(1, std::memory_order_relaxed);
  } else {
    refs_.store(refs_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  }
}

void Object::deleteRef() const noexcept {
  U32 remaining;
  if (threadSafePtrs()) {
    remaining = refs_.fetch_sub(1, std::memory_order_acq_rel) - 1;
  } else {
    remaining = refs_.load(std::memory_order_relaxed) - 1;
    refs_.store(remaining, std::memory_order_relaxed);
  }
  if (remaining == 0) lastReferenceGone();
}

void Object::lastReferenceGone() const noexcept {
  delete this;
}

}  // namespace Orb
