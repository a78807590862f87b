// A window port without a window, for the command-line tool and the tests: questions
// and file choices are answered from scripts, everything shown is recorded.
#pragma once

#include <array>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/puzzle_model.h"
#include "core/window_port.h"

namespace qm {

class HeadlessPort : public WindowPort {
 public:
  HeadlessPort();

  void ShowMessage(const std::string& text) override;
  bool AskYesNo(const std::string& question) override;
  std::string ChooseFile(const FileChoice& choice) override;
  void SetStatusLine(const std::string& text) override;
  void SetProgressLine(const std::string& text) override;
  std::string ProgressLine() const override { return progressLine_; }
  void SetProgressArea(const std::string& text) override { progressAreas.push_back(text); }
  void SetBusy(bool busy) override { busy_ = busy; }
  void ProcessEvents() override;
  void SetPacingTimer(bool enabled, int intervalMs) override;
  void ShowPosition(int k) override { shownPositions.push_back(k); }
  void ShowCellText(int k, const std::string& text) override { shownTexts.emplace_back(k, text); }
  void ShowStep(const SolveStep& step) override;
  void ColourPosition(int k, CellColour colour) override;
  CellColour ColourOf(int k) const override;
  void RedrawGrid() override { ++gridRedraws; }
  void RefreshPuzzleInfo() override { ++infoRefreshes; }

  bool Busy() const { return busy_; }

  // Scripted answers, taken in order; when a script runs out the default applies.
  std::deque<bool> yesNoAnswers;
  bool defaultAnswer = true;
  std::deque<std::string> fileAnswers;  // default: cancel ("")

  // Called on every ProcessEvents, so a test can cancel or continue a long command.
  std::function<void()> onProcessEvents;
  // Called on every ShowMessage, while the message is "on screen".
  std::function<void(const std::string&)> onMessage;
  // Called on every ShowStep, while the step waits.
  std::function<void(const SolveStep&)> onStep;

  // What was shown, in order.
  std::vector<std::string> messages;
  std::vector<std::string> questions;
  std::vector<FileChoice> fileChoices;
  std::vector<std::string> statusLines;
  std::vector<std::string> progressLines;
  std::vector<std::string> progressAreas;
  std::vector<int> shownPositions;
  std::vector<std::pair<int, std::string>> shownTexts;
  std::vector<SolveStep> steps;
  int processEventsCalls = 0;
  int gridRedraws = 0;
  int infoRefreshes = 0;
  bool timerEnabled = false;
  int timerInterval = 0;

 private:
  std::string progressLine_;
  bool busy_ = false;
  std::array<CellColour, kPositionCount> colours_{};
};

}  // namespace qm
