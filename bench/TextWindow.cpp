// What a program with Qt's widgets costs that shows a text in each of the editor's two faces: the empty
// window draws no letter, and so looks for no font.
#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>
#include <QWidget>

int main(int argc, char **argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.resize(1024, 768);
  auto *layout = new QVBoxLayout(&window);
  for (const QStringList &families :
       {QStringList{QStringLiteral("Inter"), QStringLiteral("sans-serif")},
        QStringList{QStringLiteral("JetBrains Mono"), QStringLiteral("monospace")}}) {
    auto *label = new QLabel(QStringLiteral("1023"));
    QFont font = label->font();
    font.setFamilies(families);
    font.setPixelSize(13);
    label->setFont(font);
    layout->addWidget(label);
  }
  window.show();
  return QApplication::exec();
}
