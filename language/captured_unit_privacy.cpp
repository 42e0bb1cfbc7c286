#include "language/captured_unit_privacy.h"

#include "language/captured_properties.h"
#include "language/formats/product_record.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace language {

namespace {

constexpr size_t kRecordAt = 256;       // in the board's EEPROM
constexpr size_t kSupplyRecordAt = 176; // in a supply's
constexpr size_t kMacPrefix = 5;        // what the last byte counts is kept
constexpr size_t kMacTextLength = 17;

// The identification page of an SFP module.
constexpr size_t kModuleSerialAt = 68, kModuleSerialSize = 16;
constexpr size_t kExtendedAt = 64, kExtendedSumAt = 95;

/** A serial number, as long as the one that it stands for. */
std::string serialFor(size_t length, size_t number) {
    constexpr std::string_view kMark = "ANON";
    constexpr size_t kShortest = 8;
    const std::string digits = std::to_string(number);
    const std::string front(length >= kShortest ? kMark : "");
    const size_t room = length - front.size();
    const size_t shown = std::min(room, digits.size());
    return front + std::string(room - shown, '0') + digits.substr(digits.size() - shown);
}

/** The six bytes of an address in a text from a place on; empty when none stands there. */
Bytes addressAt(const std::string &text, size_t place) {
    if (place + kMacTextLength > text.size())
        return {};
    Bytes address;
    for (size_t at = place; at < place + kMacTextLength; at += 3) {
        const bool isPair = std::isxdigit(static_cast<unsigned char>(text[at])) != 0 &&
                            std::isxdigit(static_cast<unsigned char>(text[at + 1])) != 0;
        const bool isLast = at + 2 == place + kMacTextLength;
        if (!isPair || (!isLast && text[at + 2] != ':'))
            return {};
        address.push_back(parseBytes(text.substr(at, 2))[0]);
    }
    return address;
}

char folded(char letter) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
}

bool isUpper(char letter) {
    return std::isupper(static_cast<unsigned char>(letter)) != 0;
}

std::string inCapitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

std::string inSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), folded);
    return text;
}

/** A way to write something, and what stands there instead: as long, and in capitals where it is.
 */
struct Spelling {
    std::string from, to;
    bool isWord = false; // so short that it counts only as a word by itself, in a text
    bool isExact = false;

    bool isAt(const std::string &text, size_t place) const {
        if (place + from.size() > text.size())
            return false;
        for (size_t i = 0; i < from.size(); ++i) {
            const char letter = text[place + i];
            if (letter != from[i] && (isExact || folded(letter) != folded(from[i])))
                return false;
        }
        return true;
    }
    void replaceAt(std::string &text, size_t place) const {
        const std::string found = text.substr(place, from.size());
        const bool isLoud = std::any_of(found.begin(), found.end(), isUpper);
        text.replace(place, from.size(),
                     found == from ? to
                     : isLoud      ? inCapitals(to)
                                   : inSmallLetters(to));
    }
};

/** Replaces in one go: what has been replaced is not looked at again. */
class Replacer {
  public:
    enum class In { Text, Bytes };

    /** Of those that begin alike the longest is tried first, of these the one that came first. */
    explicit Replacer(const std::vector<Spelling> &spellings) {
        for (const Spelling &spelling : spellings) {
            auto &alike = byFirst_[static_cast<unsigned char>(folded(spelling.from.front()))];
            const auto isLonger = [](const Spelling &one, const Spelling &other) {
                return one.from.size() > other.from.size();
            };
            alike.insert(std::upper_bound(alike.begin(), alike.end(), spelling, isLonger),
                         spelling);
        }
    }

    /** Whether there was anything to replace. */
    bool replaceIn(std::string &text, In where) const {
        bool isChanged = false;
        for (size_t place = 0; place < text.size();) {
            const Spelling *found = spellingAt(text, place, where);
            if (found != nullptr)
                found->replaceAt(text, place);
            isChanged = isChanged || found != nullptr;
            place += found != nullptr ? found->from.size() : 1;
        }
        return isChanged;
    }
    bool replaceIn(Bytes &bytes) const {
        std::string text(bytes.begin(), bytes.end());
        const bool isChanged = replaceIn(text, In::Bytes);
        bytes.assign(text.begin(), text.end());
        return isChanged;
    }

  private:
    const Spelling *spellingAt(const std::string &text, size_t place, In where) const {
        for (const Spelling &spelling : byFirst_[static_cast<unsigned char>(folded(text[place]))]) {
            if (spelling.isAt(text, place) &&
                (!spelling.isWord || (where == In::Text && isWordAt(text, place, spelling))))
                return &spelling;
        }
        return nullptr;
    }
    static bool isWordAt(const std::string &text, size_t place, const Spelling &spelling) {
        const auto isPart = [&text](size_t at) {
            return at < text.size() && std::isalnum(static_cast<unsigned char>(text[at])) != 0;
        };
        return !(place > 0 && isPart(place - 1)) && !isPart(place + spelling.from.size());
    }

