#include "ui/view_all_window.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>
#include <fstream>

#include "core/text_rules.h"

namespace qm::ui {

std::vector<RecordSummary> ReadRecordSummaries(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path, std::ios::binary);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
  }
  // A record's line within record i, or nothing when the record ends before it.
  auto lineOf = [&](std::size_t record, std::size_t offset) -> const std::string* {
    for (std::size_t k = record + 1; k <= record + offset; ++k) {
      if (k >= lines.size() || lines[k].starts_with("#")) return nullptr;
    }
    return &lines[record + offset];
  };
  std::vector<RecordSummary> records;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!lines[i].starts_with("#")) continue;
    RecordSummary record;
    if (const std::string* comment = lineOf(i, 1)) record.comment = *comment;
    if (const std::string* size = lineOf(i, 2)) {
      const std::string sizeLine(Trim(*size));
      const auto blank = sizeLine.find(' ');
      if (blank == std::string::npos) {
        // The older form carries only the signs of a 5x5 puzzle.
        record.size = 5;
        record.signs = IntegerValue(sizeLine);
      } else {
        record.size = IntegerValue(sizeLine.substr(0, 1));
        const std::string rest(Trim(std::string_view(sizeLine).substr(blank + 1)));
        const auto second = rest.find(' ');
        record.signs = IntegerValue(rest.substr(0, second));
        if (second != std::string::npos) record.clues = IntegerValue(rest.substr(second + 1));
      }
    }
    records.push_back(std::move(record));
  }
  return records;
}

ViewAllWindow::ViewAllWindow(std::function<void(int)> open, QWidget* parent)
    : QDialog(parent), open_(std::move(open)) {
  setObjectName("frmviewall");
  auto* column = new QVBoxLayout(this);
  table_ = new QTableWidget(this);
  table_->setObjectName("PuzzleList");
  table_->setColumnCount(5);
  table_->setHorizontalHeaderLabels({"Puzzle#", "Size", "Constraints", "Clues", "Description"});
  table_->verticalHeader()->hide();
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->horizontalHeader()->setStretchLastSection(true);
  table_->setToolTip("Double-click a puzzle to open it");
  connect(table_, &QTableWidget::cellDoubleClicked, this, [this](int row, int) { open_(row + 1); });
  total_ = new QLabel(this);
  total_->setObjectName("Total");
  column->addWidget(table_, 1);
  column->addWidget(total_);
  resize(620, 480);
}

void ViewAllWindow::Show(const std::string& path, const std::string& total) {
  setWindowTitle(QString::fromStdString(path));
  const std::vector<RecordSummary> records = ReadRecordSummaries(path);
  table_->setRowCount(static_cast<int>(records.size()));
  auto cell = [](const QString& text, bool number) {
    auto* item = new QTableWidgetItem(text);
    if (number) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
  };
  for (std::size_t i = 0; i < records.size(); ++i) {
    const RecordSummary& r = records[i];
    const int row = static_cast<int>(i);
    table_->setItem(row, 0, cell(QString::number(row + 1), true));
    table_->setItem(row, 1, cell(r.size > 0 ? QStringLiteral("%1x%1").arg(r.size) : QString(), false));
    table_->setItem(row, 2, cell(QString::number(r.signs), true));
    table_->setItem(row, 3, cell(r.clues >= 0 ? QString::number(r.clues) : QString(), true));
    table_->setItem(row, 4, cell(QString::fromStdString(Cp1252ToUtf8(r.comment)), false));
  }
  table_->resizeColumnsToContents();
  total_->setText(QString::fromStdString(total));
  show();
  raise();
}

}  // namespace qm::ui
