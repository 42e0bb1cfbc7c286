// Boards: a list of them, and new ones made of captured units.

#include "language/texts.h"
#include "virtual_board/calls/panel.h"
#include "virtual_board/server/answers.h"
#include "virtual_board/server/asked.h"
#include "virtual_board/server/target.h"
#include "virtual_board/server/uploaded_file.h"

namespace vboard::server {

namespace {

constexpr uint32_t kMostBoards = 64; // that one server makes
constexpr size_t kLongestName = 64;

/** A plain name of a folder, which cannot lead anywhere else. */
void judgeName(const std::string &name) {
    constexpr char kCharacters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                   "0123456789-_.";
    if (name.empty() || name.size() > kLongestName || name[0] == '.' || name[0] == '-' ||
        name.find_first_not_of(kCharacters) != std::string::npos)
        throw Refusal(kBadRequest, VBOARD_E_REFUSED,
                      language::quoted(name) +
                          " is no name for a board: up to 64 letters, digits, '-', '_' and '.', of "
                          "which a letter, a digit or '_' is the first");
}

Json listedJson(const Site &site, const VBoardListed &board) {
    return {{"name", site.nameOf(board.folder)},
            {"model", board.model},
            {"description", descriptionOf(board.model)},
            {"time", board.time},
            {"users", board.users},
            {"problem", board.problem}};
}

} // namespace

Response listBoards(Services &services, const Asked &) {
    const Site &site = services.site;
    const List<VBoardListed> boards([&](VBoardListed **list, uint32_t *count, VBoardError *error) {
        return vboardList(site.folder().c_str(), list, count, error);
    });
    Json array = Json::array();
    for (const VBoardListed &board : boards)
        array.push_back(listedJson(site, board));
    return jsonResponse(
        {{"folder", site.folder()}, {"canCreate", !site.isSingle()}, {"boards", array}});
}

Response makeTwin(Services &services, const Asked &asked) {
    Site &site = services.site;
    if (site.isSingle())
        throw Refusal(kConflict, VBOARD_E_REFUSED,
                      "a single board is served; serve a folder to make boards in it");
    const std::string name = valueOf(asked.query, "name");
    judgeName(name);
    const std::string time = valueOf(asked.query, "time");
    Site::Place place(site, kMostBoards);
    const UploadedFile file(asked.body);
    const std::string folder = site.folder() + "/" + name;
    const std::string gaps = file.tellWithout([&] {
        return textOf([&](char **text, VBoardError *error) {
            return vboardCreateFrom(folder.c_str(), file.path().c_str(),
                                    time.empty() ? nullptr : time.c_str(), text, error);
        });
    });
    place.take();
    return jsonResponse({{"name", name}, {"gaps", language::linesOf(gaps)}}, kCreated);
}

} // namespace vboard::server
