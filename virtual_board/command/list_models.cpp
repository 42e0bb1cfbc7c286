// `vboard list-models`.

#include "virtual_board/calls/board.h"
#include "virtual_board/command/commands.h"
#include "virtual_board/command/json.h"
#include "virtual_board/command/words.h"

#include <cstdio>
#include <memory>

namespace vboard {

namespace {

void listModels(bool asJson) {
    auto list = nlohmann::json::array();
    for (const VBoardModel &model : List<VBoardModel>(vboardModels)) {
        if (asJson)
            list.push_back({{"model", model.id},
                            {"description", model.description},
                            {"poe_ports", model.poePorts},
                            {"supply_eeproms", model.hasSupplyEeproms != 0}});
        else
            std::printf("%s  %s\n", model.id, model.description);
    }
    if (asJson)
        printJson(list);
}

void defineListModels(Command &command) {
    const auto asJson = std::make_shared<bool>(false);
    addJson(command, *asJson);
    command.example("vboard list-models").does([asJson] { listModels(*asJson); });
}

} // namespace

void addListModels(Command &root) {
    root.command("list-models", "List the models that boards can be made of", defineListModels);
}

} // namespace vboard
