#include "ui/window_setup.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>
#include <array>
#include <utility>

namespace qm::ui {

namespace {

QColor ToQColor(Rgb c) { return QColor(Red(c), Green(c), Blue(c)); }

}  // namespace

QSize FitToScreen(QSize wanted, const QRect& available) {
  if (!available.isValid()) return wanted;
  // Leave room for the frame and title bar the window manager adds.
  constexpr int kFrame = 40;
  const int width = std::max(320, std::min(wanted.width(), available.width() - kFrame));
  const int height = std::max(240, std::min(wanted.height(), available.height() - 2 * kFrame));
  return {std::min(width, available.width()), std::min(height, available.height())};
}

QPalette SchemePalette(const ColourTable& colours) {
  const auto& c = colours.colour;
  QPalette palette;
  // Each role of the active and inactive groups and the scheme colour it takes.
  const std::array<std::pair<QPalette::ColorRole, int>, 13> roles = {{
      {QPalette::Window, kGridColour},        {QPalette::WindowText, kTextColour},
      {QPalette::Base, kCellColour},          {QPalette::AlternateBase, kButtonColour},
      {QPalette::Text, kTextColour},          {QPalette::PlaceholderText, kCandidateColour},
      {QPalette::Button, kButtonColour},      {QPalette::ButtonText, kTextColour},
      {QPalette::Highlight, kHighlightColour}, {QPalette::HighlightedText, kTextColour},
      {QPalette::ToolTipBase, kCellColour},   {QPalette::ToolTipText, kTextColour},
      {QPalette::Link, kClueColour},
  }};
  for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
    for (const auto& [role, colour] : roles) palette.setColor(group, role, ToQColor(c[static_cast<std::size_t>(colour)]));
  }
  // Disabled entries: the candidates' colour, which is readable but quieter.
  palette.setColor(QPalette::Disabled, QPalette::Window, ToQColor(c[kGridColour]));
  palette.setColor(QPalette::Disabled, QPalette::Base, ToQColor(c[kGridColour]));
  palette.setColor(QPalette::Disabled, QPalette::Button, ToQColor(c[kButtonColour]));
  for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, ToQColor(c[kCandidateColour]));
  }
  return palette;
}

void ClearIndicatorStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                        const QWidget* widget) const {
  QProxyStyle::drawPrimitive(element, option, painter, widget);
  if (element != PE_IndicatorCheckBox && element != PE_IndicatorRadioButton) return;
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  QColor outline = option->palette.color(QPalette::Text);
  outline.setAlpha(170);
  painter->setPen(QPen(outline, 1));
  painter->setBrush(Qt::NoBrush);
  const QRectF box = QRectF(option->rect).adjusted(1.5, 1.5, -1.5, -1.5);
  if (element == PE_IndicatorRadioButton) {
    painter->drawEllipse(box);
  } else {
    painter->drawRoundedRect(box, 1, 1);
  }
  painter->restore();
}

QMessageBox::Icon MessageIcon(const QString& text) {
  static const QStringList marks = {"error",   "could not", "not found", "invalid",   "not a valid",
                                    "cannot",  "failed",    "must ",     "too many", "no puzzles"};
  const QString lower = text.toLower();
  for (const QString& mark : marks) {
    if (lower.contains(mark)) return QMessageBox::Critical;
  }
  return QMessageBox::Information;
}

QString WithBitmapExtension(const QString& path) {
  if (path.isEmpty() || path.endsWith(".bmp", Qt::CaseInsensitive)) return path;
  return path + ".bmp";
}

}  // namespace qm::ui
