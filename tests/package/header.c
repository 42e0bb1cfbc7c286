/* The public header stands alone in C99. */
#include "bsp.h"

int32_t (*const kHeaderIsUsable)(uint32_t, BspDevinfo *) = ioDevinfoGet;
