#include "main_window.h"

#include <algorithm>

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

#include <QAction>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QUrl>

#include "adi/adi.h"
#include "pronto/db_run.h"
#include "qt_host.h"
#include "runtime/run_time_error.h"
#include "tool_tips.h"
#include "shell/commands.h"
#include "shell/startup.h"
#include "slinke/slinke.h"

namespace bw::gui {

namespace {

/// The one-shot timer's interval; it only switches itself off.
constexpr int kTimer1Milliseconds = 1000;
/// Gap between neighbouring buttons of one row (the style would set them edge to edge).
constexpr int kButtonSpacing = 6;
/// The window's first size: room for the whole sample device list and the
/// largest output panel, without empty acres below it; it fits a 1024x600 screen.
constexpr int kFirstWidth = 1000;
constexpr int kFirstHeight = 580;

QLabel* Caption(const char* text, QWidget* buddy = nullptr) {
  auto label = new QLabel(QString::fromLatin1(text));
  if (buddy) label->setBuddy(buddy);
  return label;
}

/// A line edit that shows what a run or the editor writes into it.
QLineEdit* Display(int minimumChars = 0) {
  auto e = new QLineEdit;
  e->setReadOnly(true);
  e->setFocusPolicy(Qt::ClickFocus);
  if (minimumChars > 0) e->setMinimumWidth(e->fontMetrics().horizontalAdvance(QLatin1Char('0')) * minimumChars + 12);
  return e;
}

QLineEdit* Entry(int minimumChars = 0) {
  auto e = new QLineEdit;
  if (minimumChars > 0) e->setMinimumWidth(e->fontMetrics().horizontalAdvance(QLatin1Char('0')) * minimumChars + 12);
  return e;
}

}  // namespace

MainWindow::MainWindow(Program& p, QtHost& host)
    : p_(p), host_(host), binder_([&host](std::function<void()> handler) { host.Dispatch(handler); }) {
  setObjectName(QStringLiteral("F"));
  auto central = new QWidget;
  auto columns = new QHBoxLayout(central);
  columns->setContentsMargins(10, 10, 10, 6);
  columns->setSpacing(10);

  columns->addWidget(BuildDeviceList());

  auto right = new QVBoxLayout;
  right->setSpacing(8);
  auto top = new QHBoxLayout;
  top->setSpacing(10);
  top->addWidget(BuildDescription(), 3);
  top->addWidget(BuildOutputChoice(), 2);
  right->addLayout(top);

  // The three output panels lie on top of one another; the model shows one.
  auto outputArea = new QWidget;
  outputArea->setObjectName(QStringLiteral("outputArea"));
  auto stack = new QGridLayout(outputArea);
  stack->setContentsMargins(0, 0, 0, 0);
  QWidget* frames[] = {BuildDatabaseFrame(), BuildSlinkFrame(), BuildAdiFrame()};
  QSize largest;
  for (QWidget* frame : frames) {
    stack->addWidget(frame, 0, 0);
    largest = largest.expandedTo(frame->sizeHint());
  }
  outputArea->setMinimumSize(largest);
  right->addWidget(outputArea, 1);
  columns->addLayout(right, 1);

  auto outer = new QWidget;
  auto outerLayout = new QVBoxLayout(outer);
  outerLayout->setContentsMargins(0, 0, 0, 0);
  outerLayout->setSpacing(0);
  outerLayout->addWidget(central, 1);
  outerLayout->addWidget(BuildBottomRow());
  setCentralWidget(outer);
  BuildMenus();
  BuildStatusBar();
  ApplyToolTips(this);

  timer1_ = new QTimer(this);
  timer1_->setSingleShot(true);
  connect(timer1_, &QTimer::timeout, this, [this] { host_.Dispatch([this] { Timer1_Timer(p_); }); });
}

// ---- building the panels ----

QWidget* MainWindow::BuildDeviceList() {
  MainForm& f = p_.F;
  auto box = new QGroupBox(QStringLiteral("Device Library"));
  box->setObjectName(QStringLiteral("deviceLibrary"));
  auto v = new QVBoxLayout(box);

  auto label5 = new QLabel;
  QFont bold = label5->font();
  bold.setBold(true);
  label5->setFont(bold);
  binder_.Bind(f.Label5, label5, "Label5");
  v->addWidget(label5);

  auto lex = new QListWidget;
  lex->setMinimumWidth(250);
  lex->setUniformItemSizes(true);
  lex->setAlternatingRowColors(true);
  binder_.Bind(f.Lex, lex, "Lex", [this] { Lex_Click(p_); });
  v->addWidget(lex, 1);

  auto frame2 = new QGroupBox;
  auto range = new QFormLayout(frame2);
  auto ffc = Entry(8), lfc = Entry(8);
  binder_.Bind(f.FFC, ffc, "FFC");
  binder_.Bind(f.LFC, lfc, "LFC");
  range->addRow(Caption("First Function Code", ffc), ffc);
  range->addRow(Caption("Last Function Code", lfc), lfc);
  binder_.Bind(f.Frame2, frame2, "Frame2");
  v->addWidget(frame2);

  auto frame4 = new QGroupBox;
  auto repeat = new QHBoxLayout(frame4);
  auto ot = new QRadioButton, rpt = new QRadioButton;
  binder_.Bind(f.Ot, ot, "Ot", {&f.RPT});
  binder_.Bind(f.RPT, rpt, "RPT", {&f.Ot});
  repeat->addWidget(ot);
  repeat->addWidget(rpt);
  repeat->addStretch(1);
  binder_.Bind(f.Frame4, frame4, "Frame4");
  v->addWidget(frame4);
  // Keeps the auto-generation frames at the top while the list is hidden.
  auto filler = new QWidget;
  filler->setObjectName(QStringLiteral("autogenFiller"));
  filler->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
  binder_.BindVisible(f.Frame2.visible, filler);
  v->addWidget(filler, 1);
  return box;
}

QWidget* MainWindow::BuildDescription() {
  MainForm& f = p_.F;
  auto box = new QGroupBox(QStringLiteral("Device"));
  box->setObjectName(QStringLiteral("deviceDescription"));
  auto grid = new QGridLayout(box);
  grid->setHorizontalSpacing(8);
  auto mfg = Entry(14), device = Entry(14), model = Entry(14), dc = Entry(8), certify = Entry(8);
  auto format = new QComboBox;
  format->setMinimumContentsLength(12);
  binder_.Bind(f.MFG, mfg, "MFG");
  binder_.Bind(f.Device, device, "Device");
  binder_.Bind(f.Model, model, "Model");
  binder_.Bind(f.format, format, "format");
  binder_.Bind(f.DC, dc, "DC");
  binder_.Bind(f.txtcertify, certify, "txtcertify");
  grid->addWidget(Caption("Manufacturer", mfg), 0, 0);
  grid->addWidget(mfg, 0, 1);
  grid->addWidget(Caption("Device Type", device), 1, 0);
  grid->addWidget(device, 1, 1);
  grid->addWidget(Caption("Model", model), 2, 0);
  grid->addWidget(model, 2, 1);
  grid->addWidget(Caption("IR Protocol", format), 0, 2);
  grid->addWidget(format, 0, 3);
  grid->addWidget(Caption("Device Code", dc), 1, 2);
  grid->addWidget(dc, 1, 3);
  grid->addWidget(Caption("Certified", certify), 2, 2);
  grid->addWidget(certify, 2, 3);
  grid->setColumnStretch(1, 3);
  grid->setColumnStretch(3, 2);
  grid->setRowStretch(3, 1);
  return box;
}

QWidget* MainWindow::BuildOutputChoice() {
  MainForm& f = p_.F;
  auto box = new QGroupBox(QStringLiteral("Output"));
  box->setObjectName(QStringLiteral("outputChoice"));
  auto v = new QVBoxLayout(box);
  auto output = new QListWidget;
  output->setUniformItemSizes(true);
  // Exactly as tall as the four formats, without a scroll bar.
  output->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  output->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
  output->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  binder_.Bind(f.Output, output, "Output", [this] { Output_Click(p_); });
  v->addWidget(output);
  auto autogen = new QCheckBox, check1 = new QCheckBox;
  binder_.Bind(f.Autogen, autogen, "Autogen", [this] { Autogen_Click(p_); });
  binder_.Bind(f.Check1, check1, "Check1", [this] { Check1_Click(p_); });
  auto checks = new QHBoxLayout;
  checks->addWidget(autogen);
  checks->addWidget(check1);
  checks->addStretch(1);
  v->addLayout(checks);
  v->addStretch(1);
  return box;
}

QWidget* MainWindow::BuildDatabaseFrame() {
  MainForm& f = p_.F;
  auto frame = new QGroupBox;
  binder_.Bind(f.DBI, frame, "DBI");
  auto grid = new QGridLayout(frame);
  grid->setVerticalSpacing(8);

  auto dbnlbl = new QLabel;
  auto dbname = Display(30);
  dbname->setPlaceholderText(QStringLiteral("no database open"));
  binder_.Bind(f.dbnlbl, dbnlbl, "dbnlbl");
  binder_.Bind(f.dbname, dbname, "dbname");
  auto loadDB = new QPushButton, newDB = new QPushButton;
  // Both dialogs start in "Generated IRDBs"; made first, so that the very
  // first new database lands there too.
  auto databaseName = [this] { return SuggestedFileName(p_, "", ".mdb"); };
  binder_.Bind(f.LoadDB, loadDB, "LoadDB", InFolder("Generated IRDBs", {}, [this] { LoadDB_Click(p_); }));
  binder_.Bind(f.NewDB, newDB, "NewDB", InFolder("Generated IRDBs", databaseName, [this] { NewDB_Click(p_); }));
  grid->addWidget(dbnlbl, 0, 0);
  grid->addWidget(dbname, 0, 1);
  auto fileButtons = new QHBoxLayout;
  fileButtons->setSpacing(kButtonSpacing);
  fileButtons->addWidget(loadDB);
  fileButtons->addWidget(newDB);
  grid->addLayout(fileButtons, 0, 2);

  struct Row {
    const char* caption;
    ComboBox& list;
    const char* listName;
    Button& del;
    const char* delName;
    void (*onDelete)(Program&);
  };
  Row rows[] = {
      {"Manufacturer", f.DvcMfglist, "DvcMfglist", f.DBmfgDEL, "DBmfgDEL", &DBmfgDEL_Click},
      {"Device Type", f.DvcTypeList, "DvcTypeList", f.DBtypDEL, "DBtypDEL", &DBtypDEL_Click},
      {"Model", f.DvcModelList, "DvcModelList", f.DBdvcDel, "DBdvcDel", &DBdvcDel_Click},
  };
  int r = 1;
  for (Row& row : rows) {
    auto list = new QComboBox;
    list->setMinimumContentsLength(18);
    std::function<void()> onSelect;
    if (&row.list == &f.DvcModelList) onSelect = [this] { DvcModelList_Click(p_); };
    binder_.Bind(row.list, list, row.listName, onSelect);
    auto del = new QPushButton;
    auto handler = row.onDelete;
    binder_.Bind(row.del, del, row.delName, [this, handler] { handler(p_); });
    grid->addWidget(Caption(row.caption, list), r, 0);
    grid->addWidget(list, r, 1);
    grid->addWidget(del, r, 2, Qt::AlignLeft);
    ++r;
  }
  grid->setColumnStretch(1, 1);
  grid->setRowStretch(r, 1);

  auto xqtcmd = new QPushButton;
  xqtcmd->setMinimumWidth(110);
  // The database run shows the hourglass like the other two runs; it sets none itself.
  binder_.Bind(f.xqtcmd, xqtcmd, "xqtcmd", Reported(RunOutput::Database, [this] {
                 host_.SetBusy(true);
                 xqtcmd_Click(p_);
                 host_.SetBusy(false);
               }));
  auto actions = new QHBoxLayout;
  actions->setSpacing(kButtonSpacing);
  actions->addStretch(1);
  actions->addWidget(xqtcmd);
  grid->addLayout(actions, r + 1, 0, 1, 3);
  return frame;
}

QWidget* MainWindow::BuildSlinkFrame() {
  MainForm& f = p_.F;
  auto frame = new QGroupBox;
  binder_.Bind(f.Slnk, frame, "Slnk");
  auto grid = new QGridLayout(frame);
  grid->setVerticalSpacing(8);

  auto descr = Entry(30);
  binder_.Bind(f.txtdescr, descr, "txtdescr");
  grid->addWidget(Caption("Description", descr), 0, 0);
  grid->addWidget(descr, 0, 1, 1, 3);

  auto carrier = Entry(8), rpt = Entry(4), one = Entry(10), zero = Entry(10), start = Entry(12), stop = Entry(12);
  binder_.Bind(f.txtcarrier, carrier, "txtcarrier");
  binder_.Bind(f.TxtRpt, rpt, "TxtRpt");
  binder_.Bind(f.TxtOne, one, "TxtOne");
  binder_.Bind(f.TxtZero, zero, "TxtZero");
  binder_.Bind(f.TxtStart, start, "TxtStart");
  binder_.Bind(f.txtStop, stop, "txtStop");
  grid->addWidget(Caption("Carrier", carrier), 1, 0);
  grid->addWidget(carrier, 1, 1);
  grid->addWidget(Caption("Repeat", rpt), 1, 2);
  grid->addWidget(rpt, 1, 3);
  grid->addWidget(Caption("One", one), 2, 0);
  grid->addWidget(one, 2, 1);
  grid->addWidget(Caption("Zero", zero), 2, 2);
  grid->addWidget(zero, 2, 3);
  grid->addWidget(Caption("Start", start), 3, 0);
  grid->addWidget(start, 3, 1);
  grid->addWidget(Caption("Stop", stop), 3, 2);
  grid->addWidget(stop, 3, 3);

  auto variant = new QHBoxLayout;
  auto txOnly = new QRadioButton, txRx = new QRadioButton;
  binder_.Bind(f.Opttxonly, txOnly, "Opttxonly", {&f.OptTxRx});
  binder_.Bind(f.OptTxRx, txRx, "OptTxRx", {&f.Opttxonly});
  variant->addWidget(txOnly);
  variant->addWidget(txRx);
  variant->addStretch(1);
  grid->addLayout(variant, 4, 1, 1, 3);

  auto keyName = Display(14), count = Display(5);
  binder_.Bind(f.slinkkeyname, keyName, "slinkkeyname");
  binder_.Bind(f.SlinkEntryCount, count, "SlinkEntryCount");
  grid->addWidget(Caption("Key Name", keyName), 5, 0);
  grid->addWidget(keyName, 5, 1);
  grid->addWidget(Caption("Entry Count", count), 5, 2);
  grid->addWidget(count, 5, 3);
  grid->setColumnStretch(1, 2);
  grid->setColumnStretch(3, 2);
  grid->setRowStretch(6, 1);

  auto xqt = new QPushButton, done = new QPushButton;
  xqt->setMinimumWidth(110);
  binder_.Bind(f.cmdSlinkXqt, xqt, "cmdSlinkXqt", Reported(RunOutput::Slinke, [this] { cmdSlinkXqt_Click(p_); }));
  binder_.Bind(f.CmdSlinkDone, done, "CmdSlinkDone", [this] { CmdSlinkDone_Click(p_); });
  auto actions = new QHBoxLayout;
  actions->setSpacing(kButtonSpacing);
  actions->addStretch(1);
  actions->addWidget(xqt);
  actions->addWidget(done);
  grid->addLayout(actions, 7, 0, 1, 4);
  return frame;
}

QWidget* MainWindow::BuildAdiFrame() {
  MainForm& f = p_.F;
  auto frame = new QGroupBox;
  binder_.Bind(f.ADI, frame, "ADI");
  auto v = new QVBoxLayout(frame);
  v->setSpacing(8);

  auto top = new QGridLayout;
  auto descr = Entry(24);
  binder_.Bind(f.ADIdescr, descr, "ADIdescr");
  top->addWidget(Caption("Description", descr), 0, 0);
  top->addWidget(descr, 0, 1, 1, 2);
  auto tx = new QRadioButton, rx = new QRadioButton;
  binder_.Bind(f.ADIoptTX, tx, "ADIoptTX", {&f.ADIoptRX});
  binder_.Bind(f.ADIoptRX, rx, "ADIoptRX", {&f.ADIoptTX});
  auto purpose = new QHBoxLayout;
  purpose->addWidget(tx);
  purpose->addWidget(rx);
  purpose->addStretch(1);
  top->addLayout(purpose, 1, 1, 1, 2);

  auto key = Display(14);
  binder_.Bind(f.AdiNewKey, key, "AdiNewKey");
  top->addWidget(Caption("Key", key), 2, 0);
  top->addWidget(key, 2, 1);
  auto runButtons = new QHBoxLayout;
  runButtons->setSpacing(kButtonSpacing);
  auto xqt = new QPushButton, add = new QPushButton, next = new QPushButton, all = new QPushButton;
  binder_.Bind(f.cmdADIxqt, xqt, "cmdADIxqt", Reported(RunOutput::Adi, [this] { cmdADIxqt_Click(p_); }));
  auto waiting = [this] { return AdiKeyButtonsUsable(p_); };
  binder_.Bind(f.CmdADIadd, add, "CmdADIadd", [this] { CmdADIadd_Click(p_); }, waiting);
  binder_.Bind(f.cmdADInxtKey, next, "cmdADInxtKey", [this] { cmdADInxtKey_Click(p_); }, waiting);
  binder_.Bind(f.cmdadiall, all, "cmdadiall", [this] { cmdadiall_Click(p_); }, waiting);
  runButtons->addWidget(add);
  runButtons->addWidget(next);
  runButtons->addWidget(all);
  runButtons->addStretch(1);
  runButtons->addWidget(xqt);
  top->addLayout(runButtons, 2, 2);
  top->setColumnStretch(1, 1);
  top->setColumnStretch(2, 2);
  v->addLayout(top);

  auto frame3 = new QGroupBox;
  binder_.Bind(f.Frame3, frame3, "Frame3");
  auto grid = new QGridLayout(frame3);
  auto fileName = Display(30), recnmb = Display(5), device = Display(12), fileKey = Display(12);
  recnmb->setMaximumWidth(recnmb->minimumWidth());
  auto size = new QLabel;
  binder_.Bind(f.ADIFileName, fileName, "ADIFileName");
  binder_.Bind(f.ADIRecnmb, recnmb, "ADIRecnmb");
  binder_.Bind(f.adiFsize, size, "adiFsize");
  binder_.Bind(f.ADIFileDevice, device, "ADIFileDevice");
  binder_.Bind(f.AdiFileKey, fileKey, "AdiFileKey");
  grid->addWidget(Caption("File", fileName), 0, 0);
  grid->addWidget(fileName, 0, 1, 1, 5);
  grid->addWidget(Caption("Record", recnmb), 1, 0);
  auto counter = new QHBoxLayout;
  counter->addWidget(recnmb);
  counter->addWidget(new QLabel(QStringLiteral("of")));
  counter->addWidget(size);
  counter->addStretch(1);
  grid->addLayout(counter, 1, 1);
  grid->addWidget(Caption("Device", device), 1, 2);
  grid->addWidget(device, 1, 3);
  grid->addWidget(Caption("Key", fileKey), 1, 4);
  grid->addWidget(fileKey, 1, 5);
  grid->setColumnStretch(3, 1);
  grid->setColumnStretch(5, 1);

  auto editor = new QHBoxLayout;
  editor->setSpacing(kButtonSpacing);
  struct EditorButton {
    Button& model;
    const char* name;
    void (*handler)(Program&);
  };
  EditorButton buttons[] = {
      {f.cmdADIOpen, "cmdADIOpen", &cmdADIOpen_Click}, {f.cmdADIsave, "cmdADIsave", &cmdADIsave_Click},
      {f.cmdADIprior, "cmdADIprior", &cmdADIprior_Click}, {f.cmdADINext, "cmdADINext", &cmdADINext_Click},
      {f.cmdADIrpl, "cmdADIrpl", &cmdADIrpl_Click}, {f.cmdadiDelete, "cmdadiDelete", &cmdadiDelete_Click},
      {f.cmdAdiNew, "cmdAdiNew", &cmdAdiNew_Click}, {f.cmdADIdone, "cmdADIdone", &cmdADIdone_Click},
  };
  auto tableName = [this] { return SuggestedFileName(p_, p_.F.ADIdescr.text, ".lir"); };
  for (EditorButton& b : buttons) {
    auto button = new QPushButton;
    auto handler = b.handler;
    std::function<void()> command = [this, handler] { handler(p_); };
    // Saving a new table asks for a name in "ADI Library".
    if (handler == &cmdADIsave_Click || handler == &cmdADIdone_Click) command = InFolder("ADI Library", tableName, command);
    std::function<bool()> allowed;
    if (handler == &cmdADIrpl_Click) allowed = [this] { return AdiReplaceUsable(p_); };
    binder_.Bind(b.model, button, b.name, command, allowed);
    editor->addWidget(button);
  }
  grid->addLayout(editor, 2, 0, 1, 6);
  v->addWidget(frame3);
  v->addStretch(1);
  return frame;
}

QWidget* MainWindow::BuildBottomRow() {
  MainForm& f = p_.F;
  auto row = new QWidget;
  row->setObjectName(QStringLiteral("bottomRow"));
  auto h = new QHBoxLayout(row);
  h->setContentsMargins(10, 4, 10, 10);
  auto status = Display();
  binder_.Bind(f.status, status, "status");
  statusEcho_ = new QLabel;
  statusEcho_->setObjectName(QStringLiteral("statusEcho"));
  statusEcho_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto quit = new QPushButton;
  quit->setMinimumWidth(90);
  binder_.Bind(f.quit, quit, "quit", [this] { quit_Click(p_); });
  h->addWidget(Caption("Status"));
  h->addWidget(status, 1);
  h->addWidget(statusEcho_, 1);
  h->addSpacing(12);
  h->addWidget(quit);
  return row;
}

void MainWindow::BuildMenus() {
  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  file->setObjectName(QStringLiteral("fileMenu"));
  QAction* import = file->addAction(QStringLiteral("&Import LIRC remotes..."), this, &MainWindow::ImportLircRemotes);
  import->setObjectName(QStringLiteral("importLirc"));
  import->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
  import->setStatusTip(QStringLiteral("Turn lircd.conf remote files into device files of the Device Library"));
  QAction* exportDevice = file->addAction(QStringLiteral("&Export device..."), this, &MainWindow::ExportDevice);
  exportDevice->setObjectName(QStringLiteral("exportDevice"));
  exportDevice->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
  exportDevice->setStatusTip(QStringLiteral("Write the loaded device's codes in another format"));
  file->addSeparator();
  QAction* quit = file->addAction(QStringLiteral("&Quit"), this, [this] { host_.Dispatch([this] { quit_Click(p_); }); });
  quit->setObjectName(QStringLiteral("quitAction"));
  quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
  QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
  help->setObjectName(QStringLiteral("helpMenu"));
  QAction* about = help->addAction(QStringLiteral("&About Burstwright"), this, &MainWindow::ShowAbout);
  about->setObjectName(QStringLiteral("about"));
  about->setShortcut(QKeySequence(Qt::Key_F1));
}

void MainWindow::BuildStatusBar() {
  runReport_ = new QLabel;
  runReport_->setObjectName(QStringLiteral("runReport"));
  runReport_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  runReport_->setToolTip(QStringLiteral("What the last run wrote, and where"));
  outputFolder_ = new QLabel;
  outputFolder_->setObjectName(QStringLiteral("outputFolder"));
  outputFolder_->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  outputFolder_->setFocusPolicy(Qt::TabFocus);
  connect(outputFolder_, &QLabel::linkActivated, this,
          [](const QString& link) { QDesktopServices::openUrl(QUrl(link)); });
  statusBar()->addWidget(runReport_, 1);
  statusBar()->addPermanentWidget(outputFolder_);
  statusBar()->setSizeGripEnabled(true);
}

std::function<void()> MainWindow::Reported(RunOutput output, std::function<void()> run) {
  return [this, output, run] {
    const RunStart start = NoteRunStart(p_, output);
    const int messagesBefore = host_.messageCount();
    auto message = [&] { return host_.messageCount() != messagesBefore ? host_.lastMessage() : std::string(); };
    try {
      run();
    } catch (const RunTimeError& e) {
      if (!host_.quitting())
        ShowReport(ReportRun(p_, start, message(),
                             "Run-time error '" + std::to_string(e.number()) + "': " + e.description()));
      throw;
    }
    if (!host_.quitting()) ShowReport(ReportRun(p_, start, message(), {}));
  };
}

void MainWindow::ShowReport(const RunReport& report) {
  runReport_->setText(ToQt(report.text));
  if (report.folder.empty()) {
    outputFolder_->clear();
    outputFolder_->setToolTip(QString());
    return;
  }
  const QString folder = ToQt(report.folder);
  const QString url = QUrl::fromLocalFile(folder).toString();
  outputFolder_->setText(QStringLiteral("<a href=\"%1\">%2</a>")
                             .arg(url.toHtmlEscaped(), QFileInfo(folder).fileName().toHtmlEscaped()));
  outputFolder_->setToolTip(QStringLiteral("Open %1 in the file manager").arg(folder));
}

std::function<void()> MainWindow::InFolder(const char* folder, std::function<std::string()> name,
                                           std::function<void()> command) {
  return [this, folder, name, command] {
    EnsureOutputFolder(p_, folder);
    host_.SuggestNextSaveName(name ? name() : std::string());
    command();
    host_.SuggestNextSaveName({});
  };
}

void MainWindow::ShowAbout() {
  QMessageBox::about(this, QStringLiteral("About Burstwright"), ToQt(AboutText(p_)));
}

void MainWindow::ImportLircRemotes() {
  host_.MsgBox("Importing LIRC remotes is not part of this build", MsgBoxStyle::OKOnly);
}

void MainWindow::ExportDevice() {
  host_.MsgBox("Exporting devices is not part of this build", MsgBoxStyle::OKOnly);
}

// ---- model and input ----

bool MainWindow::ShowModel() {
  const MainForm& f = p_.F;
  bool changed = binder_.ToWidgets();
  QString caption = ToQt(f.caption);
  if (windowTitle() != caption) {
    setWindowTitle(caption);
    changed = true;
  }
  // While the status box is hidden its text still shows, as a plain line.
  QString echo = f.status.visible ? QString() : ToQt(f.status.text);
  if (statusEcho_->text() != echo) {
    statusEcho_->setText(echo);
    changed = true;
  }
  if (statusEcho_->isHidden() != f.status.visible) statusEcho_->setVisible(!f.status.visible);

  if (f.Timer1.enabled && !timer1_->isActive()) timer1_->start(kTimer1Milliseconds);
  if (!f.Timer1.enabled && timer1_->isActive()) timer1_->stop();

  if (f.visible && isHidden() && !host_.quitting()) {
    if (!placed_) {
      placed_ = true;
      resize(sizeHint().expandedTo(QSize(kFirstWidth, kFirstHeight)));
      if (QScreen* screen = QGuiApplication::primaryScreen()) {
        QRect area = screen->availableGeometry();
        move(area.center() - rect().center());
      }
    }
    show();
    changed = true;
  } else if (!f.visible && !isHidden()) {
    hide();
    changed = true;
  }
  return changed;
}

void MainWindow::TakeInput() { binder_.FromWidgets(); }

void MainWindow::closeEvent(QCloseEvent* event) {
  if (!host_.quitting()) host_.Dispatch([this] { Form_QueryUnload(p_); });
  if (host_.quitting()) event->accept();
  else event->ignore();
}

}  // namespace bw::gui
