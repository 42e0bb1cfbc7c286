#pragma once
// Which PoE ports a board has, and which of them a command is for.

#include "iodbg/core/command.h"
#include "iodbg/core/model.h"

#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

/** This board's model; throws when there is no PoE controller that could be asked. */
Model requirePoe();

/** Throws for a port that a board with so many ports does not have. */
void requirePort(uint32_t port, uint32_t portCount);

/** Ports in the words of the command line: "3", "1-8", "1,4-6", "all". */
class PortList {
  public:
    PortList() = default;
    explicit PortList(const std::string &word);

    /** The ports, each once, in rising order; throws for one that the board does not have. */
    std::vector<uint32_t> within(uint32_t portCount) const;

  private:
    bool isAll_ = false;
    std::vector<uint32_t> ports_;
};

Parser portList(PortList &target);
Parser portNumber(uint32_t &target);
constexpr char kPortListHelp[] = "Ports: 3, 1-8, 1,4-6 or all";

} // namespace iodbg
