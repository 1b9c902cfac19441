// Text forms of the community clause records, and reading them back.
#pragma once

#include <iosfwd>
#include <string>

#include "Orb/Api.h"
#include "Orb/Text.h"
#include "Tessel/MapEntryCommSetClause.h"

namespace Tessel {

/// "Value('Tessel::MapEntryCommSetClause', ** {'mapName': "M", 'mapSeqno': 10,
/// 'flag': commSetAdd})"
ROTOR_API std::string valueToStrep(MapEntryCommSetClause const& key);
/// "Value('Tessel::CommSetClauseInMapEntry', ** {'mapEntryClause': <key>,
/// 'commSet': 0x...})"
ROTOR_API std::string valueToStrep(CommSetClauseInMapEntry const& record);

ROTOR_API std::ostream& operator<<(std::ostream& os, MapEntryCommSetClause const& key);
ROTOR_API std::ostream& operator<<(std::ostream& os, CommSetClauseInMapEntry const& record);

/// Read one text form from the reader's position; errors inside a field are
/// raised again under the field's name.
ROTOR_API MapEntryCommSetClause readMapEntryCommSetClause(Orb::TextReader& in);
ROTOR_API CommSetClauseInMapEntry readCommSetClauseInMapEntry(Orb::TextReader& in);

}  // namespace Tessel
