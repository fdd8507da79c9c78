// The desktop program driven through its real widgets, offscreen, over a
// temporary program folder that links the bundled Device Library. What the
// window should show is read from the library's files by the tests' own
// reader; what the runs write is read back from disk, through mdbtools for the
// IR database and through burstwright-cli for ADI files.
#include <sys/file.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTest>

#include "desktop_program.h"
#include "gui_driver.h"
#include "library_files.h"
#include "version.h"

namespace fs = std::filesystem;
using namespace bw::guitest;

namespace {

const fs::path kLibrary = fs::path(BW_SOURCE_DIR) / "Device Library";

/// The named child of `root`; a missing widget ends the whole suite, since
/// every later step would only fail on a null pointer.
template <class T>
T* Get(QWidget* root, const char* name) {
  T* widget = Find<T>(root, name);
  if (!widget) qFatal("no widget named %s of the expected kind", name);
  return widget;
}

QString Q(const std::string& text) { return QString::fromStdString(text); }

/// A caption as the user reads it: Qt draws "&&" as "&" and hides a single "&"
/// (it marks the next letter as a keyboard shortcut).
QString Shown(QString caption) {
  caption.replace(QStringLiteral("&&"), QString(QChar(0xE000)));
  caption.remove(QLatin1Char('&'));
  caption.replace(QChar(0xE000), QLatin1Char('&'));
  return caption;
}

QStringList Items(QListWidget* list) {
  QStringList items;
  for (int i = 0; i < list->count(); ++i) items << list->item(i)->text();
  return items;
}

QStringList Items(QComboBox* combo) {
  QStringList items;
  for (int i = 0; i < combo->count(); ++i) items << combo->itemText(i);
  return items;
}

/// One started desktop program over its own program folder, with a guard that
/// closes unanswered message boxes and a watchdog that ends any wait a broken
/// script would leave hanging.
struct Session {
  ProgramFolder folder;
  bw::gui::DesktopProgram program;
  MessageGuard guard;
  bool started = false;
  bool watchdogFired = false;
  QTimer watchdog;

  explicit Session(int watchdogMilliseconds = 30000) {
    started = program.Start(folder.path(), "");
    watchdog.setSingleShot(true);
    QObject::connect(&watchdog, &QTimer::timeout, [this] {
      watchdogFired = true;
      if (QWidget* modal = QApplication::activeModalWidget()) modal->close();
      program.host().Quit();
    });
    watchdog.start(watchdogMilliseconds);
  }

  QWidget* w() { return &program.window(); }
  QWidget* dbg() { return &program.details(); }
  fs::path home() const { return folder.path(); }

  void ChooseOutput(const char* entry) { QVERIFY(ClickRow(Get<QListWidget>(w(), "Output"), QString::fromLatin1(entry))); }
  void ChooseDevice(const std::string& listName) { QVERIFY(ClickRow(Get<QListWidget>(w(), "Lex"), Q(listName))); }
  void Press(const char* button) {
    QPushButton* b = Get<QPushButton>(w(), button);
    QVERIFY2(b->isVisible() && b->isEnabled(), button);
    Click(b);
  }
  QString Text(const char* lineEdit) { return Get<QLineEdit>(w(), lineEdit)->text(); }
};

/// The status line of the main window: the status box, or the plain line that
/// repeats its text while the Pronto panel keeps the box hidden.
QString StatusLine(QWidget* window) {
  auto box = Get<QLineEdit>(window, "status");
  return box->isVisible() ? box->text() : Get<QLabel>(window, "statusEcho")->text();
}

/// The current override cursor's shape, -1 when there is none.
int OverrideCursorShape() {
  QCursor* cursor = QApplication::overrideCursor();
  return cursor ? int(cursor->shape()) : -1;
}

/// Runs an external reader and gives its standard output.
QString RunReader(const QString& program, const QStringList& arguments) {
  QProcess process;
  process.start(program, arguments);
  if (!process.waitForFinished(20000) || process.exitCode() != 0) {
    qWarning("%s failed: %s", qPrintable(program), process.readAllStandardError().constData());
    return QString();
  }
  return QString::fromUtf8(process.readAllStandardOutput());
}

/// A table as mdb-export gives it: one map per row, keyed by column name.
std::vector<std::map<QString, QString>> ExportTable(const fs::path& database, const char* table) {
  QString csv = RunReader(QStringLiteral("mdb-export"), {Q(database.string()), QString::fromLatin1(table)});
  std::vector<QStringList> rows;
  QStringList fields;
  QString field;
  bool quoted = false;
  for (qsizetype i = 0; i < csv.size(); ++i) {
    QChar c = csv[i];
    if (quoted) {
      if (c == QLatin1Char('"') && i + 1 < csv.size() && csv[i + 1] == QLatin1Char('"')) {
        field += c;
        ++i;
      } else if (c == QLatin1Char('"')) {
        quoted = false;
      } else {
        field += c;
      }
    } else if (c == QLatin1Char('"')) {
      quoted = true;
    } else if (c == QLatin1Char(',')) {
      fields << field;
      field.clear();
    } else if (c == QLatin1Char('\n')) {
      fields << field;
      field.clear();
      rows.push_back(fields);
      fields.clear();
    } else {
      field += c;
    }
  }
  std::vector<std::map<QString, QString>> named;
  for (std::size_t r = 1; r < rows.size(); ++r) {
    std::map<QString, QString> row;
    for (qsizetype c = 0; c < rows[0].size() && c < rows[r].size(); ++c) row[rows[0][c]] = rows[r][c];
    named.push_back(row);
  }
  return named;
}

/// True when this process can take the exclusive lock of `file`: nobody holds it open.
bool NobodyHoldsOpen(const fs::path& file) {
  int fd = ::open(file.c_str(), O_RDONLY);
  if (fd < 0) return false;
  bool free = ::flock(fd, LOCK_EX | LOCK_NB) == 0;
  ::close(fd);
  return free;
}

/// A timing list of a protocol file ("[4500 -4500]", "1,-3") in microseconds:
/// numbers below the time base count in time-base units.
std::vector<int> Microseconds(std::string text, int timeBase) {
  for (char& c : text)
    if (c == '[' || c == ']' || c == ',') c = ' ';
  std::vector<int> out;
  std::istringstream in(text);
  double value;
  while (in >> value) out.push_back(int(std::lround(std::fabs(value) >= timeBase ? value : value * timeBase)));
  return out;
}

int Number(const ProtocolFile& protocol, const char* statement) {
  return std::stoi(protocol.statements.at(statement));
}

/// Reads `count` pulse-distance bits (least significant first) from `d` at `at`.
/// -1 when a pair matches neither the ONE nor the ZERO timing.
long ReadBits(const std::vector<int>& d, std::size_t& at, int count, const std::vector<int>& one,
              const std::vector<int>& zero) {
  long value = 0;
  for (int bit = 0; bit < count; ++bit, at += 2) {
    if (at + 1 >= d.size()) return -1;
    if (d[at] == one[0] && d[at + 1] == one[1]) value |= 1L << bit;
    else if (!(d[at] == zero[0] && d[at + 1] == zero[1])) return -1;
  }
  return value;
}

int Sum(const std::vector<int>& d, std::size_t from, std::size_t to) {
  int total = 0;
  for (std::size_t i = from; i < to && i < d.size(); ++i) total += std::abs(d[i]);
  return total;
}

/// The waveform's two traces, told apart by hue (antialiasing blends their
/// edges with the light background).
enum Trace { kOnceTrace, kRepeatTrace };

/// Leftmost and rightmost column of `trace` below the legend; -1 when absent.
std::pair<int, int> TraceExtent(const QImage& image, Trace trace) {
  constexpr int kLegendRows = 24;
  int left = -1, right = -1;
  for (int x = 0; x < image.width(); ++x)
    for (int y = kLegendRows; y < image.height(); ++y) {
      QColor c = image.pixelColor(x, y);
      bool match = trace == kOnceTrace ? c.blue() - c.red() > 40 : c.red() - c.blue() > 40;
      if (match) {
        if (left < 0) left = x;
        right = x;
        break;
      }
    }
  return {left, right};
}

}  // namespace

