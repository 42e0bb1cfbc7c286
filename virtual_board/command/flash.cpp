// `vboard flash`.

#include "language/numbers.h"
#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/words.h"

#include <cstdio>
#include <memory>

namespace vboard {

namespace {

const char *textOr(const char *text, const char *none) {
    return *text == '\0' ? none : text;
}

void printPartition(const VBoardPartition &partition) {
    const uint32_t pages = partition.size / partition.pageSize;
    std::printf("mtd%u: %s\n", partition.number, partition.geometry);
    std::printf("  erased           min %u, max %u, total %llu\n", partition.leastErases,
                partition.mostErases, static_cast<unsigned long long>(partition.totalErases));
    std::printf("  bad blocks       %s\n", textOr(partition.badBlocks, "none"));
    std::printf("  write-protected  %s\n", partition.isWriteProtected != 0 ? "yes" : "no");
    std::printf("  programmed       %u of %u pages\n", partition.programmedPages, pages);
    std::printf(
        "  holds            %s\n",
        textOr(partition.holds, partition.programmedPages == 0 ? "nothing" : "nothing known"));
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
    const Board board(folder);
    const List<VBoardPartition> partitions(
        [&](VBoardPartition **list, uint32_t *count, VBoardError *error) {
            return vboardFlash(board, list, count, error);
        });
    auto list = nlohmann::ordered_json::array();
    for (const VBoardPartition &partition : partitions) {
        if (asJson)
            list.push_back(nlohmann::ordered_json::parse(partition.json));
        else
            printPartition(partition);
    }
    if (asJson)
        printJson(list);
}

void markBadBlock(const std::string &folder, const std::string &partition,
                  const std::string &block) {
    const auto number = language::readNumber<uint32_t>(partition, 0, UINT32_MAX);
    if (!number.has_value())
        throw language::Refused("'" + partition +
                                "' is not the number of a flash partition; give 0, 4, 12 or 14");
    const Board board(folder);
    const auto bad = language::readNumber<uint32_t>(block, 0, UINT32_MAX);
    if (!bad.has_value())
        throw language::Refused("'" + block + "' is not a block of partition " + partition);
    call([&](VBoardError *error) { return vboardMarkBadBlock(board, *number, *bad, error); });
}

} // namespace vboard
