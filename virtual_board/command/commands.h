#pragma once
// The commands of `vboard`. Each prints its data on standard output and throws vb::Refused when it
// cannot do what it is asked.

#include "command_line/command.h"

#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace vboard {

struct CreateArguments {
    std::string folder, model, from, time, serial, mac, commandLine, flashTiming;
    std::vector<std::string> flash; // geometries of partitions
};

struct TraceArguments {
    std::string folder;
    bool asJson = false;
    bool isNumbering = false; // processes, in place of the system's numbers for them
    bool isFollowing = false;
    bool isClearing = false;
    uint32_t last = UINT32_MAX; // how many requests at most, counted from the newest
};

/** The program of `vboard run` cannot be started. */
class CannotStart : public std::exception {
  public:
    explicit CannotStart(std::string reason) : reason_(std::move(reason)) {}
    const char *what() const noexcept override { return reason_.c_str(); }

  private:
    std::string reason_;
};

/** It can, but would be on the host. */
class NotOnBoard : public CannotStart {
  public:
    using CannotStart::CannotStart;
};

/** A scenario that is played was not as it expects, or a trace was answered otherwise. */
class ExpectationFailed : public std::exception {
  public:
    explicit ExpectationFailed(std::string reason) : reason_(std::move(reason)) {}
    const char *what() const noexcept override { return reason_.c_str(); }

  private:
    std::string reason_;
};

// Each adds a command.
void addCreate(command_line::Command &root);
void addCopy(command_line::Command &root);
void addCapture(command_line::Command &root);
void addDelete(command_line::Command &root);
void addUpgrade(command_line::Command &root);
void addList(command_line::Command &root);
void addListModels(command_line::Command &root);
void addRun(command_line::Command &root);
void addEnv(command_line::Command &root);
void addGet(command_line::Command &root);
void addSet(command_line::Command &root);
void addProperties(command_line::Command &root);
void addFault(command_line::Command &root);
void addPanel(command_line::Command &root);
void addServe(command_line::Command &root);
void addFlash(command_line::Command &root);
void addConsole(command_line::Command &root);
void addTrace(command_line::Command &root);
void addPlay(command_line::Command &root);
void addReplay(command_line::Command &root);
void addAdvance(command_line::Command &root);

void create(const CreateArguments &arguments);

void getProperties(const std::string &folder, const std::vector<std::string> &names, bool asJson);
/** What is to be changed: names and values. */
using Assignments = std::vector<std::pair<std::string, std::string>>;
void setProperties(const std::string &folder, const Assignments &assignments);

/** The words of a new rule. */
struct FaultWords {
    std::string device;
    std::string op = "any";
    std::string offset;
    std::string nth = "1";
    std::string when = "once";
    std::string effect;
};
void addFault(const std::string &folder, const FaultWords &rule);
void listFaults(const std::string &folder, bool asJson);
void clearFaults(const std::string &folder, const std::vector<std::string> &ids);

/** Draws the front panel: once, or again and again until the command is stopped. */
void printPanel(const std::string &folder, bool isWatching, double intervalSeconds);

/** The flash partitions: what they are and hold. */
void showFlash(const std::string &folder, bool asJson);
void markBadBlock(const std::string &folder, const std::string &partition,
                  const std::string &block);
void showConsole(const std::string &folder, bool asJson);

void printTrace(const TraceArguments &arguments);

} // namespace vboard
