#pragma once
// The identification page (A0h) of an SFP module, taken apart.

#include "iodbg/core/format.h"

#include <cstdint>
#include <string>
#include <vector>

namespace iodbg {

constexpr size_t kIdentificationSize = 96; // what of the page the standard defines

/** A sum over a part of a page, and the byte that holds it. */
struct PageChecksum {
    uint8_t stored;
    uint8_t computed;

    bool isRight() const { return stored == computed; }
};

/** The sum of bytes first to last, held by the byte behind them. */
PageChecksum checksumOf(ByteView page, size_t first, size_t last);

struct Identification {
    std::string kind, connector, encoding;
    std::string vendor, oui, partNumber, revision, serialNumber;
    std::string date;                     // "2026-01-31"
    std::vector<std::string> compliances; // "10GBASE-SR", ...
    std::vector<std::string> reaches;     // "300 m over OM3", ...
    uint32_t rateMbaud;                   // 0: not told
    uint32_t wavelengthNm;                // 0: copper
    bool hasDiagnostics;
    bool isExternallyCalibrated;
    PageChecksum base, extended;
};

/** "10GBASE-SR, 1000BASE-SX" */
std::string listed(const std::vector<std::string> &words);

/** page: kIdentificationSize bytes. */
Identification identificationOf(ByteView page);

} // namespace iodbg
