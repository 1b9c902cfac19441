// Text forms of the community clause records, and reading them back.
#pragma once

#include <iosfwd>
#include <string>

#include "Orb/Text.h"
#include "Tessel/MapEntryCommSetClause.h"

namespace Tessel {

/// "Value('Tessel::MapEntryCommSetClause', ** {'mapName': "M", 'mapSeqno': 10,
/// 'flag': commSetAdd})"
std::string valueToStrep(MapEntryCommSetClause const& key);
/// "Value('Tessel::CommSetClauseInMapEntry', ** {'mapEntryClause': <key>,
/// 'commSet': 0x...})"
std::string valueToStrep(CommSetClauseInMapEntry const& record);

std::ostream& operator<<(std::ostream& os, MapEntryCommSetClause const& key);
std::ostream& operator<<(std::ostream& os, CommSetClauseInMapEntry const& record);

/// Read one text form from the reader's position; errors inside a field are
/// raised again under the field's name.
MapEntryCommSetClause readMapEntryCommSetClause(Orb::TextReader& in);
CommSetClauseInMapEntry readCommSetClauseInMapEntry(Orb::TextReader& in);

}  // namespace Tessel
