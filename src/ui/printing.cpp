#include "ui/printing.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPageLayout>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QSettings>
#include <QSpinBox>
#include <algorithm>

#include "core/file_replace.h"
#include "core/text_rules.h"
#include "commands/save_commands.h"
#include "reasoning/ladder.h"

namespace qm::ui {

PrintedPuzzle TakePuzzle(const PuzzleModel& model, int number, bool graded) {
  PrintedPuzzle puzzle = render::TakePuzzle(model, number);
  if (graded) {
    const reasoning::Grade grade = reasoning::ExplainModel(model).grade;
    puzzle.grade = grade.name;
    puzzle.gradeLevel = grade.level;
  }
  return puzzle;
}

render::PageSpec PageSpecOf(const QPageLayout& layout) {
  render::PageSpec spec;
  spec.trim = layout.fullRect(QPageLayout::Millimeter).size();
  const QMarginsF margins = layout.margins(QPageLayout::Millimeter);
  spec.inner = margins.left();
  spec.outer = margins.right();
  spec.top = margins.top();
  spec.bottom = margins.bottom();
  return spec;
}

bool PrintBook(QPrinter& printer, const std::vector<render::Page>& pages, const render::BookOptions& options) {
  printer.setDocName(options.title);
  // The renderer places everything within the chosen margins itself, from the paper's corner.
  render::BookOptions onPaper = options;
  onPaper.page = PageSpecOf(printer.pageLayout());
  printer.setFullPage(true);
  const bool printed = render::PaintBook(printer, pages, onPaper);
  printer.setFullPage(false);
  return printed;
}

bool RestorePageLayout(QPrinter& printer, const std::string& file) {
  const QSettings kept(QString::fromStdString(file), QSettings::IniFormat);
  const QSizeF size(kept.value("page/width").toDouble(), kept.value("page/height").toDouble());
  if (!size.isValid() || size.isEmpty()) {
    const double margin = render::kBookMarginMm;
    printer.setPageMargins(QMarginsF(margin, margin, margin, margin), QPageLayout::Millimeter);
    return false;
  }
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

std::string PageLayoutFile(const PuzzleModel& model) { return ApplicationDirectoryOf(model) + "Quillmere-print.ini"; }

void PrintToFile(const PuzzleModel& model, WindowPort& port, const ModalRunner& runModal, QWidget* parent,
                 const std::vector<render::Page>& pages, const render::BookOptions& options) {
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  RestorePageLayout(printer, PageLayoutFile(model));
  PageSetupDialog setup(printer.pageLayout(), parent);
  if (runModal(setup) != QDialog::Accepted) return;
  printer.setPageLayout(setup.Layout());
  RememberPageLayout(printer, PageLayoutFile(model));

  std::string pdf = ChooseSaveFile(model, port, "*.pdf", "PDF Files");
  if (pdf.empty()) return;
  if (!QString::fromStdString(pdf).endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) pdf += ".pdf";
  if (!ConfirmOverwrite(port, pdf)) return;
  // Drawn in memory, then written through the one safe replacement.
  port.SetBusy(true);
  render::BookOptions onPaper = options;
  onPaper.page = PageSpecOf(printer.pageLayout());
  const QByteArray bytes = render::BookPdf(pages, onPaper, options.title, QStringLiteral("Quillmere"));
  const bool printed =
      !bytes.isEmpty() && ReplaceFileWith(pdf, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
  port.SetBusy(false);
  port.ShowMessage(printed ? "Pages saved as PDF File:" + std::string(kLineBreak) + pdf : WriteErrorMessage(pdf));
}

void PrintWithPreview(const PuzzleModel& model, WindowPort& port, const ModalRunner& runModal, QWidget* parent,
                      const std::vector<render::Page>& pages, const render::BookOptions& options) {
  QPrinter printer(QPrinter::HighResolution);
  RestorePageLayout(printer, PageLayoutFile(model));
  printer.setDocName(options.title);
  QPrintPreviewDialog preview(&printer, parent);
  preview.setObjectName("frmprintpreview");
  QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, &preview, [&](QPrinter* target) {
    port.SetBusy(true);
    PrintBook(*target, pages, options);
    port.SetBusy(false);
  });
  if (runModal(preview) == QDialog::Accepted) RememberPageLayout(printer, PageLayoutFile(model));
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
  last_->setRange(1, count);
  last_->setValue(count);
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
  grades_ = new QCheckBox("Name each puzzle's grade", this);
  grades_->setObjectName("Grades");
  form->addRow(grades_);
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
  QDialog::accept();
}

int PrintRangeDialog::First() const { return first_->value(); }
int PrintRangeDialog::Last() const { return last_->value(); }
int PrintRangeDialog::PerPage() const { return perPage_->currentText().toInt(); }
int PrintRangeDialog::AnswersPerPage() const { return answersPerPage_->value(); }
bool PrintRangeDialog::Answers() const { return answers_->isChecked(); }
bool PrintRangeDialog::Grades() const { return grades_->isChecked(); }

PageSetupDialog::PageSetupDialog(const QPageLayout& layout, QWidget* parent) : QDialog(parent) {
  setObjectName("frmpagesetup");
  setWindowTitle("Page Setup");
  auto* form = new QFormLayout(this);
  size_ = new QComboBox(this);
  size_->setObjectName("PageSize");
  for (int id = 0; id < QPageSize::LastPageSize; ++id) {
    const auto pageId = static_cast<QPageSize::PageSizeId>(id);
    if (pageId == QPageSize::Custom) continue;
    size_->addItem(QPageSize::name(pageId), id);
  }
  // A size of its own (not one Qt names) is offered as it is.
  custom_ = layout.pageSize();
  if (custom_.id() == QPageSize::Custom) size_->addItem(custom_.name(), static_cast<int>(QPageSize::Custom));
  size_->setCurrentIndex(std::max(0, size_->findData(static_cast<int>(custom_.id()))));
  form->addRow("Paper size", size_);
  landscape_ = new QCheckBox("Landscape", this);
  landscape_->setObjectName("Landscape");
  landscape_->setChecked(layout.orientation() == QPageLayout::Landscape);
  form->addRow(landscape_);
  const QMarginsF margins = layout.margins(QPageLayout::Millimeter);
  const std::array<double, 4> values{margins.left(), margins.top(), margins.right(), margins.bottom()};
  const std::array<const char*, 4> names{"Left", "Top", "Right", "Bottom"};
  for (std::size_t i = 0; i < margins_.size(); ++i) {
    margins_[i] = new QDoubleSpinBox(this);
    margins_[i]->setObjectName(QString(names[i]) + "Margin");
    margins_[i]->setRange(0, 50);
    margins_[i]->setDecimals(1);
    margins_[i]->setSuffix(" mm");
    margins_[i]->setValue(values[i]);
    form->addRow(QString(names[i]) + " margin", margins_[i]);
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->setObjectName("Buttons");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  form->addRow(buttons);
}

QPageLayout PageSetupDialog::Layout() const {
  const auto id = static_cast<QPageSize::PageSizeId>(size_->currentData().toInt());
  const QPageSize size = id == QPageSize::Custom ? custom_ : QPageSize(id);
  const QMarginsF margins(margins_[0]->value(), margins_[1]->value(), margins_[2]->value(), margins_[3]->value());
  return QPageLayout(size, landscape_->isChecked() ? QPageLayout::Landscape : QPageLayout::Portrait, margins,
                     QPageLayout::Millimeter);
}

}  // namespace qm::ui
