// The desktop program's real widgets driven offscreen over a temporary program folder. Expectations come from
// the Device Library's files, read by our own reader; what runs write is read back through mdbtools and our lir.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <filesystem>
#include <fstream>

#include <QTest>
#include <QtWidgets>

#include "desktop_program.h"
#include "gui_driver.h"
#include "version.h"

namespace fs = std::filesystem;
using namespace bw::guidriver;

namespace {

const fs::path kLibrary = fs::path(BW_SOURCE_DIR) / "Device Library";

template <class T = QWidget>
T* Get(QWidget* root, const char* name) {  // a missing widget ends the suite: later steps would only crash
  if (T* widget = Find<T>(root, name)) return widget;
  qFatal("no widget named %s of the expected kind", name);
}
QString Text(QWidget* root, const char* name) { return Get(root, name)->property("text").toString(); }
/// A caption as drawn: "&&" shows a literal "&", a single "&" marks a shortcut.
QString Shown(QString caption) { return caption.replace("&&", QChar(1)).remove('&').replace(QChar(1), '&'); }
int CursorShape() { return QApplication::overrideCursor() ? int(QApplication::overrideCursor()->shape()) : -1; }

QString Q(const fs::path& path) { return QString::fromStdString(path.string()); }
QString ReadAll(const fs::path& path) {
  QFile file(Q(path));
  return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
}

/// A library file in the plain layout the samples use: "KEYWORD = value" lines
/// (comments after "'") before [KEYCODES], "LABEL = codes" lines after it.
struct LibraryFile {
  QMap<QString, QString> head;
  QList<std::pair<QString, QString>> keys;
  QString operator[](const QString& keyword) const { return head.value(keyword); }
};
LibraryFile Read(const QString& fileName) {
  LibraryFile file;
  bool keys = false;
  for (QString line : ReadAll(kLibrary / fileName.toStdString()).split('\n')) {
    line = line.section('\'', 0, 0).trimmed();
    keys = keys || line.toUpper() == "[KEYCODES]";
    if (line.startsWith(';') || !line.contains('=')) continue;
    const QString name = line.section('=', 0, 0).trimmed(), value = line.section('=', 1).section(';', 0, 0).trimmed();
    keys ? file.keys.append({name, value}) : void(file.head[name.toUpper()] = value);
  }
  return file;
}

QStringList Files(const QString& pattern) {  // of the library, in the device list's order: by upper-cased name
  QStringList files = QDir(Q(kLibrary)).entryList({pattern}, QDir::Files);
  std::sort(files.begin(), files.end(), [](auto& a, auto& b) { return a.toUpper() < b.toUpper(); });
  return files;
}

bool NobodyHoldsOpen(const fs::path& file) {  // we can take its exclusive lock
  const int fd = ::open(file.c_str(), O_RDONLY);
  const bool free = fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0;
  return ::close(fd), free;
}

QString Run(const QString& program, const QStringList& arguments) {
  QProcess process;
  process.start(program, arguments);
  return process.waitForFinished(20000) ? QString::fromUtf8(process.readAllStandardOutput()) : QString();
}

/// A table read by mdb-export, as its columns by name.
QMap<QString, QStringList> Export(const fs::path& database, const char* table) {
  const QStringList rows = Run("mdb-export", {"-Q", "-e", "-d", "|", Q(database), table}).split('\n');
  QMap<QString, QStringList> columns;
  for (const QString& row : rows.mid(1, rows.size() - 2))
    for (int c = 0; c <= rows[0].count('|'); ++c) columns[rows[0].section('|', c, c)] << row.section('|', c, c);
  return columns;
}

/// A program folder per test: the build's template, the database folder, a link to the library. Removed after.
struct ProgramFolder {
  QTemporaryDir folder;
  const fs::path home = folder.path().toStdString();
  /// `copy`: a library of its own that a test may write into.
  explicit ProgramFolder(bool copy) {
    fs::create_directories(home / "Generated IRDBs");
    fs::copy_file(fs::path(BW_BIN_DIR) / "Empty_RCIR.mdb", home / "Empty_RCIR.mdb");
    if (copy) fs::copy(kLibrary, home / "Device Library", fs::copy_options::recursive);
    else fs::create_directory_symlink(kLibrary, home / "Device Library");
  }
};

/// One started program over its own folder; a guard closes unanswered message
/// boxes and a watchdog ends any wait a broken script would leave hanging.
struct Session : ProgramFolder {
  bw::gui::DesktopProgram program;
  MessageGuard guard;
  QTimer watchdog;
  bool started = program.Start(home, "");
  explicit Session(bool copyLibrary = false) : ProgramFolder(copyLibrary) {
    watchdog.callOnTimeout([this] {
      if (QWidget* modal = QApplication::activeModalWidget()) modal->close();
      program.host().Quit();
    });
    watchdog.start(30000);
  }
  QWidget* w() { return &program.window(); }
  QWidget* dbg() { return &program.details(); }
  void Output(const char* entry) { QVERIFY(ClickRow(Get<QListWidget>(w(), "Output"), entry)); }
  void Device(const QString& name) { QVERIFY(ClickRow(Get<QListWidget>(w(), "Lex"), name.toUpper())); }
  void Press(const char* button) {
    auto b = Get<QPushButton>(w(), button);
    QVERIFY2(b->isVisible() && b->isEnabled(), button);
    Click(b);
  }
  QString Text(const char* name) { return ::Text(w(), name); }  // of a line edit or a label
  QString Report() { return Text("runReport"); }                 // the status bar's line
  bool On(const char* button) { return Get(w(), button)->isEnabled(); }
  void Pick(const char* combo, int row) { Get<QComboBox>(w(), combo)->setCurrentIndex(row); }
  QStringList Items(const char* list) {  // the rows of a list or a combo box
    auto combo = Find<QComboBox>(w(), list);
    const QAbstractItemModel* model = combo ? combo->model() : Get<QListWidget>(w(), list)->model();
    QStringList items;
    for (int row = 0; row < model->rowCount(); ++row) items << model->index(row, 0).data().toString();
    return items;
  }
};

}  // namespace

