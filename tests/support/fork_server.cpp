// Preloaded into programs where they run under an emulator, which translates a program anew at each
// start: that takes longer than most commands do. Here it is started once, and children do what it
// is asked for, with its code as it was translated. What answers a request is the status of the
// child's end.

#include "tests/support/fork_server.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Program = int (*)(int, char **, char **);
using Constructor = void (*)(int, char **, char **);

Program program;
int server = -1; // the socket

/** The C library's own function: the seam's, which come first, are for the program. */
template <typename Function>
Function next(Function, const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}
#define NEXT(function) next(&(function), #function)

const ElfW(Dyn) * dynamicPartOf(const dl_phdr_info &object) {
    for (int i = 0; i < object.dlpi_phnum; ++i) {
        if (object.dlpi_phdr[i].p_type == PT_DYNAMIC)
            return reinterpret_cast<const ElfW(Dyn) *>(object.dlpi_addr +
                                                       object.dlpi_phdr[i].p_vaddr);
    }
    return nullptr;
}

/** Lets the seam begin once more, which attaches it to the board that the environment names now. */
int beginSeam(dl_phdr_info *object, size_t, void *) {
    if (std::strstr(object->dlpi_name, "/libvboard.so") == nullptr)
        return 0;
    const Constructor *constructors = nullptr;
    size_t length = 0;
    for (auto *entry = dynamicPartOf(*object); entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_INIT_ARRAY)
            constructors =
                reinterpret_cast<const Constructor *>(object->dlpi_addr + entry->d_un.d_ptr);
        if (entry->d_tag == DT_INIT_ARRAYSZ)
            length = entry->d_un.d_val / sizeof(Constructor);
    }
    for (size_t i = 0; i < length; ++i)
        constructors[i](0, nullptr, environ);
    return 1;
}

/** The words at the beginning of a text, which goes on behind them. */
char **wordsIn(char *&text, uint32_t count) {
    auto **words = static_cast<char **>(std::calloc(count + 1, sizeof(char *)));
    for (uint32_t i = 0; words != nullptr && i < count; ++i) {
        words[i] = text;
        text += std::strlen(text) + 1;
    }
    return words;
}

[[noreturn]] void runProgram(const ForkRequest &request, const ForkDescriptors &descriptors,
                             char *text) {
    if (NEXT(fchdir)(descriptors.folder) != 0)
        _exit(EXIT_FAILURE);
    for (int i = 0; i < 3; ++i) {
        dup2(descriptors.streams[i], i);
        close(descriptors.streams[i]);
    }
    close(descriptors.folder);
    close(server);
    umask(request.mask);
    char **words = wordsIn(text, request.words);
    environ = wordsIn(text, request.variables);
    if (std::getenv("VBOARD_DIR") != nullptr && dl_iterate_phdr(beginSeam, nullptr) == 0)
        std::abort(); // there is none, so this would be on the server's own board
    std::exit(program(static_cast<int>(request.words), words, environ));
}

/** A request with what comes along; false when nobody asks any more. */
bool take(ForkRequest &request, ForkDescriptors &descriptors) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(descriptors))];
    iovec part = {&request, sizeof(request)};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    if (NEXT(recvmsg)(server, &message, MSG_WAITALL) != static_cast<ssize_t>(sizeof(request)))
        return false;
    std::memcpy(&descriptors, CMSG_DATA(CMSG_FIRSTHDR(&message)), sizeof(descriptors));
    return true;
}

int statusOfChild(const ForkRequest &request, const ForkDescriptors &descriptors, char *text) {
    const pid_t child = fork();
    if (child == 0)
        runProgram(request, descriptors, text);
    int status = 0;
    NEXT(waitpid)(child, &status, 0);
    return status;
}

void serve() {
    ForkRequest request;
    ForkDescriptors descriptors;
    while (take(request, descriptors)) {
        auto *text = static_cast<char *>(std::malloc(request.length));
        if (NEXT(recv)(server, text, request.length, MSG_WAITALL) !=
            static_cast<ssize_t>(request.length))
            break;
        const int status = statusOfChild(request, descriptors, text);
        std::free(text);
        for (const int stream : descriptors.streams)
            close(stream);
        close(descriptors.folder);
        NEXT(send)(server, &status, sizeof(status), MSG_NOSIGNAL);
    }
}

/** In place of the program, whose shortest command has what all need translated. */
int translateAndServe(int, char **words, char **variables) {
    char option[] = "--version";
    char *shortest[] = {words[0], option, nullptr};
    program(2, shortest, variables);
    std::fflush(stdout);
    serve();
    _exit(EXIT_SUCCESS);
}

} // namespace

/** What every program begins with. */
extern "C" int __libc_start_main(Program main, int argc, char **argv, void (*init)(),
                                 void (*fini)(), void (*loaderFini)(), void *stackEnd);
extern "C" int __libc_start_main(Program main, int argc, char **argv, void (*init)(),
                                 void (*fini)(), void (*loaderFini)(), void *stackEnd) {
    program = main;
    server = std::atoi(std::getenv(kServerVariable));
    return NEXT(__libc_start_main)(translateAndServe, argc, argv, init, fini, loaderFini, stackEnd);
}
