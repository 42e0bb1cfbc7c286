#include "iodbg/chassis/fans.h"

#include "bsp.h"
#include "support/register_bits.h"

namespace iodbg {

namespace {

Cell presenceCell(Report &report, const Model &model, uint32_t fan, const std::string &item) {
    if (model.fanPresence == FanPresence::Unknown)
        return {"unknown: no line tells", nullptr};
    if (model.fanPresence == FanPresence::SuppliesLine)
        return {"unknown: its line is a supply's too", nullptr};
    uint32_t presence = BSP_FAN_MISSING;
    const int32_t status = ioFanPresentGet(static_cast<int32_t>(fan), &presence);
    return report.tried(item + ".present", status,
                        flagCell(presence == BSP_FAN_PRESENT, "yes", "no"));
}

Cell speedCell(Report &report, uint32_t fan, const std::string &item) {
    uint32_t speed = 0;
    const int32_t status = ioFanSpeedGet(fan, &speed);
    return report.tried(item + ".speed_rpm", status, numberCell(speed));
}

} // namespace

int32_t readFanLevel(uint32_t &level) {
    // The library sets the level and does not tell it.
    uint16_t content = 0;
    const int32_t status = bspCpldGet(bsp::kFanLevel.reg, &content);
    level = bsp::fieldOf(content, bsp::kFanLevel) + BSP_FAN_LEVEL_MIN;
    return status;
}

int32_t readFanLevel(Cell &level) {
    uint32_t number = 0;
    const int32_t status = readFanLevel(number);
    level = numberCell(number);
    return status;
}

Table fanTable(Report &report, const Model &model) {
    Table table = {"fans", {{"fan", "FAN"}, {"present", "PRESENT"}, {"speed_rpm", "RPM"}}, {}};
    for (uint32_t fan = 1; fan <= model.fans; ++fan) {
        const std::string item = "fan" + std::to_string(fan);
        table.rows.push_back({numberCell(fan), presenceCell(report, model, fan, item),
                              speedCell(report, fan, item)});
    }
    return table;
}

} // namespace iodbg
