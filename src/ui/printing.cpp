#include "ui/printing.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPrinter>
#include <QSpinBox>
#include <cmath>

#include "core/text_rules.h"

namespace qm::ui {

namespace {

bool IsSign(char c) { return c == '<' || c == '>' || c == '^' || c == 'v'; }

// Columns and rows of the arrangement of n puzzles on a page.
std::pair<int, int> Arrangement(int n) {
  if (n <= 1) return {1, 1};
  if (n == 2) return {1, 2};
  if (n <= 4) return {2, 2};
  if (n <= 6) return {2, 3};
  return {3, 3};
}

// The sign as a chevron whose narrow end points at the smaller cell.
void DrawSign(QPainter& painter, char sign, const QRectF& gap) {
  const QPointF c = gap.center();
  const double r = std::min(gap.width(), gap.height()) * 0.32;
  QPainterPath path;
  switch (sign) {
    case '<':
      path.moveTo(c.x() + r, c.y() - r);
      path.lineTo(c.x() - r, c.y());
      path.lineTo(c.x() + r, c.y() + r);
      break;
    case '>':
      path.moveTo(c.x() - r, c.y() - r);
      path.lineTo(c.x() + r, c.y());
      path.lineTo(c.x() - r, c.y() + r);
      break;
    case '^':
      path.moveTo(c.x() - r, c.y() + r);
      path.lineTo(c.x(), c.y() - r);
      path.lineTo(c.x() + r, c.y() + r);
      break;
    default:
      path.moveTo(c.x() - r, c.y() - r);
      path.lineTo(c.x(), c.y() + r);
      path.lineTo(c.x() + r, c.y() - r);
      break;
  }
  painter.drawPath(path);
}

// One grid inside `box`: cells as squares, gaps of half a cell for the signs.
void DrawGrid(QPainter& painter, const QRectF& box, int n, const std::vector<std::string>& rows) {
  const double units = n + (n - 1) * 0.5;
  const double cell = std::min(box.width(), box.height()) / units;
  const double gap = cell * 0.5;
  const QPointF origin(box.center().x() - cell * units / 2, box.top());
  QFont font = painter.font();
  font.setPixelSize(std::max(1, static_cast<int>(cell * 0.6)));
  font.setBold(true);
  painter.setFont(font);
  QPen pen(Qt::black, std::max(1.0, cell / 30));
  painter.setPen(pen);
  auto offset = [&](int index) { return (index / 2) * (cell + gap) + (index % 2 == 1 ? cell : 0.0); };
  const int extent = 2 * n - 1;
  for (int r = 0; r < extent; ++r) {
    for (int c = 0; c < extent; ++c) {
      const char ch = static_cast<std::size_t>(r) < rows.size() && static_cast<std::size_t>(c) < rows[r].size()
                          ? rows[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)]
                          : ' ';
      const QRectF rect(origin.x() + offset(c), origin.y() + offset(r), c % 2 == 0 ? cell : gap,
                        r % 2 == 0 ? cell : gap);
      if (r % 2 == 0 && c % 2 == 0) {
        painter.drawRect(rect);
        if (ch >= '1' && ch <= '9') painter.drawText(rect, Qt::AlignCenter, QString(QChar(ch)));
      } else if (IsSign(ch)) {
        DrawSign(painter, ch, rect);
      }
    }
  }
}

}  // namespace

PrintedPuzzle TakePuzzle(const PuzzleModel& model, int number) {
  PrintedPuzzle printed;
  printed.number = number;
  printed.comment = model.Comment;
  printed.size = model.GridSize;
  for (int r = 1; r <= model.LayoutExtent; ++r) {
    std::string puzzle;
    std::string solution;
    for (int c = 1; c <= model.LayoutExtent; ++c) {
      const int k = model.PositionOf[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)];
      const std::string& text = model.PosText[static_cast<std::size_t>(k)];
      const std::string& solved = model.SolutionText[static_cast<std::size_t>(k)];
      const PositionKind kind = KindOf(model, k);
      if (kind == PositionKind::Cell) {
        const int given = model.GivenValue[static_cast<std::size_t>(k)];
        puzzle += given > 0 ? static_cast<char>('0' + given) : ' ';
        solution += solved.size() == 1 && solved[0] >= '1' && solved[0] <= '9' ? solved[0] : ' ';
      } else {
        const char sign = text.size() == 1 && IsSign(text[0]) ? text[0] : ' ';
        puzzle += sign;
        solution += sign;
      }
    }
    printed.puzzle.push_back(std::move(puzzle));
    printed.solution.push_back(std::move(solution));
  }
  return printed;
}

