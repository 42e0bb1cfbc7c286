#pragma once
// What those who look on at a driver's work know of its controller: the course of long work, what
// its transfers tell, its limits. Data and pure functions, which tools compile into themselves; the
// library has no need of them.

#include "identity/board_catalogue.h"

#include <cstdint>
#include <optional>
#include <span>

namespace bsp {

using PoeBytes = std::span<const uint8_t>;

/** A part of long work, and what it takes at least. */
struct PoeWorkStep {
    const char *name;
    uint32_t leastMs;
};

/** Where long work is: in a step, and some milliseconds of what that takes at least into it. */
struct PoeWorkPlace {
    uint32_t step;
    uint32_t ms;
};

/** Long work. Its amount is what makes it long: the board's ports, or the bytes of the image. */
struct PoeWork {
    uint32_t steps;
    PoeWorkStep (*step)(uint32_t amount, uint32_t index);
    /**
     * Where a request that is written, after some others, tells that the work is; behind the last
     * step when there are no more requests. None for a request that tells nothing.
     */
    std::optional<PoeWorkPlace> (*placeOf)(uint32_t amount, uint32_t requestsBefore,
                                           PoeBytes request);
};

/** Sizes of firmware images in bytes. */
struct PoeImageSizes {
    uint32_t smallest;
    uint32_t largest; // 0: the controller takes no firmware
    uint32_t step;
};

struct PoeGuide {
    PoeWork initialisation; // placed by the number of requests alone
    PoeWork upgrade;        // placed by the requests alone
    PoeImageSizes image;
    uint32_t exchangeMs;      // what a request and its answer take at least
    uint32_t portLimitStepMw; // to which a port's limit is rounded up
    uint32_t budgetStepMw;    // to which the budget is rounded up
    bool (*isAnswer)(PoeBytes request, PoeBytes reply);
    /** A port's priority, which no function of the library reads: 0 is above 1. Null: none tells.
     */
    std::optional<uint32_t> (*priorityIn)(PoeBytes reply, uint32_t port);
    std::span<const char *const> debugWords; // which the driver takes apart itself
};

struct PoeGuideRow {
    PoeChip chip;
    const PoeGuide &guide;
};

/** The catalogue: poe/guides.cpp, or what a build has in its place. */
extern const std::span<const PoeGuideRow> kPoeGuides;

} // namespace bsp