class GuiTest : public QObject {
  Q_OBJECT
 private slots:
  void cleanup() { CancelPendingWhens(); }

  void startupListsTheLibraryUnderTheVersionCaption() {
    Session s;
    QVERIFY(s.started && s.w()->isVisible());
    QStringList devices, protocols;  // devices sorted by upper-cased file name: "X A3.DVC" before "X.DVC"
    for (const QString& file : Files("*.dvc")) devices << file.section('.', 0, -2).toUpper();
    for (const QString& file : Files("*.irp")) protocols << Read(file)["PROTOCOL"].toUpper();
    QCOMPARE(s.Items("Lex"), devices);
    QStringList shown = s.Items("format");
    shown.sort(), protocols.sort();
    QCOMPARE(shown, protocols);
    QCOMPARE(s.Items("Output"), QStringList({"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"}));
    QCOMPARE(std::pair(Get<QListWidget>(s.w(), "Output")->currentRow(), Get<QListWidget>(s.w(), "Lex")->currentRow()),
             std::pair(0, -1));
    QCOMPARE(Shown(s.Text("LoadDB")) + "|" + s.Text("Label5"), "Open|Select Device");
    for (const char* off : {"DBmfgDEL", "DBtypDEL", "DBdvcDel"}) QVERIFY(!Get(s.w(), off)->isEnabled());
    QCOMPARE(s.w()->windowTitle(), QString("Pronto Burstwright Version(%1.%2 R%3)")
                                       .arg(bw::version::kMajor).arg(bw::version::kMinor).arg(bw::version::kRevision));
  }

