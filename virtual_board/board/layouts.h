#pragma once
// The layouts that the state of released versions has, and what makes the next one of each.

#include <cstdint>
#include <span>

namespace vb {

/** What becomes of the next bytes of a state. */
enum class LayoutChange : uint8_t {
    Keep,
    Drop,
    Add, // zeros
};

struct LayoutRun {
    LayoutChange change;
    uint32_t bytes;
};

/** The way from a version of the state to the next. */
struct LayoutStep {
    uint32_t from, to; // kBoardVersion of then
    std::span<const LayoutRun> runs;
    /** Tells in the earlier layout's terms what the next one asks for; may be null. */
    void (*prepare)(uint8_t *state);

    constexpr uint32_t sizeBefore() const { return sizeWithout(LayoutChange::Add); }
    constexpr uint32_t sizeAfter() const { return sizeWithout(LayoutChange::Drop); }

  private:
    constexpr uint32_t sizeWithout(LayoutChange change) const {
        uint32_t size = 0;
        for (const LayoutRun &run : runs)
            size += run.change == change ? 0 : run.bytes;
        return size;
    }
};

/** All steps, the newest last. */
std::span<const LayoutStep> layoutSteps();

/** The step of states of a version and size, or null when there is no way from there. */
const LayoutStep *layoutStepFrom(uint32_t version, uint32_t size);

/** Takes a step: from sizeBefore() bytes, which it prepares, to sizeAfter() others. */
void takeLayoutStep(const LayoutStep &step, uint8_t *before, uint8_t *after);

} // namespace vb