class DesktopProgramTest : public QObject {
  Q_OBJECT

 private slots:
  void cleanup() { CancelPendingWhens(); }

  void startupListsTheLibrarysDevicesAndProtocols();
  void everyControlIsOneWidgetNamedAfterIt();
  void outputChoiceShowsOnePanelInOnePlace();
  void clickingADeviceShowsItsHeader();
  void slinkTxOnlyWritesEveryKeyAsItsDurations();
  void showDetailsStopsAtEveryKeyUntilFinish();
  void prontoRunIntoANewDatabaseReadsBackThroughMdbtools();
  void adiRunWaitsForTheChoiceAtEveryKey();
  void everyMessageBoxIsTitledBurstwright();
  void missingLibraryEndsStartUpWithItsMessage();
  void quitClosesTheDatabaseAndEndsTheEventLoop_data();
  void quitClosesTheDatabaseAndEndsTheEventLoop();
  void closingTheWindowEndsTheEventLoopToo();
};

void DesktopProgramTest::startupListsTheLibrarysDevicesAndProtocols() {
  Session s;
  QVERIFY(s.started);
  QVERIFY(s.w()->isVisible());

  // The device list: every .dvc file, by upper-cased name, in the order of a
  // listing sorted by upper-cased file name (so "X A3.DVC" comes before "X.DVC").
  std::vector<fs::path> files = FilesWithExtension(kLibrary, ".dvc");
  std::sort(files.begin(), files.end(),
            [](const fs::path& a, const fs::path& b) { return Upper(a.filename().string()) < Upper(b.filename().string()); });
  QStringList devices;
  for (const fs::path& path : files) devices << Q(ListName(path));
  QVERIFY(devices.size() > 3);
  auto lex = Get<QListWidget>(s.w(), "Lex");
  QCOMPARE(Items(lex), devices);
  QCOMPARE(lex->currentRow(), -1);
  QCOMPARE(Get<QLabel>(s.w(), "Label5")->text(), QStringLiteral("Select Device"));

  // The protocol list: one name per protocol file that names one.
  QStringList protocols;
  for (const fs::path& path : FilesWithExtension(kLibrary, ".irp")) {
    ProtocolFile file = ReadProtocolFile(path);
    if (!file.name.empty()) protocols << Q(file.name);
  }
  QStringList shownProtocols = Items(Get<QComboBox>(s.w(), "format"));
  protocols.sort();
  shownProtocols.sort();
  QCOMPARE(shownProtocols, protocols);

  auto output = Get<QListWidget>(s.w(), "Output");
  QCOMPARE(Items(output), (QStringList{"Philips Pronto", "Nirvis TX Only", "Nirvis Tx/Rx", "ADI Leopard"}));
  QCOMPARE(output->currentRow(), 0);
  QVERIFY(!Get<QCheckBox>(s.w(), "Check1")->isChecked());
  QVERIFY(!Get<QCheckBox>(s.w(), "Autogen")->isChecked());
  QCOMPARE(Shown(Get<QPushButton>(s.w(), "LoadDB")->text()), QStringLiteral("Open"));
  for (const char* del : {"DBmfgDEL", "DBtypDEL", "DBdvcDel"}) QVERIFY(!Get<QPushButton>(s.w(), del)->isEnabled());

  // The caption carries this build's version numbers and nothing after them.
  QCOMPARE(s.w()->windowTitle(), QStringLiteral("Pronto Burstwright Version(%1.%2 R%3)")
                                     .arg(bw::version::kMajor)
                                     .arg(bw::version::kMinor)
                                     .arg(bw::version::kRevision));
  QVERIFY(s.guard.unanswered().isEmpty());
}

