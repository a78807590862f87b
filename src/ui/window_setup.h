// The window's fit to the desktop: its first size on the screen, the colour scheme on the
// whole application (dialogs and message boxes included), the look of message boxes and
// the names the choosers hand back.
#pragma once

#include <QMessageBox>
#include <QPalette>
#include <QProxyStyle>
#include <QRect>
#include <QSize>
#include <QString>

#include "settings/colour_schemes.h"

namespace qm::ui {

// The title of every message box.
inline constexpr const char* kMessageTitle = "Quillmere";

// The size to open at: `wanted`, shrunk to fit `available` (the screen's free area) with
// a margin for the frame.
QSize FitToScreen(QSize wanted, const QRect& available);

// The palette of a scheme, for the whole application: panels in colour 2, fields in
// colour 5, buttons in colour 3, text in colour 1, selections in colour 6.
QPalette SchemePalette(const ColourTable& colours);

// The application's style with check boxes and radio buttons (in menus too) outlined in
// the text colour: on a dark scheme the usual outline, a shade of the panel colour, is
// all but invisible.
class ClearIndicatorStyle : public QProxyStyle {
 public:
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;
};

// Errors get the error icon, everything else the information icon.
QMessageBox::Icon MessageIcon(const QString& text);

// A bitmap name without its ".bmp" gets it.
QString WithBitmapExtension(const QString& path);

}  // namespace qm::ui
