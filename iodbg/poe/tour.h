#pragma once
// Which PoE ports deliver power, asked for a few at a time.

#include "iodbg/core/report.h"

#include <cstdint>
#include <map>

namespace iodbg {

/**
 * Goes round the ports. The controller takes 200 ms for each answer, so each call asks for a few
 * and answers what is known of all.
 */
class PoeTour {
  public:
    /** Adds the controller, its power and its ports; what fails is noted and asked again. */
    void add(Report &report, uint32_t ports);

  private:
    void addPorts(Report &report, Section &section, uint32_t ports);

    uint32_t next_ = 1;
    std::map<uint32_t, bool> isDelivering_;
};

} // namespace iodbg
