#pragma once
// Whether a bank holds an operating-system image, and what speaks against a file that is to be one.

#include "iodbg/core/report.h"
#include "iodbg/flash/comparison.h"

#include <cstdint>
#include <functional>
#include <string>

namespace iodbg {

constexpr uint32_t kImageBytesPerMsRead = 8192; // at most, roughly

/** An image that is no larger than a bank takes; throws for other files. */
Content imageIn(const std::string &path, const std::string &name, const FlashPartition &bank);

/** The image's own header block, its last bytes. */
Bytes headerOf(const Content &image);

/** Enough of a header block to tell images apart: its format is the image build's. */
std::string headerStart(const Bytes &header);

/** A bank's header block, as far as it can be read. */
struct BankHeader {
    uint32_t bank;
    int32_t status;
    Bytes bytes;

    bool isImages() const;
};
BankHeader readBankHeader(uint32_t bank);

/**
 * Why a file is hardly an image, by its header block beside that of the bank that stays, or else of
 * the one that is replaced; empty when nothing speaks against it.
 */
std::string doubtAbout(const Bytes &header, const BankHeader &staying, const BankHeader &replaced);

/** What a bank holds beside what it should. */
struct BankVerdict {
    Comparison comparison;
    std::string text; // what is wrong, or nothing
};

/** Compares a bank with an image. reached is told how many bytes have been compared. */
BankVerdict judgeBank(uint32_t number, const FlashPartition &bank, const Content &content,
                      const std::function<void(uint64_t)> &reached);

/** The bad blocks over which an image lies. */
void addBadBlocks(Section &section, const FlashPartition &bank, const Comparison &comparison);

} // namespace iodbg
