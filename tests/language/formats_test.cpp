// The formats that library and iodbg share: what bsp.h publishes of them, what the virtual board
// knows of them by itself, and their bytes.

#include "bsp.h"
#include "language/formats/boot_file.h"
#include "language/formats/boot_settings.h"
#include "language/formats/length_header.h"
#include "language/formats/os_image.h"
#include "language/formats/product_record.h"
#include "tests/virtual_board/flash_test.h"
#include "virtual_board/board/factory.h"
#include "virtual_board/words/flash_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using formats::RecordField;
using Contents = std::vector<std::string>;

// What bsp.h publishes

struct Place {
    size_t offset, size;

    bool operator==(const Place &) const = default;
};

#define PLACE_OF(record, field) (Place{offsetof(record, field), sizeof(record::field)})

TEST(FormatsTest, RecordFieldsAreThoseOfThePublicStructs) {
    const struct {
        RecordField field;
        Place inBoard, inSupply;
    } rows[] = {
        {formats::kRecordMagic, PLACE_OF(BspDevinfo, magic), {}},
        {formats::kRecordReserved1, PLACE_OF(BspDevinfo, reserved1), {}},
        {formats::kRecordMac, PLACE_OF(BspDevinfo, mac), {}},
        {formats::kRecordProductData1, PLACE_OF(BspDevinfo, productData1),
         PLACE_OF(BspSupplyRecord, productData1)},
        {formats::kRecordProductData2, PLACE_OF(BspDevinfo, productData2),
         PLACE_OF(BspSupplyRecord, productData2)},
        {formats::kRecordSerial, PLACE_OF(BspDevinfo, serial), PLACE_OF(BspSupplyRecord, serial)},
        {formats::kRecordSupplyCount, PLACE_OF(BspDevinfo, supplyCount), {}},
        {formats::kRecordSupplyTypes, PLACE_OF(BspDevinfo, supplyType), {}},
        {formats::kRecordProductData3, PLACE_OF(BspDevinfo, productData3),
         PLACE_OF(BspSupplyRecord, productData3)},
        {formats::kRecordReserved2, PLACE_OF(BspDevinfo, reserved2), {}},
        {formats::kRecordCrc, PLACE_OF(BspDevinfo, crc), {}},
    };
    size_t end = 0;
    for (const auto &row : rows) {
        EXPECT_EQ((Place{row.field.offset, row.field.size}), row.inBoard) << end;
        EXPECT_EQ((Place{row.field.supplyOffset, row.field.supplySize}), row.inSupply) << end;
        EXPECT_EQ(row.field.offset, end) << "the fields fill the record";
        end += row.field.size;
    }
    EXPECT_EQ(end, formats::kBoardRecordSize);
    EXPECT_EQ(formats::kBoardRecordSize, sizeof(BspDevinfo));
    EXPECT_EQ(formats::kSupplyRecordSize, sizeof(BspSupplyRecord));
    EXPECT_STREQ(formats::kBoardRecordMagic, BSP_DEVINFO_MAGIC);
}

