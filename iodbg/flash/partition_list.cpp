#include "iodbg/flash/partition_list.h"

#include "bsp.h"
#include "iodbg/core/device_node.h"
#include "iodbg/flash/partition.h"
#include "support/board_map.h"

#include <cstring>

namespace iodbg {

namespace {

struct NamedPartition {
    const char *device;
    const char *holds;
};

constexpr NamedPartition kNamedPartitions[] = {
    {bsp::kBootLoaderPartition, "boot loader"},
    {bsp::kBootSettingsPartition, "boot settings"},
    {bsp::kOsBank0Partition, "operating system, bank 0"},
    {bsp::kOsBank1Partition, "operating system, bank 1"},
};

Cell holdsCell(const FlashPartition &partition) {
    for (const NamedPartition &named : kNamedPartitions) {
        if (partition.isAt(named.device))
            return textCell(named.holds);
    }
    return {"not known", nullptr};
}

Cell sizeCell(uint64_t bytes) {
    return numberCell(static_cast<int64_t>(bytes));
}

/** Asks the driver block by block. */
Cell badBlocksCell(const FlashPartition &partition) {
    std::vector<int64_t> bad;
    for (uint64_t at = 0; at < partition.size(); at += partition.blockSize()) {
        if (partition.isBad(at))
            bad.push_back(static_cast<int64_t>(at / partition.blockSize()));
    }
    return listCell(bad);
}

const char *wordOf(const NamedPartition &named) {
    return std::strrchr(named.device, '/') + 1;
}

std::vector<Cell> partitionRow(const NamedPartition &named) {
    const FlashPartition partition(named.device);
    return {textCell(named.device),         textCell(named.holds),
            sizeCell(partition.size()),     sizeCell(partition.blockSize()),
            sizeCell(partition.pageSize()), sizeCell(partition.size() / partition.blockSize()),
            badBlocksCell(partition)};
}

} // namespace

void addPartitions(Report &report) {
    Table table = {"partitions",
                   {{"device", "DEVICE"},
                    {"holds", "HOLDS"},
                    {"size_bytes", "SIZE"},
                    {"block_bytes", "BLOCK"},
                    {"page_bytes", "PAGE"},
                    {"blocks", "BLOCKS"},
                    {"bad_blocks", "BAD"}},
                   {}};
    for (const NamedPartition &named : kNamedPartitions) {
        try {
            table.rows.push_back(partitionRow(named));
        } catch (const Failure &) {
            const Cell failed =
                report.tried(wordOf(named), BSP_E_OPEN, {}, tryNode(named.device).advice());
            table.rows.push_back({textCell(named.device), textCell(named.holds), failed});
            table.rows.back().resize(table.columns.size(), Cell{"", nullptr});
        }
    }
    report.parts.emplace_back(table);
}

void addPartition(Report &report, const std::string &device) {
    const FlashPartition partition(device);
    Section section = {"", "", {}};
    section.add("device", "Device", textCell(device));
    section.add("holds", "Holds", holdsCell(partition));
    section.add("type", "Kind of flash", textCell(partition.type()));
    section.add("size_bytes", "Size, bytes", sizeCell(partition.size()));
    section.add("block_bytes", "Erase block, bytes", sizeCell(partition.blockSize()));
    section.add("page_bytes", "Page, bytes", sizeCell(partition.pageSize()));
    section.add("spare_bytes", "Spare area of a page, bytes", sizeCell(partition.spareSize()));
    section.add("blocks", "Blocks", sizeCell(partition.size() / partition.blockSize()));
    section.add("bad_blocks", "Bad blocks", badBlocksCell(partition));
    section.add("starts_erased", "First block",
                flagCell(partition.isErased(0), "erased", "holds data"));
    report.parts.emplace_back(section);
}

} // namespace iodbg
