#include "collections/merge_shards.h"

#include <cstdio>
#include <string_view>

#include "core/file_replace.h"
#include "core/record_scanner.h"

namespace qm {

namespace {

// A shard's records as spans of its bytes: each from its record line to the next one,
// the bytes copied as they are.
std::vector<std::string_view> Records(std::string_view bytes) {
  std::vector<std::string_view> records;
  ByteLines lines(bytes);
  RecordScanner scanner(lines);
  while (scanner.NextRecord()) {
    const std::size_t begin = scanner.RecordBegin();
    scanner.ReadBody([](std::string_view) {});
    records.push_back(bytes.substr(begin, scanner.End() - begin));
  }
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
