#include "ui/grid_widget.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "core/text_rules.h"
#include "settings/scheme_contrast.h"
#include "solver/candidates.h"

namespace qm::ui {

namespace {

constexpr double kGapRatio = 0.42;  // a sign slot is this much narrower than a cell
constexpr int kMargin = 14;
constexpr int kPreferredCell = 64;
constexpr int kReadableCell = 40;  // candidates are drawn at about a fifth of this

QColor ToQColor(Rgb rgb) { return QColor(Red(rgb), Green(rgb), Blue(rgb)); }

}  // namespace

GridWidget::GridWidget(PuzzleModel& model, const ColourTable& colours, QWidget* parent)
    : QWidget(parent), model_(model), colours_(colours) {
  roles_.fill(CellColour::Normal);
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void GridWidget::SetShownText(int k, const QString& text) {
  shown_[static_cast<std::size_t>(k)] = text;
  update();
}

void GridWidget::ClearShownText(int k) {
  shown_[static_cast<std::size_t>(k)].reset();
  update();
}

void GridWidget::ClearShownTexts() {
  shown_.fill(std::nullopt);
  if (cursor_ > model_.LastPosition) cursor_ = -1;
  updateGeometry();
  update();
}

QString GridWidget::ShownText(int k) const {
  const auto& shown = shown_[static_cast<std::size_t>(k)];
  if (shown) return *shown;
  return QString::fromStdString(Cp1252ToUtf8(model_.PosText[static_cast<std::size_t>(k)]));
}

void GridWidget::SetColour(int k, CellColour colour) {
  if (k < 0 || k >= kPositionCount) return;
  roles_[static_cast<std::size_t>(k)] = colour;
  update();
}

void GridWidget::SetCursorPosition(int k) {
  cursor_ = k >= 0 && k <= model_.LastPosition ? k : -1;
  update();
}

void GridWidget::MoveCursor(int rows, int cols) {
  if (cursor_ < 0) {
    SetCursorPosition(0);
    return;
  }
  const int l = model_.LayoutExtent;
  const int row = std::clamp(model_.RowOf[static_cast<std::size_t>(cursor_)] + rows, 1, l);
  const int col = std::clamp(model_.ColOf[static_cast<std::size_t>(cursor_)] + cols, 1, l);
  SetCursorPosition(model_.PositionOf[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)]);
}

void GridWidget::MoveToCell(int rows, int cols) {
  if (cursor_ < 0) {
    SetCursorPosition(0);
    return;
  }
  const int l = model_.LayoutExtent;
  // Cells sit at odd layout indices: two steps from a cell, one from a gap; a gap line
  // across the move is left for the cell line before it.
  auto step = [l](int index, int by) {
    if (by == 0) return index % 2 == 1 ? index : index - 1;
    return std::clamp(index % 2 == 1 ? index + 2 * by : index + by, 1, l);
  };
  const int row = step(model_.RowOf[static_cast<std::size_t>(cursor_)], rows);
  const int col = step(model_.ColOf[static_cast<std::size_t>(cursor_)], cols);
  SetCursorPosition(model_.PositionOf[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)]);
}

void GridWidget::MoveToGap(bool forward) {
  const int count = model_.LastPosition + 1;
  int k = cursor_ < 0 ? (forward ? -1 : count) : cursor_;
  for (int i = 0; i < count; ++i) {
    k = ((forward ? k + 1 : k - 1) % count + count) % count;
    if (IsSignSlot(model_, k)) {
      SetCursorPosition(k);
      return;
    }
  }
}

bool GridWidget::focusNextPrevChild(bool next) {
  MoveToGap(next);
  return true;
}

GridWidget::Geometry GridWidget::Measure() const {
  const int n = model_.GridSize;
  const double units = n + (n - 1) * kGapRatio;
  const double side = std::max(10.0, std::min(width(), height()) - 2.0 * kMargin);
  Geometry g;
  g.cell = side / units;
  g.gap = g.cell * kGapRatio;
  const double extent = g.cell * units;
  g.origin = QPointF((width() - extent) / 2.0, (height() - extent) / 2.0);
  return g;
}

double GridWidget::Offset(const Geometry& g, int index) const {
  const int pairs = (index - 1) / 2;
  return pairs * (g.cell + g.gap) + (index % 2 == 0 ? g.cell : 0.0);
}

QRect GridWidget::PositionRect(int k) const {
  const Geometry g = Measure();
  const int row = model_.RowOf[static_cast<std::size_t>(k)];
  const int col = model_.ColOf[static_cast<std::size_t>(k)];
  const double w = col % 2 == 1 ? g.cell : g.gap;
  const double h = row % 2 == 1 ? g.cell : g.gap;
  return QRectF(g.origin.x() + Offset(g, col), g.origin.y() + Offset(g, row), w, h).toAlignedRect();
}