TEST(FormatsTest, FlashFormatsHaveThePublicSizesAndMarks) {
    EXPECT_EQ(formats::kBootTrailerSize, sizeof(BspBootTrailer));
    EXPECT_EQ(formats::kBootMagicAt, offsetof(BspBootTrailer, magic));
    EXPECT_EQ(formats::kBootLengthAt, offsetof(BspBootTrailer, length));
    EXPECT_EQ(formats::kBootTrailerCrcAt, offsetof(BspBootTrailer, trailerCrc));
    EXPECT_EQ(formats::kBootImageCrcAt, offsetof(BspBootTrailer, imageCrc));
    EXPECT_EQ(formats::kBootNameAt, offsetof(BspBootTrailer, boardName));
    EXPECT_EQ(formats::kBootNameSize, sizeof(BspBootTrailer::boardName));
    EXPECT_EQ(formats::kBootMagic, uint32_t{BSP_BOOT_MAGIC});
    EXPECT_STREQ(formats::kBootBoardName, BSP_BOOT_BOARD_NAME);

    EXPECT_EQ(formats::kLengthHeaderSize, uint32_t{BSP_MTD_HEADER_SIZE});
    EXPECT_EQ(formats::kLengthHeaderMarker, BSP_MTD_HEADER_MARKER);

    EXPECT_EQ(formats::kOsHeaderSize, uint32_t{BSP_OS_HEADER_SIZE});
    EXPECT_EQ(formats::kOsImageMax, uint32_t{BSP_OS_IMAGE_MAX});
    EXPECT_EQ(formats::kOsHeaderPlace, uint32_t{BSP_OS_HEADER_PLACE});
    EXPECT_EQ(formats::osHeaderStart(BSP_OS_IMAGE_MIN), 0);
    EXPECT_EQ(formats::osHeaderStart(BSP_OS_IMAGE_MIN - 1), -1);
    EXPECT_EQ(formats::osHeaderStart(BSP_OS_IMAGE_MAX), BSP_OS_IMAGE_MAX - BSP_OS_HEADER_SIZE);

    constexpr size_t kKeySize = sizeof("boot_pwd=") - 1;
    EXPECT_LT(kKeySize + BSP_BOOT_PASSWORD_MAX, formats::kBootPasswordSlot.size);
}

// Bytes

TEST(FormatsTest, TrailersAreWrittenByteForByte) {
    std::vector<uint8_t> trailer(formats::kBootTrailerSize, 0xEE);
    formats::writeBootTrailer(trailer.data(), 0x01020304);
    std::vector<uint8_t> wanted(80, 0);
    std::memcpy(wanted.data(), "BOOT", 4);
    wanted[11] = 80;
    std::memcpy(&wanted[20], "\x01\x02\x03\x04", 4);
    std::memcpy(&wanted[32], "ZENTRAV48_BOOT", 14);
    std::vector<uint8_t> summed = wanted;
    summed.erase(summed.begin() + 12, summed.begin() + 16);
    const uint32_t crc = vb::crc32(summed.data(), summed.size());
    for (int i = 0; i < 4; ++i)
        wanted[static_cast<size_t>(12 + i)] = static_cast<uint8_t>(crc >> (24 - 8 * i));
    EXPECT_EQ(trailer, wanted);

    const formats::BootTrailer read = formats::readBootTrailer(trailer.data());
    EXPECT_TRUE(formats::isForThisBoard(read));
    EXPECT_EQ(read.length, 80u);
    EXPECT_EQ(read.trailerCrc, crc);
    EXPECT_EQ(read.imageCrc, 0x01020304u);
    std::memset(&trailer[32], 'Z', 48); // a name without an end
    EXPECT_FALSE(formats::isForThisBoard(formats::readBootTrailer(trailer.data())));
}

TEST(FormatsTest, LengthHeadersTellOfFilesThatFit) {
    uint8_t header[8];
    formats::writeLengthHeader(header, 0x00012345);
    EXPECT_EQ(std::memcmp(header, "\x00\x01\x23\x45\xA1\x02\xA3\x04", 8), 0);
    EXPECT_EQ(formats::storedFileLength(header, 0x00012345 + 8), 0x12345u);
    EXPECT_EQ(formats::storedFileLength(header, 0x00012345 + 7), 0u);
    header[7] = 5;
    EXPECT_EQ(formats::storedFileLength(header, UINT32_MAX), 0u);
    formats::writeLengthHeader(header, 0);
    EXPECT_EQ(formats::storedFileLength(header, UINT32_MAX), 0u);
    formats::writeLengthHeader(header, UINT32_MAX);
    EXPECT_EQ(formats::storedFileLength(header, UINT32_MAX), 0u);
    std::memset(header, 0xFF, sizeof(header));
    EXPECT_EQ(formats::storedFileLength(header, UINT32_MAX), 0u);
}

