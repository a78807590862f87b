// A model with the sample puzzle a file away, a port without a window and the run that
// solves it: what the driver's and the solve commands' tests start from.
#pragma once

#include <gtest/gtest.h>

#include "commands/headless_port.h"
#include "commands/record_commands.h"
#include "commands/run_control.h"
#include "support/test_files.h"
#include "support/test_grids.h"

namespace qm::test {

class SampleSolve : public ::testing::Test {
 protected:
  void LoadSample() {
    const std::string path = dir.File("sample.fut");
    WriteBytes(path, CrLf(SampleRecord()));
    ASSERT_FALSE(ReadPuzzle(model, port, path, 1).notFound);
  }
  TempDir dir;
  PuzzleModel model;
  HeadlessPort port;
  RunControl run{model, port};
};

}  // namespace qm::test
