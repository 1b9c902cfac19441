// What the files of the scenario language share: the words of a line, number
// readers, and the tables a configuration kind registers its statements in.
#pragma once

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Scenario.h"

namespace Scenario {

/// "'word'", for refusals.
std::string quoted(std::string_view word);

/// The words of one line, taken from left to right. Every failure is a
/// Refusal saying what was expected and what stood there instead.
class Words {
 public:
  explicit Words(std::vector<std::string> words) : words_(std::move(words)) {}

  bool atEnd() const noexcept { return next_ == words_.size(); }
  std::string_view peek() const noexcept { return atEnd() ? std::string_view() : words_[next_]; }
  /// Whether `keywords` come next; consumes them when they do.
  bool accept(std::span<std::string_view const> keywords) {
    if (!startsWith(keywords)) return false;
    next_ += keywords.size();
    return true;
  }
  bool accept(std::string_view keyword) { return accept(std::span(&keyword, 1)); }
  bool startsWith(std::span<std::string_view const> keywords) const {
    if (words_.size() - next_ < keywords.size()) return false;
    return std::equal(keywords.begin(), keywords.end(),
                      words_.begin() + static_cast<std::ptrdiff_t>(next_));
  }
  std::string const& take(std::string_view what) {
    if (atEnd()) throw Refusal("expected " + std::string(what) + ", got end of line");
    return words_[next_++];
  }
  void expectEnd() const {
    if (!atEnd()) throw Refusal("expected end of line, got " + quoted(words_[next_]));
  }
  [[noreturn]] void fail(std::string_view what, std::string_view got) const {
    throw Refusal("expected " + std::string(what) + ", got " + quoted(got));
  }

 private:
  std::vector<std::string> words_;
  std::size_t next_ = 0;
};

/// A decimal or "0x" hexadecimal integer, the whole of `text`.
std::optional<long long> integerOf(std::string_view text);
/// A number in [lo, hi]; `what` names it in the refusal.
long long numberIn(Words& w, std::string_view what, long long lo, long long hi);
Orb::U32 u32(Words& w, std::string_view what);
Orb::S32 s32(Words& w, std::string_view what);
/// The first of `names` that comes next, as its index.
std::size_t oneOf(Words& w, std::string_view what, std::span<std::string_view const> names);

/// Values the library aborts on are refused with the same wording as any
/// other bad value, plus why.
inline constexpr std::string_view kAborts = " (others abort the library)";

/// The row of `table` whose words come next, the longest one when several
/// do (so "next-hop peer-address" wins over "next-hop"); consumed.
template <class Row>
Row const* longestMatch(std::span<Row const> table, Words& w) {
  Row const* best = nullptr;
  for (Row const& row : table) {
    if (w.startsWith(row.words) && (!best || row.words.size() > best->words.size())) best = &row;
  }
  if (best) w.accept(best->words);
  return best;
}

/// "a, b, c" of the distinct first words of a table, for refusals.
template <class Row>
std::string firstWords(std::span<Row const> table) {
  std::vector<std::string_view> seen;
  std::string out;
  for (Row const& row : table) {
    if (std::find(seen.begin(), seen.end(), row.words.front()) != seen.end()) continue;
    seen.push_back(row.words.front());
    if (!out.empty()) out += ", ";
    out += row.words.front();
  }
  return out;
}

// ---- statement tables

struct Context;
struct BlockKind;

/// One statement or clause of the language: the words it starts with and
/// the parser that reads the rest of the line into the statement's `edit`
/// and `effect`.
struct Row {
  std::vector<std::string_view> words;
  void (*parse)(Words&, Context&, Statement&);
  /// The block this statement opens, whose clauses may then stand indented
  /// under it; null for a statement that opens none.
  BlockKind const* opens = nullptr;
};
using Rows = std::span<Row const>;

/// A kind of block, such as the route-map sequence: the clauses indented
/// under the line that opens it, and how refusals speak of it.
struct BlockKind {
  /// The opening line, "a 'route-map NAME permit|deny SEQ' line".
  std::string_view opener;
  /// Where clauses stand, "its route-map line".
  std::string_view under;
  /// The indented clauses, "match, set and sub-route-map clauses".
  std::string_view clauses;
  std::vector<Rows> rows;
};

/// The block that indented clauses apply to, as its opening line named it.
struct Block {
  BlockKind const* kind = nullptr;
  Orb::Name name;
  Orb::U32 number = 0;
};

struct Context {
  Scenario* scenario = nullptr;
  /// Set by the parser of a row that opens a block; every other top-level
  /// statement closes it.
  std::optional<Block> block;
  /// A statement other than the header has been read.
  bool begun = false;
};

// Each configuration kind's top-level statements, listed in Scenario.cc.
Rows routeMapStatements();
Rows prefixListStatements();
Rows aclStatements();
Rows peerFilterStatements();
Rows policyMapStatements();
Rows dynamicPrefixListStatements();
Rows asPathStatements();
Rows communityListStatements();

// ---- community values, as route-map sets and community lists write them

/// `count` numbers separated by colons, the whole of `text`.
std::optional<std::vector<long long>> numbersOf(std::string_view text, std::size_t count);
/// "AA:NN", a 32-bit number, or no-export, no-advertise, local-as.
Acl::CommunityValue standardValue(Words& w);
/// "rt|soo|lbw AA:NN" or "W:W".
Acl::CommunityValue extendedValue(Words& w);
/// "A:B:C".
Acl::CommunityValue largeValue(Words& w);

}  // namespace Scenario
