#include "virtual_board/words/sfp_text.h"

#include "language/property_table.h"
#include "language/property_values.h"

namespace vb {

std::string sfpKindText(SfpKind kind) {
    return language::wordOf(language::propertyOf("sfp.#.module"), static_cast<int64_t>(kind));
}

} // namespace vb
