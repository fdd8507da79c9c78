// Driving the real widgets of the desktop program the way a person does:
// clicking buttons and list rows, typing, answering message boxes and file
// dialogs that the core opens while a command runs, and waiting until the
// window shows something. Used by the screenshot tool and the Qt test suite.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QListWidget>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QWidget>

namespace bw::guidriver {

/// The child of `root` named `name` (nullptr when there is none).
template <class T>
T* Find(QWidget* root, const char* name) {
  return root->findChild<T*>(QString::fromLatin1(name));
}

/// A mouse click in the middle of the button.
void Click(QAbstractButton* button);
/// A mouse click on the row of `list` whose text is `text`; false when no row has it.
bool ClickRow(QListWidget* list, const QString& text);
/// Types `text` at the end of a line edit or an editable combo.
void Type(QWidget* edit, const QString& text);

/// Processes events until `condition` holds; false after `milliseconds`.
bool WaitFor(const std::function<bool()>& condition, int milliseconds = 10000);

/// Runs `action` once `condition` holds, from inside whatever event loop is
/// running then (a modal dialog's, or the core's waiting loop). Gives up after
/// `milliseconds`.
void When(std::function<bool()> condition, std::function<void()> action, int milliseconds = 10000);
/// Drops every When that has not run yet (so that none reaches into a later test).
void CancelPendingWhens();

/// Answers the next file dialog with `path` ("" cancels it). The dialog's
/// filter text and start folder are stored for the caller.
struct FileDialogSeen {
  bool shown = false;
  QString filter;
  QString folder;
  QString name;  ///< the file name the dialog offered
};
void AnswerFileDialog(const std::string& path, FileDialogSeen* seen = nullptr);

/// Answers the next message box by pressing `button` (its standard button);
/// its window title and text are stored for the caller.
struct MessageSeen {
  bool shown = false;
  QString title;
  QString text;
};
void AnswerMessageBox(int standardButton, MessageSeen* seen = nullptr);

/// Closes every message box that stays unanswered for `patienceMilliseconds`
/// (answers from AnswerMessageBox come within a few milliseconds) and keeps its
/// text, so that a test fails on the message instead of hanging on it.
class MessageGuard {
 public:
  explicit MessageGuard(int patienceMilliseconds = 1500);
  ~MessageGuard();
  MessageGuard(const MessageGuard&) = delete;
  MessageGuard& operator=(const MessageGuard&) = delete;
  /// Texts of the boxes that nobody answered.
  const QStringList& unanswered() const { return *unanswered_; }

 private:
  QTimer* timer_;
  std::shared_ptr<QStringList> unanswered_;
};

}  // namespace bw::guidriver