  void everyControlIsOneWidgetNamedAfterIt() {
    Session s;
    const QString mainNames =
        "Lex Output format Label5 Autogen Check1 DBI Slnk ADI dbname dbnlbl LoadDB NewDB DBmfgDEL DBtypDEL DBdvcDel "
        "DvcMfglist DvcTypeList DvcModelList DC FFC LFC Model MFG Device quit txtdescr ADIdescr Frame2 Frame4 Ot RPT "
        "txtcarrier TxtOne TxtZero TxtRpt TxtStart txtStop xqtcmd status txtcertify slinkkeyname SlinkEntryCount "
        "Opttxonly OptTxRx cmdSlinkXqt CmdSlinkDone cmdADIxqt cmdadiall CmdADIadd cmdADInxtKey AdiNewKey ADIoptTX "
        "ADIoptRX Frame3 ADIFileName ADIRecnmb adiFsize ADIFileDevice AdiFileKey cmdADIOpen cmdADIsave cmdADIprior "
        "cmdADINext cmdADIrpl cmdadiDelete cmdAdiNew cmdADIdone";
    const QString detailNames = "Next Skip Finish HexOPT Option1_0 Option1_1 Option1_2 Command1 BurstList Text1 "
                                "Shape1 lblKeyLabel lblOnceCount lblRepeatCount lblType lblModel lblManufacturer "
                                "lblProtocol lblBurstPairCount lblCarrier lblTitle";
    for (auto [root, names] : {std::pair{s.w(), mainNames}, std::pair{s.dbg(), detailNames}})
      for (const QString& name : names.split(' '))
        QVERIFY2(root->findChildren<QWidget*>(name).size() == 1, qPrintable(name));
    QCOMPARE(s.w()->objectName() + " " + s.dbg()->objectName() + " " + s.dbg()->windowTitle(),
             "F DBG IR Database Entry Details");
    // Captions as drawn: a literal "&" stays, the Slink-e title keeps its two blanks.
    QCOMPARE(Shown(Get<QGroupBox>(s.w(), "ADI")->title()) + "|" + Shown(Get<QGroupBox>(s.w(), "Slnk")->title()),
             "ADI Leopard & Ocelot|Nirvis Slink-e  File Options");
  }

  void outputChoiceShowsOnePanelInOnePlace() {
    Session s;
    QWidget *dbi = Get(s.w(), "DBI"), *slnk = Get(s.w(), "Slnk"), *adi = Get(s.w(), "ADI");
    const std::pair<const char*, QWidget*> cases[] = {
        {"Nirvis TX Only", slnk}, {"ADI Leopard", adi}, {"Nirvis Tx/Rx", slnk}, {"Philips Pronto", dbi}};
    for (auto [entry, shown] : cases) {
      s.Output(entry);
      for (QWidget* frame : {dbi, slnk, adi}) {
        QCOMPARE(frame->isVisible(), frame == shown);
        QCOMPARE(frame->mapTo(s.w(), QPoint()), shown->mapTo(s.w(), QPoint()));
      }
    }
  }

  void clickingADeviceFillsTheFieldsFromItsFile() {
    Session s;
    for (const QString name : {"Denon AV Receiver", "RGB LED Controller", "Xantech RC68 A3", "Samsung TV"}) {
      const LibraryFile device = Read(name + ".dvc");
      s.Device(name);
      QCOMPARE(QStringList({s.Text("Label5"), s.Text("MFG"), s.Text("Device"), s.Text("Model"),
                            Get<QComboBox>(s.w(), "format")->currentText(), s.Text("txtdescr")}),
               QStringList({"Device Selected", device["MANUFACTURER"].toUpper(), device["DEVICE"].toUpper(),
                            device["MODEL"].toUpper(), (device["PROTOCOL"] + device["FORMAT"]).toUpper(),
                            (device["MANUFACTURER"] + "-" + device["MODEL"]).toUpper()}));
    }
  }

