// How tools follow the driver.

#include "tests/second_controller/library/driver.h"
#include "tests/second_controller/library/registers.h"

namespace quill {

namespace {

constexpr uint32_t kExchangeMs = 2;

/** Requests of the parts of the initialisation; the reset has none. */
struct Part {
    const char *name;
    uint32_t requests;
};

constexpr uint32_t kParts = 4;

constexpr Part partOf(uint32_t ports, uint32_t index) {
    const Part parts[kParts] = {{"reset the controller", 0},
                                {"set the power budget", 1},
                                {"set modes and limits", 2 * ports},
                                {"serve the ports", 1}};
    return parts[index];
}

bsp::PoeWorkStep initStep(uint32_t ports, uint32_t index) {
    const Part part = partOf(ports, index);
    return {part.name, part.requests == 0 ? 2 * kResetSeconds * 1000 : part.requests * kExchangeMs};
}

std::optional<bsp::PoeWorkPlace> initPlace(uint32_t ports, uint32_t requestsBefore, Bytes) {
    uint32_t left = requestsBefore;
    uint32_t step = 0;
    while (step < kParts && left >= partOf(ports, step).requests)
        left -= partOf(ports, step++).requests;
    return bsp::PoeWorkPlace{step, left * kExchangeMs};
}

} // namespace

constexpr bsp::PoeGuide kGuide = {.initialisation = {kParts, initStep, initPlace},
                                  .upgrade = {},
                                  .image = {},
                                  .exchangeMs = kExchangeMs,
                                  .portLimitStepMw = 1,
                                  .budgetStepMw = 1,
                                  .isAnswer = answers,
                                  .priorityIn = nullptr,
                                  .debugWords = {}};

} // namespace quill
