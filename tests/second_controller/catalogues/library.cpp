// The tables of the library and of iodbg in this build: the quill beside the family's controller.

#include "identity/board_catalogue.h"
#include "poe/controllers.h"
#include "poe/guide.h"
#include "poe/rtl8239/driver.h"
#include "poe/rtl8239/guide.h"
#include "support/board_map.h"
#include "tests/second_controller/catalogues/models.h"
#include "tests/second_controller/library/driver.h"

namespace {

using bsp::PoeChip;

/** A model of this build, like the family's with 24 PoE ports but for the controller. */
constexpr bsp::BoardModel modelWith(uint16_t devId, PoeChip chip, uint8_t poePorts = 24) {
    return {.devId = devId,
            .poeChip = chip,
            .poePorts = poePorts,
            .hasClock = true,
            .fans = {.count = 2,
                     .haveOwnTachometers = false,
                     .presenceRegister = bsp::kFanPresence.reg,
                     .presenceBit = bsp::kFanPresence.bit},
            .supplies = {.count = 2,
                         .presenceRegister = bsp::kSupplyPresence.reg,
                         .presenceBit = bsp::kSupplyPresence.bit,
                         .isPresenceActiveLow = false,
                         .haveBus = true,
                         .status = {}},
            .uplinkCages = {25, 6, bsp::kUplinkModule.bus, bsp::kUplinkModule.channel}};
}

constexpr bsp::PoeController kControllers[] = {
    {PoeChip::Rtl8239, {bspPoeRtl8239Driver, &bspPoeRtl8239DriverExtension}},
    {quill::kChip, {quill::kDriver, &quill::kExtension}},
    {kUnguidedChip, {quill::kDriver, &quill::kExtension}},
};

constexpr bsp::PoeGuideRow kGuides[] = {
    {PoeChip::Rtl8239, bsp::rtl8239::kGuide},
    {quill::kChip, quill::kGuide},
};

} // namespace

const bsp::BoardModel bsp::kBoardModels[] = {
    modelWith(kQuillModel, quill::kChip),       modelWith(kFamilyModel, PoeChip::Rtl8239),
    modelWith(kOddModel, PoeChip::Rtl8239, 25), modelWith(kStrangeModel, kStrangeChip),
    modelWith(kUnguidedModel, kUnguidedChip),   modelWith(kNoDevId, PoeChip::None),
};

constexpr std::span<const bsp::PoeController> bsp::kPoeControllers = kControllers;

constexpr std::span<const bsp::PoeGuideRow> bsp::kPoeGuides = kGuides;
