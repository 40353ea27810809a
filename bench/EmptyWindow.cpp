// What a program with Qt's widgets costs that does nothing: one window, of the editor's size.
#include <QApplication>
#include <QWidget>

int main(int argc, char **argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.resize(1024, 768);
  window.show();
  return QApplication::exec();
}
