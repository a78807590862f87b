#include "ui/path_panel.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace qm::ui {

PathPanel::PathPanel(QWidget* parent) : QDockWidget("Solution Path", parent) {
  setObjectName("PathPanel");
  auto* body = new QWidget(this);
  auto* column = new QVBoxLayout(body);
  grade_ = new QLabel(body);
  grade_->setObjectName("PathGrade");
  grade_->setWordWrap(true);
  steps_ = new QListWidget(body);
  steps_->setObjectName("PathSteps");
  steps_->setWordWrap(true);
  steps_->setSelectionMode(QAbstractItemView::SingleSelection);
  copy_ = new QPushButton("Cop&y as Text", body);
  copy_->setObjectName("PathCopy");
  column->addWidget(grade_);
  column->addWidget(steps_, 1);
  column->addWidget(copy_);
  setWidget(body);
  connect(copy_, &QPushButton::clicked, this, [this] { Copy(); });
  auto* copyKeys = new QShortcut(QKeySequence::Copy, steps_, nullptr, nullptr, Qt::WidgetShortcut);
  connect(copyKeys, &QShortcut::activated, this, [this] { Copy(); });
  connect(steps_, &QListWidget::currentRowChanged, this, [this](int row) { emit StepSelected(row); });
  connect(steps_, &QListWidget::itemSelectionChanged, this, [this] {
    if (steps_->selectedItems().isEmpty()) emit StepSelected(-1);
  });
  ShowComputing();
}

void PathPanel::ShowComputing() {
  ready_ = false;
  path_ = {};
  const QSignalBlocker quiet(steps_);
  steps_->clear();
  grade_->setText("Grade: working it out\u2026");
}

void PathPanel::ShowPath(const SolutionPath& path) {
  path_ = path;
  ready_ = true;
  const QSignalBlocker quiet(steps_);
  steps_->clear();
  for (std::size_t i = 0; i < path.steps.size(); ++i) {
    const PathStep& step = path.steps[i];
    steps_->addItem(QString::fromStdString(std::to_string(i + 1) + ". " + step.technique + ": " + step.text));
  }
  if (!path.solved) steps_->addItem("The steps stop here: the rest needs a search.");
  grade_->setText(QString::fromStdString(GradeLine(path.grade)));
}

QString PathPanel::GradeText() const { return grade_->text(); }

void PathPanel::Copy() const {
  if (ready_) QApplication::clipboard()->setText(QString::fromStdString(PathAsText(path_)));
}

void PathPanel::ClearSelection() {
  if (steps_->currentRow() < 0 && steps_->selectedItems().isEmpty()) return;
  steps_->setCurrentRow(-1);
  steps_->clearSelection();
}

}  // namespace qm::ui
