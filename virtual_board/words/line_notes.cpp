#include "virtual_board/words/line_notes.h"

#include "virtual_board/board/sfp_cages.h"

namespace vb {

namespace {

using Target = PropertyTarget;

constexpr char kLastChange[] = ": it shows what changed last";

/** "fans 1 and 2": those whose presence shares a line with that of a supply. */
std::string fansBeside(uint32_t supply) {
    const uint32_t second = 2 * supply;
    return "fans " + std::to_string(second - 1) + " and " + std::to_string(second);
}

} // namespace

std::string noteOfFanPresence(const Target &target) {
    const uint32_t other = target.number() % 2 == 0 ? target.number() - 1 : target.number() + 1;
    const std::string pair = "one line with fan " + std::to_string(other);
    if (!target.model().haveSharedPresenceLines())
        return pair + ": it is set while both are there";
    const uint32_t supply = (target.number() + 1) / 2;
    return pair + " and supply " + std::to_string(supply) + kLastChange;
}

std::string noteOfSupplyPresence(const Target &target) {
    if (!target.model().haveSharedPresenceLines())
        return "";
    return "one line with " + fansBeside(target.number()) + kLastChange;
}

std::string noteOfCage(const Target &target) {
    const Model &model = target.model();
    const bool isUplink = target.number() >= firstUplink(model);
    return isUplink && !model.haveUplinkStatusLines
               ? "programs read loss from its presence line, fault from that of transmit disable"
               : "";
}

std::string noteOfRegister(const Target &target) {
    const Model &model = target.model();
    const uint32_t reg = target.number();
    if (reg == kCpldSupplies && model.haveSharedPresenceLines())
        return "bit 0: supply 1 and " + fansBeside(1) + "; bit 1: supply 2 and " + fansBeside(2);
    if (reg == kCpldUplinkInputs && !model.haveUplinkStatusLines)
        return "bits 6 to 11: presence of uplinks, and read as their loss";
    if (reg == kCpldUplinkTransmitters && !model.haveUplinkStatusLines)
        return "bits 6 to 11: transmit disable of uplinks, and read as their fault";
    return "";
}

} // namespace vb
