// Power supplies: how many, which, in what state, and their live readings.

#include "bsp.h"
#include "chassis/linear.h"
#include "chassis/pmbus.h"
#include "identity/board_catalogue.h"
#include "identity/reported_steps.h"
#include "language/formats/byte_order.h"
#include "support/board_map.h"
#include "support/message.h"
#include "support/register_bits.h"

#include <unistd.h>

namespace {

using bsp::CallSite;
using bsp::hasBit;

constexpr int kReadAttempts = 3;
constexpr useconds_t kRejectedPause = 5000;
constexpr int kVoutExponent = -9; // VOUT_MODE 0x17

constexpr bool isFixedSupply(int32_t index) {
    return index >= 1 && index <= BSP_FIXED_SUPPLIES;
}

/** A supply's line, where the map has that of supply 1. The number comes from the caller, who may
 * give any: the sum is wider than it. */
constexpr int64_t bitOf(uint32_t firstBit, int32_t index) {
    return int64_t{firstBit} + index - 1;
}

int32_t typeFromRecord(int32_t index, int32_t *type, CallSite site) {
    BspDevinfo record{};
    if (const int32_t status = bsp::readBoardRecord(&record, site); status != BSP_OK)
        return status;
    const int32_t count = record.supplyCount;
    if (index < 1 || index > count || index > BSP_SUPPLIES_MAX) {
        bsp::report(site, "power index %d > powerNum %d\n", index, count);
        return BSP_E_INVALID;
    }
    *type = record.supplyType[index - 1];
    return BSP_OK;
}

int32_t typeFromLines(int32_t index, int32_t *type) {
    uint16_t lines = 0;
    if (const int32_t status = bspCpldGet(bsp::kCpldSupplies, &lines); status != BSP_OK)
        return status;
    // The line that tells of presence is the one that makes the type unreadable: callers ask for
    // the type of a fixed supply while it is clear.
    if (hasBit(lines, bitOf(bsp::kSupplyPresence.bit, index)))
        return BSP_E_FAILED;
    *type =
        hasBit(lines, bitOf(bsp::kSupplyType.bit, index)) ? BSP_SUPPLY_TYPE_1 : BSP_SUPPLY_TYPE_2;
    return BSP_OK;
}

/** The status that a supply's lines make. */
int32_t statusOf(const bsp::Supplies &supplies, uint16_t lines, int32_t index) {
    const int linesOfSupply = lines >> bitOf(bsp::kSupplyType.bit, index);
    const bsp::SupplyRule *rule = supplies.status;
    while ((linesOfSupply & rule->lines) != rule->lines)
        ++rule;
    return rule->status;
}

/** What a live reading is, and where it goes. */
struct Reading {
    uint8_t command;
    int32_t BspPowerInfo::*field;
    int32_t (*convert)(uint16_t word);
};

int32_t outputVoltage(uint16_t word) {
    return bsp::linear16ToThousandths(word, kVoutExponent);
}
int32_t degrees(uint16_t word) {
    return bsp::linear11ToThousandths(word) / 1000;
}

constexpr Reading kReadings[] = {
    {bsp::pmbus::kReadVin, &BspPowerInfo::inputVoltage, bsp::linear11ToThousandths},
    {bsp::pmbus::kReadIin, &BspPowerInfo::inputCurrent, bsp::linear11ToThousandths},
    {bsp::pmbus::kReadPin, &BspPowerInfo::inputPower, bsp::linear11ToThousandths},
    {bsp::pmbus::kReadVout, &BspPowerInfo::outputVoltage, outputVoltage},
    {bsp::pmbus::kReadIout, &BspPowerInfo::outputCurrent, bsp::linear11ToThousandths},
    {bsp::pmbus::kReadPout, &BspPowerInfo::outputPower, bsp::linear11ToThousandths},
    {bsp::pmbus::kReadTemperature1, &BspPowerInfo::temperature1, degrees},
    {bsp::pmbus::kReadTemperature2, &BspPowerInfo::temperature2, degrees},
    {bsp::pmbus::kReadTemperature3, &BspPowerInfo::temperature3, degrees},
};

/**
 * Takes one reading into its field. A supply that is busy answers 0xFF in the high byte; one that
 * does so on every attempt leaves the field as it is.
 */
int32_t takeReading(int32_t index, const Reading &reading, BspPowerInfo *info) {
    for (int attempt = 1; attempt <= kReadAttempts; ++attempt) {
        uint8_t word[2] = {};
        const int32_t status = bsp_power_info_read(index, reading.command, sizeof(word), word);
        if (status == BSP_OK && word[1] != 0xFF) {
            info->*reading.field = reading.convert(formats::loadLe16(word));
            return BSP_OK;
        }
        if (status != BSP_OK && attempt == kReadAttempts)
            return BSP_E_FAILED;
        usleep(kRejectedPause);
    }
    return BSP_OK;
}

} // namespace

