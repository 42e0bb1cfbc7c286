// `vboard serve`.

#include "virtual_board/server/serve.h"

#include "virtual_board/command/commands.h"
#include "virtual_board/command/words.h"

#include <memory>

namespace vboard {

namespace {

void defineServe(Command &command) {
    const auto options = std::make_shared<server::ServeOptions>();
    command.argument("DIR", "A board's folder, or a folder with boards",
                     {text(options->folder), {{}, Offers::Files::Folders, nullptr}});
    command
        .option("--listen", "ADDRESS:PORT", "Where to listen; port 0 is a free one",
                text(options->listen))
        .usually("127.0.0.1:0");
    command.option("--token-file", "FILE",
                   "A file with the token, which nobody else can read; usually it is a new one",
                   fileName(options->tokenFile));
    command.option("--scenario", "FILE", "A scenario that the page can play; may be repeated",
                   texts(options->scenarios));
    command.flag("--allow-run", "Let scenarios run programs", options->canRun);
    command.option("--host", "NAME",
                   "Another name by which it may be reached, with its port if that is another; may "
                   "be repeated",
                   texts(options->hosts));
    command.does([options] { server::serve(*options); });
}

} // namespace

void addServe(Command &root) {
    root.command("serve", "Show boards in a browser, live", defineServe);
}

} // namespace vboard