TEST(FormatsTest, BootSlotsAreFoundWithinThemselves) {
    std::vector<uint8_t> block(formats::kBootBlockSize, 0xFF);
    formats::BootSlotText text;
    const auto valueOf = [&](const formats::BootSlot &slot) {
        const char *value = formats::findBootValue(slot, block.data(), text);
        return value != nullptr ? std::string(value) : "none";
    };
    EXPECT_EQ(valueOf(formats::kBaudrateSlot), "none");
    const std::string tail = "x" + std::string(31, 'y');
    std::memcpy(&block[64], ("baudrate=" + tail).data(), 32); // no zero behind it
    EXPECT_EQ(valueOf(formats::kBaudrateSlot), tail.substr(0, 32 - 9));
    std::memcpy(&block[64], "..baudrate=7\0", 13);
    EXPECT_EQ(valueOf(formats::kBaudrateSlot), "7");
    std::memcpy(&block[64], "..\0baudrate=7", 13);
    EXPECT_EQ(valueOf(formats::kBaudrateSlot), "none");

    formats::storeBootText(formats::kBaudrateSlot, formats::bootText(formats::kBaudrateSlot, -12),
                           block.data());
    std::vector<uint8_t> wanted(formats::kBootBlockSize, 0xFF);
    std::memset(&wanted[64], 0, 32);
    std::memcpy(&wanted[64], "baudrate=-12", 12);
    EXPECT_EQ(block, wanted);
    formats::storeBootText(formats::kBootPasswordSlot, formats::bootPasswordText(""), block.data());
    std::memset(&wanted[192], 0, 64);
    EXPECT_EQ(block, wanted);
    std::memset(&block[128], 0, 32);
    formats::storeBootText(formats::kUserPasswordSlot, formats::userPasswordInForce(),
                           block.data());
    EXPECT_EQ(block, wanted);
}

// The other judge

TEST(FormatsTest, BothSidesSumAlike) {
    const auto *digits = reinterpret_cast<const uint8_t *>("123456789");
    EXPECT_EQ(formats::crc32(0, digits, 9), 0xCBF43926);
    for (uint32_t split = 0; split <= 9; ++split) {
        const uint32_t front = formats::crc32(0, digits, split);
        EXPECT_EQ(front, vb::crc32(digits, split));
        EXPECT_EQ(formats::crc32(front, digits + split, 9 - split), 0xCBF43926) << split;
    }
}

std::string textAt(const uint8_t *record, RecordField field) {
    const char *text = reinterpret_cast<const char *>(record + field.offset);
    return {text, strnlen(text, field.size)};
}

TEST(FormatsTest, TheFactoryWritesTheBoardsRecord) {
    const vb::Model &model = *vb::findModel(0x0709);
    vb::Eeprom eeprom = {};
    vb::writeBoardEeprom(eeprom, model, {"SN-1", {2, 0, 0x5E, 1, 2, 3}});
    uint8_t *record = eeprom.bytes + BSP_DEVINFO_OFFSET;
    EXPECT_TRUE(formats::hasRecordMagic(record));
    EXPECT_EQ(formats::storedRecordCrc(record), formats::computedRecordCrc(record));
    EXPECT_EQ(textAt(record, formats::kRecordSerial), "SN-1");
    EXPECT_EQ(textAt(record, formats::kRecordProductData1), "VIRTUAL");
    EXPECT_EQ(textAt(record, formats::kRecordProductData2), "SWITCH-0709");
    EXPECT_EQ(record[formats::kRecordSupplyCount.offset], 2);
    EXPECT_EQ(std::string(1, '\1') + '\1' + '\0',
              std::string(record + formats::kRecordSupplyTypes.offset,
                          record + formats::kRecordSupplyTypes.offset + 3));

    // A change by one side is the other's, its sum included.
    vb::Eeprom changed = eeprom;
    const uint8_t mac[vb::kFactoryMacSize] = {6, 5, 4, 3, 2, 1};
    vb::setFactoryMac(changed, mac);
    vb::setFactorySerial(changed, "SN-2");
    std::memcpy(record + formats::kRecordMac.offset, mac, formats::kRecordMac.size);
    std::memcpy(record + formats::kRecordSerial.offset, "SN-2", 4);
    EXPECT_NE(formats::storedRecordCrc(record), formats::computedRecordCrc(record));
    formats::renewRecordCrc(record);
    EXPECT_EQ(std::memcmp(&eeprom, &changed, sizeof(eeprom)), 0);
    EXPECT_EQ(formats::kRecordSerial.size, vb::kFactorySerialSize);
    EXPECT_EQ(formats::kRecordMac.size, vb::kFactoryMacSize);
}

