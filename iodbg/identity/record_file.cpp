#include "iodbg/identity/record_file.h"

#include "iodbg/identity/record_json.h"

namespace iodbg {

namespace {

constexpr char kBinary[] = "binary";
constexpr char kJson[] = "json";

} // namespace

void addFormatOption(Command &command, std::string &format) {
    command.option("--format", "binary|json",
                   "Of the file: the record's 128 bytes, the default, or a text to read and edit",
                   oneOf(format, {kBinary, kJson}));
}

void saveRecord(Console &console, const Destination &destination, const std::string &format,
                const Carrier &carrier, const BspDevinfo &record) {
    if (format == kJson) {
        const std::string text = recordToJson(carrier, record);
        save(console, destination, {reinterpret_cast<const uint8_t *>(text.data()), text.size()});
        return;
    }
    save(console, destination, bytesOf(record));
}

} // namespace iodbg
