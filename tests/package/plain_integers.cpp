// Passes plain integers to every function, as programs do that were written before the values had
// names. It has to compile, so that no parameter gets an enumeration's type. It is not run.
#include "bsp.h"

namespace {

struct Anything {
    template <typename Pointed>
    operator Pointed *() const {
        return nullptr;
    }
};

} // namespace

void callEveryFunction();

void callEveryFunction() {
    const Anything anything = {};
#include BSP_TEST_CALLS
}
