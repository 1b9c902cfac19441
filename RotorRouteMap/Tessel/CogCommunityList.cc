// Community lists, their entries and exact twins, and community sets, with
// the naming scheme of the engine objects the library makes for itself.
#include <string>
#include <string_view>
#include <vector>

#include "Orb/Assert.h"
#include "Orb/ShortText.h"
#include "Orb/Trace.h"
#include "Tessel/Cog.h"
#include "Tessel/TraceLevels.h"

namespace Tessel {

namespace {

constexpr std::string_view kListPrefix = "/policy/commlist ";
constexpr std::string_view kExactListPrefix = "/policy/commlist .exact.";
constexpr std::string_view kSetPrefix = "/policy/commset ";

// Built on the stack: a refresh writes these names for every clause it
// touches.
Orb::ShortText listPathText(std::string_view listName) {
  return Orb::ShortText(kListPrefix, listName);
}

Orb::ShortText exactListPathText(std::string_view listName) {
  return Orb::ShortText(kExactListPrefix, listName);
}

Orb::ShortText setPathText(std::string_view setName) {
  return Orb::ShortText(kSetPrefix, setName);
}

// The key of an entry is only an identity: add and delete build it the same
// way and so meet the same node. Up to 16 it is the literal below with its
// first `seqno` characters cut off, then the set name. Beyond the literal the
// key is the sequence number in decimal, a blank and the set name: it starts
// with a digit, which no shorter key does, and it keeps apart entries whose
// set names collide (17 of "a1" and 117 of "a" are both ".a117").
Orb::String entryKeyText(U32 seqno, Orb::String const& setName) {
  static constexpr std::string_view kEntry = "/commlist/entry ";
  if (seqno <= kEntry.size()) return Orb::String(std::string(kEntry.substr(seqno)) + setName.str());
  return Orb::String(std::to_string(seqno) + " " + setName.str());
}

// Kind sent with a configured entry, by list type; none for an unknown type.
bool entryKindOf(Acl::CommunityListType listType, U32& kind) {
  if (listType > Acl::largeRegex) return false;
  kind = static_cast<U32>(listType) / 2;
  return true;
}

// Set node of an entry's kind: unknown list types fall back to standard.
Acl::CommunityType setKindOfListType(Acl::CommunityListType listType) {
  switch (listType) {
    case Acl::largeValues:
    case Acl::largeRegex:
      return Acl::communityLarge;
    case Acl::extendedValues:
    case Acl::extendedRegex:
      return Acl::communityExtended;
    default:
      return Acl::communityStandard;
  }
}

struct SetNode {
  U32 pathId;
  U32 keyTag;
};

SetNode setNodeOf(Acl::CommunityType type) {
  switch (type) {
    case Acl::communityExtended:
      return {526, 527};
    case Acl::communityLarge:
      return {631, 632};
    default:
      return {524, 525};
  }
}

bool knownType(Acl::CommunityType type) {
  return type == Acl::communityStandard || type == Acl::communityExtended ||
         type == Acl::communityLarge;
}

void failUnknownType(Acl::CommunityType type) {
  ORB_TRACE(traceError, "Error: unrecognized community type: " << static_cast<U32>(type));
  ORB_ASSERT(0);
}

// The words of each value, in the set's order: the third word of a standard
// community, the second and third of an extended one, all three of a large.
void appendWords(std::vector<U32>& words, Acl::CommunityValue const& v, Acl::CommunityType type) {
  switch (type) {
    case Acl::communityLarge:
      words.push_back(v.word1);
      [[fallthrough]];
    case Acl::communityExtended:
      words.push_back(v.word2);
      [[fallthrough]];
    default:
      words.push_back(v.word3);
  }
}

std::size_t wordsPerValue(Acl::CommunityType type) {
  return static_cast<std::size_t>(type) + 1;
}

void pushWords(Rib::CogValueTagArray& values, std::set<Acl::CommunityValue> const& set,
               Acl::CommunityType type) {
  std::vector<U32> words;
  words.reserve(set.size() * wordsPerValue(type));
  for (auto const& v : set)
    appendWords(words, v, type);
  values.doPushScalar(2, static_cast<U32>(words.size()), words.data());
}

// Type 0x00 or 0x40 (the transitive bit ignored) with subtype 0x04.
bool isLinkBandwidth(Acl::CommunityValue const& v) {
  return ((v.word2 >> 16) & 0xbfff) == 4;
}

RibPath listEntryPath(Cog const& cog, std::string_view listKey, U32 seqno,
                      Orb::String const& setName) {
  RibPath path = cog.ribPathIs(512);
  path->doPushPath(528);
  path->doPushString(529, listKey);
  path->doPushPath(530);
  path->doPushString(531, entryKeyText(seqno, setName));
  return path;
}

}  // namespace

// A refresh names a private list and set for every clause it rebuilds, so
// the names are assembled in one buffer rather than through temporaries.
Orb::String Cog::getCommunitySetName(Orb::String const& listName, U32 seqno) {
  return Orb::String(Orb::ShortText(".", listName).append(seqno).view());
}

Orb::String Cog::getInternalCommunitySetName(Orb::String const& mapName, U32 seqno,
                                             Acl::CommSetFlag flag) {
  return Orb::String(Orb::ShortText(".cs", mapName)
                         .append(seqno)
                         .append(flag == Acl::commSetDelete_ ? "del" : "ar")
                         .view());
}

Orb::String Cog::getInternalCommunityListName(Orb::String const& mapName, U32 seqno,
                                              Acl::CommSetFlag flag) {
  return Orb::String(Orb::ShortText(".cl", mapName)
                         .append(seqno)
                         .append(flag == Acl::commSetDelete_ ? "del" : "ar")
                         .view());
}

void Cog::doAddCommunityList(Orb::String const& listName) {
  Orb::ShortText const listPath = listPathText(listName);
  ORB_TRACE(traceCommand, "void Tessel::Cog::doAddCommunityList(Orb::String const& listName)"
                              << ": listName=" << listName << " listPath=" << listPath);
  RibPath path = ribPathIs(512);
  path->doPushPath(528);
  path->doPushString(529, listPath);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("addCommunityList", path);
  op->values->doPushString(0, listName);
  op->doExecute();
}

void Cog::doDelCommunityList(Orb::String const& listName) {
  Orb::ShortText const listPath = listPathText(listName);
  ORB_TRACE(traceCommand, "void Tessel::Cog::doDelCommunityList(Orb::String const& listName)"
                              << ": listName=" << listName << " listPath=" << listPath);
  RibPath path = ribPathIs(512);
  path->doPushPath(528);
  path->doPushString(529, listPath);
  Orb::Ptr<Rib::CogOp> op = ribOpIs("delCommunityList", path);
  op->isDelete = true;
  op->doExecute();
  doCommit();
}

void Cog::doAddCommunityListEntry(Orb::String const& listName,
                                  Acl::CommunityListEntry const& entry) {
  Orb::ShortText const listPath = listPathText(listName);
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddCommunityListEntry(Orb::String const& listName, "
            "Acl::CommunityListEntry const& entry)"
                << ": listName=" << listName << " listPath=" << listPath
                << " seqno=" << entry.seqno());
  Orb::String const setName = getCommunitySetName(listName, entry.seqno());
  // The entry's kind may have changed since it was last written: no set of
  // another kind may stay behind under its name.
  doDelCommSet(setName, Acl::communityStandard);
  doDelCommSet(setName, Acl::communityExtended);
  doDelCommSet(setName, Acl::communityLarge);
  doAddListCommSet(setName, entry);

  Orb::Ptr<Rib::CogValueTagArray> values = Rib::CogValueTagArrayIs();
  values->doPushString(0, setName);
  values->doPushU32(5, entry.seqno());
  if (U32 kind = 0; entryKindOf(entry.listType(), kind)) values->doPushU32(1, kind);
  values->doPushFlag(4, entry.permit() != Acl::deny);

  Orb::Ptr<Rib::CogOp> op =
      ribOpIs("addCommunityListEntry", listEntryPath(*this, listPath, entry.seqno(), setName));
  op->values = values;
  op->doExecute();

  // The twin shares the value array, with the exact mark added.
  values->doPushFlag(2, true);
  Orb::Ptr<Rib::CogOp> exact =
      ribOpIs("addCommunityListEntryExact",
              listEntryPath(*this, exactListPathText(listName), entry.seqno(), setName));
  exact->values = values;
  exact->doExecute();
}

void Cog::doDelCommunityListEntry(Orb::String const& listName, U32 seqno) {
  Orb::ShortText const listPath = listPathText(listName);
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doDelCommunityListEntry(Orb::String const& listName, U32 seqno)"
                << ": listName=" << listName << " listPath=" << listPath << " seqno=" << seqno);
  Orb::String const setName = getCommunitySetName(listName, seqno);
  doDelCommSet(setName, Acl::communityStandard);
  doDelCommSet(setName, Acl::communityExtended);
  doDelCommSet(setName, Acl::communityLarge);

