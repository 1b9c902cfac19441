// Reading scenarios: lines into words, words into statements through the
// configuration kinds' tables of statements and of the clauses indented under
// them, so a new statement is one more row and a new kind one more table.
#include "Scenario.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "Orb/RangeError.h"
#include "ScenarioParse.h"

namespace Scenario {

namespace {

constexpr std::array<std::string_view, inputCount> kInputNames = {
    "route-map-config", "peer-filter-config",         "acl-list-config",
    "acl-config",       "dynamic-prefix-list-config", "policy-map",
};

}  // namespace

std::string_view inputName(Input input) noexcept {
  return kInputNames[static_cast<std::size_t>(input)];
}

Inputs Inputs::create() {
  return Inputs{
      Routing::RouteMap::Config::create("routeMapConfig"),
      Routing::RouteMap::PeerFilterConfig::create("peerFilterConfig"),
      Acl::AclListConfig::create("aclListConfig"),
      Acl::Config::create("aclConfig"),
      Routing::DynamicPrefixList::Config::create("dynPfxListConfig"),
      RoutingPolicyMap::PolicyMap::create("policyMap"),
  };
}

std::string printable(std::string_view text) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string out;
  out.reserve(text.size());
  for (char ch : text) {
    auto const byte = static_cast<unsigned char>(ch);
    if (byte >= 0x20 && byte <= 0x7e) {
      out += ch;
    } else {
      out += "\\x";
      out += kHex[byte >> 4];
      out += kHex[byte & 0xf];
    }
  }
  return out;
}

std::string quoted(std::string_view word) {
  std::string out;
  out.reserve(word.size() + 2);
  out += '\'';
  out += word;
  out += '\'';
  return out;
}

