#pragma once
// The world's side of a board as named properties: what is plugged in, what the registers and chips
// hold, what time it is. Bad names and values throw Refused. The caller holds the board's lock.

#include "virtual_board/board/folder.h"

#include <string>
#include <vector>

namespace vb {

struct Property {
    std::string name;
    std::string value;
    bool isIdle;      // holds what it holds when nobody has touched it; a short list leaves it out
    std::string note; // what else is to be known of it on this board; mostly nothing
};

/** Every property of a board, each with its whole content, but for what the flash holds. */
std::vector<Property> properties(const BoardFolder &folder);

/** The value of a property. EEPROMs and flash can be asked for a part: "eeprom.board@0x100+16". */
std::string property(const BoardFolder &folder, const std::string &name);

/** What else is to be known of a property on this board: which line it shares with others. */
std::string propertyNote(const BoardFolder &folder, const std::string &name);

/** Changes a property. Bytes of an EEPROM are set from an offset on: "eeprom.board@0x100". */
void setProperty(const BoardFolder &folder, const std::string &name, const std::string &value);

} // namespace vb
