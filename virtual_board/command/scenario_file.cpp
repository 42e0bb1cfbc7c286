#include "virtual_board/command/scenario_file.h"

#include "language/property_values.h"
#include "language/refused.h"
#include "virtual_board/command/complaints.h"
#include "virtual_board/command/name_depth.h"
#include "virtual_board/command/step_reader.h"
#include "virtual_board/command/toml_parser.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

namespace vboard {

namespace {

using language::Refused;

constexpr char kNoSteps[] = "there are no steps; each begins with a line [[step]]";

void readSteps(Scenario &scenario, const toml::node &node, Complaints &complaints) {
    const toml::array *array = node.as_array();
    if (array == nullptr || !array->is_homogeneous<toml::table>()) {
        complaints.add(placeOf(node), kNoSteps);
        return;
    }
    StepReader reader(complaints);
    for (const toml::node &step : *array)
        scenario.steps.push_back(reader.read(*step.as_table()));
}

void readAll(Scenario &scenario, const toml::table &table, Complaints &complaints) {
    constexpr char kTitle[] = "title";
    constexpr char kStep[] = "step";
    for (const auto &[key, node] : table) {
        if (key == kTitle)
            complaints.about(placeOf(key), [&, &value = node] {
                scenario.title = language::about(kTitle, [&] { return textOf(value); });
            });
        else if (key == kStep)
            readSteps(scenario, node, complaints);
        else
            complaints.add(placeOf(key), unknownKey(std::string(key.str()), {kTitle, kStep}) +
                                             ": what is done is in steps, each behind a line "
                                             "[[step]]");
    }
    if (!table.contains(kStep))
        complaints.add({1, 1}, kNoSteps);
}

/** The line that the parser stumbles over. */
Place stumblingBlock(const std::string &content) {
    Place place = {1, 1};
    for (size_t end = 0; (end = content.find('\n', end)) != std::string::npos; ++place.line) {
        try {
            static_cast<void>(toml::parse(std::string_view(content).substr(0, ++end)));
        } catch (const toml::parse_error &) { // what is open here ends further below
        } catch (const Stumbled &) {
            break;
        }
    }
    return place;
}

/** Everything that a stream has; nothing when it cannot be read. */
std::optional<std::string> contentOf(FILE *stream) {
    constexpr size_t kPiece = 4096;
    std::string content;
    char piece[kPiece];
    for (size_t count = sizeof(piece); count > 0;) {
        count = std::fread(piece, 1, sizeof(piece), stream);
        content.append(piece, count);
    }
    return std::ferror(stream) == 0 ? std::optional(content) : std::nullopt;
}

struct CloseStream {
    void operator()(FILE *stream) const { std::fclose(stream); }
};

} // namespace

Scenario parseScenario(const std::string &file, const std::string &content) {
    Scenario scenario;
    scenario.file = file;
    Complaints complaints;
    if (const std::optional<Place> place = tooDeepName(content)) {
        complaints.add(*place, "a name has too many parts");
        complaints.refuse(file);
    }
    try {
        readAll(scenario, toml::parse(content), complaints);
    } catch (const toml::parse_error &mistake) {
        complaints.add(placeOf(mistake.source().begin), std::string(mistake.description()));
    } catch (const Stumbled &) {
        complaints.add(stumblingBlock(content), "this is no TOML; a step begins with [[step]]");
    }
    complaints.refuse(file);
    return scenario;
}

Scenario readScenario(const std::string &file) {
    const bool isInput = file == "-";
    const std::unique_ptr<FILE, CloseStream> opened(isInput ? nullptr
                                                            : std::fopen(file.c_str(), "rbe"));
    FILE *stream = isInput ? stdin : opened.get();
    const std::optional<std::string> content = stream != nullptr ? contentOf(stream) : std::nullopt;
    if (!content.has_value())
        throw Refused("cannot read " + file + ": " + std::strerror(errno));
    return parseScenario(file, *content);
}

} // namespace vboard
