// How a command ended: the user cancelled (nothing happened), it did its work, or it
// reported a failure.
#pragma once

namespace qm {

enum class CommandResult { Cancelled, Done, Failed };

}  // namespace qm
