#pragma once
// Writing a file into a partition page by page, with progress, and comparing all of it afterwards.

#include "iodbg/core/progress.h"
#include "iodbg/flash/comparison.h"

namespace iodbg {

class PartitionWork {
  public:
    PartitionWork(Console &console, const std::string &task, const FlashPartition &partition,
                  const Content &content);

    /** Calls the library for the write; its status. */
    int32_t write(const std::function<int32_t()> &call);
    /** Compares what is stored with what should be; what came of it, in words. */
    std::string readBack();
    /** Throws when the comparison found a difference. */
    void requireSame(const std::string &next) const;

  private:
    Progress progress_;
    const FlashPartition &partition_;
    const Content &content_;
    Comparison comparison_;
};

} // namespace iodbg
