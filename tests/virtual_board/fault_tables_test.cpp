// The tables of fault rules: in the document, and against what rules can do.

#include "tests/support/document_part.h"
#include "virtual_board/board/flash_partitions.h"
#include "virtual_board/words/fault_table.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace vb;

std::string marked(const std::vector<std::string> &words, const std::string &last) {
    std::vector<std::string> all;
    for (const std::string &word : words)
        all.push_back("`" + word + "`");
    return listed(all, last);
}

std::string tableOfDevices() {
    std::string text = "| `--device` | what is done | `--op` | `--offset` |\n|---|---|---|---|\n";
    for (const FaultTargetWords &target : kFaultTargets) {
        const std::string offset = target.offset == nullptr ? "" : std::string(target.offset) + " ";
        text += std::string("| ") + target.device + " | " + target.requests + " | " +
                marked(opsOf(target.target), "or") + " | " + offset + "|\n";
    }
    std::vector<std::string> numbers;
    for (const uint32_t number : kFlashNumbers)
        numbers.push_back(std::to_string(number));
    return text + "\nN is " + listed(numbers, "or") +
           "; PATH is that of one of the board's files.\n";
}

std::string tableOfEffects() {
    std::string text = "| `--effect` | of | what happens |\n|---|---|---|\n";
    for (const FaultEffectWords &effect : kFaultEffects) {
        std::vector<std::string> uses;
        for (const FaultTargetWords &target : kFaultTargets) {
            const std::vector<std::string> ops = opsOf(target.target, effect.effect);
            if (ops.empty())
                continue;
            const bool isForAll = ops == opsOf(target.target);
            uses.push_back(target.device + (isForAll ? "" : " with " + marked(ops, "or")));
        }
        text += "| `" + formOf(effect) + "` | " + listed(uses, "and") + " | " + effect.sentence +
                " |\n";
    }
    return text;
}

TEST(FaultTablesTest, AreWhatTheDocumentHas) {
    const std::string document = BSP_TEST_DOCUMENTS "/virtual-board.md";
    expectPart({document, "<!-- devices of faults -->\n", "<!-- end of devices of faults -->\n"},
               tableOfDevices());
    expectPart({document, "<!-- effects of faults -->\n", "<!-- end of effects of faults -->\n"},
               tableOfEffects());
}

TEST(FaultTablesTest, EachPartitionIsADevice) {
    std::vector<uint32_t> numbers;
    for (const auto &device : kFaultDevices) {
        if (device.value == FaultDevice::Mtd)
            numbers.push_back(
                parseFault({device.text, "any", "", "1", "once", "fails=EIO"}).devAddr);
    }
    EXPECT_EQ(numbers, std::vector<uint32_t>(std::begin(kFlashNumbers), std::end(kFlashNumbers)));
}

TEST(FaultTablesTest, NothingIsForgotten) {
    for (auto op = FaultOp::Any; op <= FaultOp::Map; op = FaultOp(static_cast<int>(op) + 1)) {
        const auto hasPlace = [op](const FaultTargetWords &target) {
            return !effectsOf(target.target, op).empty();
        };
        if (op != FaultOp::BadBlock) { // which only 'any' reaches
            EXPECT_TRUE(std::any_of(std::begin(kFaultTargets), std::end(kFaultTargets), hasPlace))
                << static_cast<int>(op);
        }
    }
    for (auto effect = FaultEffect::Refuse; effect <= FaultEffect::PowerCut;
         effect = FaultEffect(static_cast<int>(effect) + 1))
        EXPECT_FALSE(devicesOf(effect).empty()) << static_cast<int>(effect);
    for (const FaultTargetWords &target : kFaultTargets)
        EXPECT_FALSE(opsOf(target.target).empty()) << target.name;
}

/** What can be given where words tell of a device. */
std::string deviceOf(std::string device) {
    if (device == "PATH")
        return kCommandLinePath;
    if (device.ends_with('N'))
        device.replace(device.size() - 1, 1, "12");
    return device;
}

/** An effect with a value. */
std::string effectOf(const std::string &text) {
    const FaultEffectWords &effect =
        *std::find_if(std::begin(kFaultEffects), std::end(kFaultEffects),
                      [&text](const FaultEffectWords &words) { return words.text == text; });
    switch (effect.value) {
    case FaultValue::None:
        return effect.text;
    case FaultValue::Errno:
        return effect.text + std::string("=EIO");
    case FaultValue::Corruption:
        return effect.text + std::string("=0:1");
    case FaultValue::Result:
    case FaultValue::Number:
        break;
    }
    return effect.text + std::string("=2");
}

