#include "gui_driver.h"

#include <atomic>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

namespace bw::guitest {

void Click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }

bool ClickRow(QListWidget* list, const QString& text) {
  auto items = list->findItems(text, Qt::MatchExactly);
  if (items.isEmpty()) return false;
  list->scrollToItem(items.front());
  QRect r = list->visualItemRect(items.front());
  QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, r.center());
  return true;
}

void Type(QWidget* edit, const QString& text) {
  QWidget* target = edit;
  if (auto combo = qobject_cast<QComboBox*>(edit)) target = combo->lineEdit();
  target->setFocus();
  if (auto line = qobject_cast<QLineEdit*>(target)) line->end(false);
  QTest::keyClicks(target, text);
}

bool WaitFor(const std::function<bool()>& condition, int milliseconds) {
  QDeadlineTimer deadline(milliseconds);
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    QTest::qSleep(5);
  }
  return true;
}

void When(std::function<bool()> condition, std::function<void()> action, int milliseconds) {
  auto timer = new QTimer(qApp);
  auto deadline = std::make_shared<QDeadlineTimer>(milliseconds);
  timer->setInterval(10);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, condition, action, deadline] {
    if (condition()) {
      timer->stop();
      timer->deleteLater();
      action();
    } else if (deadline->hasExpired()) {
      timer->stop();
      timer->deleteLater();
    }
  });
  timer->start();
}

void AnswerFileDialog(const std::string& path, FileDialogSeen* seen) {
  When([] { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr; },
       [path, seen] {
         auto dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
         if (seen) {
           seen->shown = true;
           seen->filter = dialog->nameFilters().join(QStringLiteral(";;"));
           seen->folder = dialog->directory().absolutePath();
         }
         if (path.empty()) {
           dialog->reject();
           return;
         }
         dialog->selectFile(QString::fromStdString(path));
         // What the dialog's own button does: accept the typed name.
         QMetaObject::invokeMethod(dialog, "accept", Qt::DirectConnection);
       });
}

void AnswerMessageBox(int standardButton, MessageSeen* seen) {
  When([] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; },
       [standardButton, seen] {
         auto box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
         if (seen) {
           seen->shown = true;
           seen->title = box->windowTitle();
           seen->text = box->text();
         }
         QAbstractButton* button = box->button(QMessageBox::StandardButton(standardButton));
         if (button) Click(button);
         else box->reject();
       });
}

ProgramFolder::ProgramFolder() {
  static std::atomic<int> counter{0};
  path_ = std::filesystem::temp_directory_path() /
          ("bwgui-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
  std::filesystem::remove_all(path_);
  std::filesystem::create_directories(path_);
  std::filesystem::copy_file(std::filesystem::path(BW_BIN_DIR) / "Empty_RCIR.mdb", path_ / "Empty_RCIR.mdb");
  std::filesystem::create_directory_symlink(std::filesystem::path(BW_SOURCE_DIR) / "Device Library",
                                            path_ / "Device Library");
}

ProgramFolder::~ProgramFolder() {
  std::error_code ec;
  std::filesystem::remove_all(path_, ec);
}

}  // namespace bw::guitest
