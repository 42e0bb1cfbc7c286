#include "language/captured_unit.h"

#include "language/captured_properties.h"
#include "language/json_limits.h"
#include "language/refused.h"
#include "language/texts.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <set>

namespace language {

namespace {

using Json = nlohmann::ordered_json; // of what is written: keys in their order
using Node = nlohmann::json;         // of what is read: keys are found fast

// A document with the content of all flash is the largest.
constexpr size_t kLargestDocument = size_t{256} * 1024 * 1024;
constexpr size_t kDeepest = 8;
constexpr size_t kMostKeys = 16384; // of an object
constexpr size_t kMostValues = 1048576;
constexpr int64_t kMsPerSecond = 1000;

constexpr char kSecrets[] = "secrets";
constexpr char kFlash[] = "flash";

// Writing

std::string lineOf(const Json &value) {
    return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

Json runsJson(const CapturedRuns &runs) {
    Json list = Json::array();
    for (const CapturedRun &run : runs)
        list.push_back(Json{{"offset", run.offset}, {"bytes", hexText(run.bytes)}});
    return list;
}

Json readingJson(const CapturedReading &reading) {
    Json entry = Json::object();
    if (const CapturedFailure *failure = reading.failure()) {
        entry["status"] = failure->status;
        entry["name"] = failure->name.empty() ? Json(nullptr) : Json(failure->name);
        entry["message"] = failure->message;
    } else if (const int64_t *number = reading.number()) {
        entry["value"] = *number;
    } else if (const std::string *text = reading.text()) {
        entry["value"] = *text;
    } else {
        entry["value"] = runsJson(*reading.runs());
    }
    const auto known = capturedName(reading.name);
    if (known && *known->row->unit != '\0' && !reading.hasFailed())
        entry["unit"] = known->row->unit;
    if (reading.raw)
        entry["raw"] = hexText(*reading.raw);
    return entry;
}

Json orNull(const std::optional<std::string> &text) {
    return text ? Json(*text) : Json(nullptr);
}

Json findingJson(const CapturedFinding &finding) {
    return {{"subject", finding.subject},
            {"verdict", finding.verdict},
            {"found", finding.found},
            {"advice", orNull(finding.advice)},
            {"code", finding.code},
            {"unit", finding.unit},
            {"index", finding.index ? Json(*finding.index) : Json(nullptr)},
            {"cause", orNull(finding.cause)}};
}

Json factsJson(const CaptureFacts &facts) {
    Json with = Json::array();
    if (facts.hasSecrets)
        with.push_back(kSecrets);
    if (facts.hasFlash)
        with.push_back(kFlash);
    Json leftOut = Json::array();
    for (const LeftOut &item : facts.leftOut)
        leftOut.push_back(Json{{"name", item.name}, {"reason", item.reason}});
    return {{"tool", facts.tool},
            {"library", facts.library},
            {"kernel", facts.kernel},
            {"began", facts.began},
            {"seconds", static_cast<double>(facts.tookMs) / kMsPerSecond},
            {"with", with},
            {"anonymous", facts.isAnonymous},
            {"left_out", leftOut}};
}

/** A line for each of several things, between the brackets of a key. */
class Lines {
  public:
    Lines(std::string &document, const std::string &key, char open, char close)
        : document_(document), close_(close) {
        document_ += "  \"" + key + "\": " + open;
    }
    void add(const std::string &line) {
        document_ += isFirst_ ? "\n    " : ",\n    ";
        document_ += line;
        isFirst_ = false;
    }
    void end(const char *behind) {
        document_ += isFirst_ ? "" : "\n  ";
        document_ += close_;
        document_ += behind;
    }

  private:
    std::string &document_;
    char close_;
    bool isFirst_ = true;
};

/** Puts the properties into the order of the table. */
void sortReadings(std::vector<CapturedReading> &readings) {
    std::vector<std::pair<CapturedPlace, size_t>> places;
    places.reserve(readings.size());
    for (const CapturedReading &reading : readings)
        places.emplace_back(capturedPlace(reading.name), places.size());
    std::sort(places.begin(), places.end());
    std::vector<CapturedReading> sorted;
    sorted.reserve(readings.size());
    for (const auto &place : places)
        sorted.push_back(std::move(readings[place.second]));
    readings = std::move(sorted);
}

// Reading. A node knows its place in the document: "properties.fan.1.speed".

[[noreturn]] void refuseAt(const std::string &place, const std::string &reason) {
    throw Refused(place + ": " + reason);
}

const Node *memberOf(const Node &object, const char *key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

const Node &requiredMember(const Node &object, const char *key, const std::string &place) {
    const Node *member = memberOf(object, key);
    if (member == nullptr)
        refuseAt(place, std::string("'") + key + "' is missing");
    return *member;
}

const Node &objectAt(const Node &node, const std::string &place) {
    if (!node.is_object())
        refuseAt(place, "is no object");
    return node;
}

const Node &listAt(const Node &node, const std::string &place) {
    if (!node.is_array())
        refuseAt(place, "is no list");
    return node;
}

std::string textAt(const Node &node, const std::string &place) {
    if (!node.is_string())
        refuseAt(place, "is no text");
    return node.get<std::string>();
}

int64_t integerAt(const Node &node, const std::string &place) {
    constexpr uint64_t kMost = INT64_MAX;
    const bool isTooLarge = node.is_number_unsigned() && node.get<uint64_t>() > kMost;
    if (!node.is_number_integer() || isTooLarge)
        refuseAt(place, "is no whole number");
    return node.get<int64_t>();
}

int64_t integerAt(const Node &node, const std::string &place, int64_t lowest, int64_t highest) {
    const int64_t number = integerAt(node, place);
    if (number < lowest || number > highest)
        refuseAt(place, std::to_string(number) + " is not a number from " + std::to_string(lowest) +
                            " to " + std::to_string(highest));
    return number;
}

bool flagAt(const Node &node, const std::string &place) {
    if (!node.is_boolean())
        refuseAt(place, "is neither true nor false");
    return node.get<bool>();
}

Bytes bytesAt(const Node &node, const std::string &place) {
    const std::string digits = textAt(node, place);
    if (digits.empty())
        return {};
    if (digits.starts_with("0x") || digits.starts_with("0X"))
        refuseAt(place, "has '0x' before the digits");
    return about(place, [&digits] { return parseBytes(digits); });
}

std::string textIn(const Node &object, const char *key, const std::string &place) {
    return textAt(requiredMember(object, key, place), place + "." + key);
}

std::optional<std::string> textOrNull(const Node &object, const char *key,
                                      const std::string &place) {
    if (requiredMember(object, key, place).is_null())
        return {};
    return textIn(object, key, place);
}

CapturedRuns runsAt(const Node &node, const std::string &place) {
    constexpr int64_t kMostFlash = UINT32_MAX;
    CapturedRuns runs;
    uint64_t behind = 0;
    for (const Node &item : listAt(node, place)) {
        const std::string itemPlace = place + "[" + std::to_string(runs.size()) + "]";
        const Node &run = objectAt(item, itemPlace);
        const auto offset = static_cast<uint64_t>(integerAt(
            requiredMember(run, "offset", itemPlace), itemPlace + ".offset", 0, kMostFlash));
        if (offset < behind)
            refuseAt(itemPlace, "begins before the one before it ends");
        runs.push_back(
            {offset, bytesAt(requiredMember(run, "bytes", itemPlace), itemPlace + ".bytes")});
        behind = offset + runs.back().bytes.size();
    }
    return runs;
}

bool holdsNumber(const CapturedProperty &row) {
    return row.type == Type::Number || row.type == Type::Register;
}

/** The value that a row has; of a row that is not known whatever stands there. */
CapturedContent valueAt(const Node &node, const CapturedProperty *row, const std::string &place) {
    if (row == nullptr && node.is_number())
        return integerAt(node, place);
    if (row == nullptr && node.is_array())
        return runsAt(node, place);
    if (row == nullptr)
        return textAt(node, place);
    const bool isNone = node.is_string() && node.get<std::string>() == row->words;
    if (holdsNumber(*row) && !isNone)
        return integerAt(node, place);
    if (row->type != Type::ByteRow)
        return textAt(node, place);
    if (std::string_view(row->name) == "flash.#.content")
        return runsAt(node, place);
    return hexText(bytesAt(node, place));
}

CapturedFailure failureAt(const Node &entry, const std::string &place) {
    return {static_cast<int32_t>(integerAt(requiredMember(entry, "status", place),
                                           place + ".status", INT32_MIN, INT32_MAX)),
            textOrNull(entry, "name", place).value_or(""), textIn(entry, "message", place)};
}

CapturedReading readingAt(const std::string &name, const Node &node) {
    const std::string place = "properties." + shortened(printable(name), 60);
    if (name.empty())
        refuseAt("properties", "one has no name");
    const Node &entry = objectAt(node, place);
    const Node *value = memberOf(entry, "value");
    const Node *raw = memberOf(entry, "raw");
    const auto known = capturedName(name);
    CapturedReading reading;
    reading.name = name;
    if (value != nullptr && memberOf(entry, "status") != nullptr)
        refuseAt(place, "has both a value and a status");
    if (value != nullptr)
        reading.content = valueAt(*value, known ? known->row : nullptr, place + ".value");
    else if (memberOf(entry, "status") != nullptr)
        reading.content = failureAt(entry, place);
    else
        refuseAt(place, "has neither a value nor a status");
    if (raw != nullptr)
        reading.raw = bytesAt(*raw, place + ".raw");
    return reading;
}

std::vector<CapturedReading> readingsOf(const Node &node) {
    std::vector<CapturedReading> readings;
    for (const auto &[name, entry] : objectAt(node, "properties").items())
        readings.push_back(readingAt(name, entry));
    return readings;
}

CapturedFinding findingAt(const Node &node, const std::string &place) {
    const Node &finding = objectAt(node, place);
    CapturedFinding found;
    found.subject = textIn(finding, "subject", place);
    found.verdict = textIn(finding, "verdict", place);
    found.found = textIn(finding, "found", place);
    found.advice = textOrNull(finding, "advice", place);
    found.code = textIn(finding, "code", place);
    found.unit = textIn(finding, "unit", place);
    if (const Node &index = requiredMember(finding, "index", place); !index.is_null())
        found.index = integerAt(index, place + ".index");
    found.cause = textOrNull(finding, "cause", place);
    return found;
}

uint64_t msAt(const Node &node, const std::string &place) {
    constexpr double kMost = 1e9;
    constexpr double kHalf = 0.5; // of a millisecond: what is cut off then rounds
    const double seconds = node.is_number() ? node.get<double>() : -1.0;
    if (!(seconds >= 0 && seconds <= kMost))
        refuseAt(place, "is no number of seconds");
    return static_cast<uint64_t>(seconds * kMsPerSecond + kHalf);
}

CaptureFacts factsOf(const Node &node) {
    const std::string place = "capture";
    const Node &object = objectAt(node, place);
    CaptureFacts facts;
    facts.tool = textIn(object, "tool", place);
    facts.library = textIn(object, "library", place);
    facts.kernel = textIn(object, "kernel", place);
    facts.began = textIn(object, "began", place);
    facts.tookMs = msAt(requiredMember(object, "seconds", place), place + ".seconds");
    facts.isAnonymous = flagAt(requiredMember(object, "anonymous", place), place + ".anonymous");
    for (const Node &word : listAt(requiredMember(object, "with", place), place + ".with")) {
        facts.hasSecrets = facts.hasSecrets || textAt(word, place + ".with") == kSecrets;
        facts.hasFlash = facts.hasFlash || textAt(word, place + ".with") == kFlash;
    }
    for (const Node &item :
         listAt(requiredMember(object, "left_out", place), place + ".left_out")) {
        const std::string itemPlace =
            place + ".left_out[" + std::to_string(facts.leftOut.size()) + "]";
        const Node &leftOut = objectAt(item, itemPlace);
        facts.leftOut.push_back(
            {textIn(leftOut, "name", itemPlace), textIn(leftOut, "reason", itemPlace)});
    }
    return facts;
}

/** "line 3, column 7: ..." of the parser's own words. */
std::string syntaxMistake(const std::string &told) {
    const size_t place = told.find("at line ");
    return place == std::string::npos ? "it is no JSON" : "it is no JSON " + told.substr(place);
}

Node parsed(const std::string &document) {
    if (document.size() > kLargestDocument)
        throw Refused("it is larger than " + std::to_string(kLargestDocument) + " bytes");
    requireWithin({kDeepest, kMostKeys, kMostValues}, document);
    try {
        return Node::parse(document);
    } catch (const Node::exception &mistake) {
        throw Refused(printable(syntaxMistake(mistake.what())));
    }
}

void requireFormat(const Node &document) {
    const Node *format = document.is_object() ? memberOf(document, "format") : nullptr;
    if (format == nullptr || !format->is_string() || format->get<std::string>() != kCaptureFormat)
        throw Refused("it is no captured unit; 'iodbg capture FILE' makes one");
    const int64_t version = integerAt(requiredMember(document, "version", "document"), "version");
    if (version > kCaptureVersion)
        refuseAt("version", std::to_string(version) + " is of a later iodbg; take that one, or " +
                                "capture the unit with this one");
    if (version < kCaptureVersion)
        refuseAt("version", std::to_string(version) + " has never been");
}

} // namespace

const CapturedReading *CapturedUnit::find(const std::string &name) const {
    const auto found =
        std::find_if(properties.begin(), properties.end(),
                     [&name](const CapturedReading &reading) { return reading.name == name; });
    return found == properties.end() ? nullptr : &*found;
}

std::string writtenCapture(const CapturedUnit &unit) {
    std::string document = "{\n  \"format\": \"" + std::string(kCaptureFormat) + "\",\n";
    document += "  \"version\": " + std::to_string(kCaptureVersion) + ",\n";
    document += "  \"revision\": " + std::to_string(unit.revision) + ",\n";
    Lines facts(document, "capture", '{', '}');
    const Json capture = factsJson(unit.capture);
    for (const auto &[key, value] : capture.items())
        facts.add(lineOf(key) + ": " + lineOf(value));
    facts.end(",\n");
    Lines properties(document, "properties", '{', '}');
    std::vector<CapturedReading> readings = unit.properties;
    sortReadings(readings);
    for (const CapturedReading &reading : readings)
        properties.add(lineOf(reading.name) + ": " + lineOf(readingJson(reading)));
    properties.end(",\n");
    Lines findings(document, "findings", '[', ']');
    for (const CapturedFinding &finding : unit.findings)
        findings.add(lineOf(findingJson(finding)));
    findings.end("\n}\n");
    return document;
}

CapturedUnit readCapture(const std::string &document) {
    const Node root = parsed(document);
    requireFormat(root);
    CapturedUnit unit;
    unit.revision =
        integerAt(requiredMember(root, "revision", "document"), "revision", 0, INT32_MAX);
    unit.capture = factsOf(requiredMember(root, "capture", "document"));
    unit.properties = readingsOf(requiredMember(root, "properties", "document"));
    const Node &findings = listAt(requiredMember(root, "findings", "document"), "findings");
    for (const Node &finding : findings)
        unit.findings.push_back(
            findingAt(finding, "findings[" + std::to_string(unit.findings.size()) + "]"));
    sortReadings(unit.properties);
    return unit;
}

} // namespace language