    std::array<std::vector<Spelling>, 256> byFirst_;
};

/** Of an address how the first bytes are written: with one or two of them between separators. */
std::string writtenPrefix(ByteView prefix, const char *separator, size_t perGroup) {
    std::string text;
    for (size_t i = 0; i < prefix.size(); ++i) {
        if (i > 0 && i % perGroup == 0)
            text += separator;
        text += hexText(prefix.subspan(i, 1));
    }
    return text;
}

/** What stands for what. */
class Pseudonyms {
  public:
    void addSerial(const std::string &serial) {
        if (!serial.empty() && !serials_.contains(serial))
            serials_[serial] = serialFor(serial.size(), serials_.size() + 1);
    }
    /** Of an address the first bytes count. */
    void addAddress(ByteView address) {
        const Bytes prefix(address.begin(), address.begin() + kMacPrefix);
        const auto first = prefix.front();
        const bool isNone = std::all_of(prefix.begin(), prefix.end(),
                                        [first](uint8_t byte) { return byte == first; });
        if (isNone || prefixes_.contains(prefix))
            return;
        const size_t number = prefixes_.size() + 1;
        prefixes_[prefix] = {2, 0, 0, static_cast<uint8_t>(number >> 8),
                             static_cast<uint8_t>(number)};
    }
    void addAddressesIn(const std::string &text) {
        for (size_t place = 0; place < text.size(); ++place) {
            const Bytes address = addressAt(text, place);
            if (!address.empty())
                addAddress(address);
        }
    }

    Replacer replacer() const {
        constexpr size_t kTelling = 6, kShortestWord = 3;
        std::vector<Spelling> spellings;
        for (const auto &[serial, other] : serials_) {
            if (serial.size() >= kShortestWord)
                spellings.push_back({serial, other, serial.size() < kTelling});
        }
        for (const auto &[prefix, other] : prefixes_) {
            spellings.push_back(
                {{prefix.begin(), prefix.end()}, {other.begin(), other.end()}, false, true});
            for (const auto &[separator, perGroup] : kAddressForms)
                spellings.push_back({writtenPrefix(prefix, separator, perGroup),
                                     writtenPrefix(other, separator, perGroup)});
        }
        return Replacer(spellings);
    }

    std::string replaced(const std::string &serial) const {
        const auto found = serials_.find(serial);
        return found == serials_.end() ? serial : found->second;
    }

    /** A field's text up to its padding. */
    static std::string serialIn(const Bytes &bytes, size_t place, size_t size) {
        constexpr char kErased = '\xFF';
        if (place + size > bytes.size())
            return "";
        std::string text(bytes.begin() + static_cast<ptrdiff_t>(place),
                         bytes.begin() + static_cast<ptrdiff_t>(place + size));
        text = text.substr(0, std::min(text.find('\0'), text.find(kErased)));
        return text.substr(0, text.find_last_not_of(' ') + 1);
    }

  private:
    static constexpr std::pair<const char *, size_t> kAddressForms[] = {
        {":", 1}, {"-", 1}, {".", 2}, {"", 1}};

    std::map<std::string, std::string> serials_;
    std::map<Bytes, Bytes> prefixes_;
};

/** Where a row of bytes has a serial number of its own. */
struct SerialPlace {
    std::string_view row;
    size_t place, size;
};

constexpr SerialPlace kSerialPlaces[] = {
    {"eeprom.board", kRecordAt + formats::kRecordSerial.offset, formats::kRecordSerial.size},
    {"eeprom.supply#", kSupplyRecordAt + formats::kRecordSerial.supplyOffset,
     formats::kRecordSerial.supplySize},
    {"sfp.#.id", kModuleSerialAt, kModuleSerialSize},
};

bool isRow(const CapturedReading &reading, std::string_view row) {
    const auto known = capturedName(reading.name);
    return known && known->row->name == row;
}

bool isBytes(const CapturedReading &reading) {
    const auto known = capturedName(reading.name);
    return known && known->row->type == Type::ByteRow && reading.text() != nullptr;
}

bool isSerialText(const CapturedReading &reading) {
    return reading.text() != nullptr &&
           (isRow(reading, "identity.serial") || isRow(reading, "supply.#.serial"));
}

void collect(Pseudonyms &pseudonyms, const CapturedReading &reading) {
    if (isSerialText(reading))
        pseudonyms.addSerial(*reading.text());
    else if (reading.text() != nullptr && !isBytes(reading))
        pseudonyms.addAddressesIn(*reading.text());
    if (!isBytes(reading))
        return;
    const Bytes bytes = parseBytes(*reading.text());
    for (const SerialPlace &place : kSerialPlaces) {
        if (isRow(reading, place.row))
            pseudonyms.addSerial(Pseudonyms::serialIn(bytes, place.place, place.size));
    }
    constexpr size_t kMacAt = kRecordAt + formats::kRecordMac.offset;
    if (isRow(reading, "eeprom.board") && bytes.size() >= kRecordAt + formats::kBoardRecordSize)
        pseudonyms.addAddress(ByteView(bytes).subspan(kMacAt, formats::kRecordMac.size));
}

