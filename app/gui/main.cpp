// burstwright: the desktop program. Creates the two windows over one Program,
// runs the core's start-up (library discovery, lists, window state) and hands
// over to Qt's event loop; every later action is an event handler of the core.
#include <QApplication>
#include <QStringList>

#include "details_dialog.h"
#include "form_binder.h"
#include "main_window.h"
#include "qt_host.h"
#include "runtime/files.h"
#include "shell/program.h"
#include "shell/startup.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Burstwright"));
  // Quitting is the core's decision (it closes the database first).
  QApplication::setQuitOnLastWindowClosed(false);

  bw::Program p;
  bw::gui::QtHost host(p);
  p.host = &host;
  p.ProgramFolder = bw::ExecutableFolder();
  QStringList arguments = QApplication::arguments();
  arguments.removeFirst();
  p.CommandLine = bw::gui::FromQt(arguments.join(QLatin1Char(' ')));

  bw::gui::MainWindow window(p, host);
  bw::gui::DetailsDialog details(p, host, &window);
  host.Attach(&window, &details);

  // The widgets start from the model's defaults before anything reads them back.
  host.ShowModel();
  bool started = false;
  host.Dispatch([&] { started = bw::StartProgram(p); });
  if (!started || host.quitting()) return 1;
  host.ShowModel();
  if (window.isHidden()) window.show();
  return app.exec();
}
