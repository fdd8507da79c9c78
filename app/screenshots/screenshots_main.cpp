// gui_screenshots: starts the desktop program over a fresh program folder,
// works through it as an installer would (a new database and a Pronto run, the
// two Slink-e variants, an ADI run, the details dialog) and saves a PNG of the
// window at each stage. scripts/screenshots runs it under a virtual X server.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QTest>

#include "desktop_program.h"
#include "gui_driver.h"

namespace fs = std::filesystem;
using namespace bw::guidriver;

namespace {

QString outFolder;

bool Save(QWidget* w, const char* name) {
  QApplication::processEvents();
  QTest::qWait(150);
  QString file = outFolder + QLatin1Char('/') + QString::fromLatin1(name);
  bool ok = w->grab().save(file);
  std::fprintf(stderr, "%s %s\n", ok ? "saved" : "FAILED", qPrintable(file));
  return ok;
}

QPushButton* Button(QWidget* root, const char* name) { return Find<QPushButton>(root, name); }

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QString home, library;
  for (int i = 1; i + 1 < argc; ++i) {
    const QString option = QString::fromLatin1(argv[i]), value = QString::fromLocal8Bit(argv[i + 1]);
    if (option == QStringLiteral("--home")) home = value;
    if (option == QStringLiteral("--library")) library = value;
    if (option == QStringLiteral("--out")) outFolder = value;
  }
  if (home.isEmpty() || library.isEmpty() || outFolder.isEmpty()) {
    std::fprintf(stderr, "usage: gui_screenshots --home EMPTY_FOLDER --library DEVICE_LIBRARY --out FOLDER\n");
    return 2;
  }
  QDir().mkpath(outFolder);
  // A program folder as an installer has it: the template database made beside
  // this program, the output folder for databases and a link to the library.
  const fs::path folder = home.toStdString();
  fs::create_directories(folder / "Generated IRDBs");
  fs::copy_file(fs::path(QCoreApplication::applicationDirPath().toStdString()) / "Empty_RCIR.mdb",
                folder / "Empty_RCIR.mdb", fs::copy_options::overwrite_existing);
  if (!fs::exists(folder / "Device Library"))
    fs::create_directory_symlink(fs::absolute(library.toStdString()), folder / "Device Library");

  // A message nobody scripted is closed and fails the run instead of hanging it.
  MessageGuard guard;
  QTimer::singleShot(90000, [] {
    std::fprintf(stderr, "gui_screenshots: gave up after 90 s\n");
    std::_Exit(3);
  });

  bw::gui::DesktopProgram program;
  if (!program.Start(folder, "")) return 1;
  QWidget* w = &program.window();
  auto lex = Find<QListWidget>(w, "Lex");
  auto output = Find<QListWidget>(w, "Output");
  bool ok = true;

  // Philips Pronto: a new database, two devices written into it.
  AnswerFileDialog((folder / "Generated IRDBs" / "Living Room.mdb").string());
  Click(Button(w, "NewDB"));
  for (const char* device : {"DENON AV RECEIVER", "SONY TV"}) {
    ClickRow(lex, QString::fromLatin1(device));
    Click(Button(w, "xqtcmd"));
  }
  auto models = Find<QComboBox>(w, "DvcModelList");
  models->setFocus();
  QTest::keyClick(models, Qt::Key_Down);
  ok &= Save(w, "main-pronto.png");

  // The details dialog during a Pronto run, in HEX.
  Click(Find<QCheckBox>(w, "Check1"));
  QWidget* dbg = &program.details();
  When([dbg] { return dbg->isVisible() && Find<QPushButton>(dbg, "Next")->isEnabled(); },
       [&] {
         Click(Find<QCheckBox>(dbg, "HexOPT"));
         Click(Find<QRadioButton>(dbg, "Option1_1"));
         ok &= Save(dbg, "details-pronto.png");
         Click(Find<QPushButton>(dbg, "Finish"));
       });
  Click(Button(w, "xqtcmd"));

  // Nirvis Slink-e, both variants.
  ClickRow(output, QStringLiteral("Nirvis TX Only"));
  ClickRow(lex, QStringLiteral("SAMSUNG TV"));
  Click(Button(w, "cmdSlinkXqt"));
  ok &= Save(w, "main-slinke-tx.png");
  // The Tx/Rx variant after a run over a Sony device (its start pair and bit
  // cells fit that variant's fields).
  ClickRow(output, QStringLiteral("Nirvis Tx/Rx"));
  ClickRow(lex, QStringLiteral("SONY TV"));
  Click(Button(w, "cmdSlinkXqt"));
  ok &= Save(w, "main-slinke-txrx.png");

  // ADI Leopard: a new table, the first key added, the second skipped, the rest all at once.
  ClickRow(output, QStringLiteral("ADI Leopard"));
  ClickRow(lex, QStringLiteral("DENON AV RECEIVER"));
  Click(Button(w, "cmdAdiNew"));
  auto add = Button(w, "CmdADIadd"), next = Button(w, "cmdADInxtKey"), all = Button(w, "cmdadiall");
  auto key = Find<QLineEdit>(w, "AdiNewKey");
  When([add] { return add->isEnabled(); }, [&] {
    Click(add);
    QString first = key->text();
    When([key, first] { return key->text() != first; }, [&] { Click(next); QTimer::singleShot(50, [&] { Click(all); }); });
  });
  Click(Button(w, "cmdADIxqt"));
  ok &= Save(w, "main-adi.png");

  // The details dialog of a Slink-e entry with its waveform at half scale.
  ClickRow(output, QStringLiteral("Nirvis TX Only"));
  ClickRow(lex, QStringLiteral("SONY TV"));
  Click(Find<QCheckBox>(w, "Check1"));
  When([dbg] { return dbg->isVisible() && Find<QPushButton>(dbg, "Next")->isEnabled(); },
       [&] {
         Click(Find<QRadioButton>(dbg, "Option1_1"));
         ok &= Save(dbg, "details-slinke.png");
         // Zoomed in on the first frame's start burst with the keys.
         QWidget* wave = Find<QWidget>(dbg, "Shape1");
         wave->setFocus();
         for (int i = 0; i < 6; ++i) QTest::keyClick(wave, Qt::Key_Plus);
         QTest::keyClick(wave, Qt::Key_Home);
         ok &= Save(dbg, "details-zoomed.png");
         Click(Find<QPushButton>(dbg, "Finish"));
       });
  Click(Button(w, "cmdSlinkXqt"));

  // Leave through the program's own quit path (it closes the database).
  Click(Button(w, "quit"));
  for (const QString& message : guard.unanswered())
    std::fprintf(stderr, "unexpected message: %s\n", qPrintable(message));
  return ok && guard.unanswered().isEmpty() ? 0 : 1;
}
