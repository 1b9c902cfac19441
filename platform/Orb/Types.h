// Fixed-width number aliases used throughout the runtime and the library.
#pragma once

#include <cstdint>

namespace Orb {

using U8 = std::uint8_t;
using U32 = std::uint32_t;
using S32 = std::int32_t;
using U64 = std::uint64_t;

}  // namespace Orb