bool isAccepted(const FaultWords &words) {
    try {
        parseFault(words);
    } catch (const Refused &) {
        return false;
    }
    return true;
}

/** Whether a board that has a rule can be opened. */
bool isKept(const FaultRule &rule) {
    FaultTable table{};
    return addFault(table, rule) != 0 && faultsAreConsistent(table);
}

/** The words of a list in a text, behind what stands before it: "read, write or any". */
std::vector<std::string> listBehind(const std::string &text, const std::string &mark) {
    std::vector<std::string> words;
    const std::string rest = text.substr(text.find(mark) + mark.size());
    std::istringstream stream(rest.substr(0, rest.find(';')));
    bool goesOn = true;
    for (std::string word; goesOn && stream >> word;) {
        goesOn = word.ends_with(',');
        words.push_back(goesOn ? word.substr(0, word.size() - 1) : word);
        if (std::string last; !goesOn && stream >> last)
            goesOn = last == "or" || last == "and";
    }
    return words;
}

bool has(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

/** All that a part of a message, up to its semicolon, tells one to give instead. */
std::vector<FaultWords> advicesIn(const std::string &part, const FaultWords &words) {
    std::vector<std::string> devices = {words.device};
    std::vector<std::string> ops = {words.op};
    if (has(part, "--device "))
        devices = listBehind(part, "--device ");
    if (has(part, "--op ") && !has(part, "does not go with"))
        ops = listBehind(part, "--op ");
    std::vector<FaultWords> advices;
    for (const std::string &device : devices) {
        for (const std::string &op : ops) {
            FaultWords advice = words;
            advice.device = deviceOf(device);
            advice.op = op;
            if (advice.device != words.device || advice.op != words.op)
                advices.push_back(advice);
        }
    }
    return advices;
}

std::vector<FaultWords> advicesOf(const std::string &reason, const FaultWords &words) {
    std::vector<FaultWords> advices;
    std::istringstream parts(reason);
    for (std::string part; std::getline(parts, part, ';');) {
        for (const FaultWords &advice : advicesIn(part, words))
            advices.push_back(advice);
    }
    return advices;
}

/** Expects that a target has no place for an effect, but some for those that it can have. */
void expectNoPlace(const std::string &reason, FaultWords words) {
    for (const auto &op : kFaultOps) {
        words.op = op.text;
        EXPECT_FALSE(isAccepted(words)) << op.text;
    }
    for (const std::string &effect : listBehind(reason, "it can have ")) {
        const auto hasPlace = [&](const auto &op) {
            words.op = op.text;
            return isAccepted(words);
        };
        words.effect = effectOf(effect);
        EXPECT_TRUE(std::any_of(std::begin(kFaultOps), std::end(kFaultOps), hasPlace)) << effect;
    }
}

TEST(FaultTablesTest, RefusalsTellWhatWouldBeRight) {
    unsigned accepted = 0, refused = 0;
    size_t longest = 0;
    for (const FaultTargetWords &target : kFaultTargets) {
        for (const auto &op : kFaultOps) {
            for (const FaultEffectWords &effect : kFaultEffects) {
                const FaultWords words = {deviceOf(target.device), op.text, "", "1", "once",
                                          effectOf(effect.text)};
                SCOPED_TRACE(words.device + " " + words.op + " " + words.effect);
                try {
                    EXPECT_TRUE(isKept(parseFault(words))) << "see isPossible in board/faults.cpp";
                    ++accepted;
                    continue;
                } catch (const Refused &refusal) {
                    const std::string reason = refusal.what();
                    ++refused;
                    SCOPED_TRACE(reason);
                    if (has(reason, "cannot have the effect"))
                        expectNoPlace(reason, words);
                    const std::vector<FaultWords> advices = advicesOf(reason, words);
                    EXPECT_FALSE(advices.empty());
                    for (const FaultWords &advice : advices)
                        EXPECT_TRUE(isAccepted(advice)) << advice.device << " " << advice.op;
                    longest = std::max(longest, reason.size());
                }
            }
        }
    }
    EXPECT_EQ(accepted, 69u);
    EXPECT_LE(longest, 260u);
    EXPECT_EQ(refused + accepted,
              std::size(kFaultTargets) * std::size(kFaultOps) * std::size(kFaultEffects));
}

} // namespace
