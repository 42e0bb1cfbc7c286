#include "virtual_board/command/json.h"

#include <cstdio>

namespace vboard {

namespace {

template <typename Json>
void print(const Json &answer) {
    constexpr int kIndent = 2;
    std::printf("%s\n", answer.dump(kIndent, ' ', false, Json::error_handler_t::replace).c_str());
}

} // namespace

void printJson(const nlohmann::ordered_json &answer) {
    print(answer);
}

void printJson(const nlohmann::json &answer) {
    print(answer);
}

} // namespace vboard
