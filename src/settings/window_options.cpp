#include "settings/window_options.h"

#include "core/file_replace.h"
#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace {

constexpr std::string_view kAllowAnyDigit = "AllowAnyDigit";
constexpr std::string_view kShowTimer = "ShowTimer";

}  // namespace

WindowOptions ReadWindowOptions(const std::string& path) {
  WindowOptions options;
  LineReader file(path);
  if (!file.IsOpen()) return options;
  std::string line;
  while (file.ReadLine(line)) {
    const std::string_view text = Trim(line);
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string_view key = Trim(text.substr(0, equals));
    const std::string_view value = Trim(text.substr(equals + 1));
    // Only "0" and "1" count: anything else keeps the default.
    if (value != "0" && value != "1") continue;
    if (key == kAllowAnyDigit) options.allowAnyDigit = value == "1";
    if (key == kShowTimer) options.showTimer = value == "1";
  }
  return options;
}

bool WriteWindowOptions(const std::string& path, const WindowOptions& options) {
  TextBuilder out;
  out.Line(std::string(kAllowAnyDigit) + (options.allowAnyDigit ? "=1" : "=0"));
  out.Line(std::string(kShowTimer) + (options.showTimer ? "=1" : "=0"));
  return ReplaceFileWith(path, out.Text());
}

}  // namespace qm
