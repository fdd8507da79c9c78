#include "details_dialog.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QShortcut>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QVBoxLayout>

#include "picture_painter.h"
#include "qt_host.h"
#include "tool_tips.h"
#include "waveform_view.h"

namespace bw::gui {

namespace {

/// A caption of a shown value: plain beside the bold value.
QLabel* Caption(const char* text) { return new QLabel(QString::fromLatin1(text)); }

/// A value label: selectable, so that a code can be copied out.
QLabel* Value() {
  auto label = new QLabel;
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setMinimumWidth(90);
  QFont f = label->font();
  f.setBold(true);
  label->setFont(f);
  return label;
}

/// Size of an exported picture: wide enough for a frame's detail, in a 10:3 strip.
constexpr int kPictureWidth = 1200;
constexpr int kPictureHeight = 360;

}  // namespace

DetailsDialog::DetailsDialog(Program& p, QtHost& host, QWidget* parent)
    : QDialog(parent),
      p_(p),
      host_(host),
      binder_([&host](std::function<void()> handler) { host.Dispatch(handler); }) {
  setObjectName(QStringLiteral("DBG"));
  setModal(false);
  DetailsForm& d = p_.DBG;
  auto v = new QVBoxLayout(this);
  v->setSpacing(10);

  // Title: the writer's text for this entry, and the entry's number in the run.
  auto titleRow = new QHBoxLayout;
  auto title = new QLabel;
  QFont big = title->font();
  big.setBold(true);
  big.setPointSizeF(big.pointSizeF() * 1.25);
  title->setFont(big);
  binder_.Bind(d.lblTitle, title, "lblTitle");
  entryNumber_ = new QLabel;
  entryNumber_->setObjectName(QStringLiteral("entryNumber"));
  titleRow->addWidget(title, 1);
  titleRow->addWidget(entryNumber_);
  v->addLayout(titleRow);

  auto values = new QGroupBox(QStringLiteral("Entry"));
  auto grid = new QGridLayout(values);
  grid->setHorizontalSpacing(10);
  grid->setVerticalSpacing(6);
  struct Item {
    const char* caption;
    Label& label;
    const char* name;
  };
  Item items[] = {
      {"Manufacturer", d.lblManufacturer, "lblManufacturer"},
      {"Type", d.lblType, "lblType"},
      {"Model", d.lblModel, "lblModel"},
      {"Key Label", d.lblKeyLabel, "lblKeyLabel"},
      {"IR Protocol", d.lblProtocol, "lblProtocol"},
      {"Carrier", d.lblCarrier, "lblCarrier"},
      {"Device Code", d.lblDeviceCode, "lblDeviceCode"},
      {"Function Code", d.lblFunctionCode, "lblFunctionCode"},
      {"Burst Pair Count", d.lblBurstPairCount, "lblBurstPairCount"},
      {"Once Count", d.lblOnceCount, "lblOnceCount"},
      {"Repeat Count", d.lblRepeatCount, "lblRepeatCount"},
  };
  int index = 0;
  for (Item& item : items) {
    auto value = Value();
    binder_.Bind(item.label, value, item.name);
    int row = index / 3, column = (index % 3) * 2;
    grid->addWidget(Caption(item.caption), row, column);
    grid->addWidget(value, row, column + 1);
    ++index;
  }
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);
  grid->setColumnStretch(5, 1);
  v->addWidget(values);

  // The code text beside the list of durations.
  auto code = new QGroupBox(QStringLiteral("Code"));
  auto codeLayout = new QGridLayout(code);
  auto text1 = new QPlainTextEdit;
  text1->setReadOnly(true);
  text1->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  text1->setMinimumHeight(120);
  binder_.Bind(d.Text1, text1, "Text1");
  auto burstList = new QListWidget;
  burstList->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  burstList->setMaximumWidth(120);
  burstList->setUniformItemSizes(true);
  binder_.Bind(d.BurstList, burstList, "BurstList");
  auto hex = new QCheckBox;
  binder_.Bind(d.HexOPT, hex, "HexOPT", [this] { HexOPT_Click(p_); });
  codeLayout->addWidget(text1, 0, 0);
  codeLayout->addWidget(burstList, 0, 1);
  codeLayout->addWidget(hex, 1, 0);
  codeLayout->setColumnStretch(0, 1);
  v->addWidget(code, 1);

  auto wave = new QGroupBox(QStringLiteral("Waveform"));
  auto waveLayout = new QVBoxLayout(wave);
  auto scaleRow = new QHBoxLayout;
  scaleRow->addWidget(new QLabel(QStringLiteral("Scale")));
  const char* optionNames[] = {"Option1_0", "Option1_1", "Option1_2"};
  for (int i = 0; i < 3; ++i) {
    auto option = new QRadioButton;
    std::vector<OptionButton*> others;
    for (int j = 0; j < 3; ++j)
      if (j != i) others.push_back(&d.Option1[std::size_t(j)]);
    binder_.Bind(d.Option1[std::size_t(i)], option, optionNames[i], others, [this, i] { Option1_Click(p_, i); });
    scaleRow->addWidget(option);
  }
  scaleRow->addStretch(1);
  auto command1 = new QPushButton;
  binder_.Bind(d.Command1, command1, "Command1", [this] { Command1_Click(p_); });
  scaleRow->addWidget(command1);
  auto savePicture = new QPushButton(QStringLiteral("Save Picture..."));
  savePicture->setObjectName(QStringLiteral("savePicture"));
  savePicture->setAutoDefault(false);
  connect(savePicture, &QPushButton::clicked, this, &DetailsDialog::SavePicture);
  scaleRow->addWidget(savePicture);
  waveLayout->addLayout(scaleRow);
  waveform_ = new WaveformView(p_);
  connect(waveform_, &WaveformView::savePictureRequested, this, &DetailsDialog::SavePicture);
  waveLayout->addWidget(waveform_, 1);
  v->addWidget(wave, 1);

