#pragma once
// What a model has, in the common language's terms.

#include "language/property_names.h"
#include "virtual_board/board/models.h"

namespace vb {

language::Equipment equipmentOf(const Model &model);

} // namespace vb