void DesktopProgramTest::everyControlIsOneWidgetNamedAfterIt() {
  Session s;
  QVERIFY(s.started);
  const char* mainControls[] = {
      "Lex", "Output", "format", "Label5", "Autogen", "Check1", "DBI", "Slnk", "ADI", "dbname", "dbnlbl", "LoadDB",
      "NewDB", "DBmfgDEL", "DBtypDEL", "DBdvcDel", "DvcMfglist", "DvcTypeList", "DvcModelList", "DC", "FFC", "LFC",
      "Model", "MFG", "Device", "quit", "txtdescr", "ADIdescr", "Frame2", "Frame4", "Ot", "RPT", "txtcarrier",
      "TxtOne", "TxtZero", "TxtRpt", "TxtStart", "txtStop", "xqtcmd", "status", "txtcertify", "slinkkeyname",
      "SlinkEntryCount", "Opttxonly", "OptTxRx", "cmdSlinkXqt", "CmdSlinkDone", "cmdADIxqt", "cmdadiall",
      "CmdADIadd", "cmdADInxtKey", "AdiNewKey", "ADIoptTX", "ADIoptRX", "Frame3", "ADIFileName", "ADIRecnmb",
      "adiFsize", "ADIFileDevice", "AdiFileKey", "cmdADIOpen", "cmdADIsave", "cmdADIprior", "cmdADINext",
      "cmdADIrpl", "cmdadiDelete", "cmdAdiNew", "cmdADIdone"};
  for (const char* name : mainControls)
    QVERIFY2(s.w()->findChildren<QWidget*>(QString::fromLatin1(name)).size() == 1, name);
  QCOMPARE(s.w()->objectName(), QStringLiteral("F"));

  const char* detailControls[] = {"Next", "Skip", "Finish", "HexOPT", "Option1_0", "Option1_1", "Option1_2",
                                  "Command1", "BurstList", "Text1", "Shape1", "lblKeyLabel", "lblOnceCount",
                                  "lblRepeatCount", "lblType", "lblModel", "lblManufacturer", "lblProtocol",
                                  "lblBurstPairCount", "lblCarrier", "lblTitle"};
  for (const char* name : detailControls)
    QVERIFY2(s.dbg()->findChildren<QWidget*>(QString::fromLatin1(name)).size() == 1, name);
  QCOMPARE(s.dbg()->objectName(), QStringLiteral("DBG"));

  // Captions the windows carry before anything ran.
  QCOMPARE(Shown(Get<QGroupBox>(s.w(), "Slnk")->title()), QStringLiteral("Nirvis Slink-e  File Options"));
  QCOMPARE(Shown(Get<QGroupBox>(s.w(), "ADI")->title()), QStringLiteral("ADI Leopard & Ocelot"));
  QCOMPARE(Shown(Get<QGroupBox>(s.w(), "Frame3")->title()), QStringLiteral("ADI File Data"));
  QCOMPARE(Shown(Get<QCheckBox>(s.w(), "Check1")->text()), QStringLiteral("Show Details"));
  QCOMPARE(Shown(Get<QPushButton>(s.w(), "cmdSlinkXqt")->text()), QStringLiteral("Process"));
  QCOMPARE(Shown(Get<QPushButton>(s.w(), "cmdADIxqt")->text()), QStringLiteral("Start Processing"));
  QCOMPARE(Shown(Get<QPushButton>(s.w(), "cmdADInxtKey")->text()), QStringLiteral("Next Key"));
  QCOMPARE(Shown(Get<QCheckBox>(s.dbg(), "HexOPT")->text()), QStringLiteral("HEX Display"));
  QCOMPARE(Shown(Get<QRadioButton>(s.dbg(), "Option1_1")->text()), QStringLiteral("x1/2"));
  QCOMPARE(Shown(Get<QPushButton>(s.dbg(), "Command1")->text()), QStringLiteral("Adjust Suffix Display"));
  QCOMPARE(Get<QLabel>(s.dbg(), "lblCarrier")->text(), QStringLiteral("40,000 HZ"));
  QCOMPARE(s.dbg()->windowTitle(), QStringLiteral("IR Database Entry Details"));
  // The dialog's captions of the shown values.
  QStringList captions;
  for (QLabel* label : s.dbg()->findChildren<QLabel*>()) captions << label->text();
  for (const char* caption : {"Key Label", "Once Count", "Repeat Count", "Type", "Model", "Manufacturer",
                              "IR Protocol", "Burst Pair Count"})
    QVERIFY2(captions.contains(QString::fromLatin1(caption)), caption);
  QStringList groups;
  for (QGroupBox* box : s.dbg()->findChildren<QGroupBox*>()) groups << box->title();
  QVERIFY(groups.contains(QStringLiteral("Waveform")));
}

void DesktopProgramTest::outputChoiceShowsOnePanelInOnePlace() {
  Session s;
  QVERIFY(s.started);
  auto dbi = Get<QGroupBox>(s.w(), "DBI"), slnk = Get<QGroupBox>(s.w(), "Slnk"), adi = Get<QGroupBox>(s.w(), "ADI");
  struct Case {
    const char* entry;
    QGroupBox* shown;
  };
  for (Case c : {Case{"Nirvis TX Only", slnk}, Case{"ADI Leopard", adi}, Case{"Nirvis Tx/Rx", slnk},
                 Case{"Philips Pronto", dbi}}) {
    s.ChooseOutput(c.entry);
    for (QGroupBox* frame : {dbi, slnk, adi}) QCOMPARE(frame->isVisible(), frame == c.shown);
    // The panels share one place: the shown one sits where the others would.
    for (QGroupBox* frame : {dbi, slnk, adi}) QCOMPARE(frame->mapTo(s.w(), QPoint()), c.shown->mapTo(s.w(), QPoint()));
  }
  QVERIFY(s.guard.unanswered().isEmpty());
}

