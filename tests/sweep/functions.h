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
        isAskedFor_ = true;
        return static_cast<Type *>(static_cast<void *>(bytes_.data())); // aligned for all
    }
    /** Whether the call has been given it. */
    bool isAskedFor() const { return isAskedFor_; }
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
    bool isAskedFor_ = false;
};

/** What of the rules a function is free from, by its documentation. */
enum class Exception {
    None,
    NeverSucceeds,       // no board has what it asks for
    StoresNothing,       // nor what it is to answer
    StoresBeforeFailure, // the output holds what was read before the failure
};

/** Which of a function's calls fail. */
struct Depth {
    uint32_t first = UINT32_MAX; // each of these
    uint32_t step = 1;           // and each step-th one behind them
};

struct Function {
    std::string name;
    std::function<int32_t(Output &output)> call;
    std::set<int32_t> statuses; // besides BSP_OK
    Exception exception = Exception::None;
    Depth depth{};
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
