// Files of every kind that the library writes into the board: boot loader, operating system, CPLD,
// PoE firmware. The system works; the file is anything, or a boot loader's with right checksums.

#include "bsp.h"
#include "fuzz/hostile_system.h"
#include "fuzz/models.h"
#include "language/formats/boot_file.h"

namespace {

/** A trailer of the input's bytes, in which only what the input says is wrong. */
void appendTrailer(hostile::Bytes &file, fuzz::Input &input) {
    uint8_t trailer[formats::kBootTrailerSize];
    formats::writeBootTrailer(trailer,
                              formats::crc32(0, file.data(), static_cast<uint32_t>(file.size())));
    const uint32_t changes = input.below(3);
    for (uint32_t i = 0; i < changes; ++i)
        trailer[input.below(sizeof(trailer))] ^= input.byte();
    file.insert(file.end(), std::begin(trailer), std::end(trailer));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    constexpr const char *kPath = "/tmp/image";
    fuzz::Input input(bytes, size);
    hostile::System system(input);
    system.canFail = false;
    system.devId = fuzz::anyModel(input);
    system.geometry = bsp::FlashGeometry{};
    system.geometry->size = 8192;
    system.geometry->erasesize = 4096;
    system.geometry->writesize = input.byte() % 2 == 0 ? 512 : 1;
    system.flash = hostile::Bytes(8192, 0xFF);

    const uint32_t kind = input.below(5);
    const uint32_t bank = input.below(3);
    const uint32_t padding = input.below(4);
    hostile::Bytes file;
    if (kind == 0) {
        hostile::Bytes changes = input.bytes(3);
        file = input.bytes();
        fuzz::Input damage(changes.data(), changes.size());
        appendTrailer(file, damage);
    } else {
        file = input.bytes();
    }
    if (padding != 0) // to the sizes that banks and controllers take
        file.resize(file.size() +
                    (padding == 1 ? BSP_OS_HEADER_SIZE : BSP_POE_FIRMWARE_MIN) / 4 * 4);
    system.file = std::move(file);
    switch (kind) {
    case 0:
    case 1:
        ioBiosUpgrade(kPath);
        break;
    case 2:
        ioImageUpgrade(kPath, static_cast<int32_t>(bank) - 1);
        break;
    case 3:
        ioCpldUpgrade(kPath);
        break;
    default:
        ioPoeAppUpgradeSet(kPath);
    }
    return 0;
}
