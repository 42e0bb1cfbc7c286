// The tables of the virtual board in this build.

#include "tests/second_controller/catalogues/models.h"
#include "tests/second_controller/virtual_board/kind.h"
#include "virtual_board/board/models.h"
#include "virtual_board/devices/rtl8239/kind.h"

namespace vb {

namespace {

constexpr Model modelWith(uint16_t devId, const char *description, PoeChip chip) {
    return {.devId = devId,
            .description = description,
            .copperPorts = 24,
            .uplinks = 6,
            .poePorts = 24,
            .poeChip = chip,
            .hasClock = true,
            .fans = {.count = 2, .haveOwnTachometers = false, .presence = kFanPresence},
            .supplies = {
                .count = 2,
                .haveBus = true,
                .presence = SupplyTells::Unplugged,
                .type = SupplyTells::Plugged,
                .status = {SupplyTells::Never, SupplyTells::OutputGood, SupplyTells::InputGood}}};
}

constexpr Model kTestModels[] = {
    modelWith(kQuillModel, "24 PoE ports with a quill", kQuillChip),
    modelWith(kFamilyModel, "24 PoE ports", PoeChip::Rtl8239),
    modelWith(kOddModel, "25 PoE ports, as the library believes", PoeChip::Rtl8239),
    modelWith(kStrangeModel, "24 PoE ports with what nobody knows", kQuillChip),
    modelWith(kUnguidedModel, "24 PoE ports with what iodbg does not know", kQuillChip),
};

constexpr PoeKindRow kKinds[] = {{PoeChip::Rtl8239, kRtl8239Kind}, {kQuillChip, kQuillKind}};

} // namespace

constinit const std::span<const Model> kModels = kTestModels;

constinit const std::span<const PoeKindRow> kPoeKinds = kKinds;

} // namespace vb
