// The public header stands alone in C++11, and its records have the sizes that are stored.
#include "bsp.h"

static_assert(sizeof(BspIoctlRecord) == 72, "request record");
static_assert(sizeof(BspDevinfo) == 128, "board record");
static_assert(sizeof(BspSupplyRecord) == 80, "supply record");
