#include "iodbg/core/capture.h"

#include "bsp.h"
#include "iodbg/core/failure.h"
#include "iodbg/core/status_table.h"

#include <utility>

namespace iodbg {

using language::CapturedContent;
using language::CapturedFailure;

namespace {

CapturedFailure failureOf(int32_t status) {
    const StatusText text = explain(status);
    return {status, text.name, text.meaning};
}

} // namespace

std::string numbered(const std::string &pattern, uint32_t number) {
    std::string name = pattern;
    return name.replace(name.find('#'), 1, std::to_string(number));
}

CaptureSheet::CaptureSheet(const CaptureWishes &wishes, std::function<void(uint32_t)> reached)
    : wishes_(wishes), reached_(std::move(reached)) {
    unit_.capture.hasSecrets = wishes.hasSecrets;
    unit_.capture.hasFlash = wishes.hasFlash;
}

void CaptureSheet::put(const std::string &name, int32_t status, CapturedContent value,
                       std::optional<Bytes> raw) {
    if (status == BSP_OK)
        unit_.properties.push_back({name, std::move(value), std::move(raw)});
    else
        unit_.properties.push_back({name, failureOf(status)});
}

void CaptureSheet::putNumber(const std::string &name, int32_t status, int64_t value,
                             std::optional<Bytes> raw) {
    put(name, status, value, std::move(raw));
}

void CaptureSheet::putText(const std::string &name, int32_t status, const std::string &text,
                           std::optional<Bytes> raw) {
    put(name, status, printable(text), std::move(raw));
}

void CaptureSheet::putBytes(const std::string &name, int32_t status, ByteView bytes) {
    put(name, status, language::hexText(bytes));
}

void CaptureSheet::putFlag(const std::string &name, int32_t status, bool isSet) {
    put(name, status, isSet ? "yes" : "no");
}

void CaptureSheet::putFailure(const std::string &name, const Failure &failure) {
    CapturedFailure entry = failureOf(failure.status().value_or(BSP_E_FAILED));
    entry.message = printable(failure.problem().empty() ? failure.what() : failure.problem());
    unit_.properties.push_back({name, entry});
}

void CaptureSheet::leaveOut(const std::string &name, const std::string &reason) {
    unit_.capture.leftOut.push_back({name, reason});
}

} // namespace iodbg
