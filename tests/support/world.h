#pragma once
// The world's side of the board that a test is attached to.

#include "virtual_board/os/seam.h"
#include "virtual_board/words/values.h"
#include "virtual_board/words/world.h"

#include <string>

namespace world {

inline std::string get(const std::string &name) {
    return vb::property(*vb::attachedFolder(), name);
}

inline void set(const std::string &name, const std::string &value) {
    vb::setProperty(*vb::attachedFolder(), name, value);
}

/** Why a change is refused. */
inline std::string refusal(const std::string &name, const std::string &value) {
    try {
        set(name, value);
    } catch (const vb::Refused &refused) {
        return refused.what();
    }
    return "accepted";
}

/** Why a question is refused. */
inline std::string refusal(const std::string &name) {
    try {
        return "accepted: " + get(name);
    } catch (const vb::Refused &refused) {
        return refused.what();
    }
}

} // namespace world