  void slinkTxOnlyWritesEveryKeyAsTheCommandLineDoes() {
    Session s;
    const LibraryFile device = Read("Samsung TV.dvc"), protocol = Read(device["PROTOCOL"] + ".irp");
    s.Output("Nirvis TX Only");
    s.Device("Samsung TV");
    s.Press("cmdSlinkXqt");
    const QString descr = (device["MANUFACTURER"] + "-" + device["MODEL"]).toUpper();
    QCOMPARE(s.Text("SlinkEntryCount") + " " + s.Text("slinkkeyname"),
             QString::number(device.keys.size()) + " " + device.keys.back().first);
    QCOMPARE(s.Report(), QString("Wrote %1 keys to \u2026/%2.cde").arg(device.keys.size()).arg(descr));
    QVERIFY(s.Text("outputFolder").contains(">Slinke Library</a>"));
    const QString text = ReadAll(s.home / "Slinke Library" / (descr + ".cde").toStdString());
    QCOMPARE(text.count('\n'), text.count("\r\n"));
    // The header, then per key an empty line and "durations :LABEL"; the last CR LF is followed by one more.
    const QStringList lines = text.split("\r\n");
    QCOMPARE(lines.mid(0, 4), QStringList({"Desc=" + descr, "type=irtxonly", "sleep=0",
                                           "carrier=" + protocol["FREQUENCY"] + ".00"}));
    QCOMPARE(lines.size(), 6 + 2 * device.keys.size());
    for (qsizetype k = 0; k < device.keys.size(); ++k)
      QCOMPARE(lines[4 + 2 * k] + lines[5 + 2 * k].section(" :", -1), device.keys[k].first);
    // The frames themselves as the command-line program writes them (its own tests decode them).
    QTemporaryDir cli;
    Run(BW_BIN_DIR "/burstwright-cli", {"--library", Q(kLibrary), "--home", cli.path(), "slinke", "Samsung TV"});
    QCOMPARE(ReadAll(cli.path().toStdString() + "/Slinke Library/" + (descr + ".cde").toStdString()), text);
  }

  void prontoRunWithDetailsIntoANewDatabaseReadsBackThroughMdbtools() {
    Session s;
    const LibraryFile device = Read("Samsung TV.dvc");
    const fs::path folder = s.home / "Generated IRDBs", file = folder / "Lounge.mdb";
    FileDialogSeen dialog;
    s.Device("Samsung TV");
    fs::remove(folder);  // a first run: the dialog's folder is made before it opens
    AnswerFileDialog(file.string(), &dialog);
    s.Press("NewDB");
    QCOMPARE(dialog.filter + "|" + dialog.folder + "|" + dialog.name,
             "MDB Files (*.mdb)|" + Q(folder) + "|" + (device["MANUFACTURER"] + "-" + device["MODEL"]).toUpper() + ".mdb");
    QCOMPARE(s.Text("dbname") + "|" + Shown(s.Text("LoadDB")), Q(file) + "|Close");
    for (const char* on : {"DBmfgDEL", "DBtypDEL", "DBdvcDel"}) QVERIFY(Get(s.w(), on)->isEnabled());
    // Show Details: the run waits in the dialog at the first key, Next goes on
    // to the second, Finish lets the rest run unshown.
    Click(Get<QCheckBox>(s.w(), "Check1"));
    QWidget* dbg = s.dbg();
    auto next = Get<QPushButton>(dbg, "Next");
    auto atKey = [=](qsizetype k) {  // the run waits there
      return [=] { return next->isVisible() && next->isEnabled() && Text(dbg, "lblKeyLabel") == device.keys[k].first; };
    };
    QString status;
    int cursor = -1;
    bool second = false;
    When(atKey(0), [&] {
      auto box = Get<QLineEdit>(s.w(), "status");  // while hidden, its text shows as a plain line
      status = box->isVisible() ? box->text() : s.Text("statusEcho");
      cursor = CursorShape();
      Click(next);
      When(atKey(1), [&] { second = true, Click(Get<QPushButton>(dbg, "Finish")); });
    });
    s.Press("xqtcmd");
    QVERIFY(second && !dbg->isVisible() && !Get<QCheckBox>(s.w(), "Check1")->isChecked());
    QCOMPARE(s.Report(), QString("Wrote %1 keys to \u2026/Lounge.mdb").arg(device.keys.size()));
    QVERIFY(s.Text("outputFolder").contains(QUrl::fromLocalFile(Q(folder)).toString() + "\">Generated IRDBs</a>"));
    const auto [label, function] = device.keys[0];
    QCOMPARE(status, QString("Function=%1 (%2,%3)").arg(label, function, device["DEVICECODE"]));
    QCOMPARE(std::pair(cursor, CursorShape()), std::pair(int(Qt::BusyCursor), -1));
    const QString model = device["MODEL"].toUpper();
    QVERIFY(s.Items("DvcModelList").contains(model) && !NobodyHoldsOpen(file));
    s.Press("LoadDB");
    QCOMPARE(Shown(s.Text("LoadDB")) + s.Text("dbname") + s.Items("DvcModelList").join(""), "Open");
    QVERIFY(NobodyHoldsOpen(file));
    // mdbtools: one device with its maker and type, one row per key in order.
    auto devices = Export(file, "Devices"), codes = Export(file, "IR Codes");
    QCOMPARE(devices["Model"], QStringList{model});
    QCOMPARE(Export(file, "Manufacturers")["name"], QStringList{device["MANUFACTURER"].toUpper()});
    QCOMPARE(Export(file, "Device Types")["name"], QStringList{device["DEVICE"].toUpper()});
    QStringList labels, functions;
    for (qsizetype k = 0; k < device.keys.size(); ++k)
      labels << device.keys[k].first, functions << QString::number(k + 1);
    QCOMPARE(codes["Label"], labels);
    QCOMPARE(codes["FunctionID"], functions);
    QCOMPARE(codes["DeviceID"], QStringList(labels.size(), devices["DeviceID"].value(0)));
    QVERIFY(s.guard.unanswered().isEmpty());
  }

