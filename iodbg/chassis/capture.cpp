#include "iodbg/chassis/capture.h"

#include "bsp.h"
#include "iodbg/chassis/calendar.h"
#include "iodbg/chassis/fans.h"
#include "iodbg/chassis/supplies.h"
#include "iodbg/core/library_calls.h"
#include "support/board_map.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace iodbg {

namespace {

/** A live reading of a supply, in the order in which the library takes them. */
struct PmbusReading {
    uint8_t command;
    const char *name;
    int32_t BspPowerInfo::*field;
};

constexpr PmbusReading kPmbusReadings[] = {
    {0x88, "supply.#.input-voltage", &BspPowerInfo::inputVoltage},
    {0x89, "supply.#.input-current", &BspPowerInfo::inputCurrent},
    {0x97, "supply.#.input-power", &BspPowerInfo::inputPower},
    {0x8B, "supply.#.output-voltage", &BspPowerInfo::outputVoltage},
    {0x8C, "supply.#.output-current", &BspPowerInfo::outputCurrent},
    {0x96, "supply.#.output-power", &BspPowerInfo::outputPower},
    {0x8D, "supply.#.temperature1", &BspPowerInfo::temperature1},
    {0x8E, "supply.#.temperature2", &BspPowerInfo::temperature2},
    {0x8F, "supply.#.temperature3", &BspPowerInfo::temperature3},
};

/** The words that a supply answers while the library takes its readings. */
class PmbusWords {
  public:
    explicit PmbusWords(uint32_t supply)
        : place_(bsp::kSupplyPmbus.bus | (bsp::kSupplyPmbus.channel + supply - 1) << 8),
          watch_([this](unsigned long request, const void *argument) { see(request, argument); }) {}

    /** Nothing when the supply did not answer the command. */
    std::optional<Bytes> of(uint8_t command) const {
        const auto found = words_.find(command);
        return found == words_.end() ? std::nullopt : std::optional(found->second);
    }

  private:
    void see(unsigned long request, const void *argument) {
        constexpr uint64_t kWordSize = 2;
        if (request != BSP_REQ_I2C_READ || argument == nullptr)
            return;
        const auto &record = *static_cast<const BspIoctlRecord *>(argument);
        const auto *bytes =
            reinterpret_cast<const uint8_t *>(static_cast<uintptr_t>(record.slot[4]));
        const bool isWord = record.slot[0] == place_ &&
                            record.slot[1] == bsp::kSupplyPmbus.device &&
                            record.slot[5] == kWordSize;
        if (isWord && record.result == BSP_OK && bytes != nullptr)
            words_[record.slot[2]] = Bytes(bytes, bytes + kWordSize);
    }

