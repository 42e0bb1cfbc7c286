#include "language/captured_difference.h"

#include "language/captured_properties.h"
#include "language/numbers.h"
#include "language/texts.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace language {

namespace {

struct Group {
    std::string_view firstWord;
    const char *name;
};

constexpr Group kGroups[] = {
    {"model", "Unit"},
    {"cmdline", "Unit"},
    {"system-time", "Unit"},
    {"version", "Unit"},
    {"identity", "Identity and EEPROMs"},
    {"eeprom", "Identity and EEPROMs"},
    {"cpld", "Registers and lines"},
    {"gpio", "Registers and lines"},
    {"watchdog", "Registers and lines"},
    {"supply", "Power supplies"},
    {"fan", "Fans and temperature"},
    {"temperature", "Fans and temperature"},
    {"rtc", "Clock chip"},
    {"poe", "PoE"},
    {"sfp", "SFP"},
    {"boot", "Boot settings"},
    {"flash", "Flash"},
    {"image", "Flash"},
};

const char *groupOf(const std::string &name) {
    const std::string_view word = std::string_view(name).substr(0, name.find('.'));
    for (const Group &group : kGroups) {
        if (group.firstWord == word)
            return group.name;
    }
    return "Other";
}

// How a reading is compared

bool isWithinTolerance(const CapturedProperty &row, int64_t one, int64_t other) {
    constexpr int64_t kWhole = 100;
    constexpr int64_t kMost = INT64_MAX / kWhole / 2; // what documents can hold is more
    if (std::max(one, other) > kMost || std::min(one, other) < -kMost)
        return one == other;
    const int64_t larger = std::max(one < 0 ? -one : one, other < 0 ? -other : other);
    const int64_t apart = one < other ? other - one : one - other;
    return apart <= row.tolerance || apart * kWhole <= larger * row.percent;
}

/** A page without the bytes that are compared by what they tell. */
std::string withoutLiveBytes(const CapturedProperty &row, std::string digits) {
    const size_t from = std::min(size_t{2} * row.liveFrom, digits.size());
    const size_t behind = std::min(size_t{2} * row.liveBehind, digits.size());
    std::fill(digits.begin() + static_cast<ptrdiff_t>(from),
              digits.begin() + static_cast<ptrdiff_t>(behind), '0');
    return digits;
}

bool isSameValue(const CapturedProperty &row, const CapturedReading &one,
                 const CapturedReading &other) {
    if (row.compared == Compared::Measured && one.number() != nullptr && other.number() != nullptr)
        return isWithinTolerance(row, *one.number(), *other.number());
    if (row.liveBehind != 0 && one.text() != nullptr && other.text() != nullptr)
        return withoutLiveBytes(row, *one.text()) == withoutLiveBytes(row, *other.text());
    return one.content == other.content;
}

bool isSame(const CapturedReading &one, const CapturedReading &other, CaptureDetail detail) {
    const auto known = capturedName(one.name);
    // Of a failure the status counts: what is said of it is another matter.
    if (one.hasFailed() && other.hasFailed())
        return one.failure()->status == other.failure()->status;
    if (detail == CaptureDetail::All || !known)
        return one.content == other.content &&
               (detail != CaptureDetail::All || one.raw == other.raw);
    return isSameValue(*known->row, one, other);
}

bool isTold(const std::string &name, CaptureDetail detail) {
    const auto known = capturedName(name);
    if (detail == CaptureDetail::All || !known)
        return true;
    const Compared compared = known->row->compared;
    return compared != Compared::Clock && compared != Compared::Counter &&
           compared != Compared::Raw;
}

/** Whether what was left out are all properties whose names have the same parts: "poe.*". */
bool isGroup(const LeftOut &item) {
    return item.name.ends_with('*');
}

/** Whether a name fits a pattern in which '*' stands for any text. */
bool fits(std::string_view pattern, std::string_view name) {
    size_t at = 0, place = 0;                           // in both
    size_t star = std::string_view::npos, behindIt = 0; // the latest, and what it stands for so far
    while (place < name.size()) {
        if (at < pattern.size() && pattern[at] == '*') {
            star = at++;
            behindIt = place;
        } else if (at < pattern.size() && pattern[at] == name[place]) {
            ++at;
            ++place;
        } else if (star != std::string_view::npos) {
            at = star + 1;
            place = ++behindIt;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', std::min(at, pattern.size())) == std::string_view::npos;
}

/** Why a unit does not have it; null when it does not say. */
const LeftOut *leftOutOf(const CapturedUnit &unit, const std::string &name) {
    const std::vector<LeftOut> &all = unit.capture.leftOut;
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&name](const LeftOut &item) { return fits(item.name, name); });
    return found == all.end() ? nullptr : &*found;
}

// How it is told

std::string valueWords(const CapturedReading &reading, const CapturedProperty *row) {
    const bool isRegister = row != nullptr && row->type == Type::Register;
    const std::string unit =
        row != nullptr && *row->unit != '\0' ? " " + std::string(row->unit) : "";
    if (const CapturedFailure *failure = reading.failure())
        return "failed: " +
               (failure->name.empty() ? "status " + std::to_string(failure->status)
                                      : failure->name) +
               ", " + failure->message;
    if (const int64_t *number = reading.number())
        return isRegister && *number >= 0 && *number <= UINT16_MAX
                   ? hex16Text(static_cast<uint32_t>(*number))
                   : std::to_string(*number) + unit;
    if (const std::string *text = reading.text())
        return *text;
    uint64_t bytes = 0;
    for (const CapturedRun &run : *reading.runs())
        bytes += run.bytes.size();
    return std::to_string(bytes) + " bytes that are not erased";
}

struct Words {
    std::string first, second;
};

/** The first bytes that differ, and how many. */
Words byteWords(const std::string &one, const std::string &other) {
    constexpr size_t kShown = 8; // bytes
    size_t first = std::min(one.size(), other.size()), differing = 0;
    for (size_t at = 0; at + 1 < std::max(one.size(), other.size()); at += 2) {
        const bool isBeyond = at >= std::min(one.size(), other.size());
        if (!isBeyond && one.compare(at, 2, other, at, 2) == 0)
            continue;
        first = std::min(first, at);
        ++differing;
    }
    const std::string where = "from " + hex16Text(static_cast<uint32_t>(first / 2)) + ": ";
    const auto shown = [&](const std::string &digits) {
        return where + (first < digits.size() ? digits.substr(first, 2 * kShown) : "nothing");
    };
    return {shown(one) + " (" + std::to_string(differing) + " of " +
                std::to_string(std::max(one.size(), other.size()) / 2) + " bytes differ)",
            shown(other)};
}

Words wordsFor(const CapturedReading &one, const CapturedReading &other) {
    const auto known = capturedName(one.name);
    const CapturedProperty *row = known ? known->row : nullptr;
    const bool isBytes = row != nullptr && row->type == Type::ByteRow && one.text() != nullptr &&
                         other.text() != nullptr;
    if (isBytes)
        return row->liveBehind == 0 ? byteWords(*one.text(), *other.text())
                                    : byteWords(withoutLiveBytes(*row, *one.text()),
                                                withoutLiveBytes(*row, *other.text()));
    Words words = {valueWords(one, row), valueWords(other, row)};
    if (words.first != words.second)
        return words;
    if (one.raw && other.raw)
        return {words.first + ", bytes " + hexText(*one.raw),
                words.second + ", bytes " + hexText(*other.raw)};
    return {words.first, words.second + ", other bytes"};
}

std::string onlyWords(const CapturedReading &reading) {
    const auto known = capturedName(reading.name);
    const bool isLong = known && known->row->type == Type::ByteRow && reading.text() != nullptr;
    return isLong ? std::to_string(reading.text()->size() / 2) + " bytes"
                  : valueWords(reading, known ? known->row : nullptr);
}

/** What differs, as it is found. */
class Differences {
  public:
    void addPair(const CapturedReading &one, const CapturedReading &other) {
        const Words words = wordsFor(one, other);
        all_.push_back({one.name, groupOf(one.name), words.first, words.second});
    }

