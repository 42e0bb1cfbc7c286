// `vboard flash`.

#include "virtual_board/words/flash_text.h"

#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/command/words.h"
#include "virtual_board/words/values.h"

#include <cstdio>
#include <memory>

namespace vboard {

namespace {

using Json = nlohmann::ordered_json;

std::string joined(const std::vector<std::string> &words, const std::string &none) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text.empty() ? none : text;
}

std::vector<std::string> asTexts(const std::vector<uint32_t> &numbers) {
    std::vector<std::string> texts;
    texts.reserve(numbers.size());
    for (const uint32_t number : numbers)
        texts.push_back(std::to_string(number));
    return texts;
}

void printSummary(const vb::FlashSummary &summary) {
    const vb::FlashGeometry &geometry = summary.geometry;
    const uint32_t pages = geometry.size / geometry.pageSize;
    std::printf("mtd%u: %s\n", summary.number, vb::flashGeometryText(geometry).c_str());
    std::printf("  erased           min %u, max %u, total %llu\n", summary.leastErases,
                summary.mostErases, static_cast<unsigned long long>(summary.totalErases));
    std::printf("  bad blocks       %s\n", joined(asTexts(summary.badBlocks), "none").c_str());
    std::printf("  write-protected  %s\n", summary.isWriteProtected ? "yes" : "no");
    std::printf("  programmed       %u of %u pages\n", summary.programmedPages, pages);
    const std::string unknown = summary.programmedPages == 0 ? "nothing" : "nothing known";
    std::printf("  holds            %s\n", joined(summary.contents, unknown).c_str());
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

void defineFlash(Command &flash) {
    struct Arguments {
        std::string folder, partition, block;
        bool asJson = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    addFolder(flash, arguments->folder);
    addJson(flash, arguments->asJson);
    flash.example("vboard flash board")
        .example("vboard flash board --json")
        .example("vboard flash board mark-bad 12 7");
    flash.does([arguments] { showFlash(arguments->folder, arguments->asJson); });

    Command &markBad = flash.command("mark-bad", "Make a block of NAND a bad one");
    markBad.argument("PARTITION", "0|4|12|14", offering("0|4|12|14", text(arguments->partition)));
    markBad.argument("BLOCK", "Number of the block, from 0", text(arguments->block));
    markBad.example("vboard flash board mark-bad 12 7");
    markBad.does(
        [arguments] { markBadBlock(arguments->folder, arguments->partition, arguments->block); });
}

} // namespace

void addFlash(Command &root) {
    root.command("flash", "Show the flash partitions and what they hold", defineFlash);
}

void showFlash(const std::string &folder, bool asJson) {
    const LockedBoard board(folder);
    Json list = Json::array();
    for (uint32_t index = 0; index < vb::kFlashPartitions; ++index) {
        const vb::FlashSummary summary = vb::flashSummary(board.folder(), index);
        if (asJson)
            list.push_back(summaryJson(summary));
        else
            printSummary(summary);
    }
    if (asJson)
        printJson(list);
}

void markBadBlock(const std::string &folder, const std::string &partition,
                  const std::string &block) {
    const auto number = vb::parseNumber(partition, UINT32_MAX);
    if (!number.has_value())
        throw vb::Refused("'" + partition +
                          "' is not the number of a flash partition; give 0, 4, "
                          "12 or 14");
    const LockedBoard board(folder);
    vb::Flash &flash = board->devices.flash[vb::flashIndexOf(*number)];
    if (flash.geometry.type == vb::FlashType::Nor)
        throw vb::Refused("partition " + partition + " is NOR; only NAND has bad blocks");
    const auto bad = vb::parseNumber(block, vb::flashBlocks(flash) - 1);
    if (!bad.has_value())
        throw vb::Refused("'" + block + "' is not a block of partition " + partition +
                          "; they are 0 to " + std::to_string(vb::flashBlocks(flash) - 1));
    flash.isBad[*bad] = 1;
    board.folder().tellOfChange();
}

} // namespace vboard