void DesktopProgramTest::clickingADeviceShowsItsHeader() {
  Session s;
  QVERIFY(s.started);
  int loaded = 0;
  for (const fs::path& path : FilesWithExtension(kLibrary, ".dvc")) {
    DeviceFile device = ReadDeviceFile(path);
    std::string protocol = device.Header("PROTOCOL").empty() ? device.Header("FORMAT") : device.Header("PROTOCOL");
    s.ChooseDevice(ListName(path));
    QCOMPARE(Get<QLabel>(s.w(), "Label5")->text(), QStringLiteral("Device Selected"));
    QCOMPARE(s.Text("MFG"), Q(Upper(device.Header("MANUFACTURER"))));
    QCOMPARE(s.Text("Device"), Q(Upper(device.Header("DEVICE"))));
    QCOMPARE(s.Text("Model"), Q(Upper(device.Header("MODEL"))));
    QCOMPARE(Get<QComboBox>(s.w(), "format")->currentText(), Q(Upper(protocol)));
    ++loaded;
  }
  QVERIFY(loaded > 3);

  // The Slink-e fields come from the protocol of the device just loaded.
  s.ChooseDevice("SAMSUNG TV");
  ProtocolFile samsung = ProtocolNamed(kLibrary, "SAMSUNG");
  int timeBase = Number(samsung, "TIMEBASE");
  QCOMPARE(s.Text("txtcarrier"), QString::number(Number(samsung, "FREQUENCY")) + QStringLiteral(".00"));
  std::vector<int> one = Microseconds(samsung.statements.at("ONE"), timeBase);
  QCOMPARE(s.Text("TxtOne"), QStringLiteral("%1 %2").arg(one[0]).arg(one[1]));
  QCOMPARE(s.Text("txtdescr"), s.Text("MFG") + QLatin1Char('-') + s.Text("Model"));
  QVERIFY(s.guard.unanswered().isEmpty());
}

void DesktopProgramTest::slinkTxOnlyWritesEveryKeyAsItsDurations() {
  Session s;
  QVERIFY(s.started);
  const DeviceFile device = DeviceNamed(kLibrary, "SAMSUNG TV");
  const ProtocolFile protocol = ProtocolNamed(kLibrary, device.Header("PROTOCOL"));
  s.ChooseOutput("Nirvis TX Only");
  s.ChooseDevice("SAMSUNG TV");
  s.Press("cmdSlinkXqt");

  const std::string descr = Upper(device.Header("MANUFACTURER")) + "-" + Upper(device.Header("MODEL"));
  const fs::path cde = s.home() / "Slinke Library" / (descr + ".cde");
  QVERIFY2(fs::exists(cde), cde.c_str());
  QCOMPARE(s.Text("SlinkEntryCount"), QString::number(device.keys.size()));
  QCOMPARE(s.Text("slinkkeyname"), Q(device.keys.back().label));

  std::string text = ReadWholeFile(cde);
  QVERIFY(text.size() > 2 && text.substr(text.size() - 2) == "\r\n");
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = text.find('\n', at);
    QVERIFY2(end != std::string::npos && end > at && text[end - 1] == '\r', "every line ends in CR LF");
    lines.push_back(text.substr(at, end - 1 - at));
    at = end + 1;
  }
  QVERIFY(lines.size() >= 5);
  QCOMPARE(Q(lines[0]), Q("Desc=" + descr));
  QCOMPARE(Q(lines[1]), QStringLiteral("type=irtxonly"));
  QCOMPARE(Q(lines[2]), QStringLiteral("sleep=0"));
  QCOMPARE(Q(lines[3]), QStringLiteral("carrier=%1.00").arg(Number(protocol, "FREQUENCY")));

  // Every key follows after an empty line: its durations, then ":" and its label.
  // The Samsung frame (see its protocol file) is a lead-in, the device code
  // twice, the function code and its complement, a stop burst and the gap up to
  // the frame period; the repeat frame is the lead-in, the device code's lowest
  // bit and the stop burst, padded the same way.
  const int timeBase = Number(protocol, "TIMEBASE");
  const std::vector<int> one = Microseconds(protocol.statements.at("ONE"), timeBase);
  const std::vector<int> zero = Microseconds(protocol.statements.at("ZERO"), timeBase);
  const std::vector<int> lead = Microseconds(protocol.defines.at("LEAD"), timeBase);
  const std::vector<int> stop = Microseconds(protocol.defines.at("STOP"), timeBase);
  const int period = std::stoi(protocol.defines.at("FRAME").substr(1));
  const long deviceCode = std::stol(device.Header("DEVICECODE"));
  // The file's text ends in CR LF and is printed with one more, so an empty line closes it.
  QCOMPARE(lines.size(), 5 + 2 * device.keys.size());
  QVERIFY(lines.back().empty());
  for (std::size_t k = 0; k < device.keys.size(); ++k) {
    QVERIFY(lines[4 + 2 * k].empty());
    const std::string& entry = lines[5 + 2 * k];
    std::size_t colon = entry.rfind(" :");
    QVERIFY2(colon != std::string::npos, entry.c_str());
    QCOMPARE(Q(entry.substr(colon + 2)), Q(device.keys[k].label));
    std::vector<int> d;
    std::istringstream numbers(entry.substr(0, colon));
    for (int value; numbers >> value;) d.push_back(value);

    const long function = std::stol(device.keys[k].codes);
    std::size_t at = 0;
    QVERIFY(std::equal(lead.begin(), lead.end(), d.begin()));
    at += lead.size();
    QCOMPARE(ReadBits(d, at, 8, one, zero), deviceCode);
    QCOMPARE(ReadBits(d, at, 8, one, zero), deviceCode);
    QCOMPARE(ReadBits(d, at, 8, one, zero), function);
    QCOMPARE(ReadBits(d, at, 8, one, zero), 255 - function);
    QCOMPARE(d[at], stop[0]);
    QVERIFY(d[at + 1] < 0);
    at += 2;
    QCOMPARE(Sum(d, 0, at), period);
    const std::size_t repeatStart = at;
    QVERIFY(std::equal(lead.begin(), lead.end(), d.begin() + long(at)));
    at += lead.size();
    QCOMPARE(ReadBits(d, at, 1, one, zero), deviceCode & 1);
    QCOMPARE(d[at], stop[0]);
    at += 2;
    QCOMPARE(at, d.size());
    QCOMPARE(Sum(d, repeatStart, at), period);
  }
  QVERIFY(s.guard.unanswered().isEmpty());
}

