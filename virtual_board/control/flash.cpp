// The flash of a board.

#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/json.h"
#include "virtual_board/words/flash_text.h"
#include "virtual_board/words/values.h"

namespace vboard {

namespace {

using Json = nlohmann::ordered_json;

std::vector<vb::FlashSummary> summariesOf(const vb::BoardFolder &folder) {
    const LockedBoard board(folder);
    std::vector<vb::FlashSummary> summaries;
    for (uint32_t index = 0; index < vb::kFlashPartitions; ++index)
        summaries.push_back(vb::flashSummary(folder, index));
    return summaries;
}

template <typename Things, typename TextOf>
std::string joined(const Things &things, TextOf textOf) {
    std::string text;
    for (const auto &thing : things)
        text += (text.empty() ? "" : ", ") + textOf(thing);
    return text;
}

Json summaryJson(const vb::FlashSummary &summary) {
    const vb::FlashGeometry &geometry = summary.geometry;
    return {{"partition", summary.number},
            {"type", vb::flashTypeText(geometry.type)},
            {"size", geometry.size},
            {"erase_size", geometry.eraseSize},
            {"page_size", geometry.pageSize},
            {"spare_size", geometry.spareSize},
            {"erases",
             {{"min", summary.leastErases},
              {"max", summary.mostErases},
              {"total", summary.totalErases}}},
            {"bad_blocks", summary.badBlocks},
            {"write_protected", summary.isWriteProtected},
            {"programmed_pages", summary.programmedPages},
            {"holds", summary.contents}};
}

VBoardPartition *give(const std::vector<vb::FlashSummary> &summaries) {
    struct Texts {
        std::string geometry, badBlocks, holds, json;
    };
    std::vector<Texts> texts;
    texts.reserve(summaries.size());
    std::vector<VBoardPartition> rows;
    for (const vb::FlashSummary &summary : summaries) {
        const vb::FlashGeometry &geometry = summary.geometry;
        const Texts &told = texts.emplace_back(
            Texts{vb::flashGeometryText(geometry),
                  joined(summary.badBlocks, [](uint32_t block) { return std::to_string(block); }),
                  joined(summary.contents, [](const std::string &content) { return content; }),
                  jsonText(summaryJson(summary))});
        VBoardPartition row = {};
        row.type = vb::flashTypeText(geometry.type);
        row.geometry = told.geometry.c_str();
        row.badBlocks = told.badBlocks.c_str();
        row.holds = told.holds.c_str();
        row.json = told.json.c_str();
        row.totalErases = summary.totalErases;
        row.leastErases = summary.leastErases;
        row.mostErases = summary.mostErases;
        row.number = summary.number;
        row.size = geometry.size;
        row.eraseSize = geometry.eraseSize;
        row.pageSize = geometry.pageSize;
        row.spareSize = geometry.spareSize;
        row.programmedPages = summary.programmedPages;
        row.isWriteProtected = summary.isWriteProtected ? 1 : 0;
        rows.push_back(row);
    }
    return giveList(rows,
                    {&VBoardPartition::type, &VBoardPartition::geometry,
                     &VBoardPartition::badBlocks, &VBoardPartition::holds, &VBoardPartition::json});
}

void markBadBlock(vb::Flash &flash, uint32_t partition, uint32_t block) {
    if (flash.geometry.type == vb::FlashType::Nor)
        throw vb::Refused("partition " + std::to_string(partition) +
                          " is NOR; only NAND has bad blocks");
    if (block >= vb::flashBlocks(flash))
        throw vb::Refused("'" + std::to_string(block) + "' is not a block of partition " +
                          std::to_string(partition) + "; they are 0 to " +
                          std::to_string(vb::flashBlocks(flash) - 1));
    flash.isBad[block] = 1;
}

} // namespace

} // namespace vboard

int32_t vboardFlash(VBoard *board, VBoardPartition **partitions, uint32_t *count,
                    VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(partitions, "partitions");
        vboard::require(count, "count");
        const std::vector<vb::FlashSummary> summaries = vboard::summariesOf(board->folder);
        *partitions = vboard::give(summaries);
        *count = static_cast<uint32_t>(summaries.size());
    });
}

int32_t vboardMarkBadBlock(VBoard *board, uint32_t partition, uint32_t block, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        const uint32_t index = vb::flashIndexOf(partition);
        const vboard::LockedBoard locked(board->folder);
        vboard::markBadBlock(locked->devices.flash[index], partition, block);
        locked.tellOfChange();
    });
}
