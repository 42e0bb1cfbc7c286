#pragma once
// A unit in a file: what was read of it, as one document. Two captures of the same state are the
// same bytes but for what stands below "capture".

#include "language/bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace language {

constexpr char kCaptureFormat[] = "captured-unit";
constexpr int64_t kCaptureVersion = 1;  // grows when programs that read captures have to be changed
constexpr int64_t kCaptureRevision = 0; // grows with what is added

/** A reading that failed. */
struct CapturedFailure {
    int32_t status = 0;
    std::string name; // "BSP_E_FAILED"; empty of a foreign code
    std::string message;

    bool operator==(const CapturedFailure &) const = default;
};

/** A part of a partition's content. */
struct CapturedRun {
    uint64_t offset = 0;
    Bytes bytes;

    bool operator==(const CapturedRun &) const = default;
};
using CapturedRuns = std::vector<CapturedRun>;

/** A number, a text (also a word, and a row of bytes as digits), content of flash, or a failure. */
using CapturedContent = std::variant<int64_t, std::string, CapturedRuns, CapturedFailure>;

struct CapturedReading {
    std::string name; // "fan.1.speed"
    CapturedContent content;
    std::optional<Bytes> raw = {}; // the bytes of which a value is made

    bool hasFailed() const { return std::holds_alternative<CapturedFailure>(content); }
    const CapturedFailure *failure() const { return std::get_if<CapturedFailure>(&content); }
    const int64_t *number() const { return std::get_if<int64_t>(&content); }
    const std::string *text() const { return std::get_if<std::string>(&content); }
    const CapturedRuns *runs() const { return std::get_if<CapturedRuns>(&content); }
    bool operator==(const CapturedReading &) const = default;
};

/** What was not read, and why. */
struct LeftOut {
    std::string name; // a row's, or a property's
    std::string reason;

    bool operator==(const LeftOut &) const = default;
};

/** How the document was made. */
struct CaptureFacts {
    std::string tool;    // "iodbg 1.1.0"
    std::string library; // "1.1.0"
    std::string kernel;
    std::string began; // "2026-11-22T22:40:00Z"
    uint64_t tookMs = 0;
    bool hasSecrets = false;
    bool hasFlash = false;
    bool isAnonymous = false;
    std::vector<LeftOut> leftOut;

    bool operator==(const CaptureFacts &) const = default;
};

/** As `iodbg check --json` tells it. */
struct CapturedFinding {
    std::string subject, verdict, found;
    std::optional<std::string> advice;
    std::string code, unit;
    std::optional<int64_t> index;
    std::optional<std::string> cause;

    bool operator==(const CapturedFinding &) const = default;
};

struct CapturedUnit {
    int64_t revision = kCaptureRevision;
    CaptureFacts capture;
    std::vector<CapturedReading> properties; // each name once
    std::vector<CapturedFinding> findings;

    /** What was read of a name; null when the document has nothing of it. */
    const CapturedReading *find(const std::string &name) const;
    bool operator==(const CapturedUnit &) const = default;
};

/** The document; properties in the order of the table, those that it does not know at the end. */
std::string writtenCapture(const CapturedUnit &unit);

/**
 * The unit of a document. Properties of a later revision are kept. Refused, with place and reason,
 * is thrown for what is no document, and for one of a later version.
 */
CapturedUnit readCapture(const std::string &document);

} // namespace language