void DesktopProgramTest::showDetailsStopsAtEveryKeyUntilFinish() {
  Session s;
  QVERIFY(s.started);
  const DeviceFile device = DeviceNamed(kLibrary, "SAMSUNG TV");
  s.ChooseOutput("Nirvis TX Only");
  s.ChooseDevice("SAMSUNG TV");
  Click(Get<QCheckBox>(s.w(), "Check1"));
  QVERIFY(Get<QCheckBox>(s.w(), "Check1")->isChecked());

  QWidget* dbg = s.dbg();
  auto next = Get<QPushButton>(dbg, "Next");
  auto keyLabel = Get<QLabel>(dbg, "lblKeyLabel");
  auto shownKey = [=](const std::string& label) {
    return [=] { return dbg->isVisible() && next->isEnabled() && keyLabel->text() == Q(label); };
  };

  struct Seen {
    QString title, entryCount, keyName, onceCount, repeatCount, text;
    int bursts = 0, cursor = -1;
    bool skipVisible = true;
    QImage x1, half, shifted;
  } first, second;
  auto look = [&](Seen& seen) {
    seen.title = dbg->windowTitle();
    seen.entryCount = Get<QLineEdit>(s.w(), "SlinkEntryCount")->text();
    seen.keyName = Get<QLineEdit>(s.w(), "slinkkeyname")->text();
    seen.onceCount = Get<QLabel>(dbg, "lblOnceCount")->text();
    seen.repeatCount = Get<QLabel>(dbg, "lblRepeatCount")->text();
    seen.text = Get<QPlainTextEdit>(dbg, "Text1")->toPlainText();
    seen.bursts = Get<QListWidget>(dbg, "BurstList")->count();
    seen.cursor = OverrideCursorShape();
    seen.skipVisible = Get<QPushButton>(dbg, "Skip")->isVisible();
  };
  QWidget* waveform = Get<QWidget>(dbg, "Shape1");
  When(shownKey(device.keys[0].label), [&] {
    look(first);
    first.x1 = waveform->grab().toImage();
    Click(Get<QRadioButton>(dbg, "Option1_1"));
    first.half = waveform->grab().toImage();
    Click(Get<QPushButton>(dbg, "Command1"));
    first.shifted = waveform->grab().toImage();
    Click(next);
    When(shownKey(device.keys[1].label), [&] {
      look(second);
      Click(Get<QPushButton>(dbg, "Finish"));
    });
  });
  s.Press("cmdSlinkXqt");
  QVERIFY(!s.watchdogFired);

  // Each key waited in the dialog, with the window's counters already showing it.
  QCOMPARE(first.title, QStringLiteral("IR Database Entry Details"));
  QCOMPARE(first.entryCount, QStringLiteral("1"));
  QCOMPARE(first.keyName, Q(device.keys[0].label));
  QCOMPARE(second.entryCount, QStringLiteral("2"));
  QCOMPARE(second.keyName, Q(device.keys[1].label));
  QCOMPARE(first.cursor, int(Qt::BusyCursor));
  QVERIFY(!first.skipVisible);
  // The burst list and the code text hold the entry's durations, once and repeat part together.
  QCOMPARE(first.bursts, first.onceCount.toInt() + first.repeatCount.toInt());
  QCOMPARE(first.text.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts).size(), first.bursts);

  // Finish: no further entry is shown, the box is cleared, every key is still written.
  QVERIFY(!dbg->isVisible());
  QVERIFY(!Get<QCheckBox>(s.w(), "Check1")->isChecked());
  QCOMPARE(s.Text("SlinkEntryCount"), QString::number(device.keys.size()));
  QCOMPARE(OverrideCursorShape(), -1);
  QVERIFY(fs::exists(s.home() / "Slinke Library" /
                     (Upper(device.Header("MANUFACTURER")) + "-" + Upper(device.Header("MODEL")) + ".cde")));

  // The waveform. A Slink-e run sends both forms as one, so the whole entry
  // is the part sent once: at x1 it fills the view, at x1/2 the left half, and
  // "Adjust Suffix Display" moves it left by a twentieth of the view.
  const int width = first.x1.width();
  auto [left1, right1] = TraceExtent(first.x1, kOnceTrace);
  auto [leftHalf, rightHalf] = TraceExtent(first.half, kOnceTrace);
  auto [leftShifted, rightShifted] = TraceExtent(first.shifted, kOnceTrace);
  QVERIFY2(left1 < width / 20 && right1 > width * 95 / 100, "x1 spans the view");
  QVERIFY2(leftHalf < width / 20 && rightHalf > width * 45 / 100 && rightHalf < width * 55 / 100, "x1/2 half the view");
  const int moved = rightHalf - rightShifted;
  QVERIFY2(moved > width * 3 / 100 && moved < width * 7 / 100, qPrintable(QString::number(moved)));
  QCOMPARE(TraceExtent(first.x1, kRepeatTrace).second, -1);
  QVERIFY(s.guard.unanswered().isEmpty());
}

