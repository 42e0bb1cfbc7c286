#pragma once
// The kernel module's side of a request: takes the record apart, asks the devices, answers.

#include "bsp.h"
#include "virtual_board/board/board.h"

namespace vb {

/** A file that the module reads for a request, as it was found. */
struct FileFound {
    int error; // errno with which it cannot be read, or 0
    uint32_t size, crc;
};

constexpr uint32_t kMaxFileName = 4096;

/** Whether the module reads a file for a request. */
bool needsFile(uint32_t code);

/** Copies the file's name out of the caller's memory; 0, or the errno with which it fails. */
int copyFileName(const BspIoctlRecord &record, char (&name)[kMaxFileName]);

/**
 * Serves one ioctl, for which a file was found or is not needed. The slots' addresses are those of
 * the calling process. Answers 0, or the errno with which the ioctl itself fails. The caller holds
 * the board's lock.
 */
int serveRequest(Board &board, const Sender &sender, uint32_t code, BspIoctlRecord &record,
                 const FileFound &file = {});

} // namespace vb
