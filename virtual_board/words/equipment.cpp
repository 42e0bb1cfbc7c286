#include "virtual_board/words/equipment.h"

#include "language/numbers.h"
#include "virtual_board/board/board.h"
#include "virtual_board/board/sfp_cages.h"

#include <iterator>

namespace vb {

language::Equipment equipmentOf(const Model &model) {
    language::Equipment equipment;
    equipment.model = language::hex16Text(model.devId);
    equipment.supplies = model.supplies.count;
    equipment.plugInSupplies = model.supplies.haveBus ? model.supplies.count : 0;
    equipment.poePorts = model.poePorts;
    equipment.fans = model.fans.count;
    equipment.hasClock = model.hasClock;
    for (uint32_t port = 1; port <= kMostPorts; ++port) {
        if (isSfpCage(model, port))
            equipment.cages.push_back(port);
    }
    equipment.partitions.assign(std::begin(kFlashNumbers), std::end(kFlashNumbers));
    return equipment;
}

} // namespace vb
