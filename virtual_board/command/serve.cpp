// `vboard serve`.

#include "virtual_board/server/serve.h"

#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <memory>
#include <string>
#include <vector>

namespace vboard {

namespace {

Parser address(server::ListenAddress &target) {
    return [&target](const std::string &word) { target = server::parseListenAddress(word); };
}

Parser hostNames(std::vector<std::string> &target) {
    return [&target](const std::string &word) { target.push_back(server::parseHostName(word)); };
}

void defineServe(Command &command) {
    const auto options = std::make_shared<server::ServeOptions>();
    command.argument("DIR", "A board's folder, or a folder with boards",
                     {text(options->folder), {{}, Offers::Files::Folders, nullptr}});
    command
        .option("--listen", "ADDRESS:PORT", "Where to listen; port 0 is a free one",
                address(options->listen))
        .usually("127.0.0.1:0");
    command.option("--token-file", "FILE",
                   "A file with the token, which nobody else may read; without it the token is a "
                   "new one",
                   fileName(options->tokenFile));
    command
        .option("--scenario", "FILE", "A scenario that the page may play; may be repeated",
                {texts(options->scenarios), {{}, Offers::Files::All, nullptr}})
        .repeatable();
    command.flag("--allow-run", "Let scenarios run programs", options->canRun)
        .onlyWith("--scenario");
    command
        .option("--host", "NAME[:PORT]",
                "Another name by which it is reached, and its port there; may be repeated",
                hostNames(options->hosts))
        .repeatable();
    command.detail(
        "The first line that it prints is the page's URL, which lets in whoever has it: its token "
        "is a secret.\n"
        "Others of this machine and pages from elsewhere are kept out; on another address than the "
        "machine's own everything, the token too, can be read on the way.\n"
        "It goes on until Ctrl-C, SIGTERM or SIGHUP, exit code 0, or until a single board is gone, "
        "exit code 1.");
    command.example("vboard serve board")
        .example("vboard serve boards --listen 127.0.0.1:8080 --token-file token")
        .example("vboard serve board --scenario fan-failure.toml --allow-run");
    command.does([options] { server::serve(*options); });
}

} // namespace

void addServe(Command &root) {
    root.command("serve", "Show boards in a browser, live", defineServe);
}

} // namespace vboard
