// Puzzles made on several machines: each shard of a seeded batch holds the puzzles
// i = I, I + N, I + 2N, ... of the request, numbered as the whole run numbers them.
// Merging takes record 1 from shard 1, record 2 from shard 2, and so on round the
// shards, and gives the file a single run would have written, byte for byte.
#pragma once

#include <string>
#include <vector>

namespace qm {

struct MergeResult {
  bool ok = false;
  int records = 0;
  std::string message;  // what went wrong, naming the file
};

// Writes the interleaved records of `shards` (in shard order 1..N) to `output`,
// replacing it safely. Shard k must hold as many records as shard 1, or one fewer
// (the request's count need not divide by N), and none may hold more after one ran out.
MergeResult MergeShards(const std::vector<std::string>& shards, const std::string& output);

}  // namespace qm
