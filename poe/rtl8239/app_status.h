#pragma once
// Content of the application status file.

#include <cstdint>

constexpr uint32_t kAppUsable = 0;
constexpr uint32_t kAppUpgradeStarted = 1;
constexpr uint32_t kAppUpgradeFailed = 2;