  auto buttons = new QHBoxLayout;
  buttons->addStretch(1);
  auto next = new QPushButton, skip = new QPushButton, finish = new QPushButton;
  binder_.Bind(d.Next, next, "Next", [this] { Next_Click(p_); });
  binder_.Bind(d.Skip, skip, "Skip", [this] { Skip_Click(p_); });
  binder_.Bind(d.Finish, finish, "Finish", [this] { Finish_Click(p_); });
  for (QPushButton* b : {next, skip, finish}) {
    b->setMinimumWidth(96);
    buttons->addWidget(b);
  }
  next->setDefault(true);
  v->addLayout(buttons);
  // The three answers from the keyboard, wherever the focus is (the captions stay as they are).
  const std::pair<QPushButton*, QKeySequence> keys[] = {
      {next, QKeySequence(Qt::ALT | Qt::Key_N)}, {skip, QKeySequence(Qt::ALT | Qt::Key_S)},
      {finish, QKeySequence(Qt::ALT | Qt::Key_F)}, {command1, QKeySequence(Qt::ALT | Qt::Key_A)},
      {savePicture, QKeySequence(Qt::CTRL | Qt::Key_S)}};
  for (const auto& [button, key] : keys) {
    auto shortcut = new QShortcut(key, this);
    connect(shortcut, &QShortcut::activated, button, [button] {
      if (button->isEnabled() && button->isVisible()) button->click();
    });
  }
  ApplyToolTips(this);

  resize(760, 600);
}

bool DetailsDialog::ShowModel() {
  const DetailsForm& d = p_.DBG;
  bool changed = binder_.ToWidgets();
  QString caption = ToQt(d.caption);
  if (windowTitle() != caption) {
    setWindowTitle(caption);
    changed = true;
  }
  QString number = d.entryCounter > 0 ? QStringLiteral("Entry %1").arg(d.entryCounter) : QString();
  if (entryNumber_->text() != number) {
    entryNumber_->setText(number);
    changed = true;
  }
  if (d.entryCounter != shownEntry_) {
    // A new entry starts from the scale option's own view.
    shownEntry_ = d.entryCounter;
    waveform_->ResetView();
    changed = true;
  }
  if (d.loaded) changed |= waveform_->Refresh();
  if (d.visible && isHidden() && !host_.quitting()) {
    PlaceOnFirstShow();
    show();
    changed = true;
  } else if (!d.visible && !isHidden()) {
    hide();
    changed = true;
  }
  return changed;
}

void DetailsDialog::TakeInput() { binder_.FromWidgets(); }

void DetailsDialog::PlaceOnFirstShow() {
  if (placed_) return;
  placed_ = true;
  if (QScreen* screen = QGuiApplication::primaryScreen()) {
    QRect area = screen->availableGeometry();
    move(area.center() - rect().center());
  }
}

void DetailsDialog::reject() {
  // While a run waits here, putting the dialog away is "Finish": nothing may
  // wait on a dialog nobody sees.
  if (p_.DBG.Next.enabled && !host_.quitting()) {
    host_.Dispatch([this] { Finish_Click(p_); });
    return;
  }
  p_.DBG.visible = false;
  QDialog::reject();
}

void DetailsDialog::closeEvent(QCloseEvent* event) {
  if (p_.DBG.Next.enabled && !host_.quitting()) {
    event->ignore();
    host_.Dispatch([this] { Finish_Click(p_); });
    return;
  }
  p_.DBG.visible = false;
  QDialog::closeEvent(event);
}

void DetailsDialog::SavePicture() {
  const std::string name = WaveformFileName(p_) + ".png";
  const std::string path = host_.SaveFileDialogNamed("PNG Picture (*.png)|*.png|SVG Drawing (*.svg)|*.svg",
                                                     QDir::homePath().toStdString(), name);
  if (path.empty()) return;
  const WaveformPicture picture =
      LayOutWaveform(DrawWaveform(p_, waveform_->viewport()), kPictureWidth, kPictureHeight, WaveformTitle(p_));
  std::string problem;
  if (QFileInfo(ToQt(path)).suffix().compare(QStringLiteral("svg"), Qt::CaseInsensitive) == 0) {
    QFile file(ToQt(path));
    const std::string svg = WaveformSvg(picture);
    if (!file.open(QIODevice::WriteOnly) || file.write(svg.data(), qint64(svg.size())) != qint64(svg.size()))
      problem = path + ": the picture could not be written";
  } else {
    problem = bw::picture::SavePng(picture, path);
  }
  if (!problem.empty()) host_.MsgBox(problem, MsgBoxStyle::OKOnly);
}

}  // namespace bw::gui
