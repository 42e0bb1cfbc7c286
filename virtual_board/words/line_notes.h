#pragma once
// What is to be said of lines of the CPLD that several things of a board share: notes of
// properties.

#include "virtual_board/words/bindings.h"

namespace vb {

// Each answers the note of a property on its board, or nothing.
std::string noteOfFanPresence(const PropertyTarget &target);
std::string noteOfSupplyPresence(const PropertyTarget &target);
std::string noteOfCage(const PropertyTarget &target);
std::string noteOfRegister(const PropertyTarget &target);

} // namespace vb
