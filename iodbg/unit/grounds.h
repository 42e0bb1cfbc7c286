#pragma once
// What other parts of the unit are reached through.

#include "iodbg/core/findings.h"
#include "iodbg/core/model.h"

#include <cstdint>
#include <optional>
#include <span>

namespace iodbg {

/**
 * What other parts are reached through: kernel module, shared files, CPLD, model. Where one of them
 * fails nothing is known of what hangs on it, and nobody is sent to look there.
 */
struct Grounds {
    Findings findings; // what is wrong with them, and the model when nothing is
    Model model;
    std::optional<int32_t> modelStatus; // of reading it; none where nothing can be asked

    /** The cause for which a part that needs these cannot be judged; none when it can. */
    std::optional<Subject> causeAmong(std::span<const Unit> needs) const;
};
Grounds judgeGrounds();

} // namespace iodbg
