#pragma once
// Every exported function, called so that it succeeds on a working board, and what it may answer
// when the system fails it.

#include "bsp.h"

#include <array>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace sweep {

/** Room for everything that one call stores. */
class Output {
  public:
    Output() { bytes_.fill(kUntouched); }

    template <typename Type>
    Type *as() {
        return reinterpret_cast<Type *>(bytes_.data());
    }
    bool isUntouched() const {
        for (const uint8_t byte : bytes_) {
            if (byte != kUntouched)
                return false;
        }
        return true;
    }

  private:
    static constexpr uint8_t kUntouched = 0xE7;
    alignas(8) std::array<uint8_t, 1024> bytes_;
};

/** What of the rules a function is free from, by its documentation. */
enum class Exception {
    None,
    StoresBeforeFailure, // the output holds what was read before the failure
    ReleasesLockTwice,   // also closes the lock file's descriptor a second time
};

struct Function {
    std::string name;
    std::function<int32_t(Output &output)> call;
    std::set<int32_t> statuses; // besides BSP_OK
    Exception exception = Exception::None;
    uint32_t step = 1; // behind the first calls only each step-th one fails: they are all alike
};

/** Files that functions are called with. */
struct Files {
    std::string osImage;
    std::string bootLoader;
    std::string controllerFirmware;
    std::string output;
};

std::vector<Function> allFunctions(const Files &files);

} // namespace sweep