TEST(FormatsTest, TheFactoryWritesTheSuppliesRecords) {
    vb::Eeprom eeprom = {};
    vb::writeSupplyEeprom(eeprom, 1);
    const uint8_t *stored = eeprom.bytes + BSP_SUPPLY_RECORD_OFFSET;
    EXPECT_EQ(stored + formats::kSupplyRecordSize, eeprom.bytes + vb::kEepromBlockSize);
    std::vector<uint8_t> view(formats::kBoardRecordSize, '?');
    formats::showSupplyRecord(stored, view.data());
    EXPECT_EQ(textAt(view.data(), formats::kRecordProductData1), "VIRTUAL");
    EXPECT_EQ(textAt(view.data(), formats::kRecordProductData2), "AC SUPPLY 54V");
    EXPECT_EQ(textAt(view.data(), formats::kRecordSerial).substr(0, 10), "PSU0000002");
    EXPECT_EQ(std::count(view.begin(), view.end(), '?'), 128 - 16 - 32 - 24 - 4);

    std::vector<uint8_t> taken(formats::kSupplyRecordSize, 0);
    formats::takeSupplyRecord(view.data(), taken.data());
    EXPECT_EQ(taken, std::vector<uint8_t>(stored, stored + formats::kSupplyRecordSize));
}

class FlashFormatsTest : public FlashBoardTest {
  protected:
    Contents contentsOf(uint32_t number) const {
        return vb::flashSummary(*vb::attachedFolder(), vb::flashIndex(number)).contents;
    }
};

TEST_F(FlashFormatsTest, TheBoardRecognisesBootSettings) {
    std::vector<uint8_t> block(formats::kBootBlockSize, 0);
    const auto store = [&](const formats::BootSlot &slot, int32_t value) {
        formats::storeBootText(slot, formats::bootText(slot, value), block.data());
    };
    store(formats::kBootModeSlot, 1);
    store(formats::kBootFlagSlot, -3);
    store(formats::kBaudrateSlot, 9600);
    store(formats::kConsolePasswordSlot, 1);
    store(formats::kUserPasswordSlot, 0);
    formats::storeBootText(formats::kBootPasswordSlot,
                           formats::bootPasswordText(std::string(40, 'p').c_str()), block.data());
    ASSERT_EQ(Node("/dev/mtd4").write(0, std::string(block.begin(), block.end())), 0);
    EXPECT_EQ(contentsOf(4), (Contents{"boot setting main_system=1", "boot setting boot_type=-3",
                                       "boot setting baudrate=9600", "boot setting password=1",
                                       "boot setting user_pwd=0", "boot setting boot_pwd=..."}));
}

TEST_F(FlashFormatsTest, TheBoardRecognisesHeaders) {
    std::string header(formats::kLengthHeaderSize, '\0');
    formats::writeLengthHeader(reinterpret_cast<uint8_t *>(header.data()), 4711);
    ASSERT_EQ(Node("/dev/mtd0").write(0, header), 0);
    EXPECT_EQ(contentsOf(0), (Contents{"length header: a file of 4711 bytes"}));

    // The last byte of the header block, and the one behind it.
    std::string page(kPage, '\xFF');
    page[formats::kOsHeaderSize] = 'h';
    ASSERT_EQ(Node("/dev/mtd12").write(formats::kOsHeaderPlace, page), 0);
    EXPECT_EQ(contentsOf(12), Contents());
    page[formats::kOsHeaderSize - 1] = 'h';
    ASSERT_EQ(Node("/dev/mtd14").write(formats::kOsHeaderPlace, page), 0);
    EXPECT_EQ(contentsOf(14), (Contents{"image header at 0x2700000"}));

    useGeometry("12:size=" + std::to_string(formats::kOsImageMax));
    ASSERT_EQ(Node("/dev/mtd12").write(0, std::string(kPage, 'i')), 0);
    EXPECT_EQ(contentsOf(12), Contents()) << "too small for an image and its header's copy";
}

} // namespace
