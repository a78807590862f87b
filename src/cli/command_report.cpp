#include "cli/command_report.h"

namespace qm::cli {

int ReportCommand(Output& output, CommandResult result, const HeadlessPort& port, Json fields) {
  if (result != CommandResult::Done || port.messages.empty()) {
    return Fail(output, port.messages.empty() ? "Nothing was done" : port.messages.back(), std::move(fields));
  }
  if (output.json) {
    fields["message"] = port.messages.front();
    if (port.messages.size() > 1) fields["messages"] = port.messages;
    PrintJson(output, fields);
  } else {
    for (const std::string& message : port.messages) output.out << message << '\n';
  }
  return kExitOk;
}

}  // namespace qm::cli
