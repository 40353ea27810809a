#pragma once

#include "editor/MainScreen.h"
#include "editor/MsgPanel.h"
#include "editor/PanelBackdrop.h"
#include "editor/WaitPanel.h"
#include "editor/WidgetElement.h"
#include "look/Style.h"
#include "platform/linux/StringTables.h"
#include "tests/editor/LabelTexts.h"
#include "tests/support/ActiveWindow.h"
#include "tests/support/RecordingLog.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace tavril {

inline constexpr const char *buttonNames[]{"relax", "capture", "motor_set", "read", "detail_set"};

/// The main screen with both panels, dressed and with the texts of a language that came with the program.
class ShippedScreen {
 public:
  explicit ShippedScreen(const QString &language = QStringLiteral("en")) {
    EXPECT_TRUE(strings.setLanguage(language));
    screen.setTexts(strings);
    for (const auto &[name, key] : labelTexts) {
      setText(name, key);
      Style::setLabelSize(widget(name), strings.text(u"fontsize").toDouble());
    }
    setText("ConnectStatus", u"Not_connect");
    setText("errormsg", u"Please_choose_COM_Port_and_Connect_to_device");

    auto *msg = new MsgPanel;
    msg->setTexts(strings);
    widget<PanelBackdrop>("ContrainerView_MsgView").setPanel(msg);
    auto *wait = new WaitPanel;
    wait->setTexts(strings);
    widget<PanelBackdrop>("ContrainerView_WaitView").setPanel(wait);
    setText("MsgTittle", u"warning");
    setText("MsgContent", u"reset");
    setText("cancel_lab", u"CancelBT");
    setText("ok_lab", u"Confirm");
    setText("WaitTittle", u"Confirm");
    setText("WaitContent", u"Please_check_device_is_ready");
    setText("cancel", u"CancelBT");
  }

  /// Shows it and makes it the active window.
  void show() {
    screen.show();
    makeActive(&screen);
  }

  template <typename Widget = QWidget>
  Widget &widget(const QString &name) {
    auto *found = screen.findChild<Widget *>(name);
    if (!found) throw std::runtime_error("no such element: " + name.toStdString());
    return *found;
  }

  void setText(const QString &name, QStringView key) {
    WidgetElement::over(widget(name))->setText(strings.text(key));
  }

  /// Dresses the program before there is any widget, as the program itself does.
  struct Dressed {
    Dressed() {
      static const bool once = [] {
        Style::apply(*static_cast<QApplication *>(QCoreApplication::instance()));
        return true;
      }();
      EXPECT_TRUE(once);
    }
  };

  Dressed dressed;
  RecordingLog log;
  StringTables strings{StringTables::standardFolders().mid(0, 1), log};
  MainScreen screen;
};

}  // namespace tavril
