// `vboard fault`.

#include "virtual_board/command/commands.h"
#include "virtual_board/command/open_board.h"
#include "virtual_board/words/values.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace vboard {

namespace {

nlohmann::json faultJson(const vb::FaultRule &rule) {
    const vb::FaultWords words = vb::faultWords(rule);
    return {{"id", rule.id},
            {"device", words.device},
            {"op", words.op},
            {"offset", rule.hasOffset != 0 ? nlohmann::json(rule.offset) : nlohmann::json()},
            {"nth", rule.nth},
            {"when", words.when},
            {"effect", words.effect},
            {"matched", rule.matched},
            {"fired", rule.fired}};
}

void printFault(const vb::FaultRule &rule) {
    std::printf("%u: %s (matched %u, fired %u)\n", rule.id, vb::faultText(rule).c_str(),
                rule.matched, rule.fired);
}

bool hasFault(const vb::FaultTable &table, uint32_t id) {
    for (const vb::FaultRule &rule : table.rule) {
        if (rule.id == id && id != 0)
            return true;
    }
    return false;
}

} // namespace

void addFault(const std::string &folder, const vb::FaultWords &words) {
    const vb::FaultRule rule = vb::parseFault(words);
    const LockedBoard board(folder);
    const uint32_t id = vb::addFault(board->faults, rule);
    if (id == 0)
        throw vb::Refused("the board has " + std::to_string(vb::kMaxFaults) +
                          " fault rules already; clear some first");
    std::printf("%u\n", id);
}

void listFaults(const std::string &folder, bool asJson) {
    const LockedBoard board(folder);
    auto list = nlohmann::json::array();
    for (const vb::FaultRule &rule : board->faults.rule) {
        if (rule.id == 0)
            continue;
        if (asJson)
            list.push_back(faultJson(rule));
        else
            printFault(rule);
    }
    if (asJson)
        // A path may hold any byte.
        std::printf("%s\n",
                    list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

void clearFaults(const std::string &folder, const std::vector<std::string> &ids) {
    const LockedBoard board(folder);
    std::vector<uint32_t> numbers;
    for (const std::string &text : ids) {
        const auto id = vb::parseNumber(text, UINT32_MAX);
        if (!id.has_value() || !hasFault(board->faults, *id))
            throw vb::Refused("there is no fault rule " + text +
                              "; 'vboard fault DIR list' lists them; none was cleared");
        numbers.push_back(*id);
    }
    for (const uint32_t id : numbers)
        vb::removeFault(board->faults, id);
    for (const vb::FaultRule &rule : board->faults.rule) {
        if (ids.empty())
            vb::removeFault(board->faults, rule.id);
    }
}

} // namespace vboard