void DesktopProgramTest::prontoRunIntoANewDatabaseReadsBackThroughMdbtools() {
  Session s;
  QVERIFY(s.started);
  const DeviceFile device = DeviceNamed(kLibrary, "SAMSUNG TV");
  const fs::path folder = s.home() / "Generated IRDBs";
  fs::create_directories(folder);
  const fs::path file = folder / "Lounge.mdb";

  FileDialogSeen dialog;
  AnswerFileDialog(file.string(), &dialog);
  s.Press("NewDB");
  QVERIFY(dialog.shown);
  QCOMPARE(dialog.filter, QStringLiteral("MDB Files (*.mdb)"));
  QCOMPARE(dialog.folder, Q(folder.string()));
  QVERIFY(fs::exists(file));
  QCOMPARE(s.Text("dbname"), Q(file.string()));
  QCOMPARE(Shown(Get<QPushButton>(s.w(), "LoadDB")->text()), QStringLiteral("Close"));
  for (const char* del : {"DBmfgDEL", "DBtypDEL", "DBdvcDel"}) QVERIFY(Get<QPushButton>(s.w(), del)->isEnabled());

  s.ChooseDevice("SAMSUNG TV");
  Click(Get<QCheckBox>(s.w(), "Check1"));
  QWidget* dbg = s.dbg();
  auto next = Get<QPushButton>(dbg, "Next");
  QString status, decimal, hex, onceCount, repeatCount;
  bool hexChecked = false;
  int cursor = -1;
  QImage waveform;
  When([=] { return dbg->isVisible() && next->isEnabled(); }, [&] {
    status = StatusLine(s.w());
    cursor = OverrideCursorShape();
    onceCount = Get<QLabel>(dbg, "lblOnceCount")->text();
    repeatCount = Get<QLabel>(dbg, "lblRepeatCount")->text();
    decimal = Get<QPlainTextEdit>(dbg, "Text1")->toPlainText();
    Click(Get<QCheckBox>(dbg, "HexOPT"));
    hexChecked = Get<QCheckBox>(dbg, "HexOPT")->isChecked();
    hex = Get<QPlainTextEdit>(dbg, "Text1")->toPlainText();
    Click(Get<QRadioButton>(dbg, "Option1_1"));
    waveform = Get<QWidget>(dbg, "Shape1")->grab().toImage();
    Click(Get<QPushButton>(dbg, "Finish"));
  });
  s.Press("xqtcmd");
  QVERIFY(!s.watchdogFired);

  // While the first entry waited, the status line named it with its function and device code.
  QCOMPARE(status, QStringLiteral("Function=%1 (%2,%3)")
                       .arg(Q(device.keys[0].label), Q(device.keys[0].codes), Q(device.Header("DEVICECODE"))));
  QCOMPARE(cursor, int(Qt::BusyCursor));
  // The same code text in decimal and in hexadecimal words: the carrier word,
  // the two pair counts, then two words per burst pair.
  QVERIFY(hexChecked);
  const QRegularExpression blanks(QStringLiteral("\\s+"));
  QStringList decimalWords = decimal.split(blanks, Qt::SkipEmptyParts);
  QStringList hexWords = hex.split(blanks, Qt::SkipEmptyParts);
  QCOMPARE(decimalWords.size(), 4 + 2 * (onceCount.toInt() + repeatCount.toInt()));
  QCOMPARE(hexWords.size(), decimalWords.size());
  QCOMPARE(decimalWords[2].toInt(), onceCount.toInt());
  QCOMPARE(decimalWords[3].toInt(), repeatCount.toInt());
  for (qsizetype i = 0; i < decimalWords.size(); ++i)
    QCOMPARE(hexWords[i], QStringLiteral("%1").arg(decimalWords[i].toInt(), 4, 16, QLatin1Char('0')).toUpper());
  QVERIFY(decimal != hex);
  // A Pronto entry keeps its repeated part: at x1/2 it follows the once part in the right half.
  const int width = waveform.width();
  const int onceEnd = TraceExtent(waveform, kOnceTrace).second;
  const int repeatStart = TraceExtent(waveform, kRepeatTrace).first;
  QVERIFY2(onceEnd > width * 45 / 100 && onceEnd < width * 55 / 100, qPrintable(QString::number(onceEnd)));
  QVERIFY2(repeatStart > width * 45 / 100 && repeatStart < width * 55 / 100, qPrintable(QString::number(repeatStart)));

  const QString model = Q(Upper(device.Header("MODEL")));
  QVERIFY(Items(Get<QComboBox>(s.w(), "DvcModelList")).contains(model));
  QVERIFY(Get<QPushButton>(s.w(), "xqtcmd")->isEnabled());
  QCOMPARE(OverrideCursorShape(), -1);
  QVERIFY(!NobodyHoldsOpen(file));

  s.Press("LoadDB");
  QCOMPARE(Shown(Get<QPushButton>(s.w(), "LoadDB")->text()), QStringLiteral("Open"));
  QCOMPARE(s.Text("dbname"), QString());
  QCOMPARE(Get<QComboBox>(s.w(), "DvcModelList")->count(), 0);
  QVERIFY(NobodyHoldsOpen(file));

  // Opening it again starts in the same folder and lists what the run stored.
  FileDialogSeen reopen;
  AnswerFileDialog(file.string(), &reopen);
  s.Press("LoadDB");
  QCOMPARE(reopen.filter, QStringLiteral("MDB Files (*.mdb)"));
  QCOMPARE(reopen.folder, Q(folder.string()));
  QCOMPARE(Items(Get<QComboBox>(s.w(), "DvcModelList")), QStringList{model});
  QCOMPARE(Items(Get<QComboBox>(s.w(), "DvcMfglist")), QStringList{Q(Upper(device.Header("MANUFACTURER")))});
  s.Press("LoadDB");
  QVERIFY(NobodyHoldsOpen(file));

  // What mdbtools reads back: one device under the file's model, one row per key.
  auto devices = ExportTable(file, "Devices");
  QCOMPARE(devices.size(), std::size_t(1));
  QCOMPARE(devices[0]["Model"], model);
  auto makers = ExportTable(file, "Manufacturers");
  QCOMPARE(makers.size(), std::size_t(1));
  QCOMPARE(makers[0]["name"], Q(Upper(device.Header("MANUFACTURER"))));
  auto types = ExportTable(file, "Device Types");
  QCOMPARE(types.size(), std::size_t(1));
  QCOMPARE(types[0]["name"], Q(Upper(device.Header("DEVICE"))));
  auto codes = ExportTable(file, "IR Codes");
  QCOMPARE(codes.size(), device.keys.size());
  for (std::size_t k = 0; k < codes.size(); ++k) {
    QCOMPARE(codes[k]["Label"], Q(device.keys[k].label));
    QCOMPARE(codes[k]["DeviceID"], devices[0]["DeviceID"]);
    QCOMPARE(codes[k]["FunctionID"], QString::number(k + 1));
  }
  QVERIFY(s.guard.unanswered().isEmpty());
}

