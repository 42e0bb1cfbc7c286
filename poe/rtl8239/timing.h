#pragma once
// How long the controller takes, and is given.

#include <cstdint>
#include <sys/types.h>

namespace bsp::rtl8239 {

// Of an exchange, in microseconds.
constexpr useconds_t kSettle = 100000; // what the controller needs before each request
constexpr useconds_t kPoll = 100000;
constexpr useconds_t kLoaderPoll = 25000;
constexpr useconds_t kGlobalEnableWait = 1100000;
constexpr useconds_t kMappingWait = 2100000;

constexpr unsigned kResetSeconds = 1; // in reset, and after it
constexpr unsigned kRestSeconds = 1; // before and after every change between application and loader
constexpr unsigned kLoaderSeconds = 10; // until the loader runs

} // namespace bsp::rtl8239
