#include "iodbg/flash/capture.h"

#include "bsp.h"
#include "iodbg/flash/boot_block.h"
#include "iodbg/flash/claim.h"
#include "iodbg/flash/os_bank.h"
#include "iodbg/flash/partition.h"
#include "language/erased_flash.h"

#include <algorithm>
#include <array>

namespace iodbg {

namespace {

constexpr char kSecretReason[] = "a secret; --with-secrets takes it along";
constexpr char kContentReason[] = "it is large; --with-flash takes it along";

/** A partition that the library knows. */
struct KnownPartition {
    uint32_t number;
    const char *device;
    bool isSecret; // holds a password
};

constexpr KnownPartition kKnownPartitions[] = {
    {0, BSP_MTD_BOOT_LOADER, false},
    {4, BSP_MTD_BOOT_SETTINGS, true},
    {12, BSP_MTD_OS_BANK_0, false},
    {14, BSP_MTD_OS_BANK_1, false},
};

constexpr const char *kBlockNames[] = {"boot.mode",          "boot.flag",
                                       "boot.baudrate",      "boot.console-password",
                                       "boot.user-password", "boot.has-password"};
constexpr const char *kSecretNames[] = {"boot.password", "boot.block"};

/** The library's own getters; they tell no failure of the partition, which has been read before. */
void captureSettings(CaptureSheet &sheet, const Bytes &block) {
    uint32_t mode = 0;
    int32_t status = ioBootModeGet(&mode);
    sheet.putNumber("boot.mode", status, mode);
    int32_t flag = 0;
    if (ioBootFlagGet(&flag) == BSP_OK)
        sheet.putNumber("boot.flag", BSP_OK, flag);
    else
        sheet.put("boot.flag", BSP_OK, "none");
    uint32_t baud = 0;
    status = ioBaudrateGet(&baud);
    sheet.putNumber("boot.baudrate", status, baud);
    uint32_t isConsole = 0, isUser = 0;
    status = ioConsolePwdValidGet(&isConsole);
    sheet.putFlag("boot.console-password", status, isConsole == BSP_PASSWORD_IN_FORCE);
    status = ioUserPwdValidGet(&isUser);
    sheet.putFlag("boot.user-password", status, isUser == BSP_PASSWORD_IN_FORCE);
    std::array<char, BSP_BOOT_PASSWORD_BUFFER> password{};
    status = ioBootPwdGet(password.data());
    sheet.putFlag("boot.has-password", status, password[0] != '\0');
    if (!sheet.wishes().hasSecrets)
        return;
    sheet.putText("boot.password", status, password.data());
    sheet.putBytes("boot.block", BSP_OK, block);
}

void captureBoot(CaptureSheet &sheet) {
    const bool hasSecrets = sheet.wishes().hasSecrets;
    try {
        captureSettings(sheet, readBootBlock());
    } catch (const Failure &failure) {
        for (const char *name : kBlockNames)
            sheet.putFailure(name, failure);
        for (const char *name : kSecretNames) {
            if (hasSecrets)
                sheet.putFailure(name, failure);
        }
    }
    for (const char *name : kSecretNames) {
        if (!hasSecrets)
            sheet.leaveOut(name, kSecretReason);
    }
}

/** What a partition holds, read once, block by block. */
class CapturedPartition {
  public:
    CapturedPartition(const FlashPartition &partition, bool isKept)
        : partition_(partition), isKept_(isKept) {}

    void read() {
        for (uint64_t offset = 0; offset < partition_.size(); offset += partition_.blockSize()) {
            if (!partition_.isBad(offset))
                readBlock(offset);
        }
    }

    std::string crcText() const { return hexNumber(crc_, kCrcDigits); }
    const language::CapturedRuns &content() const { return content_; }

  private:
    static constexpr int kCrcDigits = 8;

    void readBlock(uint64_t offset) {
        const Bytes block = partition_.read(offset, partition_.blockSize());
        crc_ = language::flashCrc32(crc_, block);
        if (isKept_)
            keep(offset, block);
    }

    /** Pages that are erased are left out; what stands together is one run. */
    void keep(uint64_t offset, ByteView block) {
        const size_t pageSize =
            std::min(std::max(partition_.pageSize(), size_t{256}), block.size());
        for (size_t at = 0; at < block.size(); at += pageSize) {
            const ByteView page = block.subspan(at, std::min(pageSize, block.size() - at));
            if (isErased(page))
                continue;
            if (content_.empty() ||
                content_.back().offset + content_.back().bytes.size() != offset + at)
                content_.push_back({offset + at, {}});
            content_.back().bytes.insert(content_.back().bytes.end(), page.begin(), page.end());
        }
    }

    const FlashPartition &partition_;
    bool isKept_;
    uint32_t crc_ = 0;
    language::CapturedRuns content_;
};

/** "3,17" */
std::string badBlocksOf(const FlashPartition &partition) {
    std::string text;
    for (uint64_t offset = 0; offset < partition.size(); offset += partition.blockSize()) {
        if (partition.isBad(offset))
            text += (text.empty() ? "" : ",") + std::to_string(offset / partition.blockSize());
    }
    return text.empty() ? "none" : text;
}

template <typename Work>
void tried(CaptureSheet &sheet, const std::string &name, Work work) {
    try {
        work();
    } catch (const Failure &failure) {
        sheet.putFailure(name, failure);
    }
}

void capturePartition(CaptureSheet &sheet, const KnownPartition &known) {
    const auto name = [&known](const char *row) { return numbered(row, known.number); };
    tried(sheet, name("flash.#.geometry"), [&] {
        const FlashPartition partition(known.device);
        sheet.put(name("flash.#.geometry"), BSP_OK, partition.geometryText());
        sheet.putFlag(name("flash.#.write-protected"), BSP_OK, partition.isWriteProtected());
        tried(sheet, name("flash.#.bad-blocks"),
              [&] { sheet.put(name("flash.#.bad-blocks"), BSP_OK, badBlocksOf(partition)); });
        if (known.isSecret && !sheet.wishes().hasSecrets) {
            sheet.leaveOut(name("flash.#.crc32"), kSecretReason);
            sheet.leaveOut(name("flash.#.content"), kSecretReason);
            return;
        }
        if (!sheet.wishes().hasFlash)
            sheet.leaveOut(name("flash.#.content"), kContentReason);
        tried(sheet, name("flash.#.crc32"), [&] {
            CapturedPartition content(partition, sheet.wishes().hasFlash);
            content.read();
            sheet.put(name("flash.#.crc32"), BSP_OK, content.crcText());
            if (sheet.wishes().hasFlash)
                sheet.put(name("flash.#.content"), BSP_OK, content.content());
        });
    });
}

void captureHeader(CaptureSheet &sheet, uint32_t bank) {
    const std::string name = numbered("image.#.header", bank);
    if (HeaderTurn::longHolder()) {
        sheet.leaveOut(name, "another iodbg writes an image");
        return;
    }
    tried(sheet, name, [&] {
        Bytes header;
        const int32_t status = readOsHeader(bank, header);
        sheet.putBytes(name, status, header);
    });
}

} // namespace

void captureFlash(CaptureSheet &sheet, const Model &) {
    captureBoot(sheet);
    uint32_t partitions = 0;
    for (const KnownPartition &known : kKnownPartitions) {
        capturePartition(sheet, known);
        sheet.reach(++partitions);
    }
    for (uint32_t bank = 0; bank < BSP_OS_BANKS; ++bank)
        captureHeader(sheet, bank);
}

} // namespace iodbg
