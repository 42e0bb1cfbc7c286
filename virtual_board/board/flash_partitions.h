#pragma once
// The flash partitions that boards have, by the numbers of their devices.

#include "virtual_board/devices/board_map.h"
#include "virtual_board/devices/flash.h"

namespace vb {

constexpr uint32_t kFlashPartitions = 4;
constexpr uint32_t kFlashNumbers[kFlashPartitions] = {kBootLoaderPartition, kBootSettingsPartition,
                                                      kOsBank0Partition, kOsBank1Partition};

/** What the kernel's list of partitions calls them. */
constexpr const char *kFlashNames[kFlashPartitions] = {"boot-loader", "boot-settings", "bank-1",
                                                       "bank-2"};

/** Where a partition's state is, by its number; kFlashPartitions when there is no such partition.
 */
constexpr uint32_t flashIndex(uint32_t number) {
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        if (kFlashNumbers[index] == number)
            return index;
    }
    return kFlashPartitions;
}

// The boot loader's chip, and the banks of the operating system: 39 MiB of image, a copy of its
// header behind that, and blocks to spare for bad ones.
constexpr FlashGeometry kBootFlash = {FlashType::Nor, 1024 * 1024, 65536, 256, 0};
constexpr FlashGeometry kSettingsFlash = {FlashType::Nor, 256 * 1024, 65536, 256, 0};
constexpr FlashGeometry kBankFlash = {FlashType::Nand, 40 * 1024 * 1024 + 4 * 131072, 131072, 2048,
                                      64};
constexpr FlashGeometry kUsualFlash[kFlashPartitions] = {kBootFlash, kSettingsFlash, kBankFlash,
                                                         kBankFlash};

} // namespace vb
