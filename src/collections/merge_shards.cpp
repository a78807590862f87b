#include "collections/merge_shards.h"

#include <cstdio>
#include <string_view>

#include "core/file_replace.h"

namespace qm {

namespace {

// A shard's records as spans of its bytes: each from its "#" line to the next one.
// Shards are written by this program, so every line ends in CR LF.
std::vector<std::string_view> Records(std::string_view bytes) {
  std::vector<std::string_view> records;
  std::size_t start = std::string_view::npos;
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t end = bytes.find('\n', at);
    end = end == std::string_view::npos ? bytes.size() : end + 1;
    if (bytes[at] == '#') {
      if (start != std::string_view::npos) records.push_back(bytes.substr(start, at - start));
      start = at;
    }
    at = end;
  }
  if (start != std::string_view::npos) records.push_back(bytes.substr(start));
  return records;
}

}  // namespace

MergeResult MergeShards(const std::vector<std::string>& shards, const std::string& output) {
  MergeResult result;
  std::vector<std::string> contents(shards.size());
  std::vector<std::vector<std::string_view>> records(shards.size());
  for (std::size_t s = 0; s < shards.size(); ++s) {
    if (!ReadWholeFile(shards[s], contents[s])) {
      result.message = "Cannot read shard file: " + shards[s];
      return result;
    }
    records[s] = Records(contents[s]);
    if (s > 0 && (records[s].size() > records[0].size() || records[s].size() + 1 < records[0].size() ||
                  records[s].size() > records[s - 1].size())) {
      result.message = "Shard " + std::to_string(s + 1) + " does not fit the others (" +
                       std::to_string(records[s].size()) + " records after " +
                       std::to_string(records[s - 1].size()) + "): " + shards[s];
      return result;
    }
  }
  std::string merged;
  for (std::size_t round = 0; round < records.front().size(); ++round) {
    for (const auto& shard : records) {
      if (round < shard.size()) {
        merged.append(shard[round]);
        ++result.records;
      }
    }
  }
  if (!ReplaceFileWith(output, merged)) {
    result.message = "Error writing to file: " + output;
    result.records = 0;
    return result;
  }
  result.ok = true;
  return result;
}

}  // namespace qm
