#include "gui_driver.h"

#include <QCheckBox>
#include <QDeadlineTimer>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOptionButton>
#include <QElapsedTimer>
#include <QPointer>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

namespace bw::guidriver {

namespace {
constexpr const char* kWhenTimerName = "bwguidriver-when";
}

void Click(QAbstractButton* button) {
  // A check box or option button takes clicks on its box and caption only, and
  // a layout may have made the widget much wider than those: aim at the box.
  if (qobject_cast<QCheckBox*>(button) || qobject_cast<QRadioButton*>(button)) {
    QStyleOptionButton option;
    option.initFrom(button);
    const bool check = qobject_cast<QCheckBox*>(button) != nullptr;
    QRect box = button->style()->subElementRect(check ? QStyle::SE_CheckBoxIndicator : QStyle::SE_RadioButtonIndicator,
                                                &option, button);
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, box.center());
    return;
  }
  QTest::mouseClick(button, Qt::LeftButton);
}

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
  timer->setObjectName(QString::fromLatin1(kWhenTimerName));
  auto deadline = std::make_shared<QDeadlineTimer>(milliseconds);
  timer->setInterval(10);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, condition, action, deadline] {
    if (condition()) {
      timer->stop();
      timer->deleteLater();
      action();
    } else if (deadline->hasExpired()) {
      QWidget* modal = QApplication::activeModalWidget();
      qWarning("gave up waiting; active modal: %s", modal ? modal->metaObject()->className() : "none");
      timer->stop();
      timer->deleteLater();
    }
  });
  timer->start();
}

void CancelPendingWhens() {
  for (QTimer* timer : qApp->findChildren<QTimer*>(QString::fromLatin1(kWhenTimerName), Qt::FindDirectChildrenOnly)) {
    timer->stop();
    timer->deleteLater();
  }
}

MessageGuard::MessageGuard(int patienceMilliseconds)
    : timer_(new QTimer), unanswered_(std::make_shared<QStringList>()) {
  auto seenBox = std::make_shared<QPointer<QMessageBox>>();
  auto seenSince = std::make_shared<QElapsedTimer>();
  auto unanswered = unanswered_;
  timer_->setInterval(25);
  QObject::connect(timer_, &QTimer::timeout, timer_, [=] {
    auto box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box) {
      *seenBox = nullptr;
      return;
    }
    if (*seenBox != box) {
      *seenBox = box;
      seenSince->start();
      return;
    }
    if (seenSince->elapsed() < patienceMilliseconds) return;
    unanswered->append(box->windowTitle() + QStringLiteral(": ") + box->text());
    *seenBox = nullptr;
    if (QAbstractButton* escape = box->escapeButton()) Click(escape);
    else if (QAbstractButton* ok = box->button(QMessageBox::Ok)) Click(ok);
    else box->reject();
  });
  timer_->start();
}

MessageGuard::~MessageGuard() { delete timer_; }

void AnswerFileDialog(const std::string& path, FileDialogSeen* seen) {
  When([] { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr; },
       [path, seen] {
         auto dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
         if (seen) {
           seen->shown = true;
           seen->filter = dialog->nameFilters().join(QStringLiteral(";;"));
           seen->folder = dialog->directory().absolutePath();
           if (auto name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) seen->name = name->text();
         }
         if (path.empty()) {
           dialog->reject();
           return;
         }
         // Typed into the name box, as a person would: selectFile leaves the box
         // alone while it has the focus.
         const QFileInfo file(QString::fromStdString(path));
         dialog->setDirectory(file.absolutePath());
         if (auto name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) name->setText(file.fileName());
         else dialog->selectFile(file.absoluteFilePath());
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

}  // namespace bw::guidriver
