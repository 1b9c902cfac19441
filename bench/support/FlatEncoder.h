// Bench::FlatEncoder: the yardstick for the library's cost per command. It
// appends the very commands the library sent (recorded beforehand) to a flat
// byte buffer, which is about the least any encoder of them can do.
#pragma once

#include <cstddef>
#include <vector>

#include "Rib/CommandText.h"

namespace Bench {

class FlatEncoder {
 public:
  /// Keeps the commands among `records` (commits are dropped) and sizes the
  /// buffer for all of them, so encoding never allocates.
  explicit FlatEncoder(std::vector<Rib::RecordedCommand> records);

  std::size_t commands() const noexcept { return commands_.size(); }
  /// Bytes the encoding of all commands takes.
  std::size_t bytes() const noexcept { return buffer_.size(); }
  /// Where the last `encode` wrote.
  unsigned char const* data() const noexcept { return buffer_.data(); }

  /// Encodes commands [first, last), one after the other, from the buffer's
  /// start: operation name, each path element's kind, tag and key, each
  /// value's tag, kind and content, and the delete flag. Returns the bytes
  /// written.
  std::size_t encode(std::size_t first, std::size_t last);
  /// The same encoding, each command into a heap block of its own that is
  /// freed at once: one allocation and one free per command.
  std::size_t encodeEachAllocated(std::size_t first, std::size_t last);

 private:
  std::vector<Rib::RecordedCommand> commands_;
  /// Each command's encoded size, known up front as a real encoder knows
  /// its command's shape.
  std::vector<std::size_t> sizes_;
  std::vector<unsigned char> buffer_;
};

}  // namespace Bench
