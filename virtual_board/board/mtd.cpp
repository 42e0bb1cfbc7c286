#include "virtual_board/board/mtd.h"

#include "virtual_board/board/flash_content.h"
#include "virtual_board/board/user_memory.h"

#include <algorithm>
#include <cerrno>
#include <optional>

namespace vb {

namespace {

constexpr uint64_t kNsPerUs = 1000;

/** What a rule makes of a request. The rule itself may be gone when the request is done. */
struct Strike {
    bool isDue = false;
    FaultEffect effect = {};
    int32_t argument = 0;
    uint32_t mask = 0;
};

/** A request on its way. */
struct Use {
    const MtdRequest &request;
    const uint64_t number; // of its record in the trace
    Strike fault;

    Use(const MtdRequest &sent, TraceKind kind, uint64_t offset, uint64_t length)
        : request(sent), number(sent.folder.board()->trace.total) {
        TraceRecord &trace = traceNext(board().trace, kind, sent.sender);
        trace.devAddr = static_cast<uint8_t>(kFlashNumbers[sent.index]);
        trace.offset = static_cast<uint32_t>(offset);
        trace.length = static_cast<uint32_t>(length);
    }

    Board &board() const { return *request.folder.board(); }
    Flash &flash() const { return board().devices.flash[request.index]; }
    bool has(FaultEffect effect) const { return fault.isDue && fault.effect == effect; }

    /** Counts it against the rules, which see the pages or blocks that it touches. */
    void count(FaultOp op, uint64_t offset, uint64_t length, uint32_t unit) {
        FaultSubject subject = {FaultDevice::Mtd, op};
        subject.devAddr = kFlashNumbers[request.index];
        subject.offset = static_cast<uint32_t>(offset / unit * unit);
        const uint64_t end = (offset + length + unit - 1) / unit * unit;
        subject.length = static_cast<uint32_t>(length == 0 ? 0 : end - subject.offset);
        if (const FaultRule *rule = faultFor(board().faults, subject); rule != nullptr)
            fault = {true, rule->effect, rule->argument, rule->mask};
    }

    /** What the trace tells of it, as far as it is known. */
    void record(int error, int32_t result, uint32_t value) const {
        if (TraceRecord *trace = traceKept(board().trace, number); trace != nullptr) {
            trace->error = error;
            trace->result = result;
            trace->value = value;
        }
    }

    MtdAnswer answer(int error, uint32_t value = 0) const {
        record(error, 0, value);
        return {error, value, false};
    }

    /** The power goes. */
    MtdAnswer cut(uint32_t done) const {
        ++board().devices.powerCuts;
        record(0, kPowerCutResult, done);
        return {0, done, true};
    }

    bool takesTime() const { return board().devices.flashTiming == FlashTiming::Usual; }

    /**
     * The chip works for so long, behind so many bytes that are done. How the request ends when the
     * power goes meanwhile, or the board.
     */
    std::optional<MtdAnswer> work(uint64_t us, uint32_t done) const {
        if (!takesTime() || us == 0)
            return std::nullopt;
        record(0, 0, done);
        const uint32_t resets = board().devices.resets;
        if (!request.time.pass(request.time.context, us * kNsPerUs))
            return MtdAnswer{ENODEV, 0, false};
        const Devices &devices = board().devices;
        if (devices.resets != resets && devices.lastReset == ResetReason::PowerOn)
            return cut(done);
        return std::nullopt;
    }

    /** How many bytes are programmed or erased before the power goes, if it goes. */
    uint32_t limit() const {
        return has(FaultEffect::PowerCut) ? static_cast<uint32_t>(fault.argument) : UINT32_MAX;
    }

