#pragma once
// The library's flash functions on small partitions, call by call.

#include "tests/support/bytes.h"
#include "tests/support/recorder.h"
#include "tests/support/virtual_board_test.h"

#include <set>

inline constexpr char kFirstDevice[] = "/dev/mtd0";

class FlashCallsTest : public VirtualBoardTest {
  protected:
    /** Gives a partition of the board another geometry, and erases it. */
    void usePartition(uint32_t number, const vb::FlashGeometry &geometry);

    /** Puts bytes into a partition as they are, without the driver. */
    void store(uint32_t number, uint32_t offset, const Bytes &bytes) const;
    Bytes stored(uint32_t number, uint32_t offset, uint32_t size) const;

    /** Pages of a partition, by their offsets, that refuse to be programmed. */
    void wearOut(uint32_t number, const std::set<uint32_t> &pages);

    /** Has partitions tell sizes that no partition has. */
    void pretendGeometry(uint32_t size, uint32_t eraseSize, uint32_t pageSize);

    /** A file on the board, instead of the one that was there. */
    void useFile(const std::string &path, const Bytes &content) const;
    Bytes contentOf(const std::string &path) const;
    bool exists(const std::string &path) const;
    void removeFile(const std::string &path) const;

    /** An answer with "#" for the number that a path was opened under. */
    static Answer withoutNumber(Answer answer, const std::string &path);

    Recorder recorder;
};

/** Taking and giving back the flash lock, as Recorder::work() shows it. */
extern const Calls kLocking;
extern const Calls kUnlocking;

/** A hundred attempts in vain at taking or giving back a lock. */
Calls hundredTimes(const std::string &call);