namespace {

/// Whether `text` is written as an integer: an optional '-' and decimal
/// digits, or "0x" and hexadecimal digits, whatever its size.
bool looksInteger(std::string_view text) {
  auto allOf = [](std::string_view digits, auto isDigit) {
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), isDigit);
  };
  if (text.starts_with("0x")) {
    return allOf(text.substr(2),
                 [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
  }
  if (text.starts_with("-")) text.remove_prefix(1);
  return allOf(text, [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::optional<long long> integerOf(std::string_view text) {
  // from_chars alone would take the sign after "0x" ("0x-5" as -5).
  if (!looksInteger(text)) return std::nullopt;
  long long v = 0;
  int base = 10;
  if (text.starts_with("0x")) {
    text.remove_prefix(2);
    base = 16;
  }
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v, base);
  if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return v;
}

long long numberIn(Words& w, std::string_view what, long long lo, long long hi) {
  std::string const& word = w.take(what);
  auto v = integerOf(word);
  if (v && *v >= lo && *v <= hi) return *v;
  if (!looksInteger(word)) w.fail(what, word);
  w.fail(std::string(what) + " in " + std::to_string(lo) + ".." + std::to_string(hi), word);
}

Orb::U32 u32(Words& w, std::string_view what) {
  return static_cast<Orb::U32>(numberIn(w, what, 0, 0xffffffffLL));
}

Orb::S32 s32(Words& w, std::string_view what) {
  return static_cast<Orb::S32>(numberIn(w, what, INT32_MIN, INT32_MAX));
}

std::size_t oneOf(Words& w, std::string_view what, std::span<std::string_view const> names) {
  std::string const& word = w.take(what);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (word == names[i]) return i;
  }
  w.fail(what, word);
}

namespace {

// ---- statements of the scenario itself

// Before every other statement, the VRF the root starts with; after, a
// rename of the running root's VRF.
void parseVrf(Words& w, Context& c, Statement& s) {
  std::string const& name = w.take("VRF name");
  w.expectEnd();
  L3::VrfName vrf;
  try {
    vrf = L3::VrfName(Orb::String(name));
  } catch (Orb::RangeError const& e) {
    throw Refusal(std::string("expected a VRF name of at most 100 bytes: ") + e.what());
  }
  if (!c.begun) {
    c.scenario->vrf = vrf;
    return;
  }
  s.effect.kind = Effect::Kind::vrfRenamed;
  s.effect.name = Orb::Name(name);
}

Input inputOf(Words& w) {
  std::string what = "an input (";
  for (std::string_view name : kInputNames)
    what += std::string(name) + (name == kInputNames.back() ? ")" : ", ");
  return Input(oneOf(w, what, kInputNames));
}

void parseReplace(Words& w, Context&, Statement& s) {
  s.effect.input = inputOf(w);
  w.expectEnd();
  s.effect.kind = Effect::Kind::inputReplaced;
}

void parseRoot(Words& w, Context&, Statement& s) {
  s.effect.name = Orb::Name(w.take("root name"));
  w.expectEnd();
  s.effect.kind = Effect::Kind::rootReplaced;
}

void parseReconcile(Words& w, Context& c, Statement& s) {
  w.expectEnd();
  s.effect.kind = Effect::Kind::reconciled;
  c.scenario->reconciles = true;
}

void parseInput(Words& w, Context&, Statement& s) {
  auto input = inputOf(w);
  static constexpr std::array<std::string_view, 2> states = {"off", "on"};
  bool on = oneOf(w, "off or on", states) == 1;
  w.expectEnd();
  s.effect.kind = on ? Effect::Kind::inputGiven : Effect::Kind::inputTaken;
  s.effect.input = input;
}

/// Before every other statement it says how the run starts and yields no
/// statement; after, it is a statement of its own.
Row const kHeader[] = {
    {{"vrf"}, parseVrf},
};

Row const kInputStatements[] = {
    {{"input"}, parseInput},
    {{"replace"}, parseReplace},
    {{"root"}, parseRoot},
    {{"reconcile"}, parseReconcile},
};

// ---- the statement table

/// The top-level statements, by configuration kind, in the order refusals
/// list them. A new kind adds its table here.
std::span<Rows const> statementTables() {
  static Rows const tables[] = {
      routeMapStatements(),
      peerFilterStatements(),
      prefixListStatements(),
      aclStatements(),
      asPathStatements(),
      communityListStatements(),
      dynamicPrefixListStatements(),
      policyMapStatements(),
      kInputStatements,
  };
  return tables;
}

enum class Place {
  header,  // before every other statement yields no statement; after, one
  top,     // at the start of a line; ends any block
  clause,  // indented under the line that opened its block
};

struct Entry {
  Row const* row;
  Place place;
  /// The block a clause belongs to.
  BlockKind const* block;
};

/// Every statement and clause, the header first, then the top-level
/// statements, then the clauses of each block in the order the statements
/// opening them come.
std::vector<Entry> const& entries() {
  static std::vector<Entry> const all = [] {
    std::vector<Entry> out;
    for (Row const& row : kHeader)
      out.push_back({&row, Place::header, nullptr});
    std::vector<BlockKind const*> blocks;
    for (Rows table : statementTables()) {
      for (Row const& row : table) {
        out.push_back({&row, Place::top, nullptr});
        if (row.opens && std::find(blocks.begin(), blocks.end(), row.opens) == blocks.end())
          blocks.push_back(row.opens);
      }
    }
    for (BlockKind const* block : blocks) {
      for (Rows table : block->rows) {
        for (Row const& row : table)
          out.push_back({&row, Place::clause, block});
      }
    }
    return out;
  }();
  return all;
}

/// "match, set and sub-route-map clauses" for every kind of block.
std::string const& indentedClauses() {
  static std::string const text = [] {
    std::string out;
    BlockKind const* last = nullptr;
    for (Entry const& e : entries()) {
      if (e.place != Place::clause || e.block == last) continue;
      last = e.block;
      // Blocks that share their clauses name them once.
      if (out.find(e.block->clauses) != std::string::npos) continue;
      out += (out.empty() ? "" : " and ") + std::string(e.block->clauses);
    }
    return out;
  }();
  return text;
}

/// The longest entry whose words come next, among those `eligible`.
template <class Eligible>
Entry const* longestEntry(Words const& w, Eligible eligible) {
  Entry const* best = nullptr;
  for (Entry const& e : entries()) {
    if (!eligible(e) || !w.startsWith(e.row->words)) continue;
    if (!best || e.row->words.size() > best->row->words.size()) best = &e;
  }
  return best;
}

/// The statement or clause that starts the line, consumed. The clauses of
/// the open block come before those of other blocks with the same words.
Entry const& entryOf(Words& w, Context const& c) {
  BlockKind const* open = c.block ? c.block->kind : nullptr;
  Entry const* best =
      longestEntry(w, [&](Entry const& e) { return e.place != Place::clause || e.block == open; });
  if (!best) best = longestEntry(w, [](Entry const&) { return true; });
  if (best) {
    w.accept(best->row->words);
    return *best;
  }
  std::string alternatives;
  std::string firsts;
  std::vector<std::string_view> seen;
  for (Entry const& e : entries()) {
    auto const& words = e.row->words;
    if (std::find(seen.begin(), seen.end(), words.front()) == seen.end()) {
      seen.push_back(words.front());
      firsts += (firsts.empty() ? "" : ", ") + std::string(words.front());
    }
    if (words.size() < 2 || words.front() != w.peek()) continue;
    std::string const alternative = std::string(words[0]) + " " + std::string(words[1]);
    // Blocks that share their clauses offer them once.
    if ((", " + alternatives + ",").find(", " + alternative + ",") != std::string::npos) continue;
    alternatives += alternatives.empty() ? "" : ", ";
    alternatives += alternative;
  }
  for (std::size_t bar; (bar = alternatives.find('|')) != std::string::npos;)
    alternatives.replace(bar, 1, ", ");
  if (!alternatives.empty()) {
    w.take("");
    if (w.atEnd()) throw Refusal("expected one of " + alternatives + ", got end of line");
    w.fail("one of " + alternatives, w.peek());
  }
  w.fail("a statement (" + firsts + ")", w.peek());
}

std::string joined(std::vector<std::string_view> const& words) {
  std::string out;
  for (auto w : words)
    out += (out.empty() ? "" : " ") + std::string(w);
  return out;
}

/// The line without its comment (from a `#` that starts a word) and
/// without trailing blanks.
std::string bodyOf(std::string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '#' && (i == 0 || line[i - 1] == ' ' || line[i - 1] == '\t')) {
      line = line.substr(0, i);
      break;
    }
  }
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r'))
    line.remove_suffix(1);
  return std::string(line);
}

std::vector<std::string> wordsOf(std::string const& body) {
  std::istringstream in(body);
  return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

}  // namespace

Scenario parse(std::string_view text, std::string const& file) {
  Scenario scenario;
  scenario.file = file;
  Context context;
  context.scenario = &scenario;
  int lineNo = 0;
  while (!text.empty()) {
    std::size_t eol = text.find('\n');
    std::string_view line = text.substr(0, eol);
    text.remove_prefix(eol == std::string_view::npos ? text.size() : eol + 1);
    ++lineNo;
    std::string body = bodyOf(line);
    if (body.find_first_not_of(" \t") == std::string::npos) continue;
    bool const indented = body[0] == ' ' || body[0] == '\t';
    try {
      Words words(wordsOf(body));
      Entry const& entry = entryOf(words, context);
      Row const& row = *entry.row;
      Statement statement;
      statement.line = lineNo;
      statement.text = body;
      switch (entry.place) {
        case Place::header:
        case Place::top:
          if (indented) {
            throw Refusal("expected '" + joined(row.words) + "' at the start of the line (only " +
                          indentedClauses() + " are indented)");
          }
          context.block.reset();
          break;
        case Place::clause:
          if (!context.block || context.block->kind != entry.block) {
            throw Refusal("expected " + std::string(entry.block->opener) + " before '" +
                          joined(row.words) + "'");
          }
          if (!indented) {
            throw Refusal("expected '" + joined(row.words) + "' indented under " +
                          std::string(entry.block->under));
          }
          break;
      }
      row.parse(words, context, statement);
      if (entry.place == Place::header && !context.begun) continue;
      context.begun = true;
      scenario.statements.push_back(std::move(statement));
    } catch (Refusal const& r) {
      throw ScenarioError(file, lineNo, r.what());
    }
  }
  return scenario;
}

namespace {

/// At most maxScenarioBytes of `in`; one byte more means too large.
std::string readCapped(std::istream& in, std::string const& name) {
  std::string text;
  char chunk[64 * 1024];
  while (text.size() <= maxScenarioBytes && in.read(chunk, sizeof chunk).gcount() > 0)
    text.append(chunk, static_cast<std::size_t>(in.gcount()));
  if (in.bad()) throw std::runtime_error("cannot read " + printable(name));
  if (text.size() > maxScenarioBytes) {
    throw std::runtime_error(printable(name) + " is larger than " +
                             std::to_string(maxScenarioBytes) +
                             " bytes, the most a scenario may hold");
  }
  return text;
}

}  // namespace

Scenario parseFile(std::string const& path) {
  if (path == "-") return parse(readCapped(std::cin, "standard input"), "<stdin>");
  std::string const name = printable(path);
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0)
    throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
  if (S_ISDIR(st.st_mode)) throw std::runtime_error(name + " is a directory, not a scenario file");
  if (!S_ISREG(st.st_mode)) {
    throw std::runtime_error(name +
                             " is not a regular file (a device, pipe or socket); give a "
                             "scenario file, or '-' to read standard input");
  }
  if (static_cast<std::uintmax_t>(st.st_size) > maxScenarioBytes) {
    throw std::runtime_error(name + " is larger than " + std::to_string(maxScenarioBytes) +
                             " bytes, the most a scenario may hold");
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + name + ": " + std::strerror(errno));
  return parse(readCapped(in, path), path);
}

}  // namespace Scenario
