// Everything a command may ask of the main window. Commands reach the window only
// through this port, so they run the same under the Qt window, in the command-line
// tool and in tests. Texts passed here are UTF-8.
#pragma once

#include <string>

#include "core/run_hooks.h"

namespace qm {

enum class ChooserMode { Open, Save };

struct FileChoice {
  std::string title;        // the chooser's caption
  std::string patterns;     // such as "*.fut;*.txt;*.dat"
  std::string description;  // such as "Quillmere Files"
  std::string directory;    // where the chooser starts
  ChooserMode mode = ChooserMode::Open;
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
  // for a go-ahead of a paced solve must not burn a core. False from a port that has no
  // user to wait for (it only lets pending work through): a wait would never end.
  virtual bool WaitForEvents() {
    ProcessEvents();
    return false;
  }
  // The one-shot pacing timer: enabled or not, and its interval in milliseconds.
  virtual void SetPacingTimer(bool enabled, int intervalMs) = 0;

  // Redraws position k from the model.
  virtual void ShowPosition(int k) = 0;
  // Draws `text` (a model text, in the files' code page) at position k without changing
  // the model, until k is redrawn.
  virtual void ShowCellText(int k, const std::string& text) = 0;
  // Presents one explained change of a paced solve (its line lit, its explanation in
  // the status line) while the run waits for the go-on.
  virtual void ShowStep(const SolveStep& step) = 0;
  // Takes the step off the screen and draws the changed cell's new text.
  virtual void EndStep(const SolveStep& step) { (void)step; }
  virtual void ColourPosition(int k, CellColour colour) = 0;
  virtual CellColour ColourOf(int k) const = 0;
  // Redraws the whole grid from the model (the size may have changed).
  virtual void RedrawGrid() = 0;
  // Shows the size, signs and clues, the puzzle number, the count and the description.
  // Another puzzle is shown: a window empties the status and progress lines, which spoke
  // of the one before. Ports without such lines have nothing to do.
  virtual void ClearPuzzleLines() {}
  virtual void RefreshPuzzleInfo() = 0;
};

}  // namespace qm