std::vector<PrintItem> FileLayout(const std::vector<PrintedPuzzle>& puzzles, int perPage) {
  const auto [columns, rows] = Arrangement(perPage);
  const std::size_t places = static_cast<std::size_t>(columns * rows);
  std::vector<PrintItem> items;
  for (const PrintedPuzzle& puzzle : puzzles) items.push_back({&puzzle, false});
  // The solutions start on a page of their own.
  while (items.size() % places != 0) items.push_back({nullptr, false});
  for (const PrintedPuzzle& puzzle : puzzles) items.push_back({&puzzle, true});
  return items;
}

bool PrintPuzzles(QPrinter& printer, const std::vector<PrintItem>& items, int perPage) {
  QPainter painter;
  if (!painter.begin(&printer)) return false;
  const auto [columns, rows] = Arrangement(perPage);
  const std::size_t places = static_cast<std::size_t>(columns * rows);
  const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());
  const double slotWidth = page.width() / columns;
  const double slotHeight = page.height() / rows;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const int slot = static_cast<int>(i % places);
    if (slot == 0 && i > 0) printer.newPage();
    if (items[i].puzzle == nullptr) continue;
    const PrintedPuzzle& puzzle = *items[i].puzzle;
    const QRectF box((slot % columns) * slotWidth, (slot / columns) * slotHeight, slotWidth, slotHeight);
    const QRectF inner = box.adjusted(slotWidth * 0.06, slotHeight * 0.04, -slotWidth * 0.06, -slotHeight * 0.06);
    QFont font = painter.font();
    font.setBold(false);
    font.setPixelSize(std::max(1, static_cast<int>(std::min(inner.height() * 0.05, inner.width() * 0.045))));
    painter.setFont(font);
    painter.setPen(Qt::black);
    const QString heading =
        (items[i].solution ? QStringLiteral("Solution#%1") : QStringLiteral("Puzzle#%1")).arg(puzzle.number);
    const QString comment = QString::fromStdString(Cp1252ToUtf8(puzzle.comment));
    const double line = font.pixelSize() * 1.5;
    painter.drawText(QRectF(inner.left(), inner.top(), inner.width(), line), Qt::AlignLeft | Qt::AlignVCenter,
                     heading + "   " + comment);
    const double side = std::min(inner.width(), inner.height() - line * 1.5);
    DrawGrid(painter, QRectF(inner.left(), inner.top() + line * 1.5, inner.width(), side), puzzle.size,
             items[i].solution ? puzzle.solution : puzzle.puzzle);
  }
  painter.end();
  return true;
}

PrintRangeDialog::PrintRangeDialog(int puzzleCount, int current, QWidget* parent) : QDialog(parent) {
  setObjectName("frmprintrange");
  setWindowTitle("Print Puzzles from File");
  auto* form = new QFormLayout(this);
  const int count = std::max(1, puzzleCount);
  first_ = new QSpinBox(this);
  first_->setObjectName("First");
  first_->setRange(1, count);
  first_->setValue(std::clamp(current, 1, count));
  last_ = new QSpinBox(this);
  last_->setObjectName("Last");
  last_->setRange(first_->value(), count);
  last_->setValue(count);
  // The last puzzle never comes before the first.
  connect(first_, &QSpinBox::valueChanged, last_, [this](int value) { last_->setMinimum(value); });
  perPage_ = new QComboBox(this);
  perPage_->setObjectName("PerPage");
  for (const char* n : {"1", "2", "4", "6", "9"}) perPage_->addItem(n);
  perPage_->setCurrentText("4");
  form->addRow("From puzzle#", first_);
  form->addRow("To puzzle#", last_);
  form->addRow("Puzzles per page", perPage_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->setObjectName("Buttons");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  form->addRow(buttons);
}

void PrintRangeDialog::accept() {
  for (QSpinBox* box : {first_, last_}) {
    if (box->text().trimmed().isEmpty() || !box->hasAcceptableInput()) {
      box->setFocus();
      return;
    }
  }
  if (First() > Last()) {
    last_->setFocus();
    return;
  }
  QDialog::accept();
}

int PrintRangeDialog::First() const { return first_->value(); }
int PrintRangeDialog::Last() const { return last_->value(); }
int PrintRangeDialog::PerPage() const { return perPage_->currentText().toInt(); }

}  // namespace qm::ui
