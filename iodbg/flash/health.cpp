#include "iodbg/flash/health.h"

#include "bsp.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/shared_files.h"
#include "iodbg/core/status_table.h"
#include "iodbg/flash/boot_block.h"
#include "iodbg/flash/claim.h"
#include "iodbg/flash/os_bank.h"
#include "iodbg/flash/partition.h"

#include <algorithm>

namespace iodbg {

namespace {

/** A partition, and what it is for. */
struct Use {
    Subject subject;
    DeviceNode node;
};

std::vector<Use> uses() {
    std::vector<Use> all = {{{Unit::BootSettings}, tryNode(BSP_MTD_BOOT_SETTINGS)}};
    for (uint32_t bank = 0; bank < BSP_OS_BANKS; ++bank)
        all.push_back({{Unit::Bank, bank}, tryNode(bankDevice(bank))});
    return all;
}

Finding unusable(const Subject &subject, const DeviceNode &node, const std::string &text) {
    switch (node.state()) {
    case NodeState::Missing:
        return {subject, Code::PartitionMissing, text};
    case NodeState::NotPermitted:
        return {subject, Code::PartitionNotPermitted, text};
    case NodeState::Usable:
    case NodeState::Broken:
        break;
    }
    return {subject, Code::Unreadable, text};
}

Finding bootFinding(const Subject &subject) {
    try {
        if (isErased(readBootBlock()))
            return {subject, Code::BootSettingsEmpty, "none is stored, the defaults hold"};
    } catch (const Failure &failure) {
        return {subject, Code::Unreadable, failure.problem(), failure.advice()};
    }
    return good(subject, "stored");
}

/** A header that cannot be read tells nothing of the image: nothing is to be written for it. */
Finding bankFinding(const Subject &subject) {
    const uint32_t bank = subject.index.value_or(0);
    const std::string number = std::to_string(bank);
    try {
        if (const std::optional<pid_t> writer = HeaderTurn::longHolder())
            return {subject, Code::NotJudged,
                    "process " + std::to_string(*writer) + " writes an image"};
        Bytes header;
        if (const int32_t status = readOsHeader(bank, header); status != BSP_OK)
            return {subject, Code::Unreadable,
                    "its header cannot be read: " + nameAndNumber(status),
                    "see the kernel log for " + bankDevice(bank) +
                        ", and 'iodbg image info --bank " + number + "'"};
        if (isErased(header))
            return {subject, Code::BankEmpty, "holds no image",
                    "write one with 'iodbg upgrade os FILE --bank " + number + "'"};
    } catch (const Failure &failure) {
        return {subject, Code::Unreadable, failure.problem(), failure.advice()};
    }
    return good(subject, "has the header of an image");
}

/** areFilesSafe: headers are read through a shared file. */
Finding findingOn(const Use &use, bool areFilesSafe) {
    if (use.node.state() != NodeState::Usable)
        return unusable(use.subject, use.node, use.node.trouble());
    if (use.subject.unit == Unit::BootSettings)
        return bootFinding(use.subject);
    return areFilesSafe ? bankFinding(use.subject) : notJudged(use.subject, {Unit::SharedFile});
}

} // namespace

Findings flashFindings() {
    const std::vector<Use> all = uses();
    const DeviceNode &first = all.front().node;
    const bool isAllTheSame = std::all_of(all.begin(), all.end(), [&first](const Use &use) {
        return use.node.error == first.error && first.error != 0;
    });
    const bool areFilesSafe = sharedFileFlaws().empty();
    Findings findings;
    if (isAllTheSame)
        findings.push_back(
            unusable({Unit::Flash}, first, first.trouble() + ", and so with all partitions"));
    for (const Use &use : all)
        findings.push_back(isAllTheSame ? notJudged(use.subject, {Unit::Flash})
                                        : findingOn(use, areFilesSafe));
    return findings;
}

} // namespace iodbg