  Orb::Ptr<Rib::CogOp> op =
      ribOpIs("delCommunityListEntry", listEntryPath(*this, listPath, seqno, setName));
  op->isDelete = true;
  op->doExecute();
  Orb::Ptr<Rib::CogOp> exact =
      ribOpIs("delCommunityListEntryExact",
              listEntryPath(*this, exactListPathText(listName), seqno, setName));
  exact->isDelete = true;
  exact->doExecute();
}

void Cog::doAddListCommSet(Orb::String const& setName, Acl::CommunityListEntry const& entry) {
  Acl::CommunityListType const listType = entry.listType();
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddListCommSet(Orb::String const& setName, "
            "Acl::CommunityListEntry const& entry)"
                << ": setName=" << setName << ", entry listType: " << Acl::valueToStrep(listType));
  SetNode const node = setNodeOf(setKindOfListType(listType));
  RibPath path = ribPathIs(512);
  path->doPushPath(node.pathId);
  path->doPushString(node.keyTag, setPathText(setName));
  Orb::Ptr<Rib::CogOp> op = ribOpIs("addCommunitySet", path);
  op->values->doPushString(0, setName);
  switch (listType) {
    case Acl::standardValues:
      pushWords(*op->values, entry.communityValue(), Acl::communityStandard);
      break;
    case Acl::extendedValues:
      pushWords(*op->values, entry.communityValue(), Acl::communityExtended);
      break;
    case Acl::largeValues:
      pushWords(*op->values, entry.communityValue(), Acl::communityLarge);
      break;
    case Acl::standardRegex:
    case Acl::extendedRegex:
    case Acl::largeRegex:
      op->values->doPushString(4, entry.regex());
      break;
    default:
      break;
  }
  op->doExecute();
  doCommit();
}