    /** What one unit alone has; left out by the other, unless that is null. */
    void addLone(const CapturedReading *one, const CapturedReading *other, const LeftOut *leftOut) {
        const CapturedReading &reading = one != nullptr ? *one : *other;
        if (leftOut == nullptr) {
            const std::string words = onlyWords(reading);
            all_.push_back({reading.name, groupOf(reading.name),
                            one != nullptr ? std::optional(words) : std::nullopt,
                            one != nullptr ? std::nullopt : std::optional(words)});
        } else if (isGroup(*leftOut)) {
            addGroup(*leftOut, one != nullptr);
        } // else nobody asked for it
    }

    const std::vector<CapturedDifference> &all() const { return all_; }

  private:
    /** All that hangs on what has failed there is one difference. */
    void addGroup(const LeftOut &leftOut, bool isSecond) {
        const std::string reason = "left out: " + leftOut.reason;
        const auto isTheGroup = [&leftOut](const CapturedDifference &difference) {
            return difference.name == leftOut.name;
        };
        if (std::none_of(all_.begin(), all_.end(), isTheGroup))
            all_.push_back({leftOut.name, groupOf(leftOut.name), isSecond ? "read" : reason,
                            isSecond ? reason : "read"});
    }

    std::vector<CapturedDifference> all_;
};

} // namespace

std::vector<CapturedDifference> differencesOf(const CapturedUnit &first, const CapturedUnit &second,
                                              CaptureDetail detail) {
    struct Pair {
        const CapturedReading *one = nullptr, *other = nullptr;
    };
    std::map<CapturedPlace, Pair> pairs;
    for (const CapturedReading &reading : first.properties)
        pairs[capturedPlace(reading.name)].one = &reading;
    for (const CapturedReading &reading : second.properties)
        pairs[capturedPlace(reading.name)].other = &reading;
    Differences differences;
    for (const auto &[place, pair] : pairs) {
        const auto &[one, other] = pair;
        if (!isTold((one != nullptr ? one : other)->name, detail))
            continue;
        if (one == nullptr || other == nullptr)
            differences.addLone(
                one, other,
                leftOutOf(one != nullptr ? second : first, (one != nullptr ? one : other)->name));
        else if (!isSame(*one, *other, detail))
            differences.addPair(*one, *other);
    }
    return differences.all();
}

} // namespace language