    /** The end of a program or erase that started. */
    MtdAnswer changed(FlashStatus status, uint32_t length) const;
};

int errnoOf(FlashStatus status) {
    switch (status) {
    case FlashStatus::Done:
        return 0;
    case FlashStatus::OutOfRange:
    case FlashStatus::Unaligned:
        return EINVAL;
    case FlashStatus::Protected:
        return EROFS;
    case FlashStatus::BadBlock:
    case FlashStatus::CellsFailed:
        break;
    }
    return EIO;
}

MtdAnswer Use::changed(FlashStatus status, uint32_t length) const {
    if (status != FlashStatus::Done || !has(FaultEffect::PowerCut))
        return answer(errnoOf(status), status == FlashStatus::Done ? length : 0);
    return cut(std::min(length, limit()));
}

/** As much of a transfer as lies on the device. */
uint32_t onDevice(const Flash &flash, uint64_t offset, size_t length) {
    const uint64_t size = flash.geometry.size;
    return offset >= size ? 0 : static_cast<uint32_t>(std::min<uint64_t>(length, size - offset));
}

bool isOnDevice(const Flash &flash, int64_t offset) {
    return offset >= 0 && static_cast<uint64_t>(offset) < flash.geometry.size;
}

/** Spoils the byte of a read that a rule names, when it is in the piece behind so many bytes. */
void spoil(const Use &use, uint8_t *data, uint32_t done, uint32_t length) {
    if (!use.has(FaultEffect::Corrupt))
        return;
    const auto index = static_cast<uint32_t>(use.fault.argument);
    if (index >= done && index - done < length)
        data[index - done] = static_cast<uint8_t>(data[index - done] ^ use.fault.mask);
}

// Transfers cross the driver's own memory in pieces, as in the kernel. One at a time works on a
// board, maybe on a small stack.
constexpr uint32_t kPiece = 65536;
uint8_t piece[kPiece];

/** How many of the chip's pages a transfer touches. */
uint32_t pagesOf(const Flash &flash, uint32_t offset, uint32_t length) {
    const uint32_t page = flashChipPage(flash.geometry);
    return (offset + length - 1) / page - offset / page + 1;
}

/** How much is programmed at once: page by page, where that takes its time. */
uint32_t programmedAtOnce(const Use &use, uint32_t offset) {
    const uint32_t page = flashChipPage(use.flash().geometry);
    return use.takesTime() ? page - offset % page : kPiece;
}

/** Reads a piece; the errno with which it fails, or 0. */
int readPiece(const Use &use, const FlashContent &content, uint32_t offset, uint8_t *data,
              uint32_t count, uint32_t done) {
    if (!content.load(offset + done, piece, count))
        return EIO;
    spoil(use, piece, done, count);
    return copyToUser(data + done, piece, count) ? 0 : EFAULT;
}

} // namespace

MtdAnswer mtdRead(const MtdRequest &request, uint64_t offset, uint8_t *data, size_t length) {
    Use use(request, TraceKind::MtdRead, offset, length);
    uint32_t count = onDevice(use.flash(), offset, length);
    use.count(FaultOp::Read, offset, count, use.flash().geometry.pageSize);
    if (use.has(FaultEffect::Fails))
        return use.answer(use.fault.argument);
    if (use.has(FaultEffect::Short))
        count = std::min(count, static_cast<uint32_t>(use.fault.argument));
    const FlashContent content(request.folder, request.index);
    const FlashTimes &times = flashTimes(use.flash().geometry.type);
    const auto start = static_cast<uint32_t>(offset);
    for (uint32_t done = 0; done < count; done += std::min(kPiece, count - done)) {
        const uint32_t part = std::min(kPiece, count - done);
        const uint64_t us = uint64_t{times.readUs} * pagesOf(use.flash(), start + done, part);
        if (const auto ended = use.work(us, done); ended.has_value())
            return *ended;
        if (const int error = readPiece(use, content, start, data, part, done); error != 0)
            return use.answer(error);
    }
    return use.answer(0, count);
}

MtdAnswer mtdWrite(const MtdRequest &request, uint64_t offset, const uint8_t *data, size_t length) {
    Use use(request, TraceKind::MtdWrite, offset, length);
    const Flash &flash = use.flash();
    if (offset >= flash.geometry.size)
        return use.answer(ENOSPC);
    const uint32_t count = onDevice(flash, offset, length);
    if (count == 0)
        return use.answer(0);
    if (const FlashStatus status = flashCheckProgram(flash, offset, count);
        status != FlashStatus::Done)
        return use.answer(errnoOf(status));
    use.count(FaultOp::Program, offset, count, flash.geometry.pageSize);
    if (use.has(FaultEffect::Fails))
        return use.answer(use.fault.argument);
    FlashContent content(request.folder, request.index);
    const uint32_t end = std::min(count, use.limit());
    FlashStatus status = FlashStatus::Done;
    for (uint32_t done = 0; status == FlashStatus::Done && done < end;) {
        const uint32_t next = static_cast<uint32_t>(offset) + done;
        const uint32_t part = std::min(programmedAtOnce(use, next), end - done);
        if (const auto ended = use.work(flashTimes(flash.geometry.type).programUs, done);
            ended.has_value())
            return *ended;
        if (!copyFromUser(piece, data + done, part))
            return use.answer(EFAULT);
        status = flashProgram(content.cells(), next, piece, part);
        done += part;
    }
    return use.changed(status, count);
}

MtdAnswer mtdErase(const MtdRequest &request, bool canWrite, uint64_t offset, uint64_t length) {
    Use use(request, TraceKind::MtdErase, offset, length);
    Flash &flash = use.flash();
    if (!canWrite)
        return use.answer(EPERM);
    if (const FlashStatus status = flashCheckErase(flash, offset, length);
        status != FlashStatus::Done || length == 0)
        return use.answer(errnoOf(status));
    use.count(FaultOp::Erase, offset, length, flash.geometry.eraseSize);
    if (use.has(FaultEffect::Fails))
        return use.answer(use.fault.argument);
    FlashContent content(request.folder, request.index);
    const auto count = static_cast<uint32_t>(length);
    const uint32_t block = flash.geometry.eraseSize;
    FlashStatus status = FlashStatus::Done;
    for (uint32_t done = 0; status == FlashStatus::Done && done < std::min(count, use.limit());
         done += block) {
        const uint32_t next = static_cast<uint32_t>(offset) + done;
        const bool isBad = flash.isBad[flashBlockOf(flash, next)] != 0;
        if (const auto ended = use.work(isBad ? 0 : flashTimes(flash.geometry.type).eraseUs, done);
            ended.has_value())
            return *ended;
        status = flashErase(flash, content.cells(), next, block, use.limit() - done);
    }
    return use.changed(status, count);
}

MtdAnswer mtdInfo(const MtdRequest &request) {
    Use use(request, TraceKind::MtdInfo, 0, 0);
    use.count(FaultOp::Info, 0, 0, 1);
    return use.answer(use.has(FaultEffect::Fails) ? use.fault.argument : 0);
}

MtdAnswer mtdIsBad(const MtdRequest &request, int64_t offset) {
    Use use(request, TraceKind::MtdIsBad, static_cast<uint64_t>(offset), 0);
    const Flash &flash = use.flash();
    if (!isOnDevice(flash, offset))
        return use.answer(EINVAL);
    use.count(FaultOp::BadBlock, static_cast<uint64_t>(offset), 1, flash.geometry.eraseSize);
    if (use.has(FaultEffect::Fails))
        return use.answer(use.fault.argument);
    return use.answer(0, flash.isBad[flashBlockOf(flash, static_cast<uint32_t>(offset))]);
}

MtdAnswer mtdMarkBad(const MtdRequest &request, bool canWrite, int64_t offset) {
    Use use(request, TraceKind::MtdMarkBad, static_cast<uint64_t>(offset), 0);
    Flash &flash = use.flash();
    if (!canWrite)
        return use.answer(EPERM);
    if (flash.geometry.type == FlashType::Nor)
        return use.answer(EOPNOTSUPP);
    if (!isOnDevice(flash, offset))
        return use.answer(EINVAL);
    if (flash.isWriteProtected != 0)
        return use.answer(EROFS);
    use.count(FaultOp::BadBlock, static_cast<uint64_t>(offset), 1, flash.geometry.eraseSize);
    if (use.has(FaultEffect::Fails))
        return use.answer(use.fault.argument);
    flash.isBad[flashBlockOf(flash, static_cast<uint32_t>(offset))] = 1;
    return use.answer(0);
}

MtdAnswer mtdStatistics(const MtdRequest &request, uint32_t code) {
    Use use(request, TraceKind::MtdOther, code, 0);
    use.count(FaultOp::BadBlock, 0, 0, 1);
    if (use.has(FaultEffect::Fails))
        return use.answer(use.fault.argument);
    return use.answer(0, flashBadBlocks(use.flash()));
}

MtdAnswer mtdOther(const MtdRequest &request, uint32_t code) {
    const Use use(request, TraceKind::MtdOther, code, 0);
    return use.answer(ENOTTY);
}

} // namespace vb
