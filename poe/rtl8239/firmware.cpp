// Firmware upgrade of the controller. Its loader takes the image in blocks of 32 bytes, addressed
// by bank and offset.

#include "poe/rtl8239/firmware.h"

#include "bsp.h"
#include "language/formats/byte_order.h"
#include "poe/lock_file.h"
#include "poe/rtl8239/commands.h"
#include "poe/rtl8239/exchange.h"
#include "poe/rtl8239/timing.h"
#include "poe/rtl8239/transport.h"
#include "support/file_size.h"
#include "support/owned.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace {

using namespace bsp::rtl8239;

constexpr size_t kImageBuffer = 0x40000;

using ImageBuffer = std::unique_ptr<uint8_t, bsp::FreeMemory>;

int32_t jump(Misc target, bool isEchoChecked, bsp::CallSite site = bsp::CallSite::here()) {
    Frame request = requestFrame(kMisc, target);
    request[kChecksumAt] = rtl8239CmdChecksum(request.data(), kChecksumAt);
    Frame reply = blankFrame();
    if (const int32_t status = rtl8239CmdMessage(request.data(), reply.data(), kFrameSize);
        status != BSP_OK)
        return status;
    const bool isEcho = !isEchoChecked || (reply[0] == request[0] && reply[1] == request[1]);
    return isEcho && reply[2] == 0 ? BSP_OK : statusCheckFailed(site);
}

int32_t sendBlock(const uint8_t *data, int32_t position, int32_t count) {
    const int32_t bank = position / kBankSize;
    const auto offset = static_cast<uint16_t>(position % kBankSize);
    uint8_t block[kBlockHeader + kBlockSize];
    std::memset(block, kUnused, sizeof(block));
    block[0] = kMisc;
    block[1] = static_cast<uint8_t>(kDownloadBank0 + bank);
    formats::storeBe16(block + 2, offset);
    std::copy(data, data + count, block + kBlockHeader);

    Frame reply = blankFrame();
    if (const int32_t status = rtl8239CmdMessage(block, reply.data(), kBlockHeader + count);
        status != BSP_OK) {
        std::printf("firmware download failed, bank %d, image offset %d.\n", bank, position);
        return status;
    }
    if (!std::equal(block, block + kBlockHeader, reply.begin())) {
        std::printf("response status check failed, bank %d, image offset %d.\n", bank, position);
        return BSP_E_POE_STATUS;
    }
    return BSP_OK;
}

/** Reads an image file whole; its size is stored. */
int32_t readImage(const char *path, ImageBuffer &image, int32_t *size) {
    off_t told = 0;
    if (!bsp::readFileSize(path, &told))
        return BSP_E_POE_INVALID;
    if (told < BSP_POE_FIRMWARE_MIN || told > BSP_POE_FIRMWARE_MAX ||
        told % BSP_POE_FIRMWARE_STEP != 0) {
        std::printf("The firmware file's size is error...\r\n");
        return BSP_E_POE_INVALID;
    }
    image.reset(static_cast<uint8_t *>(std::malloc(kImageBuffer)));
    if (image == nullptr)
        return BSP_E_POE_NO_MEMORY;
    const bsp::File file(std::fopen(path, "rb"));
    if (file == nullptr)
        return BSP_E_POE_OPEN;
    *size = static_cast<int32_t>(told);
    const size_t count = std::fread(image.get(), 1, static_cast<size_t>(*size), file.get());
    if (count != static_cast<size_t>(*size)) {
        std::printf("Reading firmware filesize %d failed...\r\n", static_cast<int>(count));
        return BSP_E_POE_SHORT_READ;
    }
    return BSP_OK;
}

bool isApplicationRunning() {
    Rtl8239PowerTotals totals{};
    return rtl8239CmdQuery41Get(&totals) == BSP_OK;
}

/** The upgrade proper; the caller holds the PoE lock. */
int32_t replaceApplication(const uint8_t *image, int32_t size, bool isAppRunning) {
    sleep(kRestSeconds);
    if (isAppRunning) {
        rtl8239CmdJumpToLoader();
        sleep(kLoaderSeconds);
    }
    bspPoeRtl8239AppStatusSet(BSP_POE_APP_UPGRADE_STARTED);
    if (const int32_t status = rtl8239CmdFirmwareDownload(image, size); status != BSP_OK) {
        bspPoeRtl8239AppStatusSet(BSP_POE_APP_UPGRADE_FAILED);
        return status;
    }
    sleep(kRestSeconds);
    rtl8239CmdJumpToApp();
    sleep(kRestSeconds);
    return BSP_OK;
}

} // namespace

int32_t rtl8239CmdJumpToLoader(void) {
    return jump(kJumpToLoader, false);
}

int32_t rtl8239CmdJumpToApp(void) {
    return jump(kJumpToApp, true);
}

int32_t rtl8239CmdFirmwareDownload(const uint8_t *image, int32_t size) {
    if (image == nullptr)
        return BSP_E_POE_NULL;
    for (int32_t position = 0; position < size; position += kBlockSize) {
        const int32_t count = std::min(kBlockSize, size - position);
        if (const int32_t status = sendBlock(image + position, position, count); status != BSP_OK)
            return status;
    }
    return BSP_OK;
}

int32_t bspPoeRtl8239McuUpgrade(const char *file) {
    if (file == nullptr)
        return BSP_E_POE_NULL;
    ImageBuffer image;
    int32_t size = 0;
    if (const int32_t status = readImage(file, image, &size); status != BSP_OK)
        return status;

    // A controller that does not answer is in its loader already. The question takes the lock
    // itself, so it is asked before the upgrade does.
    const bool isAppRunning = isApplicationRunning();
    const bsp::PoeLock lock;
    if (lock.isRefused()) {
        bsp::report(bsp::CallSite::here(), "Get lock error \r\n");
        return BSP_E_POE_LOCK;
    }
    return replaceApplication(image.get(), size, isAppRunning);
}
