// How the commands that run a window command headless report it: the messages the
// window would have shown become the output.
#pragma once

#include "cli/cli_support.h"
#include "commands/headless_port.h"
#include "commands/save_commands.h"

namespace qm::cli {

// Done: `fields`, then "message" (the first message shown) and, when the command showed
// more than one, "messages" with all of them. Failed (or cancelled): the failure's
// message, the last one shown, as Fail reports it.
int ReportCommand(Output& output, CommandResult result, const HeadlessPort& port, Json fields = Json::object());

}  // namespace qm::cli
