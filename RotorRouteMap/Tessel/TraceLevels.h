// The trace levels the library writes at.
#pragma once

namespace Tessel {

/// Programming errors and unknown input.
constexpr int traceError = 0;
/// Deletions of maps, sequences and filters.
constexpr int traceDelete = 1;
/// Engine command operations and their details.
constexpr int traceCommand = 7;
/// Handler entry in the reactors.
constexpr int traceHandler = 8;
/// Per-element details inside a batch.
constexpr int traceDetail = 9;

}  // namespace Tessel
