#include "tests/kernel_driver/chip.h"

#include "tests/kernel_driver/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <mtd/mtd-user.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/** The partitions' sizes in blocks, in the order of their numbers. Those without a use are small.
 */
std::vector<uint32_t> partitionBlocks(uint32_t secondBankBlocks) {
    return {kBootBlocks, 1, 1,           1, kSettingsBlocks, 1, 1, 1, 1, 1,
            1,           1, kBankBlocks, 1, secondBankBlocks};
}

/** The chip's block in which a partition starts. */
uint32_t firstBlock(uint32_t partition) {
    const std::vector<uint32_t> blocks = partitionBlocks(kBankBlocks);
    uint32_t first = 0;
    for (uint32_t i = 0; i < partition; ++i)
        first += blocks[i];
    return first;
}

std::string chipBlock(uint32_t partition, uint32_t block) {
    return std::to_string(firstBlock(partition) + block);
}

std::string chipPage(uint32_t partition, uint32_t page) {
    return std::to_string(firstBlock(partition) * (kBlockSize / kPageSize) + page);
}

/** Ends the run: without the simulated chip no check means anything. */
void runCommand(const std::string &command) {
    if (std::system(command.c_str()) == 0)
        return;
    expectSame(command, "done", "failed");
    std::exit(EXIT_FAILURE);
}

/** An open partition. */
class Device {
  public:
    Device(uint32_t partition, int flags) : fd_(open(deviceOf(partition).c_str(), flags)) {}
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;
    ~Device() { close(fd_); }

    int get() const { return fd_; }

  private:
    int fd_;
};

constexpr off_t position(uint32_t offset) {
    return static_cast<off_t>(offset);
}

} // namespace

ChipFault badBlock(uint32_t partition, uint32_t block) {
    return {"badblocks", chipBlock(partition, block)};
}

ChipFault weakBlock(uint32_t partition, uint32_t block, uint32_t erases) {
    return {"weakblocks", chipBlock(partition, block) + ":" + std::to_string(erases)};
}

ChipFault weakPage(uint32_t partition, uint32_t page, uint32_t writes) {
    return {"weakpages", chipPage(partition, page) + ":" + std::to_string(writes)};
}

ChipFault lostPage(uint32_t partition, uint32_t page, uint32_t reads) {
    return {"gravepages", chipPage(partition, page) + ":" + std::to_string(reads)};
}

ChipFault slowness() {
    return {"do_delays", "1"};
}

Chip::Chip(const std::vector<ChipFault> &faults, uint32_t secondBankBlocks) {
    std::map<std::string, std::string> parameters;
    const auto add = [&parameters](const std::string &name, const std::string &value) {
        parameters[name] += (parameters[name].empty() ? "" : ",") + value;
    };
    add("id_bytes", "0x20,0xaa,0x00,0x15"); // 256 MiB in pages of 2 KiB and blocks of 128 KiB
    for (const uint32_t blocks : partitionBlocks(secondBankBlocks))
        add("parts", std::to_string(blocks));
    for (const ChipFault &fault : faults)
        add(fault.parameter, fault.value);
    std::string command = "insmod /lib/modules/nandsim.ko";
    for (const auto &[name, value] : parameters)
        command += " " + name + "=" + value;
    runCommand(command);
}

Chip::~Chip() {
    runCommand("rmmod nandsim");
}

std::string deviceOf(uint32_t partition) {
    return "/dev/mtd" + std::to_string(partition);
}

int writeDevice(uint32_t partition, uint32_t offset, const Bytes &data) {
    const Device device(partition, O_RDWR);
    const ssize_t count = pwrite(device.get(), data.data(), data.size(), position(offset));
    return count == static_cast<ssize_t>(data.size()) ? 0 : errno;
}

int eraseBlock(uint32_t partition, uint32_t block) {
    const Device device(partition, O_RDWR);
    erase_info_user range = {block * kBlockSize, kBlockSize};
    return ioctl(device.get(), MEMERASE, &range) == 0 ? 0 : errno;
}

Bytes readCells(uint32_t partition, uint32_t offset, uint32_t length) {
    const Device device(partition, O_RDONLY);
    Bytes bytes(length);
    if (ioctl(device.get(), MTDFILEMODE, MTD_FILE_MODE_RAW) != 0 ||
        pread(device.get(), bytes.data(), length, position(offset)) != static_cast<ssize_t>(length))
        return {};
    return bytes;
}

uint32_t errorsRead(uint32_t partition, uint32_t offset) {
    const Device device(partition, O_RDONLY);
    mtd_ecc_stats before = {};
    mtd_ecc_stats after = {};
    Bytes page(kPageSize);
    if (ioctl(device.get(), ECCGETSTATS, &before) != 0 ||
        pread(device.get(), page.data(), kPageSize, position(offset)) != kPageSize ||
        ioctl(device.get(), ECCGETSTATS, &after) != 0)
        return UINT32_MAX;
    return after.failed - before.failed;
}

void fillPartition(uint32_t partition, uint32_t blocks) {
    constexpr uint32_t kSeed = 99;
    expectSame(deviceOf(partition) + " is filled", 0,
               writeDevice(partition, 0, patterned(size_t{blocks} * kBlockSize, kSeed)));
}
