// Queries of the controller and of its ports.

#include "language/formats/byte_order.h"
#include "poe/rtl8239/commands.h"
#include "poe/rtl8239/port_pairs.h"
#include "poe/rtl8239/port_values.h"

#include <algorithm>

namespace {

using namespace bsp::rtl8239;

constexpr uint32_t kLowThresholdBase = 33000;  // millivolts
constexpr uint32_t kHighThresholdBase = 57000; // millivolts
constexpr uint8_t kNoMeaning = 0xFF;
constexpr uint8_t kStatusFault = 4;
constexpr uint8_t kModeTwoNibbles = 2;

constexpr uint8_t lowNibble(uint8_t byte) {
    return byte & 0xF;
}
constexpr uint8_t highNibble(uint8_t byte) {
    return byte >> 4;
}
constexpr bool bitOf(uint8_t byte, unsigned bit) {
    return (byte >> bit & 1) != 0;
}

/** Asks about one thing (byte 2 of the request), which the reply must name again. */
int32_t query(Frame request, uint8_t subject, Frame &reply) {
    request[2] = subject;
    if (const int32_t status = exchange(request, reply); status != BSP_OK)
        return status;
    return reply[2] == subject ? BSP_OK : BSP_E_POE_CONTENT;
}

/** Asks about a port and decodes the reply into the caller's record. */
template <typename Record, typename Decode>
int32_t queryPort(const Frame &request, int32_t port, Record *out, Decode decode) {
    if (!isPort(port) || out == nullptr)
        return BSP_E_POE_INVALID;
    Frame reply = blankFrame();
    if (const int32_t status = query(request, static_cast<uint8_t>(port), reply); status != BSP_OK)
        return status;
    *out = decode(reply);
    return BSP_OK;
}

/** Asks about the controller and decodes the reply into the caller's record. */
template <typename Record, typename Decode>
int32_t queryController(Frame request, Record *out, Decode decode) {
    if (out == nullptr)
        return BSP_E_POE_NULL;
    Frame reply = blankFrame();
    if (const int32_t status = exchange(request, reply); status != BSP_OK)
        return status;
    *out = decode(reply);
    return BSP_OK;
}

/** A value of each port of a range; lowest and highest bound what a port can answer. */
int32_t queryPorts(const Frame &blank, const char *name, int32_t firstPort, int32_t lastPort,
                   uint8_t highest, uint8_t *values, bsp::CallSite site = bsp::CallSite::here()) {
    if (!isPortRange(firstPort, lastPort) || values == nullptr)
        return BSP_E_POE_INVALID;
    uint8_t answers[BSP_POE_PORTS_MAX] = {};
    const int32_t status = forEachFrame(firstPort, lastPort, [&](int32_t port, int count) {
        Frame request = blank;
        for (int i = 0; i < count; ++i)
            storePair(request, i, port + i, kUnused);
        Frame reply = blankFrame();
        if (const int32_t result = exchange(request, reply); result != BSP_OK) {
            reportPortsFailed("get", name, port, count, site);
            return result;
        }
        for (int i = 0; i < count; ++i) {
            if (!echoesPort(reply, i, port + i) || pairValue(reply, i) > highest)
                return reportPortCheckFailed(port + i, BSP_E_POE_CONTENT, site);
            answers[port + i - firstPort] = pairValue(reply, i);
        }
        return int32_t{BSP_OK};
    });
    if (status == BSP_OK)
        std::copy(answers, answers + (lastPort - firstPort + 1), values);
    return status;
}

Rtl8239PortStatus decodePortStatus(const Frame &reply) {
    const bool isFault = reply[3] == kStatusFault;
    const bool isSplit = reply[7] == kModeTwoNibbles;
    return {.status = reply[3],
            .fault = isFault ? reply[4] : kNoMeaning,
            .classification = isFault ? kNoMeaning : highNibble(reply[4]),
            .detection = isFault ? kNoMeaning : lowNibble(reply[4]),
            .low5 = isSplit ? lowNibble(reply[5]) : reply[5],
            .high5 = isSplit ? highNibble(reply[5]) : kNoMeaning,
            .mode = reply[7]};
}

Rtl8239PortMeasurement decodeMeasurement(const Frame &reply) {
    const auto temperatureCode = static_cast<int32_t>(wordAt(reply, 7));
    return {.voltage = voltageAt(reply, 3),
            .current = wordAt(reply, 5),
            .temperature = (220 - temperatureCode) * 1250 / 1000,
            .power = powerAt(reply, 9)};
}

Rtl8239Query46 decodeQuery46(const Frame &reply) {
    Rtl8239Query46 out{};
    for (unsigned i = 0; i < 2; ++i) {
        out.flag2[i] = bitOf(reply[2], i + 1);
        out.flag3[i] = bitOf(reply[3], i + 1);
    }
    for (unsigned port = 0; port < BSP_POE_PORTS_MAX; ++port)
        out.port[port] = bitOf(reply[4 + port / 8], port % 8);
    return out;
}

} // namespace

