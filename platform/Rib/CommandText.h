// Rib::RecordedCommand and the canonical text form of a command stream: one
// line per executed command or commit, the form recordings, golden files and
// engine models compare.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "Orb/Api.h"
#include "Orb/RangeError.h"
#include "Rib/EngineSink.h"

namespace Rib {

/// A copy of one executed command or one commit, independent of the objects
/// that produced it, so it stays valid after they change or go away.
struct ROTOR_API RecordedCommand {
  enum class Kind : Orb::U8 { command, commit, syncCommit };
  Kind kind = Kind::command;
  Orb::String name;  // empty for commits
  std::vector<PathElement> path;
  std::vector<TaggedValue> values;
  bool isDelete = false;

  /// A copy of `op` as it is now; a null path or value array is empty.
  static RecordedCommand of(CogOp const& op);
  /// The record of one commit of that kind.
  static RecordedCommand of(CommitKind kind);

  friend bool operator==(RecordedCommand const&, RecordedCommand const&) = default;
};

/// The canonical line of a record, without a line end:
///   <name> [<path>] <value>... [delete]
///   commit              (a transaction commit)
///   commit sync         (a synchronous commit)
/// Command names are identifiers; a name holding a blank cannot be read back.
ROTOR_API std::string commandLine(RecordedCommand const& record);

/// One value as the command line spells it, `<tag>:<kind>=<value>` (or
/// `<tag>:reset`), for other text forms that show values the same way.
ROTOR_API std::string valueText(TaggedValue const& value);

/// Reads a canonical line back. Only the canonical text is accepted, so
/// `commandLine(parseCommandLine(line)) == line` whenever it succeeds; any
/// other text raises Orb::RangeError saying what was expected at which offset.
ROTOR_API RecordedCommand parseCommandLine(std::string_view line);

/// Reads a stream of canonical lines, each ending in '\n' as
/// RecordingSink::text writes them. Errors are prefixed "line <n>: ".
ROTOR_API std::vector<RecordedCommand> parseCommandText(std::string_view text);

/// Writes the canonical line, so test failures show records as text.
ROTOR_API std::ostream& operator<<(std::ostream& os, RecordedCommand const& record);

}  // namespace Rib
