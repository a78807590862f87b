// The window's own switches kept between runs, in "Quillmere.opt" beside the five-line
// configuration file (whose layout other programs read and which stays as it is):
//
//   AllowAnyDigit=0     digit keys place any digit, clashes are ringed: 1 on, 0 off
//   ShowTimer=1         the solving timer is shown: 1 on, 0 off
#pragma once

#include <string>
#include <string_view>

namespace qm {

inline constexpr std::string_view kWindowOptionsFileName = "Quillmere.opt";

struct WindowOptions {
  bool allowAnyDigit = false;
  bool showTimer = true;
};

// The options kept in `path`; the defaults for a missing file and for lines it lacks or
// cannot be read.
WindowOptions ReadWindowOptions(const std::string& path);
// Writes the options to `path` (CR LF lines); false when it cannot be written.
bool WriteWindowOptions(const std::string& path, const WindowOptions& options);

}  // namespace qm
