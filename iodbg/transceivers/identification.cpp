#include "iodbg/transceivers/identification.h"

#include <algorithm>
#include <array>

namespace iodbg {

namespace {

struct Code {
    uint8_t code;
    const char *name;
};

constexpr Code kKinds[] = {{0x01, "GBIC"},   {0x02, "soldered module"}, {0x03, "SFP or SFP+"},
                           {0x0C, "QSFP"},   {0x0D, "QSFP+"},           {0x11, "QSFP28"},
                           {0x18, "QSFP-DD"}};
constexpr Code kConnectors[] = {{0x01, "SC"},
                                {0x06, "FiberJack"},
                                {0x07, "LC"},
                                {0x08, "MT-RJ"},
                                {0x0B, "pigtail"},
                                {0x0C, "MPO 1x12"},
                                {0x21, "copper pigtail"},
                                {0x22, "RJ45"},
                                {0x23, "none: separable module"}};
constexpr Code kEncodings[] = {{0x01, "8B/10B"},     {0x02, "4B/5B"},           {0x03, "NRZ"},
                               {0x04, "Manchester"}, {0x05, "SONET scrambled"}, {0x06, "64B/66B"},
                               {0x07, "256B/257B"}};

/** A bit of the compliance bytes. */
struct ComplianceBit {
    uint8_t byte, bit;
    const char *name;
};
constexpr ComplianceBit kCompliances[] = {
    {3, 7, "10GBASE-ER"},   {3, 6, "10GBASE-LRM"},  {3, 5, "10GBASE-LR"},  {3, 4, "10GBASE-SR"},
    {6, 7, "BASE-PX"},      {6, 6, "BASE-BX10"},    {6, 5, "100BASE-FX"},  {6, 4, "100BASE-LX"},
    {6, 3, "1000BASE-T"},   {6, 2, "1000BASE-CX"},  {6, 1, "1000BASE-LX"}, {6, 0, "1000BASE-SX"},
    {8, 3, "active cable"}, {8, 2, "passive cable"}};

/** A length that the module tells, in units of so many metres. */
struct Reach {
    uint8_t byte;
    uint32_t unit;
    const char *medium;
};
constexpr Reach kFibreReaches[] = {{14, 1000, "single-mode fibre"},
                                   {16, 10, "OM2"},
                                   {17, 10, "OM1"},
                                   {18, 10, "OM4"},
                                   {19, 10, "OM3"}};
constexpr Reach kCableReaches[] = {{18, 1, "cable"}};
constexpr uint8_t kReachInKilometres = 14;
constexpr uint8_t kReachInHundredMetres = 15; // of single-mode fibre, finer than byte 14

constexpr size_t kKind = 0;
constexpr size_t kConnector = 2;
constexpr size_t kEncoding = 11;
constexpr size_t kRate = 12; // in 100 megabaud
constexpr size_t kCableBits = 8;
constexpr uint8_t kIsCable = 0x0C;
constexpr size_t kVendor = 20, kVendorSize = 16;
constexpr size_t kOui = 37;
constexpr size_t kPartNumber = 40, kPartNumberSize = 16;
constexpr size_t kRevision = 56, kRevisionSize = 4;
constexpr size_t kWavelength = 60;
constexpr size_t kBaseSum = 63;
constexpr size_t kBigRate = 66; // in 250 megabaud, when byte 12 is all ones
constexpr size_t kSerialNumber = 68, kSerialNumberSize = 16;
constexpr size_t kDate = 84; // YYMMDD
constexpr size_t kDiagnostics = 92;
constexpr uint8_t kHasDiagnostics = 0x40;
constexpr uint8_t kIsExternallyCalibrated = 0x10;
constexpr size_t kExtendedSum = 95;

template <size_t count>
std::string nameOf(const Code (&codes)[count], uint8_t code) {
    for (const Code &known : codes) {
        if (known.code == code)
            return known.name;
    }
    return hexNumber(code, 2);
}

/** A text field, without the blanks that fill it. */
std::string textAt(ByteView page, size_t offset, size_t size) {
    std::string text = fieldText(page.subspan(offset, size));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

bool isCable(ByteView page) {
    return (page[kCableBits] & kIsCable) != 0;
}

std::vector<std::string> compliancesOf(ByteView page) {
    std::vector<std::string> names;
    for (const ComplianceBit &compliance : kCompliances) {
        if ((page[compliance.byte] >> compliance.bit & 1) != 0)
            names.emplace_back(compliance.name);
    }
    return names;
}

uint32_t metresOf(ByteView page, const Reach &reach) {
    if (reach.byte == kReachInKilometres && page[kReachInHundredMetres] != 0)
        return page[kReachInHundredMetres] * 100u;
    return page[reach.byte] * reach.unit;
}

std::vector<std::string> reachesOf(ByteView page) {
    std::vector<std::string> texts;
    const std::span<const Reach> reaches =
        isCable(page) ? std::span<const Reach>(kCableReaches) : kFibreReaches;
    for (const Reach &reach : reaches) {
        if (const uint32_t metres = metresOf(page, reach); metres != 0)
            texts.push_back(std::to_string(metres) + " m over " + reach.medium);
    }
    return texts;
}

uint32_t rateOf(ByteView page) {
    constexpr uint8_t kTooBig = 0xFF;
    return page[kRate] == kTooBig ? page[kBigRate] * 250u : page[kRate] * 100u;
}

std::string dateOf(ByteView page) {
    const ByteView digits = page.subspan(kDate, 6);
    const auto isDigit = [](uint8_t byte) { return byte >= '0' && byte <= '9'; };
    if (!std::all_of(digits.begin(), digits.end(), isDigit))
        return textAt(page, kDate, 8);
    const std::string text(digits.begin(), digits.end());
    return "20" + text.substr(0, 2) + "-" + text.substr(2, 2) + "-" + text.substr(4, 2);
}

std::string ouiOf(ByteView page) {
    return hexBytes(page.subspan(kOui, 1)) + ":" + hexBytes(page.subspan(kOui + 1, 1)) + ":" +
           hexBytes(page.subspan(kOui + 2, 1));
}

} // namespace

PageChecksum checksumOf(ByteView page, size_t first, size_t last) {
    uint8_t sum = 0;
    for (const uint8_t byte : page.subspan(first, last + 1 - first))
        sum = static_cast<uint8_t>(sum + byte);
    return {page[last + 1], sum};
}

std::string listed(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text.empty() ? "none told" : text;
}

Identification identificationOf(ByteView page) {
    Identification module = {};
    module.kind = nameOf(kKinds, page[kKind]);
    module.connector = nameOf(kConnectors, page[kConnector]);
    module.encoding = nameOf(kEncodings, page[kEncoding]);
    module.vendor = textAt(page, kVendor, kVendorSize);
    module.oui = ouiOf(page);
    module.partNumber = textAt(page, kPartNumber, kPartNumberSize);
    module.revision = textAt(page, kRevision, kRevisionSize);
    module.serialNumber = textAt(page, kSerialNumber, kSerialNumberSize);
    module.date = dateOf(page);
    module.compliances = compliancesOf(page);
    module.reaches = reachesOf(page);
    module.rateMbaud = rateOf(page);
    // Cables tell of their kind where fibre modules have the wavelength.
    module.wavelengthNm = isCable(page) ? 0 : page[kWavelength] * 256u + page[kWavelength + 1];
    module.hasDiagnostics = (page[kDiagnostics] & kHasDiagnostics) != 0;
    module.isExternallyCalibrated = (page[kDiagnostics] & kIsExternallyCalibrated) != 0;
    module.base = checksumOf(page, 0, kBaseSum - 1);
    module.extended = checksumOf(page, kBaseSum + 1, kExtendedSum - 1);
    return module;
}

} // namespace iodbg
