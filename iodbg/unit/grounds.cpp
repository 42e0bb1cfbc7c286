#include "iodbg/unit/grounds.h"

#include "bsp.h"
#include "iodbg/core/device_node.h"
#include "iodbg/core/format.h"
#include "iodbg/core/shared_files.h"
#include "iodbg/core/status_table.h"
#include "support/board_map.h"

#include <algorithm>

namespace iodbg {

namespace {

constexpr int kIdDigits = 4;

/** Empty when it can be reached. */
Findings moduleFindings() {
    const DeviceNode node = tryKernelModule();
    const auto found = [&node](Code code) {
        const std::string hint = boardlessHint();
        return Findings{{{Unit::KernelModule},
                         code,
                         node.trouble(),
                         node.advice() + (hint.empty() ? "" : "; " + hint)}};
    };
    switch (node.state()) {
    case NodeState::Usable:
        break;
    case NodeState::Missing:
        return found(Code::KernelModuleMissing);
    case NodeState::NotPermitted:
        return found(Code::KernelModuleNotPermitted);
    case NodeState::Broken:
        return found(Code::KernelModuleBroken);
    }
    return {};
}

Findings sharedFileFindings() {
    Findings findings;
    for (const SharedFileFlaw &flaw : sharedFileFlaws())
        findings.push_back({{Unit::SharedFile},
                            Code::SharedFileUnsafe,
                            flaw.path + " " + flaw.found,
                            flaw.advice});
    return findings;
}

/** id: what the CPLD says itself, past the library's memory of it. Empty when it answers. */
Findings cpldFindings(uint16_t &id) {
    constexpr uint16_t kAllHigh = 0xFFFF;
    const Subject cpld = {Unit::Cpld};
    if (const int32_t status = bspCpldGet(bsp::kCpldDeviceId, &id); status != BSP_OK)
        return {{cpld, Code::CpldNoAnswer, "does not answer: " + nameAndNumber(status)}};
    if (id == 0 || id == kAllHigh)
        return {{cpld, Code::CpldNoAnswer,
                 "register " + std::to_string(bsp::kCpldDeviceId) + " reads " +
                     hexNumber(id, kIdDigits) + ", as if nothing drove its lines"}};
    return {};
}

/** status: of reading it. */
Finding modelFinding(const Model &model, int32_t status, uint16_t cpldId, bool areFilesSafe) {
    const Subject subject = {Unit::Model};
    if (status == BSP_E_OPEN && !areFilesSafe)
        return notJudged(subject, {Unit::SharedFile});
    if (status != BSP_OK)
        return {subject, Code::ModelUnreadable, "cannot be read: " + nameAndNumber(status)};
    const std::string id = hexNumber(model.id, kIdDigits);
    if (model.id != cpldId)
        return {subject, Code::ModelCacheWrong,
                "/tmp/bsp/devId says " + id + ", the CPLD " + hexNumber(cpldId, kIdDigits)};
    if (!model.isKnown)
        return {subject, Code::ModelUnknown, id + " is none that iodbg knows"};
    return good(subject, id);
}

void append(Findings &all, Findings part) {
    std::move(part.begin(), part.end(), std::back_inserter(all));
}

} // namespace

std::optional<Subject> Grounds::causeAmong(std::span<const Unit> needs) const {
    for (const Unit unit : needs) {
        const auto found =
            std::find_if(findings.begin(), findings.end(), [unit](const Finding &finding) {
                return finding.subject.unit == unit && finding.severity() != Severity::Good;
            });
        if (found != findings.end())
            return found->cause ? found->cause : found->subject;
    }
    return {};
}

Grounds judgeGrounds() {
    constexpr Unit kModule[] = {Unit::KernelModule};
    constexpr Unit kCpld[] = {Unit::KernelModule, Unit::Cpld};
    constexpr Unit kFiles[] = {Unit::SharedFile};
    Grounds grounds;
    uint16_t id = 0;
    append(grounds.findings, moduleFindings());
    append(grounds.findings, sharedFileFindings());
    if (const auto cause = grounds.causeAmong(kModule))
        append(grounds.findings, {notJudged({Unit::Cpld}, *cause)});
    else
        append(grounds.findings, cpldFindings(id));
    // A CPLD that does not answer is not asked for the id: the library would remember what it
    // reads.
    if (const auto cause = grounds.causeAmong(kCpld)) {
        append(grounds.findings, {notJudged({Unit::Model}, *cause)});
        return grounds;
    }
    grounds.modelStatus = readModel(grounds.model);
    append(grounds.findings, {modelFinding(grounds.model, *grounds.modelStatus, id,
                                           !grounds.causeAmong(kFiles).has_value())});
    return grounds;
}

} // namespace iodbg