  void adiRunWaitsForAddNextKeyOrAllKeys() {
    Session s;
    const LibraryFile device = Read("Denon AV Receiver.dvc");
    s.Output("ADI Leopard");
    s.Device("Denon AV Receiver");
    s.Press("cmdAdiNew");
    QCOMPARE(s.Text("ADIFileName"), "NEW");
    const char* guided[] = {"CmdADIadd", "cmdADInxtKey", "cmdadiall", "cmdADIrpl"};
    auto states = [&] {
      QString on;
      for (const char* b : guided) on += s.On(b) ? '1' : '0';
      return on;
    };
    QStringList seen{states()};  // then at each wait, and after the run
    // Key 1: Add. Key 2: Next Key (skipped). Key 3: Add. Key 4: All Keys, which adds it and every later key.
    const char* answers[] = {"CmdADIadd", "cmdADInxtKey", "CmdADIadd", "cmdadiall"};
    QStringList sizes;
    int cursor = -1, k = 0;
    QTimer answering;  // fires inside the run's waiting loop
    answering.callOnTimeout([&] {
      if (k < 4 && Get(s.w(), "CmdADIadd")->isEnabled() && s.Text("AdiNewKey") == device.keys[k].first)
        sizes << s.Text("adiFsize"), seen << states(), cursor = CursorShape(),
            Click(Get<QPushButton>(s.w(), answers[k++]));
    });
    answering.start(10);
    s.Press("cmdADIxqt");
    QCOMPARE(cursor, int(Qt::BusyCursor));
    const qsizetype records = device.keys.size() - 1;
    QCOMPARE(sizes << s.Text("adiFsize"), QStringList({"0", "1", "1", "2", QString::number(records)}));
    // The key buttons only while a run waits; RPL once there is a record to replace.
    QCOMPARE(seen << states(), QStringList({"0000", "1110", "1110", "1110", "1110", "0001"}));
    QCOMPARE(s.Report(), QString("Added %1 keys to a new table, not saved yet").arg(records));
    FileDialogSeen dialog;
    const fs::path lir = s.home / "ADI Library" / "denon.lir";
    AnswerFileDialog(lir.string(), &dialog);
    s.Press("cmdADIsave");
    QCOMPARE(dialog.filter + "|" + dialog.folder + "|" + dialog.name,
             "LIR Files (*.lir)|" + Q(lir.parent_path()) + "|" + s.Text("ADIdescr") + ".lir");
    QCOMPARE(s.Text("ADIFileName"), Q(lir));
    QCOMPARE(qsizetype(fs::file_size(lir)), records * 256);
    // Our own reader lists every key but the skipped one, in order, under the device's name.
    QStringList listed, expected;
    for (const QString& line : Run(BW_BIN_DIR "/burstwright-cli", {"lir", Q(lir)}).split('\n', Qt::SkipEmptyParts))
      listed << line.section('\t', 1, 2);
    for (qsizetype k = 0; k < device.keys.size(); ++k)
      if (k != 1) expected << (device["MANUFACTURER"] + "/" + device["MODEL"] + "\t" + device.keys[k].first).toUpper();
    expected.replaceInStrings(" ", "");
    QCOMPARE(listed, expected);
    QVERIFY(s.guard.unanswered().isEmpty());
    // Opening a file in a fresh program: nothing generated, so neither Add nor RPL.
    Session fresh;
    fresh.Output("ADI Leopard");
    AnswerFileDialog(lir.string());
    fresh.Press("cmdADIOpen");
    QCOMPARE(fresh.Text("adiFsize") + " " + QString::number(fresh.On("CmdADIadd")) + QString::number(fresh.On("cmdADIrpl")),
             QString::number(records) + " 00");
  }

