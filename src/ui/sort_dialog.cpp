#include "ui/sort_dialog.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "commands/sort_commands.h"
#include "core/text_rules.h"

namespace qm::ui {

namespace {

// A file box: the caption, the name and a button that opens the chooser.
QLineEdit* AddFileBox(QWidget* parent, QVBoxLayout* column, const QString& caption, const QString& tip,
                      const char* name, std::function<std::string()> choose) {
  auto* box = new QGroupBox(caption, parent);
  box->setToolTip(tip);
  auto* row = new QHBoxLayout(box);
  auto* field = new QLineEdit(box);
  field->setObjectName(name);
  field->setToolTip(tip);
  auto* button = new QPushButton("...", box);
  button->setObjectName(QStringLiteral("%1Choose").arg(name));
  button->setMaximumWidth(36);
  QObject::connect(button, &QPushButton::clicked, field, [field, choose = std::move(choose)] {
    const std::string chosen = choose();
    if (!chosen.empty()) field->setText(QString::fromStdString(chosen));
  });
  row->addWidget(field, 1);
  row->addWidget(button);
  column->addWidget(box);
  return field;
}

template <std::size_t N>
void AddChoices(QWidget* parent, QLayout* layout, std::array<QRadioButton*, N>& buttons,
                const std::array<const char*, N>& captions, const char* name, const QString& tip) {
  for (std::size_t i = 0; i < N; ++i) {
    buttons[i] = new QRadioButton(captions[i], parent);
    buttons[i]->setObjectName(QStringLiteral("%1_%2").arg(name).arg(i));
    buttons[i]->setToolTip(tip);
    layout->addWidget(buttons[i]);
  }
  buttons[0]->setChecked(true);
}

template <std::size_t N>
int Checked(const std::array<QRadioButton*, N>& buttons) {
  for (std::size_t i = 0; i < N; ++i) {
    if (buttons[i]->isChecked()) return static_cast<int>(i);
  }
  return 0;
}

}  // namespace

SortDialog::SortDialog(PuzzleModel& model, WindowPort& port, QWidget* parent)
    : QDialog(parent), model_(model), port_(port) {
  setObjectName("frmsort");
  setWindowTitle("Sort Puzzle File");
  auto* column = new QVBoxLayout(this);
  source_ = AddFileBox(this, column, "Source Puzzles File", "File name of the source puzzles", "Source",
                       [this] { return ChooseSortInput(model_, port_); });
  output_ = AddFileBox(this, column, "Output File Name", "Sorted output will be stored in this file", "Output",
                       [this] { return ChooseSortOutput(model_, port_); });
  source_->setText(QString::fromStdString(model.CurrentFile));

  auto* options = new QHBoxLayout;
  auto* criteria = new QGroupBox("Sort by", this);
  criteria->setToolTip("Specify the sort criteria");
  AddChoices<4>(criteria, new QVBoxLayout(criteria), option1_,
                {"Header", "No of Inequalities", "Puzzle Number", "Grid Size"}, "Option1", "Specify the sort criteria");
  auto* order = new QGroupBox("Order", this);
  const QString orderTip = "Specify the sort order, random sort will reseqence the puzzle numbers";
  order->setToolTip(orderTip);
  AddChoices<3>(order, new QVBoxLayout(order), option2_, {"Ascending", "Descending", "Random"}, "Option2", orderTip);
  options->addWidget(criteria);
  options->addWidget(order);
  column->addLayout(options);

  auto* renumber = new QHBoxLayout;
  const QString resequenceTip = "Specify whether to resequence puzzle numbers";
  resequence_ = new QCheckBox("Resequence", this);
  resequence_->setObjectName("Resequence");
  resequence_->setToolTip(resequenceTip);
  start_ = new QLineEdit("1", this);
  start_->setObjectName("Start");
  start_->setToolTip(resequenceTip);
  start_->setMaximumWidth(70);
  auto* startLabel = new QLabel("Start#", this);
  startLabel->setToolTip(resequenceTip);
  renumber->addWidget(resequence_);
  renumber->addSpacing(12);
  renumber->addWidget(startLabel);
  renumber->addWidget(start_);
  renumber->addStretch();
  column->addLayout(renumber);

  auto* buttons = new QHBoxLayout;
  progress_ = new QLabel(this);
  progress_->setObjectName("Progress");
  auto* sort = new QPushButton("Sort", this);
  sort->setObjectName("cmdsort");
  sort->setToolTip("Proceed with sort");
  sort->setDefault(true);
  auto* cancel = new QPushButton("Cancel", this);
  cancel->setObjectName("cmdcancel");
  cancel->setToolTip("Take no action and exit");
  connect(sort, &QPushButton::clicked, this, &SortDialog::Sort);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  buttons->addWidget(progress_, 1);
  buttons->addWidget(sort);
  buttons->addWidget(cancel);
  column->addLayout(buttons);
  resize(520, sizeHint().height());
}

void SortDialog::Sort() {
  SortRequest request;
  request.source = source_->text().toStdString();
  request.output = output_->text().toStdString();
  request.Option1 = Checked(option1_);
  request.Option2 = Checked(option2_);
  request.resequence = resequence_->isChecked();
  request.start = start_->text().toStdString();
  request.progress = [this](int taken) { progress_->setText(QString::number(taken)); };
  // The core keeps the box's meaning of a low or empty start; the box shows it too.
  if (request.resequence && IntegerValue(request.start) < 1) start_->setText("1");
  if (SortPuzzleFile(model_, port_, request).result == CommandResult::Done) accept();
}

}  // namespace qm::ui
