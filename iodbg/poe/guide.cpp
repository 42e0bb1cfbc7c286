#include "iodbg/poe/guide.h"

#include "iodbg/core/failure.h"

namespace iodbg {

const bsp::PoeGuide &poeGuide(bsp::PoeChip chip) {
    for (const bsp::PoeGuideRow &row : bsp::kPoeGuides) {
        if (row.chip == chip)
            return row.guide;
    }
    throw Failure(ExitCode::Board, "this iodbg does not know the PoE controller of this model");
}

std::vector<WorkStep> stepsOf(const bsp::PoeWork &work, uint32_t amount) {
    std::vector<WorkStep> steps;
    for (uint32_t index = 0; index < work.steps; ++index) {
        const bsp::PoeWorkStep step = work.step(amount, index);
        steps.push_back({step.name, step.leastMs});
    }
    return steps;
}

} // namespace iodbg
