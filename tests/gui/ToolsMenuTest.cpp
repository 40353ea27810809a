#include "tests/gui/GuiBench.h"
#include "tools/ConverterWindow.h"
#include "tools/FileListWindow.h"

#include <QMenu>
#include <QMenuBar>

namespace tavril {
namespace {

class ToolsMenu : public GuiBench {
 protected:
  QMenu *menu() const {
    for (const QAction *action : window->menuBar()->actions()) {
      if (action->text() == strings.text(u"tool")) return action->menu();
    }
    return nullptr;
  }
};

TEST_F(ToolsMenu, OpensTheConverterAndTheList) {
  shortcut(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(window->findChildren<ConverterWindow *>().size(), 1);
  EXPECT_EQ(window->findChildren<FileListWindow *>().size(), 0);
  shortcut(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(window->findChildren<FileListWindow *>().size(), 1);
  EXPECT_EQ(window->findChildren<ConverterWindow *>().size(), 1);
}

TEST_F(ToolsMenu, NamesTheConverterAndTheListLast) {
  ASSERT_NE(menu(), nullptr);
  QStringList texts;
  for (const QAction *action : menu()->actions()) texts.append(action->text());
  EXPECT_EQ(texts, QStringList({strings.text(u"reboot_servo"), strings.text(u"reset_servo"), QString(),
                                strings.text(u"strings_converter"), strings.text(u"string_tables")}));
}

}  // namespace
}  // namespace tavril
