#include "ui/creation_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOptionButton>
#include <QVBoxLayout>
#include <algorithm>

#include "commands/batch_creation.h"
#include "core/text_rules.h"
#include "commands/save_commands.h"
#include "generator/create_puzzle.h"

namespace qm::ui {

namespace {

QString Q(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// Puts `field` over the run of blanks in the radio button's caption, where the caption
// leaves room for it.
void PlaceInCaption(QRadioButton* radio, QLineEdit* field) {
  const QString caption = radio->text();
  const qsizetype gap = caption.indexOf("  ");
  qsizetype end = gap;
  while (end < caption.size() && caption[end] == ' ') ++end;
  QStyleOptionButton option;
  option.initFrom(radio);
  const int indicator = radio->style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, &option, radio) +
                        radio->style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing, &option, radio);
  const QFontMetrics metrics(radio->font());
  const int left = indicator + metrics.horizontalAdvance(caption.left(gap + 1));
  const int width = metrics.horizontalAdvance(caption.mid(gap, end - gap)) - metrics.horizontalAdvance("  ");
  field->setParent(radio);
  field->setGeometry(left, 0, std::max(width, 28), radio->sizeHint().height());
}

}  // namespace

CreationDialog::CreationDialog(const PuzzleModel& model, WindowPort& port, const CreationOptions& start,
                               QWidget* parent)
    : QDialog(parent), model_(model), port_(port) {
  setObjectName("frmcreate");
  setWindowTitle(Q(kCreationDialogTitle));
  auto* column = new QVBoxLayout(this);

  auto* puzzle = new QGroupBox(Q(kPuzzleFrame), this);
  auto* puzzleRow = new QGridLayout(puzzle);
  displayOne_ = new QCheckBox(Q(kDisplayOneCaption), puzzle);
  displayOne_->setObjectName("DisplayOne");
  count_ = new QLineEdit(puzzle);
  count_->setObjectName("Count");
  count_->setMaximumWidth(70);
  puzzleRow->addWidget(displayOne_, 0, 0, 1, 2);
  puzzleRow->addWidget(new QLabel(Q(kCountLabel), puzzle), 1, 0);
  puzzleRow->addWidget(count_, 1, 1);
  // Ticking sets the count to 1; typing a count ticks the box exactly when it is 1.
  connect(displayOne_, &QCheckBox::clicked, this, [this](bool on) {
    if (on) count_->setText(Q(kDisplayOneCount));
  });
  connect(count_, &QLineEdit::textChanged, this,
          [this](const QString& text) { displayOne_->setChecked(DisplayOneTicked(text.toStdString())); });

  auto* sizeBox = new QGroupBox(Q(kGridSizeFrame), this);
  auto* sizeRow = new QHBoxLayout(sizeBox);
  size_ = new QComboBox(sizeBox);
  size_->setObjectName("GridSize");
  for (std::string_view choice : kGridSizeChoices) size_->addItem(Q(choice));
  sizeRow->addWidget(size_);

  auto* uniqueBox = new QGroupBox(Q(kUniqueFrame), this);
  auto* uniqueRow = new QHBoxLayout(uniqueBox);
  unique_ = new QCheckBox("Yes", uniqueBox);
  unique_->setObjectName("Unique");
  auto* help = new QPushButton("?", uniqueBox);
  help->setObjectName("UniqueHelp");
  help->setMaximumWidth(30);
  connect(help, &QPushButton::clicked, this, [this] { port_.ShowMessage(std::string(kUniqueSolutionHelp)); });
  connect(unique_, &QCheckBox::toggled, this, &CreationDialog::UniqueToggled);
  uniqueRow->addWidget(unique_);
  uniqueRow->addWidget(help);
  uniqueRow->addStretch();

  auto* top = new QHBoxLayout;
  top->addWidget(puzzle, 2);
  top->addWidget(sizeBox, 1);
  top->addWidget(uniqueBox, 1);
  column->addLayout(top);

  auto* clues = new QGroupBox(Q(kCluesFrame), this);
  auto* clueGrid = new QGridLayout(clues);
  for (std::size_t i = 0; i < clueChoices_.size(); ++i) {
    clueChoices_[i] = new QRadioButton(Q(kClueChoiceCaptions[i]), clues);
    clueChoices_[i]->setObjectName(QStringLiteral("ClueChoice%1").arg(i));
    clueGrid->addWidget(clueChoices_[i], static_cast<int>(i), 0);
    connect(clueChoices_[i], &QRadioButton::toggled, this, &CreationDialog::ClueChoiceChanged);
  }
  fixedDigit_ = new QLineEdit;
  fixedDigit_->setObjectName("FixedDigit");
  exactCount_ = new QLineEdit;
  exactCount_->setObjectName("ExactCount");
  uptoCount_ = new QLineEdit;
  uptoCount_->setObjectName("UptoCount");
  level_ = new QComboBox(clues);
  level_->setObjectName("Level");
  for (int code = kVeryEasy; code >= kVeryHard; --code) level_->addItem(Q(LevelNames[static_cast<std::size_t>(code)]));
  clueGrid->addWidget(level_, kChoiceByLevel, 1);
  clueGrid->setColumnStretch(2, 1);
  column->addWidget(clues);

  // Creation by grade: Any keeps the usual creation.
  auto* gradeBox = new QGroupBox("Grade", this);
  auto* gradeRow = new QHBoxLayout(gradeBox);
  grade_ = new QComboBox(gradeBox);
  grade_->setObjectName("Grade");
  for (const std::string& choice : GradeChoices()) grade_->addItem(QString::fromStdString(choice));
  grade_->setToolTip("Any: puzzles as always. A grade: every puzzle has exactly one solution and that grade");
  symmetry_ = new QComboBox(gradeBox);
  symmetry_->setObjectName("Symmetry");
  for (std::string_view choice : kSymmetryChoices) symmetry_->addItem(Q(choice));
  symmetry_->setToolTip("The pattern of clues and signs of a graded puzzle");
  gradeRow->addWidget(grade_);
  gradeRow->addWidget(new QLabel("Symmetry", gradeBox));
  gradeRow->addWidget(symmetry_);
  gradeRow->addStretch();
  connect(grade_, &QComboBox::currentTextChanged, this, &CreationDialog::GradeChanged);
  column->addWidget(gradeBox);

  auto* titleBox = new QGroupBox(Q(kTitleFrame), this);
  auto* titleRow = new QHBoxLayout(titleBox);
  title_ = new QLineEdit(titleBox);
  title_->setObjectName("Title");
  titleRow->addWidget(title_);
  column->addWidget(titleBox);

  auto* outputBox = new QGroupBox(Q(kOutputFrame), this);
  outputBox->setToolTip(Q(kOutputTip));
  auto* outputRow = new QHBoxLayout(outputBox);
  auto* choose = new QPushButton("...", outputBox);
  choose->setObjectName("ChooseOutput");
  choose->setMaximumWidth(36);
  outputFile_ = new QLabel(outputBox);
  outputFile_->setObjectName("OutputFile");
  outputFile_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  connect(choose, &QPushButton::clicked, this, &CreationDialog::ChooseOutput);
  outputRow->addWidget(choose);
  outputRow->addWidget(outputFile_, 1);
  column->addWidget(outputBox);

  auto* buttons = new QHBoxLayout;
  auto* create = new QPushButton(Q(kCreateCaption), this);
  create->setObjectName("cmdcreate");
  create->setToolTip(Q(kCreateTip));
  create->setDefault(true);
  auto* cancel = new QPushButton(Q(kCancelCaption), this);
  cancel->setObjectName("cmdcancel");
  cancel->setToolTip(Q(kCancelTip));
  connect(create, &QPushButton::clicked, this, &CreationDialog::Create);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  buttons->addStretch();
  buttons->addWidget(create);
  buttons->addWidget(cancel);
  column->addLayout(buttons);

  // Start from the given inputs.
  count_->setText(QString::fromStdString(start.count));
  displayOne_->setChecked(start.displayOne);
  size_->setCurrentText(QString::fromStdString(start.size));
  fixedDigit_->setText(QString::fromStdString(start.fixedDigit));
  exactCount_->setText(QString::fromStdString(start.exactCount));
  uptoCount_->setText(QString::fromStdString(start.uptoCount));
  level_->setCurrentText(QString::fromStdString(start.level));
  unique_->setChecked(start.uniqueSolution);
  grade_->setCurrentText(QString::fromStdString(start.grade));
  symmetry_->setCurrentText(QString::fromStdString(start.symmetry));
  symmetry_->setEnabled(grade_->currentIndex() > 0);
  title_->setText(QString::fromStdString(Cp1252ToUtf8(start.title)));
  outputFile_->setText(QString::fromStdString(start.outputFile));
  outputFile_->setToolTip(outputFile_->text());
  const int choice = std::clamp(start.clueChoice, 0, static_cast<int>(clueChoices_.size()) - 1);
  if (!clueChoices_[static_cast<std::size_t>(choice)]->isEnabled()) {
    clueChoices_[kChoiceByLevel]->setChecked(true);
  } else {
    clueChoices_[static_cast<std::size_t>(choice)]->setChecked(true);
  }
  ClueChoiceChanged();

  adjustSize();
  // The number fields sit inside their captions; place them once the fonts are settled.
  PlaceInCaption(clueChoices_[kChoiceFixedClue], fixedDigit_);
  PlaceInCaption(clueChoices_[kChoiceExactly], exactCount_);
  PlaceInCaption(clueChoices_[kChoiceUpto], uptoCount_);
}

