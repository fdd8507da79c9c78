#include "form_binder.h"

#include <memory>

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

namespace bw::gui {

QString ToQt(const std::string& text) { return QString::fromUtf8(text.data(), qsizetype(text.size())); }

std::string FromQt(const QString& text) { return text.toUtf8().toStdString(); }

namespace {

/// Shows or hides `w` when the model says otherwise (isHidden is the widget's
/// own flag, independent of its parents).
bool SyncVisible(QWidget* w, bool visible) {
  if (w->isHidden() != visible) return false;
  w->setVisible(visible);
  return true;
}

bool SyncEnabled(QWidget* w, bool enabled) {
  if (w->testAttribute(Qt::WA_Disabled) != enabled) return false;
  w->setEnabled(enabled);
  return true;
}

/// A caption as Qt shows it literally: Qt reads a single "&" as the marker of a
/// keyboard shortcut ("ADI Leopard & Ocelot" would lose its ampersand).
QString LiteralCaption(const std::string& caption) {
  QString s = ToQt(caption);
  s.replace(QLatin1Char('&'), QStringLiteral("&&"));
  return s;
}

/// Control texts keep CR LF line ends; Qt wants LF.
QString ToDisplayText(const std::string& text) {
  QString s = ToQt(text);
  s.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  return s;
}

/// Remembers whether the current mouse click already changed a list's
/// selection, so that the click itself does not raise the event a second time.
class ListClickTracker : public QObject {
 public:
  explicit ListClickTracker(QObject* parent) : QObject(parent) {}
  bool changedByThisClick = false;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
      changedByThisClick = false;
    return QObject::eventFilter(watched, event);
  }
};

}  // namespace

void FormBinder::Run(const std::function<void()>& handler) { dispatch_(handler); }

void FormBinder::Bind(TextBox& m, QLineEdit* w, const char* name) {
  w->setObjectName(QString::fromLatin1(name));
  QObject::connect(w, &QLineEdit::textEdited, w, [&m](const QString& text) { m.text = FromQt(text); });
  toWidgets_.push_back([&m, w] {
    bool changed = false;
    QString text = ToQt(m.text);
    if (w->text() != text) {
      w->setText(text);
      w->setCursorPosition(0);
      changed = true;
    }
    changed |= SyncVisible(w, m.visible);
    changed |= SyncEnabled(w, m.enabled);
    return changed;
  });
  fromWidgets_.push_back([&m, w] {
    if (!w->isReadOnly()) m.text = FromQt(w->text());
  });
}

void FormBinder::Bind(TextBox& m, QPlainTextEdit* w, const char* name) {
  w->setObjectName(QString::fromLatin1(name));
  auto shown = std::make_shared<std::string>();
  toWidgets_.push_back([&m, w, shown] {
    bool changed = false;
    if (*shown != m.text || w->document()->isEmpty() != m.text.empty()) {
      *shown = m.text;
      w->setPlainText(ToDisplayText(m.text));
      changed = true;
    }
    changed |= SyncVisible(w, m.visible);
    changed |= SyncEnabled(w, m.enabled);
    return changed;
  });
}

void FormBinder::Bind(Label& m, QLabel* w, const char* name) {
  w->setObjectName(QString::fromLatin1(name));
  toWidgets_.push_back([&m, w] {
    bool changed = false;
    QString text = ToDisplayText(m.caption);
    if (w->text() != text) {
      w->setText(text);
      changed = true;
    }
    changed |= SyncVisible(w, m.visible);
    return changed;
  });
}

void FormBinder::Bind(CheckBox& m, QCheckBox* w, const char* name, std::function<void()> onClick) {
  w->setObjectName(QString::fromLatin1(name));
  QObject::connect(w, &QCheckBox::clicked, w, [this, &m, onClick](bool checked) {
    m.value = checked ? 1 : 0;
    Run(onClick);
  });
  toWidgets_.push_back([&m, w] {
    bool changed = false;
    QSignalBlocker block(w);
    if (w->isChecked() != (m.value != 0)) {
      w->setChecked(m.value != 0);
      changed = true;
    }
    QString caption = LiteralCaption(m.caption);
    if (w->text() != caption) {
      w->setText(caption);
      changed = true;
    }
    changed |= SyncVisible(w, m.visible);
    changed |= SyncEnabled(w, m.enabled);
    return changed;
  });
  fromWidgets_.push_back([&m, w] { m.value = w->isChecked() ? 1 : 0; });
}

void FormBinder::Bind(OptionButton& m, QRadioButton* w, const char* name, std::vector<OptionButton*> group,
                      std::function<void()> onClick) {
  w->setObjectName(QString::fromLatin1(name));
  // The model decides which button of a group is on (it may be none).
  w->setAutoExclusive(false);
  QObject::connect(w, &QRadioButton::clicked, w, [this, &m, group, onClick] {
    for (OptionButton* other : group) other->value = false;
    m.value = true;
    Run(onClick);
  });
  toWidgets_.push_back([&m, w] {
    bool changed = false;
    QSignalBlocker block(w);
    if (w->isChecked() != m.value) {
      w->setChecked(m.value);
      changed = true;
    }
    QString caption = LiteralCaption(m.caption);
    if (w->text() != caption) {
      w->setText(caption);
      changed = true;
    }
    changed |= SyncVisible(w, m.visible);
    changed |= SyncEnabled(w, m.enabled);
    return changed;
  });
}

