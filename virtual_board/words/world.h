#pragma once
// The world's side of a board as named properties: what is plugged in, what the registers and chips
// hold, what time it is. Bad names and values throw Refused. The caller holds the board's lock.

#include "language/property_names.h"
#include "language/property_values.h"
#include "virtual_board/board/folder.h"

#include <string>
#include <vector>

namespace vb {

struct Property {
    std::string name;
    const language::Property *type;
    language::Value content;
    std::string value; // as people read it
    bool isIdle;       // holds what it holds when nobody has touched it; a short list leaves it out
    std::string note;  // what else is to be known of it on this board; mostly nothing
};

/** Every property of a board, each with its whole content, but for those that are too long. */
std::vector<Property> properties(const BoardFolder &folder);

/** One of them. EEPROMs and flash can be asked for a part: "eeprom.board@0x100+16". */
Property namedProperty(const BoardFolder &folder, const std::string &name);

/**
 * Those whose names a pattern fits, as shells have them: "fan.*". One that fits none of all
 * properties is asked of those that are too long for that.
 */
std::vector<Property> matchingProperties(const BoardFolder &folder, const std::string &pattern);

/** Those of names and patterns, in that order, each once for all patterns that it fits. */
std::vector<Property> selectedProperties(const BoardFolder &folder,
                                         const std::vector<std::string> &words);

/** What a board has. */
language::Equipment equipmentOf(const BoardFolder &folder);

/** The value of a property. */
std::string property(const BoardFolder &folder, const std::string &name);

struct Assignment {
    std::string name, value;
};

/**
 * Changes properties, all of them or, where one is refused, none. Bytes of an EEPROM are set from
 * an offset on: "eeprom.board@0x100".
 */
void setProperties(const BoardFolder &folder, const std::vector<Assignment> &assignments);
void setProperty(const BoardFolder &folder, const std::string &name, const std::string &value);

} // namespace vb
