// What a program with Qt's widgets costs that does nothing: one window, of the editor's size.
//   empty-window [MILLISECONDS]   with a timer of this interval, that does nothing either
#include <QApplication>
#include <QTimer>
#include <QWidget>

int main(int argc, char **argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.resize(1024, 768);
  QTimer timer;
  timer.setTimerType(Qt::PreciseTimer);
  if (argc > 1) timer.start(QString::fromLocal8Bit(argv[1]).toInt());
  window.show();
  return QApplication::exec();
}
