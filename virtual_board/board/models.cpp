#include "virtual_board/board/models.h"

namespace vb {

namespace {

constexpr FanWiring kNoFans = {};
constexpr FanWiring kFourFans = {
    .count = 4, .haveOwnTachometers = true, .presence = kFanPresenceBesideSupplies};
constexpr FanWiring kTwoFans = {.count = 2, .haveOwnTachometers = false, .presence = kFanPresence};

/** Supplies without lines of their own. */
constexpr SupplyWiring kUnseenSupplies = {};

// The presence line of supplies is active low. Type and readings of a supply can be had only while
// the line is clear, which is what a plugged supply must be able to do.
constexpr SupplyWiring kBuiltInSupplies = {
    .count = 2,
    .haveBus = false,
    .presence = SupplyTells::Unplugged,
    .type = SupplyTells::Plugged,
    .status = {SupplyTells::Unplugged, SupplyTells::InputFailed, SupplyTells::OutputGood}};
constexpr SupplyWiring kPlugInSupplies = {
    .count = 2,
    .haveBus = true,
    .presence = SupplyTells::Unplugged,
    .type = SupplyTells::Plugged,
    .status = {SupplyTells::Never, SupplyTells::OutputGood, SupplyTells::InputGood}};

constexpr Model kRows[] = {
    {.devId = 0x0109,
     .description = "24 ports, 6 SFP uplinks",
     .copperPorts = 24,
     .uplinks = 6,
     .fans = kNoFans,
     .supplies = kUnseenSupplies},
    {.devId = 0x0309,
     .description = "24 ports, 6 SFP uplinks, 4 fans",
     .copperPorts = 24,
     .uplinks = 6,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies},
    {.devId = 0x0409,
     .description = "48 ports, 6 SFP uplinks, 4 fans",
     .copperPorts = 48,
     .uplinks = 6,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies},
    {.devId = 0x0509,
     .description = "24 SFP ports, 8 copper ports, 6 SFP uplinks, 4 fans",
     .copperPorts = 8,
     .sfpPorts = 24,
     .uplinks = 6,
     .haveUplinkStatusLines = false,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies},
    {.devId = 0x0609,
     .description = "48 SFP ports, 6 SFP uplinks, 4 fans",
     .sfpPorts = 48,
     .uplinks = 6,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies},
    {.devId = 0x0709,
     .description = "48 PoE ports, 6 SFP uplinks, 2 fans",
     .copperPorts = 48,
     .uplinks = 6,
     .poePorts = 48,
     .hasClock = true,
     .fans = kTwoFans,
     .supplies = kPlugInSupplies},
    {.devId = 0x0809,
     .description = "24 PoE ports, 6 SFP uplinks, 2 fans",
     .copperPorts = 24,
     .uplinks = 6,
     .poePorts = 24,
     .hasClock = true,
     .fans = kTwoFans,
     .supplies = kPlugInSupplies},
    {.devId = 0x8209,
     .description = "24 ports, 6 SFP uplinks, second variant",
     .copperPorts = 24,
     .uplinks = 6,
     .fans = kNoFans,
     .supplies = kUnseenSupplies},
    {.devId = 0x8309,
     .description = "48 ports, 6 SFP uplinks, 4 fans, second variant",
     .copperPorts = 48,
     .uplinks = 6,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies},
    {.devId = 0x8409,
     .description = "24 ports, 6 SFP uplinks, 4 fans, second variant",
     .copperPorts = 24,
     .uplinks = 6,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies},
    {.devId = 0x8509,
     .description = "48 SFP ports, 6 SFP uplinks, 4 fans, second variant",
     .sfpPorts = 48,
     .uplinks = 6,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies},
    {.devId = 0x8609,
     .description = "24 SFP ports, 8 copper ports, 6 SFP uplinks, 4 fans, second variant",
     .copperPorts = 8,
     .sfpPorts = 24,
     .uplinks = 6,
     .haveUplinkStatusLines = false,
     .hasClock = true,
     .fans = kFourFans,
     .supplies = kBuiltInSupplies},
    {.devId = 0x8709,
     .description = "24 PoE ports, 6 SFP uplinks, 2 fans, second variant",
     .copperPorts = 24,
     .uplinks = 6,
     .poePorts = 24,
     .hasClock = true,
     .fans = kTwoFans,
     .supplies = kPlugInSupplies},
    {.devId = 0x8809,
     .description = "48 PoE ports, 6 SFP uplinks, 2 fans, second variant",
     .copperPorts = 48,
     .uplinks = 6,
     .poePorts = 48,
     .hasClock = true,
     .fans = kTwoFans,
     .supplies = kPlugInSupplies},
};

} // namespace

constinit const std::span<const Model> kModels = kRows;

} // namespace vb