bool Cog::doAddSetCommSet(Orb::String const& setName,
                          Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet,
                          Acl::CommunityType type) {
  ORB_TRACE(traceCommand,
            "bool Tessel::Cog::doAddSetCommSet(Orb::String const& setName, "
            "Orb::Ptr<Routing::RouteMap::CommunitySet const> const& commSet, "
            "Acl::CommunityType type)"
                << ": setName=" << setName << ", extended " << (type == Acl::communityExtended)
                << ", large " << (type == Acl::communityLarge));
  if (!knownType(type)) failUnknownType(type);
  ORB_ASSERT(commSet);
  SetNode const node = setNodeOf(type);
  RibPath path = ribPathIs(512);
  path->doPushPath(node.pathId);
  path->doPushString(node.keyTag, setPathText(setName));
  Orb::Ptr<Rib::CogOp> op = ribOpIs("addCommunitySet", path);
  op->values->doPushString(0, setName);
  bool linkBandwidth = false;
  if (commSet->flag() == Acl::commSetNone_) {
    op->values->doPushFlag(1, true);
  } else {
    pushWords(*op->values, commSet->values(), type);
    if (type == Acl::communityExtended) {
      for (auto const& v : commSet->values()) {
        if (isLinkBandwidth(v)) {
          linkBandwidth = true;
          break;
        }
      }
    }
  }
  op->doExecute();
  doCommit();
  return linkBandwidth;
}

void Cog::doDelCommSet(Orb::String const& setName, Acl::CommunityType type) {
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doDelCommSet(Orb::String const& setName, Acl::CommunityType type)"
                << ": setName=" << setName << ", extended: " << (type == Acl::communityExtended)
                << ", large: " << (type == Acl::communityLarge));
  if (!knownType(type)) failUnknownType(type);
  SetNode const node = setNodeOf(type);
  RibPath path = ribPathIs(512);
  path->doPushPath(node.pathId);
  path->doPushString(node.keyTag, setPathText(setName));
  Orb::Ptr<Rib::CogOp> op = ribOpIs("delCommunitySet", path);
  op->isDelete = true;
  op->doExecute();
  doCommit();
}

void Cog::doAddCommunitySetToList(Orb::String const& listName, U32 seqno,
                                  Orb::String const& setName, Acl::MatchPermit permit) {
  Orb::ShortText const listPath = listPathText(listName);
  ORB_TRACE(traceCommand,
            "void Tessel::Cog::doAddCommunitySetToList(Orb::String const& listName, U32 seqno, "
            "Orb::String const& setName, Acl::MatchPermit permit)"
                << ": listName=" << listName << " listPath=" << listPath << " seqno=" << seqno
                << " setName=" << setName << " permit=" << Acl::valueToStrep(permit));
  Orb::Ptr<Rib::CogOp> op =
      ribOpIs("addCommunityListEntry", listEntryPath(*this, listPath, seqno, setName));
  op->values->doPushString(0, setName);
  op->values->doPushU32(5, seqno);
  // Standard whatever the kind of the set, deliberately.
  op->values->doPushU32(1, Acl::communityStandard);
  op->values->doPushFlag(4, permit != Acl::deny);
  op->doExecute();
}

}  // namespace Tessel