    uint64_t place_;
    std::map<uint64_t, Bytes> words_;
    RequestWatch watch_;
};

void captureReadings(CaptureSheet &sheet, uint32_t supply) {
    BspPowerInfo info;
    const PmbusWords words(supply);
    const int32_t status = ioPowerInfoGet(static_cast<int32_t>(supply), &info);
    for (const PmbusReading &reading : kPmbusReadings) {
        const std::optional<Bytes> word = words.of(reading.command);
        // The readings before one that failed are there.
        const bool isThere = status == BSP_OK || word.has_value();
        sheet.putNumber(numbered(reading.name, supply), isThere ? int32_t{BSP_OK} : status,
                        info.*reading.field, word);
    }
}

void captureMemory(CaptureSheet &sheet, uint32_t supply) {
    constexpr size_t kSize = BSP_EEPROM_BLOCK_SIZE;
    Bytes eeprom(kSize);
    const int32_t status = bspPowerEepromRead(supply, 0, eeprom.data(), kSize);
    sheet.putBytes(numbered("eeprom.supply#", supply), status, eeprom);
    const ByteView record = ByteView(eeprom).subspan(BSP_SUPPLY_RECORD_OFFSET);
    sheet.put(numbered("supply.#.product-name", supply), status,
              fieldText(record.first(sizeof(BspSupplyRecord::productData2))));
    sheet.put(numbered("supply.#.serial", supply), status,
              fieldText(record.subspan(offsetof(BspSupplyRecord, serial),
                                       sizeof(BspSupplyRecord::serial))));
}

void captureType(CaptureSheet &sheet, uint32_t supply) {
    int32_t type = 0;
    const int32_t status = bspPowerTypeGet(static_cast<int32_t>(supply), &type);
    sheet.putNumber(numbered("supply.#.type", supply), status, type);
}

/** One that is not plugged is asked nothing more. */
void captureSupply(CaptureSheet &sheet, const Model &model, uint32_t supply) {
    const auto index = static_cast<int32_t>(supply);
    bool isPlugged = false;
    const int32_t status = readPlugged(model, index, isPlugged);
    sheet.putFlag(numbered("supply.#.present", supply), status, isPlugged);
    if (model.hasSupplyLines) {
        int32_t code = 0;
        const int32_t codeStatus = ioPowerStatusGet(index, &code);
        sheet.putNumber(numbered("supply.#.status", supply), codeStatus, code);
    }
    if (status == BSP_OK && !isPlugged)
        return;
    captureType(sheet, supply);
    if (model.hasSupplyReadings) {
        captureReadings(sheet, supply);
        captureMemory(sheet, supply);
    }
}

const char *clockWord(const ChipTime &chip) {
    if (chip.isLost)
        return "lost";
    return isDate(chip.time) ? "good" : "invalid";
}

} // namespace

void captureTemperature(CaptureSheet &sheet, const Model &) {
    int32_t celsius = 0;
    const int32_t status = ioTemperGet(0, &celsius);
    sheet.putNumber("temperature.sensor", status, celsius);
}

void captureSupplies(CaptureSheet &sheet, const Model &model) {
    int32_t count = 0;
    const int32_t status = ioPowerNumGet(&count);
    sheet.putNumber("supply.count", status, count);
    for (uint32_t supply = 1; supply <= BSP_FIXED_SUPPLIES; ++supply)
        captureSupply(sheet, model, supply);
    if (status != BSP_OK)
        return;
    // Of more than these a product record names types alone.
    for (uint32_t supply = BSP_FIXED_SUPPLIES + 1; supply <= static_cast<uint32_t>(count); ++supply)
        captureType(sheet, supply);
}

void captureFans(CaptureSheet &sheet, const Model &model) {
    uint32_t level = 0;
    const int32_t levelStatus = readFanLevel(level);
    sheet.putNumber("fan.level", levelStatus, level);
    for (uint32_t fan = 1; fan <= model.fans; ++fan) {
        if (model.fanPresence == FanPresence::OwnLine) {
            uint32_t presence = BSP_FAN_MISSING;
            const int32_t status = ioFanPresentGet(static_cast<int32_t>(fan), &presence);
            sheet.putFlag(numbered("fan.#.present", fan), status, presence == BSP_FAN_PRESENT);
        }
        uint32_t speed = 0;
        const int32_t status = ioFanSpeedGet(fan, &speed);
        sheet.putNumber(numbered("fan.#.speed", fan), status, speed);
    }
}

void captureClock(CaptureSheet &sheet, const Model &model) {
    using bsp::kClockChip;
    constexpr uint32_t kRegisters[] = {2, 3, 4, 5, 7, 8};
    if (!model.hasClock)
        return;
    ChipTime chip;
    const int32_t status = readChipTime(chip);
    sheet.put("rtc.time", status, calendarText(chip.time));
    sheet.put("rtc.state", status, clockWord(chip));
    Bytes registers(std::size(kRegisters));
    int32_t rawStatus = BSP_OK;
    for (size_t i = 0; i < registers.size() && rawStatus == BSP_OK; ++i)
        rawStatus = bspI2cRead(kClockChip.bus, kClockChip.channel, kClockChip.device, kRegisters[i],
                               1, &registers[i], 1);
    sheet.putBytes("rtc.registers", rawStatus, registers);
}

} // namespace iodbg
