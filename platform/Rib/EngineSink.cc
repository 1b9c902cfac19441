// The process-wide engine sink.
#include "Rib/EngineSink.h"

#include <atomic>

namespace Rib {
namespace {
// Atomic so a sink installed on one thread is fully visible to a thread that
// executes commands; the acquire load costs nothing on the hot path.
std::atomic<EngineSink*> installed{nullptr};
std::atomic<EngineSink*> mirrored{nullptr};
}  // namespace

EngineSink* engineSinkIs(EngineSink* sink) noexcept {
  return installed.exchange(sink, std::memory_order_acq_rel);
}

EngineSink* engineSink() noexcept {
  return installed.load(std::memory_order_acquire);
}

EngineSink* engineMirrorIs(EngineSink* mirror) noexcept {
  return mirrored.exchange(mirror, std::memory_order_acq_rel);
}

EngineSink* engineMirror() noexcept {
  return mirrored.load(std::memory_order_acquire);
}

}  // namespace Rib
