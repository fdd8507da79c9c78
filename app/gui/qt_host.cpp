#include "qt_host.h"

#include <filesystem>

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

#include "details_dialog.h"
#include "form_binder.h"
#include "main_window.h"
#include "shell/command.h"

namespace bw::gui {

namespace {

/// Wait loops call DoEvents back to back; after this many rounds in which the
/// model did not change, DoEvents sleeps until input arrives.
constexpr int kIdleRoundsBeforeSleeping = 3;
/// Longest sleep of one idle DoEvents, so that a waiting core still gets to
/// look at its flags now and then.
constexpr int kIdleSleepMilliseconds = 20;

constexpr const char* kTitle = "Burstwright";

}  // namespace

void QtHost::Attach(MainWindow* main, DetailsDialog* details) {
  main_ = main;
  details_ = details;
}

bool QtHost::ShowModel() {
  bool changed = false;
  if (main_) changed |= main_->ShowModel();
  if (details_) changed |= details_->ShowModel();
  return changed;
}

void QtHost::Dispatch(const std::function<void()>& handler) {
  if (quitting_) {
    return;
  }
  if (main_) main_->TakeInput();
  if (details_) details_->TakeInput();
  if (handler) RunCommand(p_, handler);
  if (!quitting_) ShowModel();
}

// ---- messages and dialogs ----

MsgBoxResult QtHost::MsgBox(const std::string& text, MsgBoxStyle style) {
  if (quitting_) {
    return style == MsgBoxStyle::OKOnly ? MsgBoxResult::OK
                                        : (style == MsgBoxStyle::YesNo ? MsgBoxResult::No : MsgBoxResult::Cancel);
  }
  ShowModel();
  ++messageCount_;
  // One line for the status bar: each run of line breaks becomes a blank.
  lastMessage_.clear();
  bool gap = false;
  for (char c : text) {
    if (c == '\r' || c == '\n') {
      gap = true;
      continue;
    }
    if (gap && !lastMessage_.empty()) lastMessage_ += ' ';
    gap = false;
    lastMessage_ += c;
  }
  QWidget* parent = QApplication::activeWindow();
  if (!parent) parent = main_;
  QMessageBox box(parent);
  box.setWindowTitle(QString::fromLatin1(kTitle));
  QString shown = ToQt(text);
  shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  box.setText(shown);
  switch (style) {
    case MsgBoxStyle::OKOnly:
      box.setIcon(shown.startsWith(QStringLiteral("Run-time error")) ? QMessageBox::Critical
                                                                     : QMessageBox::Information);
      box.setStandardButtons(QMessageBox::Ok);
      box.setDefaultButton(QMessageBox::Ok);
      break;
    case MsgBoxStyle::YesNo:
      box.setIcon(QMessageBox::Question);
      box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
      box.setDefaultButton(QMessageBox::Yes);
      box.setEscapeButton(QMessageBox::No);
      break;
    case MsgBoxStyle::YesNoCancel:
      box.setIcon(QMessageBox::Question);
      box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
      box.setDefaultButton(QMessageBox::Yes);
      box.setEscapeButton(QMessageBox::Cancel);
      break;
  }
  // The busy cursor would hide that the box wants an answer.
  const bool wasBusy = busy_;
  if (wasBusy) SetBusy(false);
  int answer = box.exec();
  if (wasBusy && !quitting_) SetBusy(true);
  switch (answer) {
    case QMessageBox::Yes: return MsgBoxResult::Yes;
    case QMessageBox::No: return MsgBoxResult::No;
    case QMessageBox::Cancel: return MsgBoxResult::Cancel;
    default: return style == MsgBoxStyle::OKOnly ? MsgBoxResult::OK : MsgBoxResult::Cancel;
  }
}

QString QtHost::QtFilter(const std::string& filter) {
  QStringList parts = ToQt(filter).split(QLatin1Char('|'));
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QString text = parts[i].trimmed();
    QString patterns = parts[i + 1].trimmed();
    patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
    // Qt reads the patterns from the parentheses; a text without them gets them.
    if (!text.contains(QLatin1Char('('))) text += QStringLiteral(" (") + patterns + QLatin1Char(')');
    filters << text;
  }
  if (parts.size() % 2 == 1 && !parts.back().trimmed().isEmpty() && filters.isEmpty()) filters << parts.back();
  return filters.join(QStringLiteral(";;"));
}

