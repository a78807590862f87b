// Everything a command may ask of the main window. Commands reach the window only
// through this port, so they run the same under the Qt window, in the command-line
// tool and in tests. Texts passed here are UTF-8.
#pragma once

#include <string>

namespace qm {

enum class ChooserMode { Open, Save };

struct FileChoice {
  std::string title;        // the chooser's caption
  std::string patterns;     // such as "*.fut;*.txt;*.dat"
  std::string description;  // such as "Quillmere Files"
  std::string directory;    // where the chooser starts
  ChooserMode mode = ChooserMode::Open;
};

// One explained change of a paced solve: the explanation line, the cell it changes
// (target), a second cell involved or -1, the new text as the step shows it, and the
// layout row and column to highlight or -1.
struct SolveStep {
  std::string line;
  int target = -1;
  int second = -1;
  std::string text;
  int row = -1;
  int col = -1;
};

// The background roles a position can be painted in; the colour scheme decides the
// actual colours.
enum class CellColour { Normal, Highlight, Target, Error };

class WindowPort {
 public:
  virtual ~WindowPort() = default;

  // A modal message box with an OK button.
  virtual void ShowMessage(const std::string& text) = 0;
  // A modal Yes/No question; true for Yes.
  virtual bool AskYesNo(const std::string& question) = 0;
  // The file-name chooser; the empty string when the user cancels.
  virtual std::string ChooseFile(const FileChoice& choice) = 0;

  virtual void SetStatusLine(const std::string& text) = 0;
  virtual void SetProgressLine(const std::string& text) = 0;
  virtual std::string ProgressLine() const = 0;
  // The progress area beside the progress line: several lines about the work in hand
  // (batch creation shows the puzzle, its size and the output file there).
  virtual void SetProgressArea(const std::string& text) { (void)text; }

  // The busy (hourglass) pointer while true, the normal pointer otherwise.
  virtual void SetBusy(bool busy) = 0;
  // Lets pending user events through from inside a long loop (cancel, pacing keys).
  virtual void ProcessEvents() = 0;
  // Sleeps until at least one user or timer event has come, then handles it: the wait
  // for the first go-ahead of a paced solve must not burn a core.
  virtual void WaitForEvents() { ProcessEvents(); }
  // The one-shot pacing timer: enabled or not, and its interval in milliseconds.
  virtual void SetPacingTimer(bool enabled, int intervalMs) = 0;

  // Redraws position k from the model.
  virtual void ShowPosition(int k) = 0;
  // Draws `text` (a model text, in the files' code page) at position k without changing
  // the model, until k is redrawn.
  virtual void ShowCellText(int k, const std::string& text) = 0;
  // Presents one explained change and returns when the user or the pacing timer says
  // go on (or the paced solve was cancelled); the caller then stores the new text.
  virtual void ShowStep(const SolveStep& step) = 0;
  virtual void ColourPosition(int k, CellColour colour) = 0;
  virtual CellColour ColourOf(int k) const = 0;
  // Redraws the whole grid from the model (the size may have changed).
  virtual void RedrawGrid() = 0;
  // Shows the size, signs and clues, the puzzle number, the count and the description.
  virtual void RefreshPuzzleInfo() = 0;
};

}  // namespace qm
