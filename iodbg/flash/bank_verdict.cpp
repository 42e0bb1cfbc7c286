#include "iodbg/flash/bank_verdict.h"

#include "bsp.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/excerpt.h"
#include "iodbg/core/failure.h"
#include "iodbg/flash/os_bank.h"
#include "language/formats/os_image.h"

#include <algorithm>

namespace iodbg {

namespace {

/** What a byte of a header block is like. Of blocks of one build most have theirs in common. */
enum class Kind { Filler, Text, Other };

Kind kindOf(uint8_t byte) {
    if (byte == 0x00 || byte == 0xFF)
        return Kind::Filler;
    return byte >= ' ' && byte <= '~' ? Kind::Text : Kind::Other;
}

bool isOfOneByte(const Bytes &header) {
    return std::all_of(header.begin(), header.end(),
                       [&header](uint8_t byte) { return byte == header[0]; });
}

/** Whether three of four bytes are of the same kind. */
bool isLike(const Bytes &header, const Bytes &other) {
    size_t same = 0;
    for (size_t i = 0; i < header.size(); ++i)
        same += kindOf(header[i]) == kindOf(other[i]) ? 1U : 0U;
    return 4 * same >= 3 * header.size();
}

/** Why the copy of the header block is not where it is read. */
std::string headerText(const FlashPartition &bank, int32_t status, const Bytes &header) {
    std::string text = "the copy of the header block, which is read at " +
                       hexNumber(formats::kOsHeaderPlace, 1) + ", ";
    if (status != BSP_OK)
        text += "cannot be read";
    else
        text += isErased(header) ? "is empty" : "differs";
    if (bank.isBad(formats::kOsHeaderPlace))
        text += "; block " + std::to_string(formats::kOsHeaderPlace / bank.blockSize()) +
                " of its place is bad";
    return text;
}

} // namespace

Content imageIn(const std::string &path, const std::string &name, const FlashPartition &bank) {
    const uint64_t size = hostFileSize(path);
    if (size < BSP_OS_IMAGE_MIN || size > BSP_OS_IMAGE_MAX)
        throw Failure::usage("'" + name + "' has " + std::to_string(size) +
                             " bytes; an operating-system image has 512 to 40894464; check that "
                             "it is the right file");
    if (bank.size() < formats::kOsBankMin)
        throw Failure(ExitCode::Board, bank.device() + " has " + std::to_string(bank.size()) +
                                           " bytes, too few for an image and the copy of its "
                                           "header block; nothing was changed");
    return {{}, path, size};
}

Bytes headerOf(const Content &image) {
    const int64_t start = formats::osHeaderStart(static_cast<int64_t>(image.size()));
    return readContent(image, static_cast<uint64_t>(start), formats::kOsHeaderSize);
}

std::string headerStart(const Bytes &header) {
    return quotedExcerpt(header);
}

bool BankHeader::isImages() const {
    return status == BSP_OK && !isErased(bytes);
}

BankHeader readBankHeader(uint32_t bank) {
    BankHeader header = {bank, BSP_E_OPEN, {}};
    if (tryNode(bankDevice(bank)).state() == NodeState::Usable)
        header.status = readOsHeader(bank, header.bytes);
    return header;
}

std::string doubtAbout(const Bytes &header, const BankHeader &staying, const BankHeader &replaced) {
    if (isOfOneByte(header))
        return "all bytes of its header block are " + hexNumber(header[0], 2);
    const BankHeader &known = staying.isImages() ? staying : replaced;
    if (!known.isImages() || isLike(header, known.bytes))
        return "";
    return "its header block, " + headerStart(header) + ", is not like that of bank " +
           std::to_string(known.bank) + ", " + headerStart(known.bytes);
}

BankVerdict judgeBank(uint32_t number, const FlashPartition &bank, const Content &content,
                      const std::function<void(uint64_t)> &reached) {
    BankVerdict verdict;
    verdict.comparison = compare(bank, content, Layout::AroundBadBlocks, reached);
    Bytes header;
    const Bytes expected = headerOf(content);
    const int32_t status = readOsHeader(number, expected, header);
    const bool isHeaderRight = status == BSP_OK && header == expected;
    if (verdict.comparison.first)
        verdict.text = differenceText(bank, content, verdict.comparison);
    if (!isHeaderRight)
        verdict.text += (verdict.text.empty() ? "" : "; ") + headerText(bank, status, header);
    const std::vector<int64_t> &bad = verdict.comparison.badBlocks;
    if (!verdict.text.empty() && !bad.empty())
        verdict.text += "; behind bad block " + listCell(bad).text + " the image lies " +
                        std::to_string(bad.size() * bank.blockSize()) +
                        " bytes further on than without";
    return verdict;
}

void addBadBlocks(Section &section, const FlashPartition &bank, const Comparison &comparison) {
    const auto count = static_cast<int64_t>(comparison.badBlocks.size());
    const int64_t shift = count * static_cast<int64_t>(bank.blockSize());
    section.add("bad_blocks", "Bad blocks below it", listCell(comparison.badBlocks));
    section.add("shifted_bytes", "Moved behind them by, bytes", numberCell(shift));
}

} // namespace iodbg
