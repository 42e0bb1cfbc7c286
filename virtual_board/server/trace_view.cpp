#include "virtual_board/server/trace_view.h"

#include "language/times.h"
#include "language/trace_parts.h"
#include "language/trace_reader.h"

#include <cstdlib>
#include <fstream>
#include <map>

namespace vboard::server {

namespace {

/** The name of a process as `ps` shows it; empty for one that has ended. */
std::string processName(int32_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

/** The names of the processes of one list. */
class ProcessNames {
  public:
    const std::string &of(int32_t pid) {
        const auto [place, isNew] = names_.try_emplace(pid);
        if (isNew)
            place->second = processName(pid);
        return place->second;
    }

  private:
    std::map<int32_t, std::string> names_;
};

/** The port at which the model's uplinks begin. */
uint32_t firstUplinkOf(const Board &board) {
    uint32_t ports = 0;
    for (const VBoardProperty &count : board.properties({"ports.copper", "ports.sfp"}))
        ports += static_cast<uint32_t>(std::strtoul(count.value, nullptr, 10));
    return ports + 1;
}

Json partOfRequest(const std::string &line, uint32_t firstUplink) {
    try {
        const std::string part = language::partOf(language::readTraceLine(line), firstUplink);
        return part.empty() ? Json() : Json(part);
    } catch (const language::Refused &) { // of a record that something has overwritten
        return nullptr;
    }
}

Json requestJson(const VBoardRequest &request, uint32_t firstUplink, ProcessNames &processes) {
    Json object = Json::parse(request.json);
    object["number"] = request.number;
    object["time"] = language::secondsText(request.time);
    object["text"] = request.text;
    object["part"] = partOfRequest(request.json, firstUplink);
    object["process"] = processes.of(request.pid);
    return object;
}

} // namespace

uint64_t nextRequest(const Board &board) {
    uint64_t position = UINT64_MAX;
    const List<VBoardRequest> none([&](VBoardRequest **list, uint32_t *count, VBoardError *error) {
        return vboardTrace(board, &position, 1, list, count, nullptr, error);
    });
    return position;
}

Json traceJson(const Board &board, uint64_t &position, uint32_t most) {
    uint64_t lost = 0;
    const List<VBoardRequest> requests(
        [&](VBoardRequest **list, uint32_t *count, VBoardError *error) {
            return vboardTrace(board, &position, most, list, count, &lost, error);
        });
    ProcessNames processes;
    Json array = Json::array();
    const uint32_t firstUplink = firstUplinkOf(board);
    for (const VBoardRequest &request : requests)
        array.push_back(requestJson(request, firstUplink, processes));
    return {{"next", position}, {"lost", lost}, {"requests", array}};
}

} // namespace vboard::server
