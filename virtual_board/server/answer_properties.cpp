// Properties: what they hold, what they shall hold, and which there are.

#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"
#include "virtual_board/server/target.h"

#include <utility>
#include <vector>

namespace vboard::server {

namespace {

Json propertyJson(const VBoardProperty &property) {
    return {{"name", property.name},
            {"value", property.value},
            {"json", Json::parse(property.json, nullptr, false)},
            {"note", property.note},
            {"isIdle", property.isIdle != 0}};
}

} // namespace

Response getProperties(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    Json array = Json::array();
    for (const VBoardProperty &property : board.properties(valuesOf(asked.query, "name")))
        array.push_back(propertyJson(property));
    return jsonResponse({{"properties", array}});
}

Response changeProperties(Services &services, const Asked &asked) {
    const Board board(boardFolder(services, asked));
    std::vector<std::pair<std::string, std::string>> values;
    const Json body = objectOfBody(asked);
    for (const auto &[name, value] : body.items())
        values.emplace_back(name, settableText(name, value));
    std::vector<VBoardChange> changes;
    changes.reserve(values.size());
    for (const auto &[name, value] : values)
        changes.push_back({name.c_str(), value.c_str()});
    call([&](VBoardError *error) {
        return vboardSet(board, changes.data(), static_cast<uint32_t>(changes.size()), error);
    });
    return jsonResponse({{"changed", changes.size()}});
}

Response describeNames(Services &, const Asked &asked) {
    const std::string pattern = valueOf(asked.query, "name");
    const std::string names = textOf([&](char **text, VBoardError *error) {
        return vboardDescribe(pattern.empty() ? nullptr : pattern.c_str(), text, error);
    });
    return {kOk, kJsonType, names, ""};
}

} // namespace vboard::server
