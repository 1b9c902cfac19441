// The runtime's hashing: an incremental mix and a finisher that give the same
// values on every machine and run, so hash-ordered walks are reproducible.
#pragma once

#include <string_view>

#include "Orb/Types.h"

namespace Orb {

using HashValue = U64;

/// Folds one more 64-bit value into a running hash. Records hash their fields
/// by starting from a seed and mixing each field's hash in declaration order.
constexpr HashValue hashMix(HashValue h, HashValue v) noexcept {
  return h ^ (v + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2));
}

/// Spreads the bits of a running hash over all 64 bits (the finaliser of
/// MurmurHash3); hash collections order their elements by this value.
constexpr HashValue hashFinish(HashValue h) noexcept {
  h ^= h >> 33;
  h *= 0xff51afd7ed558ccdULL;
  h ^= h >> 33;
  h *= 0xc4ceb9fe1a85ec53ULL;
  h ^= h >> 33;
  return h;
}

/// 64-bit FNV-1a over the bytes, independent of the platform's char signedness.
constexpr HashValue hashBytes(std::string_view bytes) noexcept {
  HashValue h = 0xcbf29ce484222325ULL;
  for (char c : bytes) {
    h ^= static_cast<unsigned char>(c);
    h *= 0x100000001b3ULL;
  }
  return h;
}

constexpr HashValue hashOf(U32 v, HashValue seed = 0) noexcept {
  return hashFinish(hashMix(seed, v));
}
constexpr HashValue hashOf(std::string_view s, HashValue seed = 0) noexcept {
  return hashFinish(hashMix(seed, hashBytes(s)));
}

/// The hash used by the collections. Keys other than numbers and strings
/// provide `HashValue hash(HashValue seed) const`.
template <class K>
struct Hasher {
  HashValue operator()(K const& k) const noexcept { return k.hash(0); }
};
template <>
struct Hasher<U32> {
  HashValue operator()(U32 k) const noexcept { return hashOf(k); }
};
template <>
struct Hasher<U64> {
  HashValue operator()(U64 k) const noexcept { return hashFinish(hashMix(0, k)); }
};

}  // namespace Orb
