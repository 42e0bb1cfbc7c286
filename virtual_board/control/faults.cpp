// Rules of what goes wrong.

#include "virtual_board/board/faults.h"

#include "virtual_board/control/answer.h"
#include "virtual_board/control/given.h"
#include "virtual_board/control/handle.h"
#include "virtual_board/control/json.h"
#include "virtual_board/words/fault_text.h"

#include <algorithm>
#include <iterator>

namespace vboard {

namespace {

vb::FaultWords wordsOf(const VBoardFault &fault) {
    const auto textOr = [](const char *text, const std::string &usual) {
        return text != nullptr ? text : usual;
    };
    const vb::FaultWords usual;
    return {fault.device,
            textOr(fault.op, usual.op),
            textOr(fault.offset, usual.offset),
            textOr(fault.nth, usual.nth),
            textOr(fault.when, usual.when),
            fault.effect};
}

bool isThere(const vb::FaultTable &table, uint32_t id) {
    return id != 0 && std::any_of(std::begin(table.rule), std::end(table.rule),
                                  [id](const vb::FaultRule &rule) { return rule.id == id; });
}

std::vector<vb::FaultRule> rulesOf(const vb::BoardFolder &folder) {
    const LockedBoard board(folder);
    std::vector<vb::FaultRule> rules(std::begin(board->faults.rule), std::end(board->faults.rule));
    std::erase_if(rules, [](const vb::FaultRule &rule) { return rule.id == 0; });
    return rules;
}

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

VBoardFault *give(const std::vector<vb::FaultRule> &rules) {
    struct Texts {
        vb::FaultWords words;
        std::string text, json;
    };
    std::vector<Texts> texts;
    texts.reserve(rules.size());
    std::vector<VBoardFault> rows;
    rows.reserve(rules.size());
    for (const vb::FaultRule &rule : rules) {
        const auto &[words, text, json] = texts.emplace_back(
            Texts{vb::faultWords(rule), vb::faultText(rule), jsonText(faultJson(rule))});
        rows.push_back({sizeof(VBoardFault), rule.id, words.device.c_str(), words.op.c_str(),
                        words.offset.empty() ? nullptr : words.offset.c_str(), words.nth.c_str(),
                        words.when.c_str(), words.effect.c_str(), rule.matched, rule.fired,
                        text.c_str(), json.c_str()});
    }
    return giveList(rows, {&VBoardFault::device, &VBoardFault::op, &VBoardFault::offset,
                           &VBoardFault::nth, &VBoardFault::when, &VBoardFault::effect,
                           &VBoardFault::text, &VBoardFault::json});
}

} // namespace

} // namespace vboard

int32_t vboardAddFault(VBoard *board, const VBoardFault *fault, uint32_t *id, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(fault, "fault");
        vboard::requireSize(fault->size, sizeof(VBoardFault), "fault");
        vboard::require(fault->device, "device");
        vboard::require(fault->effect, "effect");
        vboard::require(id, "id");
        const vb::FaultRule rule = vb::parseFault(vboard::wordsOf(*fault));
        const vboard::LockedBoard locked(board->folder);
        const uint32_t given = vb::addFault(locked->faults, rule);
        if (given == 0)
            throw vboard::Failure(VBOARD_E_FULL, "the board has " + std::to_string(vb::kMaxFaults) +
                                                     " fault rules already; clear some first");
        *id = given;
        locked.tellOfChange();
    });
}

int32_t vboardFaults(VBoard *board, VBoardFault **faults, uint32_t *count, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        vboard::require(faults, "faults");
        vboard::require(count, "count");
        const std::vector<vb::FaultRule> rules = vboard::rulesOf(board->folder);
        *faults = vboard::give(rules);
        *count = static_cast<uint32_t>(rules.size());
    });
}

int32_t vboardClearFaults(VBoard *board, const uint32_t *ids, uint32_t count, VBoardError *error) {
    return vboard::answer(error, [&] {
        vboard::require(board, "board");
        if (count > 0)
            vboard::require(ids, "ids");
        const vboard::LockedBoard locked(board->folder);
        vb::FaultTable &table = locked->faults;
        for (uint32_t i = 0; i < count; ++i) {
            if (!vboard::isThere(table, ids[i]))
                throw vboard::Failure(VBOARD_E_REFUSED, "there is no fault rule " +
                                                            std::to_string(ids[i]) +
                                                            "; 'vboard fault DIR list' lists them; "
                                                            "none was cleared");
        }
        for (uint32_t i = 0; i < count; ++i)
            vb::removeFault(table, ids[i]);
        for (const vb::FaultRule &rule : table.rule) {
            if (count == 0)
                vb::removeFault(table, rule.id);
        }
        locked.tellOfChange();
    });
}
