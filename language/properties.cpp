#include "language/properties.h"

#include "language/property_table.h"

namespace language {

std::span<const Property> properties() {
    return kProperties;
}

} // namespace language
