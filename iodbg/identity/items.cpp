#include "iodbg/identity/items.h"

#include "bsp.h"
#include "iodbg/core/format.h"

#include <array>
#include <cstring>

namespace iodbg {

namespace {

template <size_t Size>
ByteView viewOf(const std::array<char, Size> &text) {
    return {reinterpret_cast<const uint8_t *>(text.data()), text.size()};
}

int32_t readDeviceId(Cell &cell) {
    uint32_t id = 0;
    const int32_t status = ioDevIdGet(&id);
    cell = hexCell(id, 4);
    return status;
}

int32_t readSerialVersion(Cell &cell) {
    uint32_t version = 0;
    const int32_t status = ioDevSerialVerGet(&version);
    cell = hexCell(version, 2);
    return status;
}

int32_t readSerialNumber(Cell &cell) {
    std::array<char, BSP_SERIAL_NUMBER_BUFFER + 1> serial{};
    uint32_t length = 0;
    const int32_t status = ioSerialNumGet(serial.data(), &length);
    cell = textCell(fieldText(viewOf(serial)));
    return status;
}

template <uint32_t Index>
int32_t readMac(Cell &cell) {
    std::array<uint8_t, BSP_MAC_LENGTH> mac{};
    const int32_t status = ioMacAddrGet(Index, mac.data());
    cell = textCell(macText(mac));
    return status;
}

constexpr Item kVersions[] = {
    {"device_id", "Model (device id)", readDeviceId},
    {"device_serial_version", "Device serial version", readSerialVersion},
    {"hardware_version", "Hardware version", readText<ioHwVersionGet>},
    {"cpld_version", "CPLD version", readText<ioCpldVersionGet>},
    {"fpga_version", "FPGA version", readText<ioFpgaVersionGet>},
    {"boot_loader_version", "Boot-loader version", readBootLoaderVersion},
};
constexpr Item kSerial[] = {{"serial_number", "Serial number", readSerialNumber}};
constexpr Item kMacs[] = {
    {"base_mac", "Base MAC (stored)", readMac<BSP_MAC_BASE>},
    {"board_mac", "Board MAC (base, last byte + 1)", readMac<BSP_MAC_ABOVE_BASE>},
};

} // namespace

int32_t readBootLoaderVersion(Cell &cell) {
    std::array<char, BSP_BOOT_VERSION_LENGTH + 1> version{};
    const int32_t status = ioBiosVersionGet(version.data());
    // Six bytes always come; a shorter version ends where the next word of the command line begins.
    version[std::strcspn(version.data(), " \t\n")] = '\0';
    const std::string text = fieldText(viewOf(version));
    cell = {text.empty() ? "not on the kernel's command line" : text, text};
    return status;
}

const std::span<const Item> kVersionItems = kVersions;
const std::span<const Item> kSerialItems = kSerial;
const std::span<const Item> kMacItems = kMacs;

} // namespace iodbg