int GridWidget::PositionAt(const QPoint& point) const {
  const Geometry g = Measure();
  auto index = [&](double along) {
    if (along < 0) return -1;
    const int pairs = static_cast<int>(along / (g.cell + g.gap));
    const double rest = along - pairs * (g.cell + g.gap);
    const int i = 2 * pairs + (rest < g.cell ? 1 : 2);
    return i <= model_.LayoutExtent ? i : -1;
  };
  const int col = index(point.x() - g.origin.x());
  const int row = index(point.y() - g.origin.y());
  if (row < 0 || col < 0) return -1;
  return model_.PositionOf[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)];
}

QSize GridWidget::sizeHint() const {
  const int n = model_.GridSize;
  const int side = static_cast<int>(kPreferredCell * (n + (n - 1) * kGapRatio)) + 2 * kMargin;
  const int capped = std::min(side, 720);
  return {capped, capped};
}

QSize GridWidget::minimumSizeHint() const {
  // Cells stay big enough for their candidates to be read (a 9x9 grid beside an open
  // side panel): the grid takes its room before the panels do.
  const int n = model_.GridSize;
  const int side = static_cast<int>(kReadableCell * (n + (n - 1) * kGapRatio)) + 2 * kMargin;
  return {std::max(240, side), std::max(240, side)};
}

void GridWidget::PaintSign(QPainter& painter, const QRectF& rect, QChar sign) const {
  const double s = std::min(rect.width(), rect.height()) * 0.55;
  const QPointF c = rect.center();
  QPainterPath path;
  const double half = s / 2;
  const double reach = s * 0.32;
  if (sign == '<') {
    path.moveTo(c.x() + reach, c.y() - half);
    path.lineTo(c.x() - reach, c.y());
    path.lineTo(c.x() + reach, c.y() + half);
  } else if (sign == '>') {
    path.moveTo(c.x() - reach, c.y() - half);
    path.lineTo(c.x() + reach, c.y());
    path.lineTo(c.x() - reach, c.y() + half);
  } else if (sign == '^') {
    path.moveTo(c.x() - half, c.y() + reach);
    path.lineTo(c.x(), c.y() - reach);
    path.lineTo(c.x() + half, c.y() + reach);
  } else {
    path.moveTo(c.x() - half, c.y() - reach);
    path.lineTo(c.x(), c.y() + reach);
    path.lineTo(c.x() + half, c.y() - reach);
  }
  QPen pen(ToQColor(colours_.colour[kSignColour]), std::max(2.0, s * 0.16), Qt::SolidLine, Qt::RoundCap,
           Qt::RoundJoin);
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(path);
}

void GridWidget::PaintCell(QPainter& painter, const QRectF& rect, int k, const QString& text,
                           CellColour role) const {
  const std::size_t at = static_cast<std::size_t>(k);
  const CellLook look = CellTextLook(text.toStdString());
  if (look.text.empty()) {
    if (coach_ != nullptr && coach_->Marks[at] != 0) PaintMarks(painter, rect, coach_->Marks[at]);
    return;
  }
  QFont font = painter.font();
  const bool single = look.bold;
  font.setBold(single);
  font.setPixelSize(std::max(6, static_cast<int>(rect.height() * (single ? 0.56 : 0.21))));
  painter.setFont(font);
  int colour = kCandidateColour;
  if (single && coach_ != nullptr) {
    // Clues, the player's digits and solved digits each keep their own colour.
    const DigitOrigin origin = OriginOf(*coach_, model_, k, Utf8ToCp1252(text.toStdString()));
    colour = origin == DigitOrigin::Clue     ? kClueColour
             : origin == DigitOrigin::Player ? kTextColour
                                             : kSolvedDigitColour;
  } else if (single) {
    colour = model_.GivenValue[at] > 0 && !shown_[at] ? kClueColour : kTextColour;
  }
  // No scheme sets the error colour, so text on it is black or white.
  const Rgb pen = role == CellColour::Error ? ReadableTextOn(colours_.colour[kErrorColour])
                                            : colours_.colour[static_cast<std::size_t>(colour)];
  painter.setPen(ToQColor(pen));
  painter.drawText(rect, Qt::AlignCenter, QString::fromStdString(look.text));
}