CreationOptions CreationDialog::Options() const {
  CreationOptions options;
  options.count = count_->text().toStdString();
  options.displayOne = displayOne_->isChecked();
  options.size = size_->currentText().toStdString();
  options.clueChoice = kChoiceByLevel;
  for (std::size_t i = 0; i < clueChoices_.size(); ++i) {
    if (clueChoices_[i]->isChecked()) options.clueChoice = static_cast<int>(i);
  }
  options.fixedDigit = fixedDigit_->text().toStdString();
  options.exactCount = exactCount_->text().toStdString();
  options.uptoCount = uptoCount_->text().toStdString();
  options.level = level_->currentText().toStdString();
  options.uniqueSolution = unique_->isChecked();
  options.title = Utf8ToCp1252(title_->text().toStdString());
  options.outputFile = outputFile_->text().toStdString();
  options.grade = grade_->currentText().toStdString();
  options.symmetry = symmetry_->currentText().toStdString();
  return options;
}

void CreationDialog::Create() {
  const CreationValidation validation = ValidateCreationOptions(Options());
  if (!validation.Accepted()) {
    port_.ShowMessage(validation.message);
    return;
  }
  settings_ = validation.settings;
  accept();
}

void CreationDialog::ChooseOutput() {
  const std::string chosen = ChooseFileKeepingDirectory(port_, OutputFileChoice(ApplicationDirectoryOf(model_)));
  if (chosen.empty()) return;
  outputFile_->setText(QString::fromStdString(chosen));
  outputFile_->setToolTip(outputFile_->text());
}

void CreationDialog::ClueChoiceChanged() {
  level_->setEnabled(LevelListEnabled(clueChoices_[kChoiceByLevel]->isChecked() ? kChoiceByLevel : -1));
}

void CreationDialog::GradeChanged() {
  const bool graded = grade_->currentIndex() > 0;
  symmetry_->setEnabled(graded);
  // A level's fixed count of clues seldom meets a grade: by grade, "Random" lets the
  // reduction choose the clues.
  if (graded && clueChoices_[kChoiceByLevel]->isChecked()) clueChoices_[kChoiceRandom]->setChecked(true);
}

void CreationDialog::UniqueToggled(bool on) {
  // A puzzle without clues has to be carried by its signs alone, which leaves their
  // number nothing to choose; with uniqueness asked for, that choice is switched off.
  clueChoices_[kChoiceNoClues]->setEnabled(!on);
  if (on && clueChoices_[kChoiceNoClues]->isChecked()) clueChoices_[kChoiceByLevel]->setChecked(true);
}

}  // namespace qm::ui
