// Documents of captured units, and a second one behind a zero byte. What is taken reads back as it
// was written; it can be made anonymous, and be compared.

#include "fuzz/input.h"
#include "language/captured_difference.h"
#include "language/captured_unit.h"
#include "language/captured_unit_privacy.h"
#include "language/refused.h"

#include <algorithm>
#include <optional>
#include <string>

namespace {

using language::CaptureDetail;
using language::CapturedUnit;

std::optional<CapturedUnit> read(const std::string &document) {
    try {
        return language::readCapture(document);
    } catch (const language::Refused &refused) {
        fuzz::require(*refused.what() != '\0', "a refusal without a reason");
        return {};
    }
}

void requireReadable(const CapturedUnit &unit) {
    const std::string document = language::writtenCapture(unit);
    const auto again = read(document);
    fuzz::require(again.has_value(), "a document that was written is refused");
    fuzz::require(language::writtenCapture(*again) == document, "it reads as another one");
}

void requireSameAsItself(const CapturedUnit &unit) {
    for (const CaptureDetail detail : {CaptureDetail::Usual, CaptureDetail::All})
        fuzz::require(language::differencesOf(unit, unit, detail).empty(),
                      "a unit differs from itself");
}

void compare(const CapturedUnit &one, const CapturedUnit &other) {
    for (const CaptureDetail detail : {CaptureDetail::Usual, CaptureDetail::All})
        fuzz::require(language::differencesOf(one, other, detail).size() ==
                          language::differencesOf(other, one, detail).size(),
                      "two units differ in one direction alone");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string content(bytes, bytes + size);
    const size_t end = std::min(content.find('\0'), content.size());
    const auto unit = read(content.substr(0, end));
    if (!unit)
        return 0;
    requireReadable(*unit);
    requireSameAsItself(*unit);
    CapturedUnit other = *unit;
    language::makeAnonymous(other);
    requireReadable(other);
    compare(*unit, other);
    if (end < content.size()) {
        if (const auto second = read(content.substr(end + 1)))
            compare(*unit, *second);
    }
    return 0;
}
