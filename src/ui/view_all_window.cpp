#include "ui/view_all_window.h"

#include <algorithm>
#include <QHeaderView>
#include <QStyle>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

#include "commands/solution_path.h"
#include "reasoning/ladder.h"
#include "core/collection_file.h"
#include "core/text_rules.h"

namespace qm::ui {

namespace {

// Sorts by the number or key it holds rather than by its text.
class SortItem : public QTableWidgetItem {
 public:
  SortItem(const QString& text, double key) : QTableWidgetItem(text) { setData(Qt::UserRole, key); }
  bool operator<(const QTableWidgetItem& other) const override {
    const QVariant mine = data(Qt::UserRole);
    const QVariant theirs = other.data(Qt::UserRole);
    if (mine.isValid() && theirs.isValid() && mine.toDouble() != theirs.toDouble()) {
      return mine.toDouble() < theirs.toDouble();
    }
    return text() < other.text();
  }
};

constexpr int kOrdinalRole = Qt::UserRole + 1;

}  // namespace

ViewAllWindow::ViewAllWindow(std::function<void(int)> open, QWidget* parent)
    : QDialog(parent), open_(std::move(open)) {
  setObjectName("frmviewall");
  auto* column = new QVBoxLayout(this);
  table_ = new QTableWidget(this);
  table_->setObjectName("PuzzleList");
  table_->setColumnCount(6);
  table_->setHorizontalHeaderLabels({"Puzzle#", "Size", "Constraints", "Clues", "Description", "Grade"});
  table_->verticalHeader()->hide();
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->horizontalHeader()->setSectionResizeMode(4, QHeaderView::Stretch);
  table_->horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
  table_->setToolTip("Double-click a puzzle to open it; click a heading to sort by it");
  connect(table_, &QTableWidget::cellDoubleClicked, this, [this](int row, int) {
    // Sorting moves the rows: the first column knows its puzzle.
    const QTableWidgetItem* item = table_->item(row, 0);
    open_(item != nullptr ? item->data(kOrdinalRole).toInt() : row + 1);
  });
  total_ = new QLabel(this);
  total_->setObjectName("Total");
  column->addWidget(table_, 1);
  column->addWidget(total_);
  resize(700, 480);
}

void ViewAllWindow::Show(const std::string& path, const std::string& total) {
  setWindowTitle(QString::fromStdString(path));
  const std::vector<RecordSummary> records = ReadRecordSummaries(path);
  table_->setSortingEnabled(false);
  table_->setRowCount(static_cast<int>(records.size()));
  auto cell = [](const QString& text, double key, bool number) {
    auto* item = new SortItem(text, key);
    if (number) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
  };
  for (std::size_t i = 0; i < records.size(); ++i) {
    const RecordSummary& r = records[i];
    const int row = static_cast<int>(i);
    QTableWidgetItem* ordinal = cell(QString::number(row + 1), row + 1, true);
    ordinal->setData(kOrdinalRole, row + 1);
    table_->setItem(row, 0, ordinal);
    table_->setItem(row, 1, cell(r.size > 0 ? QStringLiteral("%1x%1").arg(r.size) : QString(), r.size, false));
    table_->setItem(row, 2, cell(QString::number(r.signs), r.signs, true));
    table_->setItem(row, 3, cell(r.clues >= 0 ? QString::number(r.clues) : QString(), r.clues, true));
    auto* comment = new QTableWidgetItem(QString::fromStdString(Cp1252ToUtf8(r.comment)));
    table_->setItem(row, 4, comment);
    table_->setItem(row, kGradeColumn, cell(QString::fromUtf8("…"), 1e9, false));
  }
  table_->resizeColumnsToContents();
  // The grades arrive later: their column is made wide enough for the longest name now.
  int widest = table_->horizontalHeader()->sectionSizeHint(kGradeColumn);
  for (int rung = 0; rung <= reasoning::kTopRung; ++rung) {
    widest = std::max(widest, table_->fontMetrics().horizontalAdvance(QString::fromStdString(reasoning::RungName(rung))));
  }
  widest = std::max(widest, table_->fontMetrics().horizontalAdvance("unreadable"));
  table_->setColumnWidth(kGradeColumn, widest + 2 * table_->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 16);
  table_->setSortingEnabled(true);
  total_->setText(QString::fromStdString(total));
  show();
  raise();
  activateWindow();  // so that its keys (Escape closes it) reach it

  // The grades take a moment each: they arrive one by one while the list can be used.
  const int generation = ++generation_;
  pending_ = static_cast<int>(records.size());
  const int count = pending_;
  grading_.Run([this, generation, path, count](const std::atomic<bool>& cancel) {
    for (int n = 1; n <= count && !cancel.load(); ++n) {
      PuzzleModel puzzle;
      std::string name = "unreadable";
      int level = -1;
      double score = 0;
      if (!LoadPuzzle(puzzle, path, n).notFound) {
        const SolutionPath solved = FindSolutionPath(PathStart(puzzle, nullptr), &cancel);
        name = solved.grade.name;
        level = solved.grade.level;
        score = solved.grade.score;
      }
      if (cancel.load()) return;
      QMetaObject::invokeMethod(
          this,
          [this, generation, n, name, level, score] {
            if (generation == generation_) SetGrade(n, name, level, score);
          },
          Qt::QueuedConnection);
    }
  });
}

void ViewAllWindow::SetGrade(int ordinal, const std::string& name, int level, double score) {
  for (int row = 0; row < table_->rowCount(); ++row) {
    const QTableWidgetItem* item = table_->item(row, 0);
    if (item == nullptr || item->data(kOrdinalRole).toInt() != ordinal) continue;
    QTableWidgetItem* grade = table_->item(row, kGradeColumn);
    const bool sorting = table_->isSortingEnabled();
    table_->setSortingEnabled(false);  // the row must not move while it is written
    grade->setText(QString::fromStdString(name));
    grade->setData(Qt::UserRole, level * 100000.0 + score);
    table_->setSortingEnabled(sorting);
    break;
  }
  --pending_;
}

}  // namespace qm::ui