  void messageBoxesAreTitledBurstwright() {
    Session s;
    const fs::path lir = s.home / "ADI Library" / "kept.lir", db = s.home / "Generated IRDBs" / "m.mdb";
    fs::create_directories(lir.parent_path());
    std::ofstream(lir) << "not a table";
    const std::tuple<std::function<void()>, const char*, QMessageBox::StandardButton, QString> rows[] = {
        {[] {}, "xqtcmd", QMessageBox::Ok, "No Data base has been selected, Please open a data Base"},
        {[&] { s.Output("Nirvis TX Only"); }, "cmdSlinkXqt", QMessageBox::Ok,
         "No Device File has been selected,\nand not set to Auto Generate"},
        {[&] { Click(Get<QCheckBox>(s.w(), "Autogen")); }, "cmdSlinkXqt", QMessageBox::Ok,
         "Auto Generate Selected and No Format has been selected"},
        {[&] { s.Output("Philips Pronto"), AnswerFileDialog(db.string()), s.Press("NewDB"); }, "DBdvcDel",
         QMessageBox::Ok, "No Device selected, Request Cancelled"},
        {[&] { s.Device("Denon AV Receiver"), s.Press("xqtcmd"), s.Pick("DvcMfglist", 0); },
         "DBmfgDEL", QMessageBox::No, "This will delete all devices of this Manufacturer, Proceed?"},
        {[&] { s.Output("ADI Leopard"), s.Press("cmdAdiNew"), AnswerFileDialog(lir.string()); }, "cmdADIsave",
         QMessageBox::No, Q(lir) + " Already exists\nDo you wish to write Over it?"}};
    for (const auto& [before, button, answer, text] : rows) {
      before();
      MessageSeen seen;
      AnswerMessageBox(answer, &seen);
      s.Press(button);
      QCOMPARE(seen.title + ": " + seen.text, "Burstwright: " + text);
      // A run stopped by its check says so in the status bar, on one line.
      if (QString(button).contains("xqt", Qt::CaseInsensitive))
        QCOMPARE(s.Report(), "Wrote 0 keys: " + QString(text).replace('\n', ' '));
    }
    // Both questions answered No left things as they were.
    QCOMPARE(s.Items("DvcModelList").size(), 1);
    QCOMPARE(ReadAll(lir), "not a table");
    QTemporaryDir empty;  // no Device Library in it or above it: start-up says so and ends
    MessageSeen seen;
    AnswerMessageBox(QMessageBox::Ok, &seen);
    bw::gui::DesktopProgram program;
    QVERIFY(!program.Start(empty.path().toStdString(), "") && !program.window().isVisible());
    QCOMPARE(seen.title + ": " + seen.text, "Burstwright: Can not locate Device Library");
  }

