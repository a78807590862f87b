// "Create New Puzzles": collects the options of a batch and checks them with the core's
// validation before it lets the batch start. The inputs survive between runs because
// the window keeps the options the dialog was last closed with.
#pragma once

#include <QDialog>
#include <array>

#include "core/puzzle_model.h"
#include "core/window_port.h"
#include "generator/creation_options.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;

namespace qm::ui {

class CreationDialog : public QDialog {
  Q_OBJECT

 public:
  // Messages and the file chooser go through `port`, so tests can answer them.
  CreationDialog(const PuzzleModel& model, WindowPort& port, const CreationOptions& start, QWidget* parent);

  // The inputs as they stand now.
  CreationOptions Options() const;
  // Set by an accepted "Create".
  const CreationSettings& Settings() const { return settings_; }

  // "Create": validates; on success records the settings and closes with Accepted.
  void Create();

 private:
  void ChooseOutput();
  void ClueChoiceChanged();
  void UniqueToggled(bool on);
  void GradeChanged();

  const PuzzleModel& model_;
  WindowPort& port_;
  CreationSettings settings_;
  QCheckBox* displayOne_ = nullptr;
  QLineEdit* count_ = nullptr;
  QComboBox* size_ = nullptr;
  QCheckBox* unique_ = nullptr;
  std::array<QRadioButton*, 6> clueChoices_{};
  QLineEdit* fixedDigit_ = nullptr;
  QLineEdit* exactCount_ = nullptr;
  QLineEdit* uptoCount_ = nullptr;
  QComboBox* level_ = nullptr;
  QComboBox* grade_ = nullptr;
  QComboBox* symmetry_ = nullptr;
  QLineEdit* title_ = nullptr;
  QLabel* outputFile_ = nullptr;
};

}  // namespace qm::ui