void DesktopProgramTest::adiRunWaitsForTheChoiceAtEveryKey() {
  Session s;
  QVERIFY(s.started);
  const DeviceFile device = DeviceNamed(kLibrary, "DENON AV RECEIVER");
  const ProtocolFile protocol = ProtocolNamed(kLibrary, device.Header("PROTOCOL"));
  QVERIFY(device.keys.size() > 4);
  s.ChooseOutput("ADI Leopard");
  QVERIFY(!Get<QPushButton>(s.w(), "cmdADIxqt")->isEnabled());
  s.ChooseDevice("DENON AV RECEIVER");
  s.Press("cmdAdiNew");
  QCOMPARE(s.Text("ADIFileName"), QStringLiteral("NEW"));

  // First key: Add. Second: Next Key (skipped). Third: Add. Fourth: All Keys,
  // which adds it and every later key without waiting.
  auto newKey = Get<QLineEdit>(s.w(), "AdiNewKey");
  auto add = Get<QPushButton>(s.w(), "CmdADIadd");
  auto skip = Get<QPushButton>(s.w(), "cmdADInxtKey");
  auto all = Get<QPushButton>(s.w(), "cmdadiall");
  auto size = Get<QLabel>(s.w(), "adiFsize");
  auto waitingAt = [=](std::size_t k) {
    return [=] { return add->isEnabled() && newKey->text() == Q(device.keys[k].label); };
  };
  int cursor = -1;
  QString sizeAtSecond, sizeAtThird, sizeAtFourth;
  When(waitingAt(0), [&] {
    cursor = OverrideCursorShape();
    Click(add);
    When(waitingAt(1), [&] {
      sizeAtSecond = size->text();
      Click(skip);
      When(waitingAt(2), [&] {
        sizeAtThird = size->text();
        Click(add);
        When(waitingAt(3), [&] {
          sizeAtFourth = size->text();
          Click(all);
        });
      });
    });
  });
  s.Press("cmdADIxqt");
  QVERIFY(!s.watchdogFired);
  QCOMPARE(cursor, int(Qt::BusyCursor));
  QCOMPARE(sizeAtSecond, QStringLiteral("1"));
  QCOMPARE(sizeAtThird, QStringLiteral("1"));
  QCOMPARE(sizeAtFourth, QStringLiteral("2"));
  const std::size_t records = device.keys.size() - 1;
  QCOMPARE(size->text(), QString::number(records));
  QCOMPARE(OverrideCursorShape(), -1);

  FileDialogSeen dialog;
  const fs::path file = s.home() / "ADI Library" / "denon.lir";
  AnswerFileDialog(file.string(), &dialog);
  s.Press("cmdADIsave");
  QVERIFY(dialog.shown);
  QCOMPARE(dialog.filter, QStringLiteral("LIR Files (*.lir)"));
  QCOMPARE(dialog.folder, Q((s.home() / "ADI Library").string()));
  QCOMPARE(s.Text("ADIFileName"), Q(file.string()));
  QVERIFY(fs::exists(file));
  QCOMPARE(fs::file_size(file), records * 256);

  // Read back by our own reader: every key but the skipped one, in order, named
  // after the device, with the carrier code of the protocol's frequency.
  QString listing = RunReader(QStringLiteral(BW_BIN_DIR "/burstwright-cli"), {QStringLiteral("lir"), Q(file.string())});
  QStringList lines = listing.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
  QCOMPARE(std::size_t(lines.size()), records);
  auto squeeze = [](std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return Q(Upper(text));
  };
  const QString devicePart = squeeze(device.Header("MANUFACTURER")) + QLatin1Char('/') + squeeze(device.Header("MODEL"));
  const int carrier = int(std::lround(4608000.0 / Number(protocol, "FREQUENCY") - 1)) % 256;
  std::size_t k = 0;
  for (const QString& line : lines) {
    if (k == 1) ++k;
    QStringList fields = line.split(QLatin1Char('\t'));
    QVERIFY2(fields.size() >= 4, qPrintable(line));
    QCOMPARE(fields[1], devicePart);
    QCOMPARE(fields[2], squeeze(device.keys[k].label));
    QCOMPARE(fields[3].toInt(), carrier);
    ++k;
  }
  QVERIFY(s.guard.unanswered().isEmpty());

  // A second program opens the file from the user's home folder and shows its first record.
  Session other;
  QVERIFY(other.started);
  other.ChooseOutput("ADI Leopard");
  FileDialogSeen open;
  AnswerFileDialog(file.string(), &open);
  other.Press("cmdADIOpen");
  QCOMPARE(open.filter, QStringLiteral("LIR Files (*.lir)"));
  QCOMPARE(open.folder, QDir::homePath());
  QCOMPARE(Get<QLabel>(other.w(), "adiFsize")->text(), QString::number(records));
  QCOMPARE(other.Text("ADIRecnmb"), QStringLiteral("1"));
  QCOMPARE(other.Text("ADIFileDevice"), devicePart);
  QCOMPARE(other.Text("AdiFileKey"), squeeze(device.keys[0].label));
  Click(Get<QPushButton>(other.w(), "cmdADINext"));
  QCOMPARE(other.Text("AdiFileKey"), squeeze(device.keys[2].label));
  QVERIFY(other.guard.unanswered().isEmpty());
}

