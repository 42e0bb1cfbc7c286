#include "identity/board_catalogue.h"

#include "bsp.h"
#include "support/board_map.h"

namespace {

using bsp::BoardModel;
using bsp::CageRange;
using bsp::CpldLine;
using bsp::Fans;
using bsp::kNoDevId;
using bsp::PoeChip;
using bsp::Supplies;

constexpr Fans kFourFans = {.count = 4,
                            .haveOwnTachometers = true,
                            .presenceRegister = bsp::kFanPresenceBesideSupplies.reg,
                            .presenceBit = bsp::kFanPresenceBesideSupplies.bit};
constexpr Fans kTwoFans = {.count = 2,
                           .haveOwnTachometers = false,
                           .presenceRegister = bsp::kFanPresence.reg,
                           .presenceBit = bsp::kFanPresence.bit};
constexpr Fans kUnseenFans = {
    .count = 2, .haveOwnTachometers = true, .presenceRegister = 0, .presenceBit = 0};

/** A line in a rule. */
constexpr uint8_t ruled(const CpldLine &line) {
    return static_cast<uint8_t>(1u << (line.bit - bsp::kSupplyType.bit));
}
constexpr uint8_t kType = ruled(bsp::kSupplyType);
constexpr uint8_t kStatus0 = ruled(bsp::kSupplyStatus0);
constexpr uint8_t kStatus1 = ruled(bsp::kSupplyStatus1);
constexpr uint8_t kStatus2 = ruled(bsp::kSupplyStatus2);

constexpr Supplies kBuiltInSupplies = {.count = BSP_FIXED_SUPPLIES,
                                       .presenceRegister = bsp::kSupplyPresence.reg,
                                       .presenceBit = bsp::kSupplyPresence.bit,
                                       .isPresenceActiveLow = false,
                                       .haveBus = false,
                                       .status = {{kStatus0, BSP_SUPPLY_STATUS_3},
                                                  {kStatus1 | kType, BSP_SUPPLY_STATUS_1},
                                                  {kStatus2, BSP_SUPPLY_STATUS_0},
                                                  {0, BSP_SUPPLY_STATUS_2}}};
constexpr Supplies kPlugInSupplies = {.count = BSP_FIXED_SUPPLIES,
                                      .presenceRegister = bsp::kSupplyPresence.reg,
                                      .presenceBit = bsp::kSupplyPresence.bit,
                                      .isPresenceActiveLow = false,
                                      .haveBus = true,
                                      .status = {{kStatus2 | kStatus1, BSP_SUPPLY_STATUS_0},
                                                 {kStatus2, BSP_SUPPLY_STATUS_4},
                                                 {0, BSP_SUPPLY_STATUS_1}}};
constexpr Supplies kRecordedSupplies = {.count = 0,
                                        .presenceRegister = bsp::kRecordedSupplyAbsence.reg,
                                        .presenceBit = bsp::kRecordedSupplyAbsence.bit,
                                        .isPresenceActiveLow = true,
                                        .haveBus = false,
                                        .status = {{0, BSP_SUPPLY_STATUS_0}}};

/** Whether some rule fits whatever the lines are: whoever looks for one stops at it. */
constexpr bool alwaysHasStatus(const Supplies &supplies) {
    for (const bsp::SupplyRule &rule : supplies.status) {
        if (rule.lines == 0)
            return true;
    }
    return false;
}
/** Whether presence is told where the type of fixed supplies is looked for beside it. */
constexpr bool hasLinesTogether(const Supplies &supplies) {
    return supplies.count == 0 ||
           (supplies.presenceRegister == bsp::kSupplyPresence.reg &&
            supplies.presenceBit == bsp::kSupplyPresence.bit && !supplies.isPresenceActiveLow);
}
static_assert(alwaysHasStatus(kBuiltInSupplies) && hasLinesTogether(kBuiltInSupplies));
static_assert(alwaysHasStatus(kPlugInSupplies) && hasLinesTogether(kPlugInSupplies));
static_assert(alwaysHasStatus(kRecordedSupplies) && hasLinesTogether(kRecordedSupplies));

constexpr CageRange frontCages(uint8_t ports) {
    return {1, ports, bsp::kFrontModule.bus, bsp::kFrontModule.channel};
}
constexpr CageRange uplinkCages(uint8_t firstPort) {
    return {firstPort, 6, bsp::kUplinkModule.bus, bsp::kUplinkModule.channel};
}

} // namespace

const BoardModel bsp::kBoardModels[] = {
    {.devId = 0x0109,
     .fans = kUnseenFans,
     .supplies = kRecordedSupplies,
     .uplinkCages = uplinkCages(25)},
    {.devId = 0x0309,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies,
     .uplinkCages = uplinkCages(25)},
    {.devId = 0x0409,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies,
     .uplinkCages = uplinkCages(49)},
    {.devId = 0x0509,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies,
     .frontCages = frontCages(24),
     .uplinkCages = uplinkCages(33),
     .haveUplinkStatusLines = false,
     .havePortsBehindUplinks = false},
    {.devId = 0x0609,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies,
     .frontCages = frontCages(48),
     .uplinkCages = uplinkCages(49)},
    {.devId = 0x0709,
     .poeChip = PoeChip::Rtl8239,
     .poePorts = 48,
     .hasClock = true,
     .fans = kTwoFans,
     .supplies = kPlugInSupplies,
     .uplinkCages = uplinkCages(49)},
    {.devId = 0x0809,
     .poeChip = PoeChip::Rtl8239,
     .poePorts = 24,
     .hasClock = true,
     .fans = kTwoFans,
     .supplies = kPlugInSupplies,
     .uplinkCages = uplinkCages(25)},
    {.devId = 0x8209,
     .fans = kUnseenFans,
     .supplies = kRecordedSupplies,
     .uplinkCages = uplinkCages(25)},
    {.devId = 0x8309,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies,
     .uplinkCages = uplinkCages(49)},
    {.devId = 0x8409,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies,
     .uplinkCages = uplinkCages(25)},
    {.devId = 0x8509,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies,
     .frontCages = frontCages(48),
     .uplinkCages = uplinkCages(49)},
    {.devId = 0x8609,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies,
     .frontCages = frontCages(24),
     .uplinkCages = uplinkCages(33),
     .haveUplinkStatusLines = false,
     .havePortsBehindUplinks = false},
    {.devId = 0x8709,
     .poeChip = PoeChip::Rtl8239,
     .poePorts = 24,
     .hasClock = true,
     .fans = kTwoFans,
     .supplies = kPlugInSupplies,
     .uplinkCages = uplinkCages(25)},
    {.devId = 0x8809,
     .poeChip = PoeChip::Rtl8239,
     .poePorts = 48,
     .hasClock = true,
     .fans = kTwoFans,
     .supplies = kPlugInSupplies,
     .uplinkCages = uplinkCages(49)},
    // No id is refused: a board that the table does not know is driven like this. Its cages would
    // be on other channels.
    {.devId = kNoDevId,
     .fans = kUnseenFans,
     .supplies = kRecordedSupplies,
     .uplinkCages = {.firstPort = 49, .ports = 6, .bus = 0, .firstChannel = 2}},
};