// The player's marks sit in fixed places of a 3 x 3 layout: 1 top left, 9 bottom right.
void GridWidget::PaintMarks(QPainter& painter, const QRectF& rect, MarkBits marks) const {
  QFont font = painter.font();
  font.setBold(false);
  font.setPixelSize(std::max(6, static_cast<int>(rect.height() * 0.24)));
  painter.setFont(font);
  painter.setPen(ToQColor(colours_.colour[kPencilMarkColour]));
  const QRectF inner = rect.adjusted(rect.width() * 0.08, rect.height() * 0.06, -rect.width() * 0.08,
                                     -rect.height() * 0.06);
  const double w = inner.width() / 3;
  const double h = inner.height() / 3;
  for (int d = 1; d <= 9; ++d) {
    if ((marks & MarkBit(d)) == 0) continue;
    const QRectF place(inner.left() + (d - 1) % 3 * w, inner.top() + (d - 1) / 3 * h, w, h);
    painter.drawText(place, Qt::AlignCenter, QString::number(d));
  }
}

bool GridWidget::HoldsHighlightedDigit(int k, const QString& text) const {
  if (coach_ == nullptr || coach_->HighlightDigit == 0) return false;
  const QChar digit('0' + coach_->HighlightDigit);
  const QString shown = text.trimmed();
  if (shown.size() == 1) return shown[0] == digit;
  if (!shown.isEmpty()) return shown.contains(digit);
  return (coach_->Marks[static_cast<std::size_t>(k)] & MarkBit(coach_->HighlightDigit)) != 0;
}

void GridWidget::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), ToQColor(colours_.colour[kGridColour]));
  const Geometry g = Measure();
  // Digits that clash (when asked for) and digits a check found wrong get a ring.
  std::vector<int> ringed;
  if (coach_ != nullptr) {
    if (coach_->LiveConflicts || coach_->AllowAnyDigit) ringed = ConflictCells(model_);
    ringed.insert(ringed.end(), coach_->WrongCells.begin(), coach_->WrongCells.end());
  }
  for (int k = 0; k <= model_.LastPosition; ++k) {
    const QRectF r = PositionRect(k);
    const PositionKind kind = KindOf(model_, k);
    const CellColour role = roles_[static_cast<std::size_t>(k)];
    QColor background = ToQColor(PositionBackground(model_, colours_, k));
    const QString text = ShownText(k);
    if (role == CellColour::Highlight || (role == CellColour::Normal && kind == PositionKind::Cell &&
                                          HoldsHighlightedDigit(k, text))) {
      background = ToQColor(colours_.colour[kHighlightColour]);
    }
    if (role == CellColour::Target) background = ToQColor(colours_.colour[kTargetColour]);
    if (role == CellColour::Error) background = ToQColor(colours_.colour[kErrorColour]);
    if (kind == PositionKind::Cell) {
      painter.setPen(QPen(ToQColor(colours_.colour[kBorderColour]), std::max(1.0, g.cell * 0.03)));
      painter.setBrush(background);
      painter.drawRoundedRect(r.adjusted(1, 1, -1, -1), g.cell * 0.08, g.cell * 0.08);
      if (std::find(ringed.begin(), ringed.end(), k) != ringed.end()) {
        painter.setPen(QPen(ToQColor(colours_.colour[kErrorColour]), std::max(2.0, g.cell * 0.07)));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(r.adjusted(g.cell * 0.12, g.cell * 0.12, -g.cell * 0.12, -g.cell * 0.12));
      }
      PaintCell(painter, r, k, text, role);
      continue;
    }
    if (role != CellColour::Normal) painter.fillRect(r, background);
    const QString sign = text.trimmed();
    if (sign.size() == 1 && QStringLiteral("<>^v").contains(sign)) {
      PaintSign(painter, r, sign[0]);
    } else if (!sign.isEmpty()) {
      painter.setPen(ToQColor(colours_.colour[kSignColour]));
      painter.drawText(r, Qt::AlignCenter, sign);
    }
  }
  if (cursor_ >= 0 && cursor_ <= model_.LastPosition && hasFocus()) {
    painter.setPen(QPen(ToQColor(colours_.colour[kCursorColour]), std::max(2.0, g.cell * 0.05)));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(PositionRect(cursor_)).adjusted(2, 2, -2, -2), 4, 4);
  }
}

void GridWidget::mousePressEvent(QMouseEvent* event) {
  const int k = PositionAt(event->position().toPoint());
  if (k < 0) {
    emit BackgroundClicked();
    return;
  }
  if (event->button() == Qt::RightButton) {
    SetCursorPosition(k);
    emit PositionMenuRequested(k, event->globalPosition().toPoint());
  } else {
    SetCursorPosition(k);
    emit BackgroundClicked();  // a click anywhere also says "go on" to a paced solve
  }
}

void GridWidget::mouseMoveEvent(QMouseEvent* event) {
  const int k = PositionAt(event->position().toPoint());
  if (k >= 0) emit PositionHovered(k);
}

}  // namespace qm::ui
