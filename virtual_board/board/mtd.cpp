#include "virtual_board/board/mtd.h"

#include "virtual_board/board/flash_content.h"
#include "virtual_board/board/user_memory.h"

#include <algorithm>
#include <cerrno>

namespace vb {

namespace {

/** A request on its way. */
struct Use {
    const MtdRequest &request;
    TraceRecord &trace;
    const FaultRule *fault = nullptr;

    Use(const MtdRequest &sent, TraceKind kind, uint64_t offset, uint64_t length)
        : request(sent), trace(traceNext(sent.folder.board()->trace, kind, sent.sender)) {
        trace.devAddr = static_cast<uint8_t>(kFlashNumbers[sent.index]);
        trace.offset = static_cast<uint32_t>(offset);
        trace.length = static_cast<uint32_t>(length);
    }

    Board &board() const { return *request.folder.board(); }
    Flash &flash() const { return board().devices.flash[request.index]; }
    bool has(FaultEffect effect) const { return fault != nullptr && fault->effect == effect; }

    /** Counts it against the rules, which see the pages or blocks that it touches. */
    void count(FaultOp op, uint64_t offset, uint64_t length, uint32_t unit) {
        FaultSubject subject = {FaultDevice::Mtd, op};
        subject.devAddr = kFlashNumbers[request.index];
        subject.offset = static_cast<uint32_t>(offset / unit * unit);
        const uint64_t end = (offset + length + unit - 1) / unit * unit;
        subject.length = static_cast<uint32_t>(length == 0 ? 0 : end - subject.offset);
        fault = faultFor(board().faults, subject);
    }

    MtdAnswer answer(int error, uint32_t value = 0) const {
        trace.error = error;
        trace.value = value;
        return {error, value, false};
    }

    /** How many bytes are programmed or erased before the power goes, if it goes. */
    uint32_t limit() const {
        return has(FaultEffect::PowerCut) ? static_cast<uint32_t>(fault->argument) : UINT32_MAX;
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
    ++board().devices.powerCuts;
    trace.result = kPowerCutResult;
    trace.value = std::min(length, limit());
    return {0, trace.value, true};
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
    const auto index = static_cast<uint32_t>(use.fault->argument);
    if (index >= done && index - done < length)
        data[index - done] = static_cast<uint8_t>(data[index - done] ^ use.fault->mask);
}

// Transfers cross the driver's own memory in pieces, as in the kernel. One at a time works on a
// board, maybe on a small stack.
constexpr uint32_t kPiece = 65536;
uint8_t piece[kPiece];

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
        return use.answer(use.fault->argument);
    if (use.has(FaultEffect::Short))
        count = std::min(count, static_cast<uint32_t>(use.fault->argument));
    const FlashContent content(request.folder, request.index);
    for (uint32_t done = 0; done < count; done += std::min(kPiece, count - done)) {
        const int error = readPiece(use, content, static_cast<uint32_t>(offset), data,
                                    std::min(kPiece, count - done), done);
        if (error != 0)
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
        return use.answer(use.fault->argument);
    FlashContent content(request.folder, request.index);
    const uint32_t end = std::min(count, use.limit());
    FlashStatus status = FlashStatus::Done;
    for (uint32_t done = 0; status == FlashStatus::Done && done < end;) {
        const uint32_t part = std::min(kPiece, end - done);
        if (!copyFromUser(piece, data + done, part))
            return use.answer(EFAULT);
        status = flashProgram(content.cells(), static_cast<uint32_t>(offset) + done, piece, part);
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
        return use.answer(use.fault->argument);
    FlashContent content(request.folder, request.index);
    const auto count = static_cast<uint32_t>(length);
    const FlashStatus status =
        flashErase(flash, content.cells(), static_cast<uint32_t>(offset), count, use.limit());
    return use.changed(status, count);
}

MtdAnswer mtdInfo(const MtdRequest &request) {
    Use use(request, TraceKind::MtdInfo, 0, 0);
    use.count(FaultOp::Info, 0, 0, 1);
    return use.answer(use.has(FaultEffect::Fails) ? use.fault->argument : 0);
}

MtdAnswer mtdIsBad(const MtdRequest &request, int64_t offset) {
    Use use(request, TraceKind::MtdIsBad, static_cast<uint64_t>(offset), 0);
    const Flash &flash = use.flash();
    if (!isOnDevice(flash, offset))
        return use.answer(EINVAL);
    use.count(FaultOp::BadBlock, static_cast<uint64_t>(offset), 1, flash.geometry.eraseSize);
    if (use.has(FaultEffect::Fails))
        return use.answer(use.fault->argument);
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
        return use.answer(use.fault->argument);
    flash.isBad[flashBlockOf(flash, static_cast<uint32_t>(offset))] = 1;
    return use.answer(0);
}

MtdAnswer mtdStatistics(const MtdRequest &request, uint32_t code) {
    Use use(request, TraceKind::MtdOther, code, 0);
    use.count(FaultOp::BadBlock, 0, 0, 1);
    if (use.has(FaultEffect::Fails))
        return use.answer(use.fault->argument);
    return use.answer(0, flashBadBlocks(use.flash()));
}

MtdAnswer mtdOther(const MtdRequest &request, uint32_t code) {
    const Use use(request, TraceKind::MtdOther, code, 0);
    return use.answer(ENOTTY);
}

} // namespace vb
