// burstwright: the desktop program. Runs the core's start-up (library
// discovery, lists, window state) over the program's own folder and hands over
// to Qt's event loop; every later action is an event handler of the core.
#include <QApplication>
#include <QStringList>

#include "desktop_program.h"
#include "form_binder.h"
#include "runtime/files.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Burstwright"));
  // Quitting is the core's decision (it closes the database first).
  QApplication::setQuitOnLastWindowClosed(false);

  QStringList arguments = QApplication::arguments();
  arguments.removeFirst();
  bw::gui::DesktopProgram program;
  if (!program.Start(bw::ExecutableFolder(), bw::gui::FromQt(arguments.join(QLatin1Char(' '))))) return 1;
  return app.exec();
}
