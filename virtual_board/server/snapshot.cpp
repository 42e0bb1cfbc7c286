#include "virtual_board/server/snapshot.h"

#include "virtual_board/calls/panel.h"
#include "virtual_board/drawing/part_json.h"

#include <algorithm>

namespace vboard::server {

namespace {

constexpr char kClock[] = "clock";
constexpr char kTime[] = "time";

std::string valueIn(const drawing::Readings &readings, const std::string &name) {
    const auto place = readings.find(name);
    return place == readings.end() ? "" : place->second;
}

/** The entries that are new or other than before. What has gone is null. */
Json changedProperties(const drawing::Readings &earlier, const drawing::Readings &later) {
    Json changed = Json::object();
    for (const auto &[name, value] : later) {
        const auto before = earlier.find(name);
        if (before == earlier.end() || before->second != value)
            changed[name] = value;
    }
    for (const auto &[name, value] : earlier) {
        if (!later.contains(name))
            changed[name] = nullptr;
    }
    return changed;
}

Json changedParts(const std::vector<drawing::Part> &earlier,
                  const std::vector<drawing::Part> &later) {
    Json changed = Json::array();
    for (const drawing::Part &part : later) {
        if (std::find(earlier.begin(), earlier.end(), part) == earlier.end())
            changed.push_back(drawing::partJson(part));
    }
    return changed;
}

} // namespace

Json faultsJson(const Board &board) {
    const List<VBoardFault> faults([&](VBoardFault **list, uint32_t *count, VBoardError *error) {
        return vboardFaults(board, list, count, error);
    });
    Json array = Json::array();
    for (const VBoardFault &fault : faults)
        array.push_back(Json::parse(fault.json));
    return array;
}

bool Snapshot::isMoving() const {
    const std::string time = valueIn(properties, kTime);
    return time != "virtual" && time != "stepped";
}

Snapshot Snapshot::of(const Board &board) {
    Snapshot snapshot;
    snapshot.properties = readingsOf(board);
    snapshot.parts = drawing::partsOf(snapshot.properties);
    snapshot.faults = faultsJson(board);
    return snapshot;
}

Json whole(const Snapshot &snapshot) {
    return {{"clock", valueIn(snapshot.properties, kClock)},
            {"time", valueIn(snapshot.properties, kTime)},
            {"properties", snapshot.properties},
            {"parts", drawing::partsJson(snapshot.parts)},
            {"faults", snapshot.faults},
            {"users", snapshot.users}};
}

Json difference(const Snapshot &earlier, const Snapshot &later) {
    Json changed;
    const Json properties = changedProperties(earlier.properties, later.properties);
    for (const char *name : {kClock, kTime}) {
        if (properties.contains(name))
            changed[name] = properties[name];
    }
    if (!properties.empty())
        changed["properties"] = properties;
    const Json parts = changedParts(earlier.parts, later.parts);
    if (!parts.empty())
        changed["parts"] = parts;
    if (earlier.faults != later.faults)
        changed["faults"] = later.faults;
    if (earlier.users != later.users)
        changed["users"] = later.users;
    return changed;
}

} // namespace vboard::server
