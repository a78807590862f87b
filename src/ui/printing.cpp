#include "ui/printing.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPageLayout>
#include <QPrinter>
#include <QSettings>
#include <QSpinBox>
#include <algorithm>

namespace qm::ui {

bool PrintBook(QPrinter& printer, const std::vector<render::Page>& pages, const render::BookOptions& options) {
  printer.setDocName(options.title);
  return render::PaintBook(printer, pages, options);
}

bool RestorePageLayout(QPrinter& printer, const std::string& file) {
  const QSettings kept(QString::fromStdString(file), QSettings::IniFormat);
  const QSizeF size(kept.value("page/width").toDouble(), kept.value("page/height").toDouble());
  if (!size.isValid() || size.isEmpty()) return false;
  const QMarginsF margins(kept.value("page/left").toDouble(), kept.value("page/top").toDouble(),
                          kept.value("page/right").toDouble(), kept.value("page/bottom").toDouble());
  const auto orientation =
      kept.value("page/orientation").toString() == "landscape" ? QPageLayout::Landscape : QPageLayout::Portrait;
  // The size is matched to a named size (A4, Letter) when it is one.
  printer.setPageLayout(
      QPageLayout(QPageSize(size, QPageSize::Millimeter), orientation, margins, QPageLayout::Millimeter));
  return true;
}

void RememberPageLayout(const QPrinter& printer, const std::string& file) {
  QSettings kept(QString::fromStdString(file), QSettings::IniFormat);
  const QPageLayout layout = printer.pageLayout();
  const QSizeF size = layout.pageSize().size(QPageSize::Millimeter);
  const QMarginsF margins = layout.margins(QPageLayout::Millimeter);
  kept.setValue("page/width", size.width());
  kept.setValue("page/height", size.height());
  kept.setValue("page/orientation", layout.orientation() == QPageLayout::Landscape ? "landscape" : "portrait");
  kept.setValue("page/left", margins.left());
  kept.setValue("page/top", margins.top());
  kept.setValue("page/right", margins.right());
  kept.setValue("page/bottom", margins.bottom());
  kept.sync();
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
  answers_ = new QCheckBox("Print the answers after the puzzles", this);
  answers_->setObjectName("Answers");
  answers_->setChecked(true);
  answersPerPage_ = new QSpinBox(this);
  answersPerPage_->setObjectName("AnswersPerPage");
  answersPerPage_->setRange(1, 20);
  answersPerPage_->setValue(12);
  connect(answers_, &QCheckBox::toggled, answersPerPage_, &QWidget::setEnabled);
  form->addRow("Puzzles per page", perPage_);
  form->addRow(answers_);
  form->addRow("Answers per page", answersPerPage_);
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
int PrintRangeDialog::AnswersPerPage() const { return answersPerPage_->value(); }
bool PrintRangeDialog::Answers() const { return answers_->isChecked(); }

}  // namespace qm::ui