  void detailsPicturesMatchThePlotAndEscOrCloseEndTheWaitAsFinish() {
    const LibraryFile device = Read("Samsung TV.dvc");
    const QString key = device.keys[0].first;
    for (bool escape : {true, false}) {
      Session s;
      s.Output("Nirvis TX Only");
      s.Device("Samsung TV");
      Click(Get<QCheckBox>(s.w(), "Check1"));
      const QString png = Q(s.home) + "/picture.png", svg = Q(s.home) + "/picture.svg";
      FileDialogSeen offered;
      int waits = 0;
      When([&] { return s.dbg()->isVisible() && Get(s.dbg(), "Next")->isEnabled(); }, [&] {
        ++waits;
        if (escape) {  // both pictures, then Esc
          AnswerFileDialog(png.toStdString(), &offered);
          Click(Get<QPushButton>(s.dbg(), "savePicture"));
          AnswerFileDialog(svg.toStdString());
          Click(Get<QPushButton>(s.dbg(), "savePicture"));
          QTest::keyClick(s.dbg(), Qt::Key_Escape);
        } else {
          s.dbg()->close();
        }
      });
      s.Press("cmdSlinkXqt");
      // The wait ended as Finish ends it: dialog away, Show Details off, every key written.
      QCOMPARE(QString("%1 %2 %3 %4").arg(waits).arg(s.dbg()->isVisible()).arg(Get<QCheckBox>(s.w(), "Check1")->isChecked())
                   .arg(s.Text("SlinkEntryCount")),
               QString("1 0 0 %1").arg(device.keys.size()));
      if (!escape) continue;
      QCOMPARE(offered.name, (device["MANUFACTURER"] + " " + device["MODEL"] + " " + key).toUpper() + ".png");
      QCOMPARE(QImage(png).size(), QSize(1200, 360));
      QXmlStreamReader xml(ReadAll(svg.toStdString()));
      QStringList elements;
      while (!xml.atEnd())
        if (xml.readNext() == QXmlStreamReader::StartElement && !elements.contains(xml.name())) elements << xml.name().toString();
      QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
      QCOMPARE(elements, QStringList({"svg", "rect", "text", "line"}));
      // The command line draws the very same picture of that key.
      const QString plotted = Q(s.home) + "/plot.svg", plottedPng = Q(s.home) + "/plot.png";
      for (const QString& out : {plotted, plottedPng})
        Run(BW_BIN_DIR "/burstwright-cli", {"--library", Q(kLibrary), "plot", "Samsung TV", key.toLower(), "--output",
                                            "slinke-tx", "--out", out});
      QCOMPARE(ReadAll(plotted.toStdString()), ReadAll(svg.toStdString()));
      QCOMPARE(QImage(plottedPng).size(), QSize(1200, 360));
    }
  }

  void fitsA1024x600ScreenWithATipOnEveryControlAndMenus() {
    Session s;
    auto window = static_cast<QMainWindow*>(s.w());
    // 600 pixels of screen less a title bar.
    const QSize screen(1024, 570);
    window->resize(screen);
    for (const char* output : {"Philips Pronto", "Nirvis TX Only", "ADI Leopard"}) {
      s.Output(output);
      QTest::qWait(20);
      QVERIFY2(window->minimumSizeHint().boundedTo(screen) == window->minimumSizeHint(), output);
      for (QWidget* c : window->findChildren<QWidget*>()) {
        const bool control = qobject_cast<QLineEdit*>(c) || qobject_cast<QAbstractButton*>(c) ||
                             qobject_cast<QComboBox*>(c) || qobject_cast<QListWidget*>(c);
        if (!c->isVisible() || !control || qobject_cast<QComboBox*>(c->parent())) continue;
        const QRect at(c->mapTo(window, QPoint()), c->size());
        // What a layout may shrink it to: a minimum set on the widget, else its hint.
        const QSize least(c->minimumWidth() ? c->minimumWidth() : c->minimumSizeHint().width(),
                          c->minimumHeight() ? c->minimumHeight() : c->minimumSizeHint().height());
        QVERIFY2(window->rect().contains(at) && c->height() >= least.height() && c->width() >= least.width(),
                 qPrintable(QString("%1: %2 at %3,%4 %5x%6").arg(output, c->objectName()).arg(at.x()).arg(at.y())
                                .arg(at.width()).arg(at.height())));
      }
    }
    QVERIFY(s.dbg()->minimumSizeHint().boundedTo(screen) == s.dbg()->minimumSizeHint());
    for (QWidget* root : {s.w(), s.dbg()})
      for (QWidget* c : root->findChildren<QWidget*>())
        if (!c->objectName().isEmpty() && !c->objectName().startsWith("qt_") &&
            (qobject_cast<QAbstractButton*>(c) || qobject_cast<QLineEdit*>(c) || qobject_cast<QComboBox*>(c) ||
             qobject_cast<QAbstractItemView*>(c) || qobject_cast<QPlainTextEdit*>(c) || c->objectName() == "Shape1"))
          QVERIFY2(!c->toolTip().isEmpty(), qPrintable(c->objectName()));
    QStringList menus;
    for (QAction* menu : window->menuBar()->actions())
      for (QAction* a : menu->menu()->actions())
        if (!a->isSeparator()) menus << Shown(menu->text()) + "/" + Shown(a->text()) + " " + a->shortcut().toString();
    QCOMPARE(menus, QStringList({"File/Import LIRC remotes... Ctrl+I", "File/Export device... Ctrl+E", "File/Quit Ctrl+Q",
                                 "Help/About Burstwright F1"}));
    MessageSeen about;
    AnswerMessageBox(QMessageBox::Ok, &about);
    window->findChild<QAction*>("about")->trigger();
    QVERIFY(about.text.startsWith(QString("Burstwright %1.%2 R%3").arg(bw::version::kMajor).arg(bw::version::kMinor)
                                      .arg(bw::version::kRevision)));
    for (const QString& shown : {Q(s.home / "Device Library"), Q(s.home / "Empty_RCIR.mdb"), Q(s.home / "Generated IRDBs")})
      QVERIFY2(about.text.contains(shown), qPrintable(shown));
  }