int32_t bspPowerNumGet(int32_t *out) {
    uint32_t devId = 0;
    if (const int32_t status = bsp::readDeviceId(&devId); status != BSP_OK)
        return status;
    if (const int32_t count = bsp::boardModel(devId).supplies.count; count != 0) {
        *out = count;
        return BSP_OK;
    }
    BspDevinfo record{};
    if (const int32_t status = bsp::readBoardRecord(&record); status != BSP_OK)
        return status;
    // The count is stored even when it is refused, so that the caller sees the bad value.
    *out = record.supplyCount;
    if (*out > BSP_SUPPLIES_MAX) {
        bsp::report(CallSite::here(), "power num %d > max %d\n", *out, BSP_SUPPLIES_MAX);
        return BSP_E_INVALID;
    }
    return BSP_OK;
}

int32_t bspPowerPresentGet(int32_t index, int32_t *out) {
    uint32_t devId = 0;
    if (const int32_t status = bsp::readDeviceId(&devId); status != BSP_OK)
        return status;
    if (!isFixedSupply(index))
        return BSP_E_INVALID;
    const bsp::Supplies &supplies = bsp::boardModel(devId).supplies;
    uint16_t lines = 0;
    if (const int32_t status = bspCpldGet(supplies.presenceRegister, &lines); status != BSP_OK)
        return status;
    *out = hasBit(lines, bitOf(supplies.presenceBit, index)) != supplies.isPresenceActiveLow;
    return BSP_OK;
}

int32_t bspPowerTypeGet(int32_t index, int32_t *out) {
    if (out == nullptr)
        return BSP_E_NULL;
    uint32_t devId = 0;
    if (const int32_t status = bsp::readDeviceId(&devId); status != BSP_OK)
        return status;
    return bsp::boardModel(devId).supplies.count != 0
               ? typeFromLines(index, out)
               : typeFromRecord(index, out, CallSite::here());
}

int32_t bspPowerStatusGet(int32_t index, int32_t *out) {
    uint32_t devId = 0;
    if (const int32_t status = bsp::readDeviceId(&devId); status != BSP_OK)
        return status;
    int32_t count = 0;
    if (const int32_t status = bspPowerNumGet(&count); status != BSP_OK)
        return status;
    if (index < 1 || index > count)
        return BSP_E_INVALID;
    const bsp::Supplies &supplies = bsp::boardModel(devId).supplies;
    uint16_t lines = 0;
    if (supplies.count != 0) {
        if (const int32_t status = bspCpldGet(bsp::kCpldSupplies, &lines); status != BSP_OK)
            return status;
    }
    *out = statusOf(supplies, lines, index);
    return BSP_OK;
}

int32_t bspPowerInfoGet(int32_t index, BspPowerInfo *info) {
    *info = BspPowerInfo{};
    if (const int32_t status = bspPowerTypeGet(index, &info->type); status != BSP_OK) {
        bsp::report(CallSite::here(), "get power type failed, ret=%d\n", status);
        return status;
    }
    uint32_t devId = 0;
    if (const int32_t status = bsp::readDeviceId(&devId); status != BSP_OK)
        return status;
    if (!bsp::boardModel(devId).supplies.haveBus)
        return BSP_OK;
    for (const Reading &reading : kReadings) {
        if (const int32_t status = takeReading(index, reading, info); status != BSP_OK)
            return status;
    }
    return BSP_OK;
}
