#include "virtual_board/board/sfp_cages.h"

namespace vb {

namespace {

// Lines as a module's state remembers them
constexpr uint32_t kPresentLine = 1;
constexpr uint32_t kLossLine = 2;
constexpr uint32_t kFaultLine = 4;

/** Where the lines of one cage are. */
struct Places {
    CpldLine present, loss, fault, disable;
    bool hasLossAndFault; // lines of their own
};

Places placesOf(const Model &model, uint32_t port) {
    if (port <= model.sfpPorts) {
        const uint32_t reg = (port - 1) / kCpldLinesPerRegister;
        const uint32_t bit = (port - 1) % kCpldLinesPerRegister;
        return {{kCpldSfpPresence + reg, bit},
                {kCpldSfpReceiveLoss + reg, bit},
                {kCpldSfpTransmitFault + reg, bit},
                {kCpldSfpTransmitDisable + reg, bit},
                true};
    }
    const uint32_t uplink = port - firstUplink(model) + 1;
    return {nthLine(kUplinkPresence, uplink), nthLine(kUplinkReceiveLoss, uplink),
            nthLine(kUplinkTransmitFault, uplink), nthLine(kUplinkTransmitDisable, uplink),
            model.haveUplinkStatusLines};
}

/** The lines of an empty cage are all clear: the CPLD passes the others on while a module is there.
 */
uint32_t linesOf(const SfpModule &module, const SfpCage &cage) {
    if (module.kind == SfpKind::None)
        return 0;
    return kPresentLine | (sfpIsSignalLost(module) ? kLossLine : 0) |
           (sfpHasTxFault(module, cage) ? kFaultLine : 0);
}

template <typename Visit>
void forEachCage(const Model &model, Visit visit) {
    for (uint32_t port = 1; port <= kMostPorts; ++port) {
        if (isSfpCage(model, port))
            visit(port);
    }
}

/** The port at a channel of the bus; 0 when there is none. */
uint32_t portAt(const Model &model, uint32_t channel) {
    const uint32_t uplink = channel - kUplinkModule.channel;
    if (uplink < model.uplinks)
        return firstUplink(model) + uplink;
    const uint32_t front = channel - kFrontModule.channel;
    return front < model.sfpPorts ? front + 1 : 0;
}

} // namespace

I2cPlace placeOfModule(const Model &model, uint32_t port) {
    if (port <= model.sfpPorts)
        return {kFrontModule.bus, kFrontModule.channel + port - 1, kFrontModule.device};
    return {kUplinkModule.bus, kUplinkModule.channel + port - firstUplink(model),
            kUplinkModule.device};
}

uint32_t firstUplink(const Model &model) {
    return model.copperPorts + uint32_t{model.sfpPorts} + 1;
}

bool isSfpCage(const Model &model, uint32_t port) {
    const uint32_t uplink = port - firstUplink(model);
    return (port >= 1 && port <= model.sfpPorts) || uplink < model.uplinks;
}

SfpModule &sfpModule(Board &board, uint32_t port) {
    return board.devices.sfp[port - 1];
}

SfpCage sfpCage(const Board &board, uint32_t port, uint64_t nowNs) {
    const Model *model = findModel(board.header.devId);
    const bool isDisabled =
        model != nullptr && cpldLevel(board.devices.cpld, placesOf(*model, port).disable);
    return {board.devices.climate.microdegrees, isDisabled, nowNs};
}

void driveSfpLines(Board &board, uint64_t nowNs) {
    const Model *model = findModel(board.header.devId);
    if (model == nullptr)
        return;
    forEachCage(*model, [&](uint32_t port) {
        SfpModule &module = sfpModule(board, port);
        const uint32_t lines = linesOf(module, sfpCage(board, port, nowNs));
        const uint32_t changed = lines ^ module.lines;
        const Places places = placesOf(*model, port);
        Cpld &cpld = board.devices.cpld;
        if ((changed & kPresentLine) != 0)
            cpldDrive(cpld, places.present, (lines & kPresentLine) != 0);
        if ((changed & kLossLine) != 0 && places.hasLossAndFault)
            cpldDrive(cpld, places.loss, (lines & kLossLine) != 0);
        if ((changed & kFaultLine) != 0 && places.hasLossAndFault)
            cpldDrive(cpld, places.fault, (lines & kFaultLine) != 0);
        module.lines = lines;
    });
}

void startSfpLines(Board &board, uint64_t nowNs) {
    for (SfpModule &module : board.devices.sfp)
        module.lines = 0;
    driveSfpLines(board, nowNs);
}

void startSfpModules(Board &board, uint64_t nowNs) {
    for (SfpModule &module : board.devices.sfp) {
        module.startedNs = nowNs;
        sfpForget(module);
    }
}

bool sfpTransfer(Board &board, const I2cTransfer &transfer) {
    const Model *model = findModel(board.header.devId);
    const uint32_t port = model != nullptr ? portAt(*model, transfer.channel) : 0;
    if (port == 0)
        return false;
    const SfpCage cage = sfpCage(board, port, transfer.nowNs);
    const uint32_t offset = transfer.offsetLen == 0 ? 0 : transfer.offset % kSfpPageSize;
    SfpModule &module = sfpModule(board, port);
    return transfer.isRead
               ? sfpRead(module, cage, transfer.devAddr, offset, transfer.data, transfer.length)
               : sfpWrite(module, cage, transfer.devAddr, offset, transfer.data, transfer.length);
}

} // namespace vb