int32_t rtl8239CmdPortDetTriggerGet(int32_t firstPort, int32_t lastPort, uint8_t *values) {
    constexpr uint8_t kHighestAnswer = 0xFE;
    return queryPorts(requestFrame(kPortDetTrigger, kTriggerGet), "det trigger", firstPort,
                      lastPort, kHighestAnswer, values);
}

int32_t rtl8239CmdPortFuncModeGet(int32_t firstPort, int32_t lastPort, uint8_t *values) {
    constexpr uint8_t kHighestAnswer = 0xFF;
    return queryPorts(requestFrame(kPortFuncModeQuery), "function mode", firstPort, lastPort,
                      kHighestAnswer, values);
}

int32_t rtl8239CmdPortStatusGet(int32_t port, Rtl8239PortStatus *out) {
    return queryPort(requestFrame(kPortStatus), port, out, decodePortStatus);
}

int32_t rtl8239CmdPortMeasurementGet(int32_t port, Rtl8239PortMeasurement *out) {
    return queryPort(requestFrame(kPortMeasurement), port, out, decodeMeasurement);
}

int32_t rtl8239CmdQuery45Get(int32_t port, int32_t flag, Rtl8239Query45 *out) {
    Frame request = requestFrame(kQuery45);
    request[3] = asFlag(flag);
    return queryPort(request, port, out, [](const Frame &reply) {
        Rtl8239Query45 record{};
        std::copy_n(reply.begin() + 3, sizeof(record.byte), record.byte);
        return record;
    });
}

int32_t rtl8239CmdQuery48Get(int32_t port, Rtl8239PortConfig *out) {
    return queryPort(requestFrame(kQuery48), port, out, [](const Frame &reply) {
        return Rtl8239PortConfig{.enable = reply[3],
                                 .funcMode = reply[4],
                                 .byte5 = reply[5],
                                 .byte7 = reply[7],
                                 .byte8 = reply[8]};
    });
}

int32_t rtl8239CmdQuery49Get(int32_t port, Rtl8239PortPowerConfig *out) {
    return queryPort(requestFrame(kQuery49), port, out, [](const Frame &reply) {
        return Rtl8239PortPowerConfig{.inrushMode = reply[3],
                                      .byte4 = reply[4],
                                      .priority = reply[kPriorityAt],
                                      .byte7 = reply[7],
                                      .byte8 = reply[8],
                                      .byte9 = reply[9],
                                      .powerLimit = reply[5] * kPowerLimitUnit};
    });
}

int32_t rtl8239CmdQuery4EGet(int32_t port, Rtl8239Query4E *out) {
    return queryPort(requestFrame(kQuery4E), port, out, [](const Frame &reply) {
        Rtl8239Query4E record{};
        std::copy_n(reply.begin() + 3, sizeof(record.byte), record.byte);
        return record;
    });
}

int32_t rtl8239CmdQuery4FGet(int32_t port, Rtl8239Query4F *out) {
    return queryPort(requestFrame(kQuery4F), port, out, [](const Frame &reply) {
        return Rtl8239Query4F{
            .pair = {{voltageAt(reply, 3), static_cast<uint16_t>(wordAt(reply, 5))},
                     {voltageAt(reply, 7), static_cast<uint16_t>(wordAt(reply, 9))}}};
    });
}