QString QtHost::StartFolder(const std::string& startPath) {
  namespace fs = std::filesystem;
  fs::path path(startPath);
  std::string leaf = path.filename().string();
  if (leaf.find_first_of("*?") != std::string::npos) path = path.parent_path();
  std::error_code ec;
  while (!path.empty() && !fs::is_directory(path, ec)) {
    fs::path up = path.parent_path();
    if (up == path) break;
    path = up;
  }
  if (path.empty() || !fs::is_directory(path, ec)) return QDir::homePath();
  return ToQt(path.string());
}

std::string QtHost::FileDialog(bool save, const std::string& filter, const std::string& startPath,
                               const std::string& suggestedName) {
  if (quitting_) return std::string();
  ShowModel();
  QWidget* parent = QApplication::activeWindow();
  if (!parent) parent = main_;
  QFileDialog dialog(parent, QString::fromLatin1(save ? "Save As" : "Open"), StartFolder(startPath),
                     QtFilter(filter));
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  if (save) {
    // The program asks about replacing files itself (and keeps backups).
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    // A name typed without an extension gets the filter's one.
    QString pattern = ToQt(filter).section(QLatin1Char('|'), 1, 1).section(QLatin1Char(';'), 0, 0);
    if (pattern.startsWith(QStringLiteral("*.")) && pattern.indexOf(QLatin1Char('*'), 1) < 0)
      dialog.setDefaultSuffix(pattern.mid(2));
    if (!suggestedName.empty()) dialog.selectFile(ToQt(suggestedName));
  }
  const bool wasBusy = busy_;
  if (wasBusy) SetBusy(false);
  int result = dialog.exec();
  if (wasBusy && !quitting_) SetBusy(true);
  if (result != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::string();
  return FromQt(QDir::toNativeSeparators(dialog.selectedFiles().front()));
}

std::string QtHost::OpenFileDialog(const std::string& filter, const std::string& startPath) {
  return FileDialog(false, filter, startPath);
}

std::string QtHost::SaveFileDialog(const std::string& filter, const std::string& startPath) {
  std::string suggested;
  suggested.swap(suggestedName_);
  return FileDialog(true, filter, startPath, suggested);
}

std::string QtHost::SaveFileDialogNamed(const std::string& filter, const std::string& startPath,
                                        const std::string& suggestedName) {
  return FileDialog(true, filter, startPath, suggestedName);
}

// ---- events, the details dialog, the cursor, quitting ----

void QtHost::DoEvents() {
  if (quitting_) return;
  if (ShowModel()) idleRounds_ = 0;
  else ++idleRounds_;
  if (idleRounds_ >= kIdleRoundsBeforeSleeping) {
    // Nothing to show and nothing happened: the core waits for the user.
    QTimer wake;
    wake.setSingleShot(true);
    wake.start(kIdleSleepMilliseconds);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  } else {
    QCoreApplication::processEvents();
  }
}

void QtHost::ShowDetails() {
  if (quitting_ || !details_) return;
  details_->PlaceOnFirstShow();
  ShowModel();
  details_->show();
  details_->raise();
  details_->activateWindow();
}

void QtHost::HideDetails() {
  if (details_) details_->hide();
}

void QtHost::SetBusy(bool busy) {
  if (busy == busy_) return;
  busy_ = busy;
  // The arrow-with-hourglass: a run goes on, yet the window still takes clicks.
  if (busy) QApplication::setOverrideCursor(Qt::BusyCursor);
  else QApplication::restoreOverrideCursor();
}

void QtHost::Quit() {
  if (quitting_) return;
  SetBusy(false);
  quitting_ = true;
  p_.QuitRequested = true;
  if (details_) details_->hide();
  if (main_) main_->close();
  QCoreApplication::quit();
}

}  // namespace bw::gui
