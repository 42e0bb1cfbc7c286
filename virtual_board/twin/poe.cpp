// The PoE controller of a twin, with what is plugged into its ports: from what it answered, which
// tells more than the properties that are made of it.

#include "virtual_board/board/circuits.h"
#include "virtual_board/devices/byte_order.h"
#include "virtual_board/twin/parts.h"

#include <algorithm>
#include <fstream>

namespace vb {

namespace {

using language::Bytes;
using language::CapturedReading;

constexpr size_t kAnswerSize = 9; // behind the sequence number, without the checksum

/** The answer of which a property was made; empty when it is not whole. */
Bytes answerOf(const Twin &twin, const std::string &row, uint32_t number) {
    const CapturedReading *reading = twin.read(row, number);
    const bool isWhole = reading != nullptr && reading->raw && reading->raw->size() == kAnswerSize;
    return isWhole ? *reading->raw : Bytes{};
}

uint8_t atMost(uint8_t value, uint8_t most) {
    return std::min(value, most);
}

// The controller

void makeIdentity(PoeController &poe, const Bytes &answer) {
    PoeSettings &settings = poe.rtl8239.settings;
    settings.portCount = atMost(answer[2], kPoePorts);
    poe.image.bytes[0] = answer[5]; // where an image carries its version
    poe.image.bytes[1] = answer[8];
    settings.isEnabled = answer[7] & 1;
    poe.hasSavedSettings = answer[7] >> 1 & 1;
    settings.isMappingEnabled = answer[7] >> 2 & 1;
}

/** Which chip serves which port is not told. They are spread over all chips. */
void makeMapping(PoeSettings &settings) {
    constexpr uint32_t kPortsPerChip = kPoePorts / kPoeChips;
    for (uint32_t port = 0; settings.isMappingEnabled != 0 && port < settings.portCount; ++port) {
        PoePortSettings &own = settings.port[port];
        own.isMapped = 1;
        own.chip = static_cast<uint8_t>(port / kPortsPerChip);
        own.chipAddress = own.chip;
        own.primaryChannel = static_cast<uint8_t>(port % kPortsPerChip);
    }
}

void makeBudget(PoeSettings &settings, const Bytes &source, const Bytes &totals) {
    if (!source.empty())
        settings.bank[0] = {loadBe16(&source[1]), loadBe16(&source[3])};
    if (!totals.empty())
        settings.pmMode = atMost(totals[4], kPoeHighestPm);
}

/** False when it answered nothing that could be held. */
bool makeController(Twin &twin) {
    PoeController &poe = twin.devices().poe;
    const Bytes version = answerOf(twin, "poe.version", 0);
    if (version.empty())
        return false;
    makeIdentity(poe, version);
    makeMapping(poe.rtl8239.settings);
    makeBudget(poe.rtl8239.settings, answerOf(twin, "poe.budget", 0),
               answerOf(twin, "poe.drawn", 0));
    return true;
}

// Ports

void makeSettings(PoePortSettings &settings, const Bytes &mode, const Bytes &power) {
    if (!mode.empty()) {
        settings.enable = atMost(mode[1], kPoeEnablePower);
        settings.funcMode = atMost(mode[2], kPoeManual);
        settings.detType = mode[3];
        settings.disconnectType = mode[5];
        settings.isFourPair = atMost(mode[6], 1);
    }
    if (!power.empty()) {
        settings.inrushMode = power[1];
        settings.limitType = atMost(power[2], kPoeLimitFixed);
        settings.limit = power[3];
        settings.priority = atMost(power[4], kPoeHighestPriority);
        settings.forceInrush = power[5];
    }
}

/** What the controller says of a port's state, and what that leads to. */
struct PortStatus {
    uint8_t status;
    PoePhase phase;
};

constexpr uint8_t kSearchingStatus = 1;
constexpr PortStatus kStatuses[] = {{0, PoePhase::Disabled},
                                    {kSearchingStatus, PoePhase::Idle},
                                    {2, PoePhase::Delivering},
                                    {4, PoePhase::Fault},
                                    {6, PoePhase::Denied}};

PoeSignature signatureOf(uint8_t detection) {
    switch (detection) {
    case kPoeDetectedShort:
        return PoeSignature::Short;
    case kPoeDetectedLegacy:
        return PoeSignature::Legacy;
    case kPoeDetectedBad:
        return PoeSignature::Bad;
    default:
        return PoeSignature::Good;
    }
}

/** What has to be plugged in for the port to be as it is. */
PoweredDevice deviceOf(const PoePort &port, uint32_t drawnMw) {
    constexpr uint32_t kClassMilliwatts[] = {15400, 4000,  7000,  15400, 30000,
                                             45000, 60000, 75000, 90000};
    PoweredDevice device = {};
    const bool isFound =
        port.detection != kPoeDetectedNothing && port.detection != kPoeDetectedOpen;
    device.isPlugged = isFound || port.phase == PoePhase::Delivering ||
                               port.phase == PoePhase::Denied || port.phase == PoePhase::Fault
                           ? 1
                           : 0;
    if (device.isPlugged == 0)
        return device;
    device.signature = signatureOf(port.detection);
    device.powerClass = port.powerClass <= kPoeHighestClass ? port.powerClass : 0;
    device.drawnMw = std::min(drawnMw, kPoeMostMilliwatts);
    // What one asked for that has power is not known: not more than there was.
    device.requestedMw =
        port.phase == PoePhase::Denied ? kClassMilliwatts[device.powerClass] : device.drawnMw;
    if (port.phase == PoePhase::Fault && port.fault == kPoeFaultShort)
        device.signature = PoeSignature::Short;
    else if (port.phase == PoePhase::Fault)
        device.isOverCurrent = 1;
    return device;
}

void makePortState(Twin &twin, PoeController &poe, uint32_t port, uint32_t index,
                   const Bytes &answer) {
    PoePort &state = poe.port[index];
    const auto *known =
        std::find_if(std::begin(kStatuses), std::end(kStatuses),
                     [&answer](const PortStatus &row) { return row.status == answer[1]; });
    if (known == std::end(kStatuses)) {
        twin.lack(twinName("poe.#.detection", port),
                  "this controller does not know the state that the port was in");
        return;
    }
    state.phase = known->phase;
    state.dueNs = kPoeNever;
    state.goal = poeGoalOf(poe.rtl8239.settings.port[index]);
    // A fault stands where class and detection would. Those of two pairs are told once more.
    state.fault = state.phase == PoePhase::Fault ? answer[2] : 0;
    const auto found = state.phase == PoePhase::Fault
                           ? static_cast<uint8_t>(kPoeNotClassified << 4 | (answer[3] & 0xF))
                           : answer[2];
    state.detection = atMost(found & 0xF, kPoeDetectedOpen);
    const uint8_t powerClass = found >> 4;
    state.powerClass = powerClass <= kPoeHighestClass ? powerClass : kPoeNotClassified;
    if (state.phase == PoePhase::Idle && state.detection == kPoeDetectedGood)
        state.phase = PoePhase::Held; // found, and nobody goes on with it
    const auto drawn = twin.number("poe.#.power", port, 0, UINT32_MAX);
    poe.device[index] = deviceOf(state, static_cast<uint32_t>(drawn.value_or(0)));
}

/** The codes of a measurement, which hold until the device is another. */
void makeMeasurement(PoePort &state, const Bytes &answer) {
    constexpr uint32_t kMicrovoltsPerStep = 64450, kMicrovoltsPerCentivolt = 10000;
    constexpr int32_t kNoDegrees = 220;
    if (answer.empty() || state.phase != PoePhase::Delivering)
        return;
    const uint32_t microvolts = loadBe16(&answer[1]) * kMicrovoltsPerStep;
    state.heldCentivolts = static_cast<uint16_t>(std::min<uint32_t>(
        (microvolts + kMicrovoltsPerCentivolt - 1) / kMicrovoltsPerCentivolt, UINT16_MAX));
    state.heldMilliamperes = loadBe16(&answer[3]);
    const int32_t degrees = ((kNoDegrees - loadBe16(&answer[5])) * 5 + 3) / 4;
    state.heldDegrees = static_cast<uint8_t>(std::clamp<int32_t>(degrees, 0, UINT8_MAX));
}

void makePort(Twin &twin, uint32_t port) {
    PoeController &poe = twin.devices().poe;
    const Bytes status = answerOf(twin, "poe.#.detection", port);
    const Bytes mode = answerOf(twin, "poe.#.mode", port);
    const Bytes power = answerOf(twin, "poe.#.limit", port);
    for (const Bytes *answer : {&status, &mode, &power}) {
        // Which of the controller's ports it is, the answer says.
        if (answer->empty() || answer->front() >= kPoePorts)
            continue;
        const uint32_t index = answer->front();
        makeSettings(poe.rtl8239.settings.port[index], answer == &mode ? mode : Bytes{},
                     answer == &power ? power : Bytes{});
    }
    if (!status.empty() && status.front() < kPoePorts) {
        makePortState(twin, poe, port, status.front(), status);
        makeMeasurement(poe.port[status.front()], answerOf(twin, "poe.#.voltage", port));
    } else if (twin.has("poe.#.detection", port)) {
        twin.lack(twinName("poe.#.*", port), "the document does not have the controller's answer");
    }
}

/** What an upgrade of its firmware left, as programs leave it: in a file of main memory. */
void makeFirmwareNote(Twin &twin) {
    const auto left = twin.number("poe.firmware", 0, 0, UINT8_MAX);
    if (left.value_or(0) == 0)
        return;
    const HostPathBuffer path = twin.folder.hostPath("/tmp/bsp/poeApp");
    std::ofstream(path.text).put(static_cast<char>(*left));
}

} // namespace

void makeTwinPoe(Twin &twin) {
    PoeController &poe = twin.devices().poe;
    if (poe.isFitted == 0)
        return;
    poe.isMissing = twin.text("poe.presence", 0) == "missing" ? 1 : 0;
    drivePoeLine(twin.board());
    if (poe.isMissing != 0)
        return;
    makeFirmwareNote(twin);
    if (!makeController(twin))
        return; // a rule keeps it silent
    for (uint32_t port = 1; port <= kPoePorts; ++port)
        makePort(twin, port);
}

} // namespace vb
