#include "iodbg/identity/record_words.h"

#include "language/bytes.h"
#include "language/refused.h"

#include <algorithm>

namespace iodbg {

namespace {

bool isPrintable(char character) {
    return character >= ' ' && character <= '~';
}

void storeBytes(std::span<uint8_t> place, ByteView bytes) {
    std::fill(std::copy(bytes.begin(), bytes.end(), place.begin()), place.end(), uint8_t{0});
}

void storeText(std::span<uint8_t> place, const std::string &word) {
    if (word.size() > place.size() || !std::all_of(word.begin(), word.end(), isPrintable))
        language::refuse(word, "is not up to " + std::to_string(place.size()) +
                                   " printable ASCII characters");
    storeBytes(place, {reinterpret_cast<const uint8_t *>(word.data()), word.size()});
}

void storeHex(std::span<uint8_t> place, const std::string &word) {
    const Bytes bytes = language::parseBytes(word);
    if (bytes.size() > place.size())
        language::refuse(word, "has more than " + std::to_string(place.size()) + " bytes");
    storeBytes(place, bytes);
}

void storeNumber(std::span<uint8_t> place, const std::string &word) {
    uint32_t value = 0;
    number(value, UINT8_MAX)(word);
    place[0] = static_cast<uint8_t>(value);
}

std::string macFlaw(const BspDevinfo &record) {
    const ByteView mac(record.mac, sizeof(record.mac));
    if ((mac[0] & 1) != 0)
        return macText(mac) + " is a group's address, not that of a unit";
    if (std::all_of(mac.begin(), mac.end(), [](uint8_t byte) { return byte == 0; }))
        return "the MAC address is all zeros";
    return "";
}

std::string serialFlaw(const Carrier &carrier, const BspDevinfo &record) {
    const ShownField &field = *fieldOf("serial_number", carrier);
    const std::string serial(reinterpret_cast<const char *>(record.serial), field.sizeOn(carrier));
    const std::string text = serial.substr(0, serial.find('\0'));
    if (text.empty() || !isTextAlone(field, carrier, record) || text.find(' ') != std::string::npos)
        return "the serial number is no row of printable ASCII characters without spaces";
    if (carrier.isBoard() && text.size() > BSP_SERIAL_NUMBER_MAX)
        return "the serial number has more than " + std::to_string(BSP_SERIAL_NUMBER_MAX) +
               " characters";
    return "";
}

} // namespace

const ShownField *fieldOf(const std::string &key, const Carrier &carrier) {
    for (const ShownField &field : kRecordFields) {
        if (key == field.key && field.sizeOn(carrier) > 0)
            return &field;
    }
    return nullptr;
}

void storeField(const ShownField &field, const Carrier &carrier, const std::string &word,
                BspDevinfo &record) {
    const std::span<uint8_t> place = bytesOf(field, carrier, record);
    switch (field.form) {
    case FieldForm::Text:
        storeText(place, word);
        break;
    case FieldForm::Hex:
        storeHex(place, word);
        break;
    case FieldForm::MacAddress:
        storeBytes(place, language::parseMac(word));
        break;
    case FieldForm::Number:
        storeNumber(place, word);
        break;
    }
}

bool isTextAlone(const ShownField &field, const Carrier &carrier, const BspDevinfo &record) {
    BspDevinfo copy = record;
    const std::span<uint8_t> place = bytesOf(field, carrier, copy);
    const auto end = std::find(place.begin(), place.end(), uint8_t{0});
    return std::all_of(place.begin(), end,
                       [](uint8_t byte) { return isPrintable(static_cast<char>(byte)); }) &&
           std::all_of(end, place.end(), [](uint8_t byte) { return byte == 0; });
}

std::string flawOf(const Carrier &carrier, const BspDevinfo &record) {
    const std::string flaw = serialFlaw(carrier, record);
    return flaw.empty() && carrier.isBoard() ? macFlaw(record) : flaw;
}

} // namespace iodbg