void DesktopProgramTest::everyMessageBoxIsTitledBurstwright() {
  Session s;
  QVERIFY(s.started);
  QList<MessageSeen> seen;
  auto expect = [&](int button, const std::function<void()>& action) {
    MessageSeen message;
    AnswerMessageBox(button, &message);
    action();
    seen << message;
    return message;
  };

  // Refusals of the three run commands.
  MessageSeen m = expect(QMessageBox::Ok, [&] { s.Press("xqtcmd"); });
  QCOMPARE(m.text, QStringLiteral("No Data base has been selected, Please open a data Base"));
  s.ChooseOutput("Nirvis TX Only");
  m = expect(QMessageBox::Ok, [&] { s.Press("cmdSlinkXqt"); });
  QCOMPARE(m.text, QStringLiteral("No Device File has been selected,\nand not set to Auto Generate"));
  Click(Get<QCheckBox>(s.w(), "Autogen"));
  QVERIFY(!Get<QListWidget>(s.w(), "Lex")->isVisible());
  QVERIFY(Get<QGroupBox>(s.w(), "Frame2")->isVisible());
  m = expect(QMessageBox::Ok, [&] { s.Press("cmdSlinkXqt"); });
  QCOMPARE(m.text, QStringLiteral("Auto Generate Selected and No Format has been selected"));
  Click(Get<QCheckBox>(s.w(), "Autogen"));
  s.ChooseOutput("ADI Leopard");
  s.Press("cmdAdiNew");
  m = expect(QMessageBox::Ok, [&] { s.Press("cmdADIxqt"); });
  QCOMPARE(m.text, QStringLiteral("No Device File has been selected,\nand not set to Auto Generate"));

  // The database commands: empty selections, then a question answered No.
  s.ChooseOutput("Philips Pronto");
  fs::create_directories(s.home() / "Generated IRDBs");
  const fs::path file = s.home() / "Generated IRDBs" / "messages.mdb";
  AnswerFileDialog(file.string());
  s.Press("NewDB");
  m = expect(QMessageBox::Ok, [&] { s.Press("DBmfgDEL"); });
  QCOMPARE(m.text, QStringLiteral("No Manufacturer selected, Request Cancelled"));
  m = expect(QMessageBox::Ok, [&] { s.Press("DBtypDEL"); });
  QCOMPARE(m.text, QStringLiteral("No Manufacturer selected, Request Cancelled"));
  m = expect(QMessageBox::Ok, [&] { s.Press("DBdvcDel"); });
  QCOMPARE(m.text, QStringLiteral("No Device selected, Request Cancelled"));
  s.ChooseDevice("DENON AV RECEIVER");
  s.Press("xqtcmd");
  auto makers = Get<QComboBox>(s.w(), "DvcMfglist");
  QVERIFY(makers->count() == 1);
  makers->setCurrentIndex(0);
  QVERIFY(Get<QComboBox>(s.w(), "DvcMfglist")->currentText() == QStringLiteral("DENON"));
  m = expect(QMessageBox::No, [&] { s.Press("DBmfgDEL"); });
  QCOMPARE(m.text, QStringLiteral("This will delete all devices of this Manufacturer, Proceed?"));
  QCOMPARE(Get<QComboBox>(s.w(), "DvcModelList")->count(), 1);

  // Saving an ADI table over an existing file asks first; No keeps the file.
  s.ChooseOutput("ADI Leopard");
  s.Press("cmdAdiNew");
  const fs::path lir = s.home() / "ADI Library" / "kept.lir";
  fs::create_directories(lir.parent_path());
  { std::ofstream(lir) << "not a table"; }
  AnswerFileDialog(lir.string());
  m = expect(QMessageBox::No, [&] { s.Press("cmdADIsave"); });
  QCOMPARE(m.text, Q(lir.string()) + QStringLiteral(" Already exists\nDo you wish to write Over it?"));
  QCOMPARE(Q(ReadWholeFile(lir)), QStringLiteral("not a table"));

  QCOMPARE(seen.size(), 9);
  for (const MessageSeen& message : seen) {
    QVERIFY2(message.shown, "a command showed no message");
    QCOMPARE(message.title, QStringLiteral("Burstwright"));
  }
  QVERIFY(s.guard.unanswered().isEmpty());
}

void DesktopProgramTest::missingLibraryEndsStartUpWithItsMessage() {
  const fs::path empty = fs::temp_directory_path() / ("bwgui-nolibrary-" + std::to_string(::getpid()));
  fs::create_directories(empty);
  MessageSeen message;
  AnswerMessageBox(QMessageBox::Ok, &message);
  bool started = true;
  {
    bw::gui::DesktopProgram program;
    started = program.Start(empty, "");
    QVERIFY(!program.window().isVisible());
  }
  fs::remove_all(empty);
  QVERIFY(!started);
  QVERIFY(message.shown);
  QCOMPARE(message.title, QStringLiteral("Burstwright"));
  QCOMPARE(message.text, QStringLiteral("Can not locate Device Library"));
}

void DesktopProgramTest::quitClosesTheDatabaseAndEndsTheEventLoop_data() {
  QTest::addColumn<QString>("output");
  QTest::addColumn<QString>("button");
  QTest::newRow("Quit") << "Philips Pronto" << "quit";
  QTest::newRow("Slink-e Done") << "Nirvis TX Only" << "CmdSlinkDone";
  QTest::newRow("ADI Done") << "ADI Leopard" << "cmdADIdone";
}

void DesktopProgramTest::quitClosesTheDatabaseAndEndsTheEventLoop() {
  QFETCH(QString, output);
  QFETCH(QString, button);
  Session s;
  QVERIFY(s.started);
  fs::create_directories(s.home() / "Generated IRDBs");
  const fs::path file = s.home() / "Generated IRDBs" / "quit.mdb";
  AnswerFileDialog(file.string());
  s.Press("NewDB");
  s.ChooseDevice("DENON AV RECEIVER");
  s.Press("xqtcmd");
  QVERIFY(!NobodyHoldsOpen(file));

  s.ChooseOutput(qPrintable(output));

  // As in main(): the program ends when quitting leaves the application's loop.
  const QByteArray name = button.toLatin1();
  QTimer::singleShot(0, [&] { s.Press(name.constData()); });
  QTimer::singleShot(10000, [] { QCoreApplication::exit(99); });
  QCOMPARE(QCoreApplication::exec(), 0);
  QVERIFY(s.program.host().quitting());
  QVERIFY(!s.w()->isVisible());
  QVERIFY(NobodyHoldsOpen(file));
  QCOMPARE(ExportTable(file, "IR Codes").size(), DeviceNamed(kLibrary, "DENON AV RECEIVER").keys.size());
}

void DesktopProgramTest::closingTheWindowEndsTheEventLoopToo() {
  Session s;
  QVERIFY(s.started);
  fs::create_directories(s.home() / "Generated IRDBs");
  const fs::path file = s.home() / "Generated IRDBs" / "close.mdb";
  AnswerFileDialog(file.string());
  s.Press("NewDB");
  QVERIFY(!NobodyHoldsOpen(file));
  QTimer::singleShot(0, [&] { s.w()->close(); });
  QTimer::singleShot(10000, [] { QCoreApplication::exit(99); });
  QCOMPARE(QCoreApplication::exec(), 0);
  QVERIFY(!s.w()->isVisible());
  QVERIFY(NobodyHoldsOpen(file));
}

QTEST_MAIN(DesktopProgramTest)
#include "gui_test.moc"