int32_t rtl8239CmdSystemInfoGet(Rtl8239SystemInfo *out) {
    return queryController(requestFrame(kSystemInfo), out, [](const Frame &reply) {
        return Rtl8239SystemInfo{.byte3 = reply[3],
                                 .byte4 = reply[4],
                                 .word5 = static_cast<uint16_t>(wordAt(reply, 5)),
                                 .appVersion = static_cast<uint16_t>(reply[7] << 8 | reply[10]),
                                 .byte8 = reply[8],
                                 .flag0 = bitOf(reply[9], 0),
                                 .flag1 = bitOf(reply[9], 1),
                                 .flag2 = bitOf(reply[9], 2)};
    });
}

int32_t rtl8239CmdQuery41Get(Rtl8239PowerTotals *out) {
    return queryController(requestFrame(kQuery41), out, [](const Frame &reply) {
        return Rtl8239PowerTotals{.power2 = powerAt(reply, 2),
                                  .power7 = powerAt(reply, 7),
                                  .power4 = powerAt(reply, 4),
                                  .byte6 = reply[6]};
    });
}

int32_t rtl8239CmdQuery46Get(int32_t flag, Rtl8239Query46 *out) {
    Frame request = requestFrame(kQuery46);
    request[2] = asFlag(flag);
    return queryController(request, out, decodeQuery46);
}

int32_t rtl8239CmdGlobalParamGet(Rtl8239GlobalParam *out) {
    return queryController(requestFrame(kGlobalParamQuery), out, [](const Frame &reply) {
        return Rtl8239GlobalParam{.lowThreshold = toMillivolts(reply[2]) + kLowThresholdBase,
                                  .highThreshold = toMillivolts(reply[7]) + kHighThresholdBase,
                                  .byte3 = reply[3],
                                  .byte8 = reply[8]};
    });
}

int32_t rtl8239CmdGlobalPowerSourceGet(int32_t bank, Rtl8239PowerSource *out) {
    if (!isWithin(bank, 0, 7))
        return BSP_E_POE_INVALID;
    const Frame request = requestFrame(kGlobalPowerSourceQuery, static_cast<uint8_t>(bank));
    return queryController(request, out, [](const Frame &reply) {
        return Rtl8239PowerSource{
            .byte2 = reply[2], .power = powerAt(reply, 3), .reservePower = powerAt(reply, 5)};
    });
}

int32_t rtl8239CmdQuery4CGet(Rtl8239Query4C *out) {
    constexpr uint8_t kFirstPart = 0;
    constexpr uint8_t kSecondPart = 8;
    if (out == nullptr)
        return BSP_E_POE_NULL;
    Frame first = blankFrame();
    if (const int32_t status = query(requestFrame(kQuery4C), kFirstPart, first); status != BSP_OK)
        return status;
    Frame second = blankFrame();
    if (const int32_t status = query(requestFrame(kQuery4C), kSecondPart, second); status != BSP_OK)
        return status;
    std::copy_n(first.begin() + 3, 8, out->byte);
    std::copy_n(second.begin() + 3, 4, out->byte + 8);
    return BSP_OK;
}

int32_t rtl8239CmdQuery50Get(Rtl8239Query50 *out) {
    return queryController(requestFrame(kQuery50), out, [](const Frame &reply) {
        Rtl8239Query50 record{};
        for (size_t i = 0; i < sizeof(record.value); ++i) {
            const uint8_t byte = reply[2 + i / 2];
            record.value[i] = i % 2 == 0 ? highNibble(byte) : lowNibble(byte);
        }
        return record;
    });
}

int32_t rtl8239CmdDebugChipRegSet(const Rtl8239ChipRegister *chipRegister) {
    constexpr size_t kStatusAt = 7;
    if (chipRegister == nullptr)
        return BSP_E_POE_NULL;
    Frame request = requestFrame(kDebugChipRegWrite);
    request[2] = chipRegister->selector;
    formats::storeBe32(&request[3], chipRegister->address);
    formats::storeBe32(&request[7], chipRegister->value);
    return command(request, kStatusAt);
}

int32_t rtl8239CmdDebugChipRegGet(Rtl8239ChipRegister *chipRegister) {
    if (chipRegister == nullptr)
        return BSP_E_POE_NULL;
    Frame request = requestFrame(kDebugChipRegRead);
    request[2] = chipRegister->selector;
    formats::storeBe32(&request[3], chipRegister->address);
    return queryController(request, &chipRegister->value,
                           [](const Frame &reply) { return formats::loadBe32(&reply[7]); });
}
