#define TOML_IMPLEMENTATION
#include "virtual_board/command/toml_parser.h"
