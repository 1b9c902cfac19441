// Access-list statements: IP ACLs standard and extended, ACLs of other types,
// and the rules written under an access-list line, each of which replaces the
// ACL's current configuration as the configuration's writer does.
#include <array>

#include "Orb/RangeError.h"
#include "ScenarioParse.h"
#include "ScenarioRecords.h"

namespace Scenario {

using Acl::AclCurrentConfig;
using Orb::U32;

namespace {

/// Rules are identified by their sequence number; a sequence that names a
/// missing rule points above every number a sequence can have.
constexpr Orb::U64 kMissingRule = Orb::U64(1) << 32;

Effect aclEffect(Effect::Kind kind, Orb::Name const& name) {
  return {kind, ObjectKind::acl, name, {}, nullptr};
}

BlockKind const& aclBlock();

/// The block of an ACL carries its type and whether the library sends its
/// rules (a standard IP ACL) in its number: twice the type, plus one when
/// sent. Types are therefore kept below 2^31.
U32 blockNumber(Acl::AclType type, bool sendable) {
  return U32(type) * 2 + (sendable ? 1 : 0);
}
Acl::AclType blockType(Block const& b) {
  return Acl::AclType(b.number / 2);
}
bool blockSendable(Block const& b) {
  return b.number % 2 == 1;
}

/// The type word after `no` or at the start: `ip`, `ipv6`, `mac`, or
/// `access-list type N` for any number.
Acl::AclType typeOf(Words& w) {
  std::string_view const what = "an ACL type (ip, ipv6, mac or a number below 2147483648)";
  std::string const& word = w.take(what);
  try {
    Acl::AclType type = Acl::aclTypeFromStrep(word);
    if (type < 0x80000000u) return type;
  } catch (Orb::RangeError const&) {
  }
  w.fail(what, word);
}

/// `ip access-list standard|extended NAME` and the same for the other types.
void openAcl(Words& w, Context& c, Statement& s, Acl::AclType type) {
  static constexpr std::array<std::string_view, 2> kinds = {"standard", "extended"};
  bool const standard = oneOf(w, "standard or extended", kinds) == 0;
  Orb::Name name(w.take("access-list name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    in.aclConfig->aclTypeConfigIs(type)->aclIs(name)->standardIs(standard);
  };
  bool const sendable = type == Acl::aclTypeIp && standard;
  // A standard IP ACL made or turned standard goes out with its next rule
  // change: its reactor watches the rules only.
  if (sendable) s.effect = aclEffect(Effect::Kind::changed, name);
  c.block = Block{&aclBlock(), name, blockNumber(type, sendable)};
}

void parseIpAcl(Words& w, Context& c, Statement& s) {
  openAcl(w, c, s, Acl::aclTypeIp);
}
void parseIpv6Acl(Words& w, Context& c, Statement& s) {
  openAcl(w, c, s, Acl::aclTypeIpv6);
}
void parseMacAcl(Words& w, Context& c, Statement& s) {
  openAcl(w, c, s, Acl::aclTypeMac);
}
/// `access-list type N standard|extended NAME`, or `no access-list type T`.
void parseTypedAcl(Words& w, Context& c, Statement& s) {
  openAcl(w, c, s, typeOf(w));
}

void removeAcl(Words& w, Statement& s, Acl::AclType type) {
  Orb::Name name(w.take("access-list name"));
  w.expectEnd();
  s.edit = [=](Inputs& in) {
    if (auto t = in.aclConfig->aclTypeConfig(type)) t->aclDel(name);
  };
  if (type == Acl::aclTypeIp) s.effect = aclEffect(Effect::Kind::removed, name);
}

void parseNoIpAcl(Words& w, Context&, Statement& s) {
  removeAcl(w, s, Acl::aclTypeIp);
}
void parseNoIpv6Acl(Words& w, Context&, Statement& s) {
  removeAcl(w, s, Acl::aclTypeIpv6);
}
void parseNoMacAcl(Words& w, Context&, Statement& s) {
  removeAcl(w, s, Acl::aclTypeMac);
}

/// `no access-list type T NAME` removes one ACL; `no access-list type T`
/// the type's whole configuration.
void parseNoTyped(Words& w, Context&, Statement& s) {
  Acl::AclType type = typeOf(w);
  if (!w.atEnd()) return removeAcl(w, s, type);
  s.edit = [=](Inputs& in) {
    auto t = in.aclConfig->aclTypeConfig(type);
    if (!t) return;
    // The IP reactor goes with the type and deletes nothing: the engine
    // keeps these lists.
    if (type == Acl::aclTypeIp) {
      auto& names = listRecords(in).abandonedAcls;
      for (auto const& [name, acl] : t->acl())
        names.insert(name);
    }
    in.aclConfig->aclTypeConfigDel(type);
  };
}

// ---- rules, indented under an access-list line

/// Makes a new current configuration from the ACL's present one (or none)
/// changed by `change`, as the writer replaces it whole.
void ruleEdit(Statement& s, Block const& b,
              std::function<void(AclCurrentConfig::SeqToId&, AclCurrentConfig::IdToRule&)> change) {
  bool const sendable = blockSendable(b);
  s.edit = [name = b.name, type = blockType(b), change = std::move(change)](Inputs& in) {
    auto acl = in.aclConfig->aclTypeConfigIs(type)->aclIs(name);
    AclCurrentConfig::SeqToId seqToId;
    AclCurrentConfig::IdToRule idToRule;
    if (auto const& curr = acl->currCfg()) {
      seqToId = curr->seqToId();
      idToRule = curr->idToRule();
    }
    change(seqToId, idToRule);
    acl->currCfgIs(Orb::make<AclCurrentConfig>(std::move(seqToId), std::move(idToRule)));
  };
  if (sendable) s.effect = aclEffect(Effect::Kind::sent, b.name);
}

Kiwi::IpAddr addressOf(Words& w, std::string_view what) {
  std::string const& text = w.take(what);
  try {
    return Kiwi::IpAddr::fromString(text);
  } catch (Orb::RangeError const&) {
    w.fail(what, text);
  }
}

/// `A.B.C.D/L`, `A.B.C.D MASK`, `host A.B.C.D` or `any`.
Kiwi::IpAddrWithFullMask sourceOf(Words& w) {
  std::string_view const what = "a source (A.B.C.D/L, A.B.C.D MASK, host A.B.C.D or any)";
  if (w.accept("any")) return {};
  if (w.accept("host")) return {addressOf(w, "an IPv4 address"), 0xffffffffu};
  std::string const& text = w.take(what);
  try {
    if (text.find('/') != std::string::npos) return Kiwi::IpAddrWithFullMask::fromString(text);
    Kiwi::IpAddr address = Kiwi::IpAddr::fromString(text);
    return {address, addressOf(w, "a full mask A.B.C.D").value()};
  } catch (Orb::RangeError const& e) {
    throw Refusal("expected " + std::string(what) + ", got " + quoted(text) + ": " + e.what());
  }
}

/// A 24-bit identifier, refused with the model's own range error.
std::int64_t identifierOf(Words& w, std::string_view what,
                          void (Acl::IpFilterBase::*setter)(std::int64_t)) {
  long long v = numberIn(w, what, INT32_MIN, 0xffffffffLL);
  try {
    Acl::IpFilter probe;
    (probe.*setter)(v);
  } catch (Orb::RangeError const& e) {
    throw Refusal(std::string("expected ") + std::string(what) + ": " + e.what());
  }
  return v;
}

/// `seq N permit|deny|action N SOURCE [vni N] [tni N]` or `seq N missing-rule`.
void parseSeq(Words& w, Context& c, Statement& s) {
  U32 seqno = u32(w, "sequence number");
  if (w.accept("missing-rule")) {
    w.expectEnd();
    ruleEdit(s, *c.block, [=](AclCurrentConfig::SeqToId& seqs, AclCurrentConfig::IdToRule&) {
      seqs.set(seqno, Acl::UniqueId{kMissingRule + seqno});
    });
    return;
  }
  Acl::IpRuleConfig rule;
  if (w.accept("action")) {
    rule.action = u32(w, "an action number");
  } else {
    static constexpr std::array<std::string_view, 2> actions = {"deny", "permit"};
    rule.action = U32(oneOf(w, "permit, deny or action N", actions));
  }
  rule.filter.sourceIs(sourceOf(w));
  if (w.accept("vni")) rule.filter.vniIs(identifierOf(w, "a VNI", &Acl::IpFilterBase::vniIs));
  if (w.accept("tni")) rule.filter.tniIs(identifierOf(w, "a TNI", &Acl::IpFilterBase::tniIs));
  w.expectEnd();
  ruleEdit(s, *c.block, [=](AclCurrentConfig::SeqToId& seqs, AclCurrentConfig::IdToRule& rules) {
    Acl::UniqueId id{seqno};
    seqs.set(seqno, id);
    rules.set(id, rule);
  });
}

void parseNoSeq(Words& w, Context& c, Statement& s) {
  U32 seqno = u32(w, "sequence number");
  w.expectEnd();
  ruleEdit(s, *c.block, [=](AclCurrentConfig::SeqToId& seqs, AclCurrentConfig::IdToRule& rules) {
    if (auto const* id = seqs.get(seqno)) {
      rules.erase(*id);
      seqs.erase(seqno);
    }
  });
}

/// Drops the current configuration: the ACL is left without one.
void parseNoCurrent(Words& w, Context& c, Statement& s) {
  w.expectEnd();
  s.edit = [name = c.block->name, type = blockType(*c.block)](Inputs& in) {
    in.aclConfig->aclTypeConfigIs(type)->aclIs(name)->currCfgIs(nullptr);
  };
}

Rows ruleClauses() {
  static Row const rows[] = {
      {{"seq"}, parseSeq},
      {{"no", "seq"}, parseNoSeq},
      {{"no", "current-configuration"}, parseNoCurrent},
  };
  return rows;
}

BlockKind const& aclBlock() {
  static BlockKind const block{
      "an 'ip access-list standard|extended NAME' line",
      "its access-list line",
      "access-list rules",
      {ruleClauses()},
  };
  return block;
}

}  // namespace

Rows aclStatements() {
  static Row const rows[] = {
      {{"ip", "access-list"}, parseIpAcl, &aclBlock()},
      {{"ipv6", "access-list"}, parseIpv6Acl, &aclBlock()},
      {{"mac", "access-list"}, parseMacAcl, &aclBlock()},
      {{"access-list", "type"}, parseTypedAcl, &aclBlock()},
      {{"no", "ip", "access-list"}, parseNoIpAcl},
      {{"no", "ipv6", "access-list"}, parseNoIpv6Acl},
      {{"no", "mac", "access-list"}, parseNoMacAcl},
      {{"no", "access-list", "type"}, parseNoTyped},
  };
  return rows;
}

}  // namespace Scenario
