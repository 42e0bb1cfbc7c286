#include "virtual_board/control/threads.h"

#include "virtual_board/control/descriptor.h"

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace vboard {

namespace {

/** A file of /proc; empty when it is not there. */
std::string textOf(int folder, const std::string &name) {
    const Descriptor file(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    char piece[4096];
    ssize_t size = 0;
    while (file.isOpen() && (size = read(file.get(), piece, sizeof(piece))) > 0)
        text.append(piece, static_cast<size_t>(size));
    return text;
}

/** The state, which stands behind the program's name. */
char stateIn(const std::string &stat) {
    const size_t end = stat.rfind(") ");
    return end != std::string::npos && end + 2 < stat.size() ? stat[end + 2] : 'X';
}

uint64_t runsIn(const std::string &schedstat) {
    char *next = nullptr;
    std::strtoull(schedstat.c_str(), &next, 10); // time on a processor
    std::strtoull(next, &next, 10);              // and waiting for one
    return std::strtoull(next, nullptr, 10);
}

void addNumbers(const std::string &list, std::vector<int32_t> &numbers) {
    const char *next = list.c_str();
    for (char *end = nullptr;; next = end) {
        const auto number = static_cast<int32_t>(std::strtol(next, &end, 10));
        if (end == next)
            return;
        if (std::find(numbers.begin(), numbers.end(), number) == numbers.end())
            numbers.push_back(number);
    }
}

/** Adds the threads of a process, and to the processes those that they have started. */
void look(int32_t pid, std::vector<Thread> &threads, std::vector<int32_t> &processes) {
    const std::string path = "/proc/" + std::to_string(pid) + "/task";
    const std::unique_ptr<DIR, int (*)(DIR *)> tasks(opendir(path.c_str()), closedir);
    if (tasks == nullptr)
        return; // it has ended
    while (const dirent *task = readdir(tasks.get())) {
        const int32_t id = std::atoi(task->d_name);
        if (id == 0)
            continue;
        const std::string name = std::string(task->d_name) + "/";
        const int folder = dirfd(tasks.get());
        threads.push_back({pid, id, stateIn(textOf(folder, name + "stat")),
                           runsIn(textOf(folder, name + "schedstat"))});
        addNumbers(textOf(folder, name + "children"), processes);
    }
}

} // namespace

std::vector<Thread> threadsOf(std::vector<int32_t> processes) {
    std::vector<Thread> threads;
    for (size_t i = 0; i < processes.size(); ++i) { // it grows meanwhile
        const int32_t pid = processes[i];
        if (pid > 0)
            look(pid, threads, processes);
    }
    return threads;
}

std::string programOf(int32_t pid) {
    const std::string name = textOf(AT_FDCWD, "/proc/" + std::to_string(pid) + "/comm");
    return name.substr(0, name.find('\n'));
}

} // namespace vboard
