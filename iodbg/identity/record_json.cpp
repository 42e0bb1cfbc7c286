#include "iodbg/identity/record_json.h"

#include "iodbg/core/failure.h"
#include "iodbg/identity/record_words.h"
#include "language/refused.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <nlohmann/json.hpp>

namespace iodbg {

namespace {

using FieldsJson = nlohmann::ordered_json; // keys in the order of the record's fields

constexpr char kFormatKey[] = "format";
constexpr char kFormat[] = "product-record";
constexpr char kVersionKey[] = "version";
constexpr int kVersion = 1;
constexpr char kCarrierKey[] = "of";
constexpr char kMagicField[] = "magic";
constexpr char kCrcField[] = "crc_hex";
// Texts, and the same bytes as digits.
constexpr char kNameField[] = "product_name";
constexpr char kNameBytes[] = "product_data_2_hex";
constexpr char kSerialField[] = "serial_number";
constexpr char kSerialBytes[] = "serial_number_hex";

/** A field's name in the file: texts that are not whole as texts are digits. */
std::string keyIn(const ShownField &field, const Carrier &carrier, const BspDevinfo &record) {
    if (field.form != FieldForm::Text || isTextAlone(field, carrier, record))
        return field.key;
    return std::strcmp(field.key, kNameField) == 0 ? kNameBytes : kSerialBytes;
}

FieldsJson valueOf(const ShownField &field, const Carrier &carrier, const BspDevinfo &record) {
    BspDevinfo copy = record;
    const std::span<uint8_t> bytes = bytesOf(field, carrier, copy);
    switch (field.form) {
    case FieldForm::MacAddress:
        return macText(bytes);
    case FieldForm::Number:
        return bytes[0];
    case FieldForm::Hex:
        return hexBytes(bytes);
    case FieldForm::Text:
        break;
    }
    if (!isTextAlone(field, carrier, record))
        return hexBytes(bytes);
    return std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), uint8_t{0}));
}

/** A field's value as a word of the command line. */
std::string wordOf(const FieldsJson &value, const std::string &key) {
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number_unsigned())
        return std::to_string(value.get<uint64_t>());
    throw language::Refused(key + " is neither a text nor a number");
}

/** Stores one entry of the file; which field it was. */
const ShownField &storeEntry(const Carrier &carrier, const std::string &key,
                             const FieldsJson &value, BspDevinfo &record) {
    const bool isSerialBytes = key == kSerialBytes;
    const ShownField *field = fieldOf(isSerialBytes ? kSerialField : key, carrier);
    if (field == nullptr || key == kMagicField)
        throw language::Refused("'" + printable(key) + "' is no field of the record of " +
                                carrier.name());
    ShownField written = *field;
    if (isSerialBytes)
        written.form = FieldForm::Hex;
    language::about(key, [&] { storeField(written, carrier, wordOf(value, key), record); });
    return *field;
}

void requireFormat(const FieldsJson &file, const Carrier &carrier) {
    if (!file.is_object() || file.value(kFormatKey, FieldsJson()) != kFormat)
        throw language::Refused(std::string(R"("format" is not ")") + kFormat + '"');
    if (file.value(kVersionKey, FieldsJson()) != kVersion)
        throw language::Refused("\"version\" is not " + std::to_string(kVersion) +
                                "; take the iodbg that made it");
    if (file.value(kCarrierKey, FieldsJson()) != carrier.word())
        throw language::Refused(R"("of" is not ")" + carrier.word() + R"("; see --index)");
}

/** Which bytes of a record have been given. */
class GivenBytes {
  public:
    void take(const ShownField &field, const Carrier &carrier, const std::string &key) {
        for (size_t i = 0; i < field.sizeOn(carrier); ++i) {
            if (isGiven_[field.place.offset + i])
                throw language::Refused("the bytes of " + key + " are given twice");
            isGiven_[field.place.offset + i] = true;
        }
    }
    bool has(const ShownField &field) const { return isGiven_[field.place.offset]; }

  private:
    std::array<bool, sizeof(BspDevinfo)> isGiven_{};
};

BspDevinfo recordOf(const Carrier &carrier, const FieldsJson &file) {
    requireFormat(file, carrier);
    BspDevinfo record = {};
    GivenBytes given;
    for (const auto &[key, value] : file.items()) {
        if (key != kFormatKey && key != kVersionKey && key != kCarrierKey)
            given.take(storeEntry(carrier, key, value, record), carrier, key);
    }
    for (const ShownField &field : kRecordFields) {
        const bool isNeeded =
            std::strcmp(field.key, kMagicField) != 0 && std::strcmp(field.key, kCrcField) != 0;
        if (isNeeded && field.sizeOn(carrier) > 0 && !given.has(field))
            throw language::Refused(std::string("there is no ") + field.key);
    }
    if (!carrier.isBoard())
        return record;
    storeField(*fieldOf(kMagicField, carrier), carrier, BSP_DEVINFO_MAGIC, record);
    if (!given.has(*fieldOf(kCrcField, carrier)))
        renewCrc(record);
    return record;
}

} // namespace

std::string recordToJson(const Carrier &carrier, const BspDevinfo &record) {
    FieldsJson file = {
        {kFormatKey, kFormat}, {kVersionKey, kVersion}, {kCarrierKey, carrier.word()}};
    for (const ShownField &field : kRecordFields) {
        const bool isOnlyName =
            std::strcmp(field.key, kMagicField) == 0 || std::strcmp(field.key, kNameBytes) == 0;
        if (field.sizeOn(carrier) == 0 || isOnlyName)
            continue;
        file[keyIn(field, carrier, record)] = valueOf(field, carrier, record);
    }
    return file.dump(2) + "\n";
}

bool isRecordJson(ByteView content) {
    const auto first = std::find_if(content.begin(), content.end(), [](uint8_t byte) {
        return byte != ' ' && byte != '\t' && byte != '\r' && byte != '\n';
    });
    return first != content.end() && *first == '{';
}

BspDevinfo recordFromJson(const Carrier &carrier, ByteView content, const std::string &name) {
    const FieldsJson file =
        FieldsJson::parse(content.begin(), content.end(), nullptr, false /* exceptions */);
    if (file.is_discarded())
        throw Failure(ExitCode::Host, name + " is no JSON; give a file of 'iodbg identity get "
                                             "record --output FILE --format json'");
    try {
        return recordOf(carrier, file);
    } catch (const language::Refused &refusal) {
        throw Failure(ExitCode::Host,
                      name + " is no product record: " + std::string(refusal.what()));
    }
}

} // namespace iodbg
