// The flat encoding: length-prefixed texts and fixed-width numbers, copied
// with memcpy, no per-command state.
#include "FlatEncoder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <variant>

namespace Bench {

namespace {

using Rib::PathElement;
using Rib::RecordedCommand;
using Rib::TaggedValue;

/// Writes through `put` or only counts, so the size and the encoding cannot
/// disagree.
struct Sizer {
  std::size_t n = 0;
  void raw(void const*, std::size_t size) { n += size; }
};
struct Writer {
  unsigned char* p;
  void raw(void const* src, std::size_t size) {
    std::memcpy(p, src, size);
    p += size;
  }
};

template <class Out, class T>
void put(Out& out, T v) {
  static_assert(std::is_trivially_copyable_v<T>);
  out.raw(&v, sizeof v);
}

template <class Out>
void putText(Out& out, std::string const& s) {
  put(out, static_cast<std::uint32_t>(s.size()));
  out.raw(s.data(), s.size());
}

template <class Out>
void putValue(Out& out, TaggedValue const& v) {
  put(out, v.tag);
  put(out, static_cast<std::uint8_t>(v.data.index()));
  std::visit(
      [&out](auto const& d) {
        using T = std::decay_t<decltype(d)>;
        if constexpr (std::is_same_v<T, Orb::String>) {
          putText(out, d.str());
        } else if constexpr (std::is_same_v<T, Kiwi::IpAddr>) {
          put(out, d.value());
        } else if constexpr (std::is_same_v<T, Kiwi::Ip6Addr>) {
          put(out, d.bytes());
        } else if constexpr (std::is_same_v<T, Rib::U32s>) {
          put(out, static_cast<std::uint32_t>(d.size()));
          out.raw(d.data(), d.size() * sizeof(Orb::U32));
        } else if constexpr (std::is_same_v<T, Rib::Reset>) {
        } else {
          put(out, d);
        }
      },
      v.data);
}

template <class Out>
void putCommand(Out& out, RecordedCommand const& c) {
  putText(out, c.name.str());
  put(out, static_cast<std::uint8_t>(c.path.size()));
  for (PathElement const& e : c.path) {
    put(out, static_cast<std::uint8_t>(e.kind));
    put(out, e.tag);
    if (e.kind == PathElement::Kind::u32Key) put(out, e.number);
    if (e.kind == PathElement::Kind::stringKey) putText(out, e.text.str());
  }
  put(out, static_cast<std::uint8_t>(c.values.size()));
  for (TaggedValue const& v : c.values)
    putValue(out, v);
  put(out, static_cast<std::uint8_t>(c.isDelete));
}

std::size_t sizeOf(RecordedCommand const& c) {
  Sizer s;
  putCommand(s, c);
  return s.n;
}

}  // namespace

FlatEncoder::FlatEncoder(std::vector<RecordedCommand> records) {
  std::erase_if(records,
                [](RecordedCommand const& r) { return r.kind != RecordedCommand::Kind::command; });
  commands_ = std::move(records);
  std::size_t total = 0;
  sizes_.reserve(commands_.size());
  for (RecordedCommand const& c : commands_) {
    sizes_.push_back(sizeOf(c));
    total += sizes_.back();
  }
  buffer_.resize(total);
}

std::size_t FlatEncoder::encode(std::size_t first, std::size_t last) {
  Writer w{buffer_.data()};
  for (std::size_t i = first; i < last; ++i)
    putCommand(w, commands_[i]);
  benchmark::DoNotOptimize(buffer_.data());
  benchmark::ClobberMemory();
  return static_cast<std::size_t>(w.p - buffer_.data());
}

std::size_t FlatEncoder::encodeEachAllocated(std::size_t first, std::size_t last) {
  std::size_t written = 0;
  for (std::size_t i = first; i < last; ++i) {
    auto* block = static_cast<unsigned char*>(::operator new(sizes_[i]));
    Writer w{block};
    putCommand(w, commands_[i]);
    benchmark::DoNotOptimize(block);
    benchmark::ClobberMemory();
    written += static_cast<std::size_t>(w.p - block);
    ::operator delete(block, sizes_[i]);
  }
  return written;
}

}  // namespace Bench
