#include "virtual_board/command/words.h"

namespace vboard {

void addFolder(Command &command, std::string &folder) {
    command.argument("DIR", "The board's folder",
                     {text(folder), {{}, Offers::Files::Folders, nullptr}});
}

void addJson(Command &command, bool &asJson) {
    command.flag("--json", "Print JSON", asJson);
}

Parser texts(std::vector<std::string> &target) {
    return [&target](const std::string &word) { target.push_back(word); };
}

} // namespace vboard
