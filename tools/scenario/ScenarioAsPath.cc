// AS-path list statements: lists and their entries, version bumps, and the
// regular-expression mode the entries are compiled under.
#include <array>

#include "AsPathRegex.h"
#include "Orb/RangeError.h"
#include "ScenarioParse.h"

namespace Scenario {

using Orb::U32;

namespace {

Effect listEffect(Effect::Kind kind, Orb::Name const& name) {
  return {kind, ObjectKind::asPathList, name, {}, nullptr};
}

/// "igp", "egp", "incomplete" or any 32-bit number: the library sends an
/// unknown origin without its origin bit.
Acl::BGPOrigin originOf(Words& w) {
  static constexpr char const* what = "an origin (igp, egp, incomplete or a number)";
  std::string const& word = w.take(what);
  try {
    return Acl::bgpOriginFromStrep(word);
  } catch (Orb::RangeError const&) {
    w.fail(what, word);
  }
}

/// The modes an expression is valid under, when the scenario says so.
void validityOf(Words& w, Acl::AsPathEntry& e) {
  static constexpr std::array<std::string_view, 4> sets = {"none", "0", "1", "both"};
  auto const i = oneOf(w, "none, 0, 1 or both", sets);
  e.validInMode0 = i == 1 || i == 3;
  e.validInMode1 = i == 2 || i == 3;
}

void parseAsPathList(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("AS-path list name"));
  s.effect = listEffect(Effect::Kind::changed, name);
  if (w.atEnd()) {
    s.edit = [=](Inputs& in) { in.aclListConfig->asPathListIs(name); };
    return;
  }
  Acl::AsPathEntry e;
  e.seqno = u32(w, "sequence number");
  static constexpr std::array<std::string_view, 2> actions = {"permit", "deny"};
  e.action = oneOf(w, "permit or deny", actions) == 0 ? Acl::permit : Acl::deny;
  std::string const& regex = w.take("a regular expression (one word)");
  e.regex = regex;
  RegexValidity const valid = regexValidity(regex);
  e.validInMode0 = valid.mode0;
  e.validInMode1 = valid.mode1;
  while (!w.atEnd()) {
    if (w.accept("origin")) {
      e.origin = originOf(w);
    } else if (w.accept("valid")) {
      validityOf(w, e);
    } else {
      w.fail("origin, valid or end of line", w.peek());
    }
  }
  s.edit = [=](Inputs& in) { in.aclListConfig->asPathListIs(name)->pathEntryIs(e); };
}

void parseNoAsPathList(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("AS-path list name"));
  if (w.atEnd()) {
    s.edit = [=](Inputs& in) { in.aclListConfig->asPathListDel(name); };
    s.effect = listEffect(Effect::Kind::removed, name);
    return;
  }
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    if (auto list = in.aclListConfig->asPathList(name)) list->pathEntryDel(seqno);
  };
  // The removal goes at once but is committed with the next version.
  s.effect = listEffect(Effect::Kind::changed, name);
}

void parseAsPathListVersion(Words& w, Context&, Statement& s) {
  Orb::Name name(w.take("AS-path list name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    auto list = in.aclListConfig->asPathList(name);
    if (!list) throw Refusal("expected an existing AS-path list, got " + quoted(name.view()));
    list->versionInc();
  };
  s.effect = listEffect(Effect::Kind::sent, name);
}

void parseRegexMode(Words& w, Context&, Statement& s) {
  static constexpr char const* what = "a regex mode (asn, string or a number)";
  std::string const& word = w.take(what);
  Acl::RegexMode mode;
  try {
    mode = Acl::regexModeFromStrep(word);
  } catch (Orb::RangeError const&) {
    w.fail(what, word);
  }
  w.expectEnd();
  // A change takes every list out and sends the valid ones again, committing
  // all that was pending; lists stay pending all the same, as setting the
  // mode it already has sends nothing.
  s.edit = [=](Inputs& in) { in.aclListConfig->regexModeIs(mode); };
}

}  // namespace

Rows asPathStatements() {
  static Row const rows[] = {
      {{"as-path-list"}, parseAsPathList},
      {{"no", "as-path-list"}, parseNoAsPathList},
      {{"version", "as-path-list"}, parseAsPathListVersion},
      {{"as-path-regex-mode"}, parseRegexMode},
  };
  return rows;
}

}  // namespace Scenario