bool isRecordRight(const Bytes &eeprom) {
    if (eeprom.size() < kRecordAt + formats::kBoardRecordSize)
        return false;
    const uint8_t *record = eeprom.data() + kRecordAt;
    return formats::storedRecordCrc(record) == formats::computedRecordCrc(record);
}

// Checksums over what is replaced are renewed if they were right before.

void renewRecord(Bytes &eeprom, bool wasRight) {
    if (wasRight)
        formats::renewRecordCrc(eeprom.data() + kRecordAt);
}

uint8_t extendedSum(const Bytes &page) {
    return static_cast<uint8_t>(
        std::accumulate(page.begin() + kExtendedAt, page.begin() + kExtendedSumAt, 0U));
}

bool isPageRight(const Bytes &page) {
    return page.size() > kExtendedSumAt && page[kExtendedSumAt] == extendedSum(page);
}

void renewPage(Bytes &page, bool wasRight) {
    if (wasRight)
        page[kExtendedSumAt] = extendedSum(page);
}

/** Replaces what is known of a document. */
class Masking {
  public:
    explicit Masking(const Pseudonyms &pseudonyms)
        : pseudonyms_(pseudonyms), replacer_(pseudonyms.replacer()) {}

    void in(std::string &text) const { replacer_.replaceIn(text, Replacer::In::Text); }
    void in(std::optional<std::string> &text) const {
        if (text)
            in(*text);
    }
    void in(CapturedFinding &finding) const {
        finding.found = pseudonyms_.replaced(finding.found); // a short serial number alone
        in(finding.found);
        in(finding.advice);
        in(finding.cause);
    }
    /** Whether it was the content of flash, with something to replace. */
    bool in(CapturedReading &reading) const {
        if (isBytes(reading))
            inBytes(reading);
        else if (isSerialText(reading))
            reading.content = pseudonyms_.replaced(*reading.text());
        else if (auto *text = std::get_if<std::string>(&reading.content))
            in(*text);
        else if (auto *failure = std::get_if<CapturedFailure>(&reading.content))
            in(failure->message);
        else if (auto *runs = std::get_if<CapturedRuns>(&reading.content))
            return inRuns(*runs);
        return false;
    }

  private:
    void inBytes(CapturedReading &reading) const {
        const Bytes before = parseBytes(*reading.text());
        Bytes bytes = before;
        replacer_.replaceIn(bytes);
        for (const SerialPlace &place : kSerialPlaces) {
            if (isRow(reading, place.row))
                inField(bytes, before, place);
        }
        if (isRow(reading, "eeprom.board"))
            renewRecord(bytes, isRecordRight(before));
        else if (isRow(reading, "sfp.#.id"))
            renewPage(bytes, isPageRight(before));
        reading.content = hexText(bytes);
    }
    /** A serial number at its own place, however short. */
    void inField(Bytes &bytes, const Bytes &before, const SerialPlace &place) const {
        const std::string other =
            pseudonyms_.replaced(Pseudonyms::serialIn(before, place.place, place.size));
        if (!other.empty())
            std::copy(other.begin(), other.end(),
                      bytes.begin() + static_cast<ptrdiff_t>(place.place));
    }
    bool inRuns(CapturedRuns &runs) const {
        bool isChanged = false;
        for (CapturedRun &run : runs)
            isChanged = replacer_.replaceIn(run.bytes) || isChanged;
        return isChanged;
    }

    const Pseudonyms &pseudonyms_;
    const Replacer replacer_;
};

/** The checksum of a partition whose content is another now. */
void leaveOutSum(CapturedUnit &unit, const std::string &content) {
    const auto known = capturedName(content);
    if (!known)
        return;
    const std::string name = "flash." + std::to_string(known->numbers.at(0)) + ".crc32";
    std::erase_if(unit.properties,
                  [&name](const CapturedReading &reading) { return reading.name == name; });
    unit.capture.leftOut.push_back({name, "it has serial numbers or addresses in it"});
}

} // namespace

void makeAnonymous(CapturedUnit &unit) {
    Pseudonyms pseudonyms;
    for (const CapturedReading &reading : unit.properties)
        collect(pseudonyms, reading);
    for (const CapturedFinding &finding : unit.findings)
        pseudonyms.addAddressesIn(finding.found);
    const Masking mask(pseudonyms);
    std::vector<std::string> changed;
    for (CapturedReading &reading : unit.properties) {
        if (mask.in(reading))
            changed.push_back(reading.name);
    }
    for (const std::string &name : changed)
        leaveOutSum(unit, name);
    for (CapturedFinding &finding : unit.findings)
        mask.in(finding);
    for (LeftOut &item : unit.capture.leftOut)
        mask.in(item.reason);
    unit.capture.isAnonymous = true;
}

} // namespace language
