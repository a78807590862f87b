// The puzzle grid: draws the (2N-1) x (2N-1) layout straight from the model, so what it
// shows is the model's text of each position, unless a command draws another text over
// a position for a while (the candidates of a paced solve, the stored solution).
#pragma once

#include <QWidget>
#include <array>
#include <optional>

#include "commands/coach_state.h"
#include "core/puzzle_model.h"
#include "core/window_port.h"
#include "settings/colour_schemes.h"

namespace qm::ui {

class GridWidget : public QWidget {
  Q_OBJECT

 public:
  GridWidget(PuzzleModel& model, const ColourTable& colours, QWidget* parent = nullptr);

  void SetShownText(int k, const QString& text);
  void ClearShownText(int k);
  void ClearShownTexts();
  QString ShownText(int k) const;

  // The player's marks, the origin of each digit and the highlights come from here.
  void SetCoach(const CoachState* coach) {
    coach_ = coach;
    update();
  }

  void SetColour(int k, CellColour colour);
  CellColour Colour(int k) const { return roles_[static_cast<std::size_t>(k)]; }

  // The keyboard cursor: a layout position, or -1.
  int CursorPosition() const { return cursor_; }
  void SetCursorPosition(int k);
  // One layout position on (Shift with an arrow: gaps included).
  void MoveCursor(int rows, int cols);
  // From cell to cell (the arrows); from a gap, to the nearest cell that way.
  void MoveToCell(int rows, int cols);
  // To the next (or previous) sign slot in reading order, round the grid (Tab).
  void MoveToGap(bool forward);

  int PositionAt(const QPoint& point) const;
  QRect PositionRect(int k) const;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 signals:
  void PositionMenuRequested(int k, const QPoint& globalPos);
  void PositionHovered(int k);
  void BackgroundClicked();

 protected:
  void paintEvent(QPaintEvent* event) override;
  // Tab and Shift+Tab walk the sign slots instead of leaving the grid.
  bool focusNextPrevChild(bool next) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  struct Geometry {
    double cell = 0;  // side of a cell
    double gap = 0;   // width of a sign slot
    QPointF origin;
  };
  Geometry Measure() const;
  double Offset(const Geometry& g, int index) const;  // of layout row/column index (1-based)
  void PaintSign(QPainter& painter, const QRectF& rect, QChar sign) const;
  void PaintCell(QPainter& painter, const QRectF& rect, int k, const QString& text, CellColour role) const;
  void PaintMarks(QPainter& painter, const QRectF& rect, MarkBits marks) const;
  bool HoldsHighlightedDigit(int k, const QString& text) const;

  PuzzleModel& model_;
  const ColourTable& colours_;
  std::array<std::optional<QString>, kPositionCount> shown_{};
  std::array<CellColour, kPositionCount> roles_{};
  int cursor_ = -1;
  const CoachState* coach_ = nullptr;
};

}  // namespace qm::ui
