// Ties the controls of the form model to Qt widgets. Each bind call pairs one
// model control with one widget (whose objectName becomes the control's name)
// and records two small copy steps: model -> widget, done after every handler
// and on every DoEvents, and widget -> model, done before a handler runs. User
// input (a click, a keystroke, a selection) is copied into the model at once
// and then, where the control has an event handler, the handler is run through
// the host. Programmatic widget updates never raise events.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <QString>

#include "shell/forms.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QWidget;

namespace bw::gui {

QString ToQt(const std::string& text);
std::string FromQt(const QString& text);

class FormBinder {
 public:
  /// Runs an event handler (the host's command wrapper).
  using Dispatch = std::function<void(std::function<void()>)>;
  explicit FormBinder(Dispatch dispatch) : dispatch_(std::move(dispatch)) {}

  void Bind(TextBox& m, QLineEdit* w, const char* name);
  void Bind(TextBox& m, QPlainTextEdit* w, const char* name);
  void Bind(Label& m, QLabel* w, const char* name);
  void Bind(CheckBox& m, QCheckBox* w, const char* name, std::function<void()> onClick = {});
  /// `group` are the other option buttons that share a container with this one:
  /// a click selects this one and clears them, as option buttons do.
  void Bind(OptionButton& m, QRadioButton* w, const char* name, std::vector<OptionButton*> group,
            std::function<void()> onClick = {});
  /// `allowed`, when given, must also hold for the button to be enabled (the
  /// window's guidance on top of the form's own state).
  void Bind(Button& m, QPushButton* w, const char* name, std::function<void()> onClick,
            std::function<bool()> allowed = {});
  void Bind(Frame& m, QGroupBox* w, const char* name);
  void Bind(ListBox& m, QListWidget* w, const char* name, std::function<void()> onClick = {});
  void Bind(ComboBox& m, QComboBox* w, const char* name, std::function<void()> onClick = {});
  /// Any other widget whose visibility follows a model flag.
  void BindVisible(const bool& visible, QWidget* w);

  /// Model -> widgets. True when any widget changed.
  bool ToWidgets();
  /// Widgets -> model (the user's input).
  void FromWidgets();

 private:
  void Run(const std::function<void()>& handler);

  Dispatch dispatch_;
  std::vector<std::function<bool()>> toWidgets_;
  std::vector<std::function<void()>> fromWidgets_;
};

}  // namespace bw::gui