void FormBinder::Bind(Button& m, QPushButton* w, const char* name, std::function<void()> onClick,
                      std::function<bool()> allowed) {
  w->setObjectName(QString::fromLatin1(name));
  w->setAutoDefault(false);
  QObject::connect(w, &QPushButton::clicked, w, [this, onClick] { Run(onClick); });
  toWidgets_.push_back([&m, w, allowed] {
    bool changed = false;
    // A trailing blank in a caption ("Open ") is kept in the model, not on the button.
    QString caption = LiteralCaption(m.caption).trimmed();
    if (w->text() != caption) {
      w->setText(caption);
      changed = true;
    }
    changed |= SyncVisible(w, m.visible);
    changed |= SyncEnabled(w, m.enabled && (!allowed || allowed()));
    return changed;
  });
}

void FormBinder::Bind(Frame& m, QGroupBox* w, const char* name) {
  w->setObjectName(QString::fromLatin1(name));
  toWidgets_.push_back([&m, w] {
    bool changed = false;
    QString caption = LiteralCaption(m.caption);
    if (w->title() != caption) {
      w->setTitle(caption);
      changed = true;
    }
    changed |= SyncVisible(w, m.visible);
    return changed;
  });
}

void FormBinder::Bind(ListBox& m, QListWidget* w, const char* name, std::function<void()> onClick) {
  w->setObjectName(QString::fromLatin1(name));
  w->setSelectionMode(QAbstractItemView::SingleSelection);
  auto tracker = new ListClickTracker(w);
  w->viewport()->installEventFilter(tracker);
  // A new selection (mouse or keyboard) raises the event once; a click on the
  // entry that is already selected raises it too, as a list box does.
  QObject::connect(w, &QListWidget::currentRowChanged, w, [this, &m, onClick, tracker](int row) {
    tracker->changedByThisClick = true;
    m.listIndex = row;
    Run(onClick);
  });
  QObject::connect(w, &QListWidget::itemClicked, w, [this, &m, w, onClick, tracker](QListWidgetItem* item) {
    if (tracker->changedByThisClick) {
      tracker->changedByThisClick = false;
      return;
    }
    m.listIndex = w->row(item);
    Run(onClick);
  });
  auto shown = std::make_shared<std::vector<std::string>>();
  toWidgets_.push_back([&m, w, shown] {
    bool changed = false;
    QSignalBlocker block(w);
    if (*shown != m.items) {
      *shown = m.items;
      w->clear();
      for (const auto& item : m.items) w->addItem(ToQt(item));
      changed = true;
    }
    int row = (m.listIndex >= 0 && m.listIndex < w->count()) ? m.listIndex : -1;
    if (w->currentRow() != row) {
      w->setCurrentRow(row);
      changed = true;
    }
    if (row >= 0 && !w->item(row)->isSelected()) w->item(row)->setSelected(true);
    if (row < 0) w->clearSelection();
    changed |= SyncVisible(w, m.visible);
    changed |= SyncEnabled(w, m.enabled);
    return changed;
  });
}

void FormBinder::Bind(ComboBox& m, QComboBox* w, const char* name, std::function<void()> onClick) {
  w->setObjectName(QString::fromLatin1(name));
  w->setEditable(true);
  w->setInsertPolicy(QComboBox::NoInsert);
  w->setCompleter(nullptr);
  QObject::connect(w, &QComboBox::activated, w, [this, &m, onClick](int index) {
    m.Select(index);
    Run(onClick);
  });
  QObject::connect(w->lineEdit(), &QLineEdit::textEdited, w, [&m](const QString& text) {
    m.text = FromQt(text);
    m.listIndex = -1;
  });
  auto shown = std::make_shared<std::vector<std::string>>();
  toWidgets_.push_back([&m, w, shown] {
    bool changed = false;
    QSignalBlocker block(w);
    QSignalBlocker blockEdit(w->lineEdit());
    if (*shown != m.items) {
      *shown = m.items;
      w->clear();
      for (const auto& item : m.items) w->addItem(ToQt(item));
      changed = true;
    }
    int index = (m.listIndex >= 0 && m.listIndex < w->count()) ? m.listIndex : -1;
    if (w->currentIndex() != index) {
      w->setCurrentIndex(index);
      changed = true;
    }
    QString text = ToQt(m.text);
    if (w->currentText() != text) {
      w->setEditText(text);
      w->lineEdit()->setCursorPosition(0);
      changed = true;
    }
    changed |= SyncVisible(w, m.visible);
    changed |= SyncEnabled(w, m.enabled);
    return changed;
  });
  fromWidgets_.push_back([&m, w] { m.text = FromQt(w->currentText()); });
}

void FormBinder::BindVisible(const bool& visible, QWidget* w) {
  toWidgets_.push_back([&visible, w] { return SyncVisible(w, visible); });
}

bool FormBinder::ToWidgets() {
  bool changed = false;
  for (auto& step : toWidgets_) changed |= step();
  return changed;
}

void FormBinder::FromWidgets() {
  for (auto& step : fromWidgets_) step();
}

}  // namespace bw::gui
