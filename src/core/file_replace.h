// Rewriting a file without ever losing what it held: the new content goes to a scratch
// file beside the target and takes the target's place only once it is complete, so a
// full disk or an interrupted write leaves the old file exactly as it was.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace qm {

// Writes the file at `path`; false on any failure.
using FileWriter = std::function<bool(const std::string& path)>;

// Gives `target` new content through `write`, which is handed the path to write to.
// A regular (or missing) target is written through a scratch file in its directory,
// synced, and renamed over it in one step (the folder synced after); the target keeps
// its owner, group (where the process may give them) and permissions. The target's
// lock (file_lock.h) is held throughout. False when the write failed, no scratch file
// can be made, the lock stayed taken, or the target is not a writable regular file;
// the target is then byte for byte as before. Scratch files that killed commands left
// in the folder (our names only, stale, held by no running command) go on the way.
bool ReplaceFile(const std::string& target, const FileWriter& write);

// ReplaceFile with the given bytes.
bool ReplaceFileWith(const std::string& target, std::string_view bytes);

// The whole content of a file; false when it cannot be read (missing, a directory).
bool ReadWholeFile(const std::string& path, std::string& bytes);

// Copies source over target through ReplaceFile; false when the source cannot be read
// or the target cannot be written. Copying a file onto itself leaves it as it was.
bool CopyFileSafely(const std::string& source, const std::string& target);

}  // namespace qm
