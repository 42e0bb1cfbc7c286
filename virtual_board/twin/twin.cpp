#include "virtual_board/twin/twin.h"

#include "language/property_table.h"
#include "language/property_values.h"
#include "virtual_board/board/circuits.h"
#include "virtual_board/twin/flash.h"
#include "virtual_board/twin/parts.h"
#include "virtual_board/words/values.h"

#include <algorithm>

namespace vb {

using language::Bytes;
using language::CapturedReading;
using language::CapturedUnit;

namespace {

constexpr void (*kParts[])(Twin &) = {
    makeTwinRegisters, makeTwinLines,   makeTwinMemories, makeTwinSupplies, makeTwinPoe,
    makeTwinModules,   makeTwinClimate, makeTwinClock,    makeTwinFlash,    makeTwinFaults};

const Model &modelOf(const CapturedUnit &unit) {
    const CapturedReading *reading = unit.find("model");
    const std::string *text = reading != nullptr ? reading->text() : nullptr;
    if (text == nullptr)
        throw Refused("the document does not tell the model: the unit could not be asked for it");
    const auto devId = parseNumber(*text, UINT16_MAX);
    const Model *model = devId.has_value() ? findModel(*devId) : nullptr;
    if (model == nullptr)
        throw Refused("the unit is of model '" + *text +
                      "', which is none of those that 'vboard list-models' lists");
    return *model;
}

/** What a unit has that no board can have, and what nobody knows here. */
void tellUnknown(Twin &twin) {
    const std::string problem = commandLineProblem(twin.text("cmdline", 0));
    if (!problem.empty())
        twin.lack("cmdline", problem + "; it has the usual one");
    for (const CapturedReading &reading : twin.unit.properties) {
        if (!language::capturedName(reading.name))
            twin.lack(reading.name, "a later version's; this one does not know what it is");
    }
}

} // namespace

std::string twinName(const std::string &row, uint32_t number) {
    std::string name = row;
    if (const size_t place = name.find('#'); place != std::string::npos)
        name.replace(place, 1, std::to_string(number));
    return name;
}

const CapturedReading *Twin::read(const std::string &name) const {
    const CapturedReading *reading = unit.find(name);
    return reading != nullptr && !reading->hasFailed() ? reading : nullptr;
}

const CapturedReading *Twin::read(const std::string &row, uint32_t number) const {
    return read(twinName(row, number));
}

std::optional<int64_t> Twin::number(const std::string &row, uint32_t number, int64_t lowest,
                                    int64_t highest) {
    const CapturedReading *reading = read(row, number);
    const int64_t *value = reading != nullptr ? reading->number() : nullptr;
    if (value == nullptr)
        return {};
    if (*value >= lowest && *value <= highest)
        return *value;
    lack(reading->name, std::to_string(*value) + " is not from " + std::to_string(lowest) + " to " +
                            std::to_string(highest));
    return {};
}

std::string Twin::text(const std::string &row, uint32_t number) const {
    const CapturedReading *reading = read(row, number);
    const std::string *value = reading != nullptr ? reading->text() : nullptr;
    return value != nullptr ? *value : "";
}

Bytes Twin::bytes(const std::string &row, uint32_t number) const {
    const std::string digits = text(row, number);
    return digits.empty() ? Bytes{} : language::about(twinName(row, number), [&] {
        return language::parseBytes(digits);
    });
}

bool Twin::has(const std::string &row, uint32_t number) const {
    return read(row, number) != nullptr;
}

bool Twin::hasFailed(const std::string &name) const {
    const CapturedReading *reading = unit.find(name);
    return reading != nullptr && reading->hasFailed();
}

void Twin::lack(const std::string &name, const std::string &reason) {
    const auto isTold = [&](const TwinGap &gap) {
        return gap.name == name && gap.reason == reason;
    };
    if (std::none_of(gaps.begin(), gaps.end(), isTold))
        gaps.push_back({name, reason});
}

BoardOptions twinOptions(const CapturedUnit &unit) {
    BoardOptions options;
    options.devId = modelOf(unit).devId;
    const CapturedReading *commandLine = unit.find("cmdline");
    if (commandLine != nullptr && commandLine->text() != nullptr &&
        commandLineProblem(*commandLine->text()).empty())
        options.commandLine = *commandLine->text();
    for (uint32_t index = 0; index < kFlashPartitions; ++index) {
        const std::string name = twinName("flash.#.geometry", kFlashNumbers[index]);
        const CapturedReading *geometry = unit.find(name);
        if (geometry != nullptr && geometry->text() != nullptr)
            language::about(name,
                            [&] { options.flash[index] = parseGeometryText(*geometry->text()); });
    }
    return options;
}

std::vector<TwinGap> furnishTwin(const BoardFolder &folder, const CapturedUnit &unit) {
    Twin twin = {folder, unit, modelOf(unit), {}};
    for (const auto make : kParts)
        make(twin);
    advanceBoard(twin.board(), 0); // whatever follows from it is on the lines before they are set
    makeTwinRegisters(twin);
    tellUnknown(twin);
    return twin.gaps;
}

} // namespace vb
