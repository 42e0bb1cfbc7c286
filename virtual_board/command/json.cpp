#include "virtual_board/command/json.h"

#include <cstdio>

namespace vboard {

namespace {

constexpr int kIndent = 2;
constexpr int kOnOneLine = -1;

template <typename Json>
void print(const Json &answer, int indent) {
    std::printf("%s\n", answer.dump(indent, ' ', false, Json::error_handler_t::replace).c_str());
}

} // namespace

void printJson(const nlohmann::ordered_json &answer) {
    print(answer, kIndent);
}

void printJson(const nlohmann::json &answer) {
    print(answer, kIndent);
}

void printJsonLine(const nlohmann::json &answer) {
    print(answer, kOnOneLine);
}

} // namespace vboard
