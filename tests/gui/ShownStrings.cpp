#include "tests/gui/ShownStrings.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace tavril {

namespace {

class Collector {
 public:
  void take(const QWidget &widget) {
    const QString where = QString::fromLatin1(widget.metaObject()->className()) + u' ' + widget.objectName();
    // Whatever is called a text: labels, buttons, fields, titles.
    for (const char *name : {"text", "plainText", "title", "windowTitle", "toolTip", "statusTip", "whatsThis",
                             "placeholderText", "accessibleName", "accessibleDescription", "currentText"}) {
      add(where + u' ' + QString::fromLatin1(name), widget.property(name).toString());
    }
    if (const auto *box = qobject_cast<const QComboBox *>(&widget)) {
      for (int i = 0; i < box->count(); ++i) add(where, box->itemText(i));
    }
    const auto actions = widget.actions();
    for (const QAction *action : actions) take(*action);
  }

  std::vector<ShownString> found;

 private:
  void take(const QAction &action) {
    if (action.objectName().startsWith(u"language_")) return;
    add(QStringLiteral("action"), action.text());
    add(QStringLiteral("action's tool tip"), action.toolTip());
  }
  void add(const QString &where, const QString &text) {
    if (!text.isEmpty()) found.push_back({where, text});
  }
};

}  // namespace

std::vector<ShownString> shownStrings() {
  Collector collector;
  const auto widgets = QApplication::allWidgets();
  for (const QWidget *widget : widgets) collector.take(*widget);
  return collector.found;
}

}  // namespace tavril
