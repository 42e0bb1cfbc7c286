// The tables of fault rules: in the document, and against what rules can do.

#include "tests/support/document_part.h"
#include "virtual_board/words/fault_table.h"
#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"

#include <gtest/gtest.h>

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
    return text;
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

TEST(FaultTablesTest, NothingIsForgotten) {
    for (auto op = FaultOp::Any; op <= FaultOp::Map; op = FaultOp(static_cast<int>(op) + 1)) {
        if (op != FaultOp::BadBlock) { // which only 'any' reaches
            EXPECT_FALSE(devicesOf(op).empty()) << static_cast<int>(op);
        }
    }
    for (auto effect = FaultEffect::Refuse; effect <= FaultEffect::PowerCut;
         effect = FaultEffect(static_cast<int>(effect) + 1))
        EXPECT_FALSE(devicesOf(effect).empty()) << static_cast<int>(effect);
    for (const FaultTargetWords &target : kFaultTargets)
        EXPECT_FALSE(opsOf(target.target).empty()) << target.name;
}

/** Words of a device that can be given for a target. */
std::string deviceOf(const FaultTargetWords &target) {
    if (target.target == FaultTarget::File)
        return kCommandLinePath;
    std::string device = target.device;
    if (device.ends_with('N'))
        device.replace(device.size() - 1, 1, "12");
    return device;
}

/** An effect with a value. */
std::string effectOf(const FaultEffectWords &effect) {
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

/** What a message tells one to give instead, tried in turn. */
bool isAnsweredBy(const FaultWords &words, const std::string &reason) {
    const size_t place = reason.find("give --op ");
    FaultWords better = words;
    better.op = reason.substr(place + 10, reason.find_first_of(" ,;", place + 10) - place - 10);
    better.offset = "";
    try {
        parseFault(better);
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

TEST(FaultTablesTest, RefusalsTellWhatWouldBeRight) {
    unsigned accepted = 0, refused = 0;
    for (const FaultTargetWords &target : kFaultTargets) {
        for (const auto &op : kFaultOps) {
            for (const FaultEffectWords &effect : kFaultEffects) {
                const FaultWords words = {deviceOf(target), op.text,         "", "1",
                                          "once",           effectOf(effect)};
                SCOPED_TRACE(words.device + " " + words.op + " " + words.effect);
                try {
                    EXPECT_TRUE(isKept(parseFault(words))) << "see isPossible in board/faults.cpp";
                    ++accepted;
                    continue;
                } catch (const Refused &refusal) {
                    const std::string reason = refusal.what();
                    ++refused;
                    if (reason.find("cannot have the effect") != std::string::npos) {
                        EXPECT_TRUE(opsOf(target.target, effect.effect).empty());
                    } else {
                        EXPECT_TRUE(isAnsweredBy(words, reason)) << reason;
                    }
                }
            }
        }
    }
    EXPECT_EQ(accepted, 69u);
    EXPECT_EQ(refused + accepted,
              std::size(kFaultTargets) * std::size(kFaultOps) * std::size(kFaultEffects));
}

} // namespace
