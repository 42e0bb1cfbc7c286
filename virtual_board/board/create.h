#pragma once
// Making a board's folder.

#include "virtual_board/board/folder.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace vb {

/** What a new board is made with. */
struct BoardOptions {
    uint32_t devId = 0;
    Pace pace;
    std::string serial = "VB00000001";
    std::array<uint8_t, 6> mac = {0x02, 0x00, 0x5E, 0x10, 0x00, 0x00};
    std::array<FlashGeometry, kFlashPartitions> flash = {kUsualFlash[0], kUsualFlash[1],
                                                         kUsualFlash[2], kUsualFlash[3]};
    FlashTiming flashTiming = FlashTiming::Off;
    std::string commandLine = "console=ttyS0,115200 bootver=1.2.3 root=/dev/mtdblock12";
};

/** Flash takes its time where time passes by itself, unless it is told. */
constexpr FlashTiming usualFlashTiming(TimeMode time) {
    const bool passes = time == TimeMode::Real || time == TimeMode::Scaled;
    return passes ? FlashTiming::Usual : FlashTiming::Off;
}

// What is wrong with a text that a board shall keep; empty when nothing is.
std::string serialProblem(const std::string &serial);
std::string commandLineProblem(const std::string &commandLine);

/** What /proc/mtd lists. */
std::string partitionList(const std::array<FlashGeometry, kFlashPartitions> &geometries);

/**
 * Makes a board in a folder that does not exist yet, or is empty. The folder appears with the whole
 * board in it or not at all. False, with the reason, when it cannot be made.
 */
bool createBoard(const std::string &path, const BoardOptions &options, FolderError &error);

/** The same of a board that is changed before it appears. What that throws is passed on. */
bool createBoard(const std::string &path, const BoardOptions &options,
                 const std::function<void(const BoardFolder &)> &furnish, FolderError &error);

} // namespace vb
