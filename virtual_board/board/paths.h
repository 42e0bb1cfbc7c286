#pragma once
// The files that each board has of its own, under their paths on the board.

namespace vb {

constexpr char kNodePath[] = "/dev/bspHandle";
constexpr char kMemoryPath[] = "/dev/mem"; // of which a board has one page
constexpr char kCommandLinePath[] = "/proc/cmdline";
constexpr char kPartitionListPath[] = "/proc/mtd";
constexpr char kFlashNodePrefix[] = "/dev/mtd"; // and the number of the partition
constexpr char kFlashLockPath[] = "/tmp/bspFlashLockFile";
constexpr char kPoeLockPath[] = "/tmp/bspPoeLockFile";
constexpr char kSharedFolderPath[] = "/tmp/bsp"; // and what is in it

/** Those of them that are one file. */
constexpr const char *kSingleBoardPaths[] = {kNodePath,          kMemoryPath,    kCommandLinePath,
                                             kPartitionListPath, kFlashLockPath, kPoeLockPath};

/** The folder with the programs that stand in for the system's own, beside libvboard.so. */
constexpr char kToolFolder[] = "vboard-tools";

constexpr unsigned kMaxBoardPath = 256;

/** Whether a tidy path is that of a file or folder which each board has of its own. */
bool isBoardPath(const char *path);

/** Whether one of a path's parts is "..". */
bool goesUp(const char *path);

/**
 * Copies an absolute path without doubled slashes, "." and ".." parts and a trailing slash; false
 * when it is too long for a board's path.
 */
bool tidyPath(const char *path, char (&buffer)[kMaxBoardPath]);

} // namespace vb
