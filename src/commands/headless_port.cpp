#include "commands/headless_port.h"

namespace qm {

HeadlessPort::HeadlessPort() { colours_.fill(CellColour::Normal); }

void HeadlessPort::ShowMessage(const std::string& text) {
  messages.push_back(text);
  if (onMessage) onMessage(text);
}

bool HeadlessPort::AskYesNo(const std::string& question) {
  questions.push_back(question);
  if (yesNoAnswers.empty()) return defaultAnswer;
  const bool answer = yesNoAnswers.front();
  yesNoAnswers.pop_front();
  return answer;
}

std::string HeadlessPort::ChooseFile(const FileChoice& choice) {
  fileChoices.push_back(choice);
  if (fileAnswers.empty()) return {};
  std::string answer = fileAnswers.front();
  fileAnswers.pop_front();
  return answer;
}

void HeadlessPort::ShowStep(const SolveStep& step) {
  steps.push_back(step);
  if (onStep) onStep(step);
}

void HeadlessPort::SetStatusLine(const std::string& text) { statusLines.push_back(text); }

void HeadlessPort::SetProgressLine(const std::string& text) {
  progressLine_ = text;
  progressLines.push_back(text);
}

void HeadlessPort::ProcessEvents() {
  ++processEventsCalls;
  if (onProcessEvents) onProcessEvents();
}

void HeadlessPort::SetPacingTimer(bool enabled, int intervalMs) {
  timerEnabled = enabled;
  timerInterval = intervalMs;
}

void HeadlessPort::ColourPosition(int k, CellColour colour) {
  if (k >= 0 && k < kPositionCount) colours_[k] = colour;
}

CellColour HeadlessPort::ColourOf(int k) const {
  return k >= 0 && k < kPositionCount ? colours_[k] : CellColour::Normal;
}

}  // namespace qm
