#include "virtual_board/control/threads.h"

#include "virtual_board/control/descriptor.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace vboard {

namespace {

/** The beginning of a file of /proc, as far as it is of use here. */
struct Text {
    char text[4096];

    Text(int folder, const std::string &name) {
        const Descriptor file(openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC));
        const ssize_t size = file.isOpen() ? read(file.get(), text, sizeof(text) - 1) : 0;
        text[std::max<ssize_t>(size, 0)] = '\0';
    }
};

/** The state, which stands behind the program's name. */
char stateIn(const Text &stat) {
    const char *end = std::strrchr(stat.text, ')');
    return end != nullptr && end[1] == ' ' ? end[2] : 'X';
}

uint64_t runsIn(const Text &schedstat) {
    char *next = nullptr;
    std::strtoull(schedstat.text, &next, 10); // time on a processor
    std::strtoull(next, &next, 10);           // and waiting for one
    return std::strtoull(next, nullptr, 10);
}

void addNumbers(const Text &list, std::vector<int32_t> &numbers) {
    const char *next = list.text;
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
        threads.push_back({pid, id, stateIn(Text(folder, name + "stat")),
                           runsIn(Text(folder, name + "schedstat"))});
        addNumbers(Text(folder, name + "children"), processes);
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
    const Text name(AT_FDCWD, "/proc/" + std::to_string(pid) + "/comm");
    return {name.text, std::strcspn(name.text, "\n")};
}

} // namespace vboard
