#include <QTest>
class GuiTest : public QObject { Q_OBJECT };
QTEST_MAIN(GuiTest)
#include "gui_test.moc"