  void importAndExportThroughTheFileMenu() {
    Session s(true);
    const fs::path conf = s.home / "acme" / "box.conf";
    fs::create_directories(conf.parent_path());
    std::ofstream(conf) << "begin remote\n name BOX7\n bits 16\n flags SPACE_ENC|CONST_LENGTH\n header 9000 4500\n"
                           " one 560 1690\n zero 560 560\n ptrail 560\n pre_data_bits 16\n pre_data 0x20DF\n"
                           " gap 108000\n begin codes\n  KEY_POWER 0x10EF\n  KEY_MUTE 0x906F\n end codes\nend remote\n";
    const QStringList before = s.Items("Lex");
    AnswerFileDialog(conf.string());
    s.w()->findChild<QAction*>("importLirc")->trigger();
    QStringList added = s.Items("Lex");
    for (const QString& d : before) added.removeOne(d);
    QCOMPARE(added.size(), 1);
    QVERIFY2(added[0].contains("BOX7"), qPrintable(added[0]));
    QCOMPARE(s.Report(), QString("Imported 1 remote into \u2026/Device Library"));
    // The new device loads and exports as Pronto Hex, the dialog's first format.
    s.Device(added[0]);
    const fs::path out = s.home / "box.txt";
    FileDialogSeen offered;
    AnswerFileDialog(out.string(), &offered);
    s.w()->findChild<QAction*>("exportDevice")->trigger();
    QCOMPARE(offered.name, s.Text("txtdescr") + ".txt");
    const QStringList lines = ReadAll(out).split(QRegularExpression("[\r\n]+"), Qt::SkipEmptyParts);
    QCOMPARE(lines.filter(QRegularExpression("^0000 006D ")).size(), 2);
    QCOMPARE(s.Report(), QString("Exported 2 keys as Pronto Hex to \u2026/box.txt"));
    QVERIFY(s.guard.unanswered().isEmpty());
  }

  void quitBothDonesAndClosingTheWindowCloseTheDatabaseAndEndTheLoop() {
    const std::pair<const char*, const char*> rows[] = {
        {"Philips Pronto", "quit"}, {"Nirvis TX Only", "CmdSlinkDone"}, {"ADI Leopard", "cmdADIdone"}, {"", ""}};
    for (auto [output, button] : rows) {
      Session s;
      const fs::path file = s.home / "Generated IRDBs" / "quit.mdb";
      AnswerFileDialog(file.string());
      s.Press("NewDB");
      s.Device("Denon AV Receiver");
      s.Press("xqtcmd");
      QVERIFY(!NobodyHoldsOpen(file));
      if (*output) s.Output(output);
      // As in main(): the program ends when quitting leaves the application's loop.
      QTimer::singleShot(0, [&] { *button ? s.Press(button) : void(s.w()->close()); });
      QTimer::singleShot(10000, &s.watchdog, [] { QCoreApplication::exit(99); });
      QCOMPARE(QCoreApplication::exec(), 0);
      QVERIFY2(!s.w()->isVisible() && NobodyHoldsOpen(file) && (!*button || s.program.host().quitting()), button);
      QCOMPARE(Export(file, "IR Codes")["Label"].size(), Read("Denon AV Receiver.dvc").keys.size());
    }
  }
};

QTEST_MAIN(GuiTest)
#include "gui_test.moc"
