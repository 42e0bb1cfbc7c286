#include "virtual_board/board/layouts.h"

#include "virtual_board/board/board.h"

#include <cstring>
#include <iterator>

namespace vb {

namespace {

using enum LayoutChange;

// A step that was released never changes, so the numbers in it are its own: names and sizes of the
// code are those of today.

// From 1.0.0

/** Of a real clock only its start was told, and rates were not known. */
void tellPace(uint8_t *state) {
    constexpr uint32_t kSlept = 32, kMode = 56, kRate = 60;
    constexpr uint32_t kReal = 0, kUsualRate = 1000;
    uint32_t mode = kReal;
    std::memcpy(&mode, state + kMode, sizeof(mode));
    if (mode == kReal)
        std::memset(state + kSlept, 0, sizeof(uint64_t));
    std::memcpy(state + kRate, &kUsualRate, sizeof(kUsualRate));
}

/** The level of a CPLD line told that a PoE controller is missing; now a member does. */
void tellMissingController(uint8_t *state) {
    constexpr uint32_t kControlRegister = 76, kAbsence = 1u << 14;
    constexpr uint32_t kIsFitted = 3544, kIsMissing = 3550;
    uint16_t control = 0;
    std::memcpy(&control, state + kControlRegister, sizeof(control));
    state[kIsMissing] = state[kIsFitted] != 0 && (control & kAbsence) != 0 ? 1 : 0;
}

void tellFrom4(uint8_t *state) {
    tellPace(state);
    tellMissingController(state);
}

constexpr LayoutRun kFrom4[] = {
    {Keep, 32},      // the header
    {Add, 8},        // the count of changes
    {Keep, 16},      // the board's time, and the host's
    {Add, 24},       // the host's monotonic clock, and what programs read ahead of both
    {Keep, 8},       // how far they have set it
    {Keep, 8},       // kind of time, and rate
    {Add, 8},        // whether that is the host's, and the count of changes
    {Add, 43024},    // who waits
    {Keep, 7624},    // devices up to the PoE controller's image
    {Drop, 4},       // the number of its units that were written
    {Keep, 202752},  // the image
    {Drop, 4},       // padding
    {Keep, 79808},   // the other devices, the fault rules, how long the trace is
    {Add, 8},        // how much of it was forgotten
    {Keep, 1835008}, // the trace
};

constexpr LayoutStep kSteps[] = {
    {4, 7, kFrom4, tellFrom4},
};

constexpr bool stepsJoin() {
    for (uint32_t i = 1; i < std::size(kSteps); ++i) {
        if (kSteps[i].from != kSteps[i - 1].to ||
            kSteps[i].sizeBefore() != kSteps[i - 1].sizeAfter())
            return false;
    }
    return true;
}
static_assert(stepsJoin(), "each step begins where the one before it ends");

constexpr const LayoutStep &kNewest = kSteps[std::size(kSteps) - 1];
static_assert(
    kNewest.to == kBoardVersion && kNewest.sizeAfter() == sizeof(Board),
    "the newest step does not lead to the state of today: where it has not been released, "
    "change it, else add one (docs/architecture.md, 'the state of a board')");

} // namespace

std::span<const LayoutStep> layoutSteps() {
    return kSteps;
}

const LayoutStep *layoutStepFrom(uint32_t version, uint32_t size) {
    for (const LayoutStep &step : kSteps) {
        if (step.from == version && step.sizeBefore() == size)
            return &step;
    }
    return nullptr;
}

void takeLayoutStep(const LayoutStep &step, uint8_t *before, uint8_t *after) {
    if (step.prepare != nullptr)
        step.prepare(before);
    for (const LayoutRun &run : step.runs) {
        if (run.change == Keep)
            std::memcpy(after, before, run.bytes);
        else if (run.change == Add)
            std::memset(after, 0, run.bytes);
        before += run.change == Add ? 0 : run.bytes;
        after += run.change == Drop ? 0 : run.bytes;
    }
}

} // namespace vb
