// The language is changed while the program runs, in each state of the window.
#include "editor/AboutWindow.h"
#include "editor/ConnectionLine.h"
#include "platform/StringTableFile.h"
#include "tests/gui/GuiBench.h"
#include "tests/gui/ShownStrings.h"

#include <QAction>
#include <QFile>
#include <QFontInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSet>

namespace tavril {
namespace {

class LanguageSwitch : public GuiBench {
 protected:
  LanguageSwitch() {
    QFile file(QStringLiteral(TAVRIL_STRINGS "/en.strings"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    keys_ = StringTableFile::parse(file.readAll()).entries().keys();
    EXPECT_GT(keys_.size(), 100);
    EXPECT_GE(strings.languages().size(), 2);
  }

  /// Goes to every language there is and back again, and looks at all that is shown each time.
  void tourTheLanguages() {
    QStringList tour = strings.languages();
    for (qsizetype i = tour.size() - 1; i >= 0; --i) tour.append(tour[i]);
    tour.append(QStringLiteral("en"));
    for (const QString &language : std::as_const(tour)) {
      const QString before = strings.language();
      if (language == before) continue;
      ASSERT_TRUE(languageChoice.choose(language));
      expectNothingIsLeftOf(before);
    }
  }

  void expectNothingIsLeftOf(const QString &before) {
    const StringTable &old = strings.table(before);
    QSet<QString> stale;
    QSet<QString> current;
    for (const QString &key : std::as_const(keys_)) {
      stale.insert(old.text(key));
      current.insert(strings.text(key));
    }
    stale.subtract(current);
    const QString oldBeginning = old.text(u"COM_Connect_P1");
    const QString newBeginning = strings.text(u"COM_Connect_P1");
    int looked = 0;
    for (const ShownString &shown : shownStrings()) {
      EXPECT_FALSE(stale.contains(shown.text))
          << qPrintable(before + QStringLiteral(" to ") + strings.language() + QStringLiteral(", ") +
                        shown.where + QStringLiteral(": ") + shown.text);
      EXPECT_TRUE(!shown.text.startsWith(oldBeginning) || shown.text.startsWith(newBeginning))
          << qPrintable(shown.text);
      ++looked;
    }
    EXPECT_GT(looked, 60);
    EXPECT_EQ(textOf("read"), strings.text(u"read"));
    EXPECT_EQ(find<QWidget>("read")->font().pixelSize(), strings.text(u"fontsize").toInt());
    EXPECT_EQ(window->windowTitle(), strings.text(u"tavril"));
    expectFacesOf(strings.language());
  }

  /// Every widget that shows texts, in whatever size, has the faces of the language.
  void expectFacesOf(const QString &language) {
    const QString face = Style::languageFont(language).families().value(1);
    int looked = 0;
    const auto widgets = QApplication::allWidgets();
    for (const QWidget *widget : widgets) {
      const QStringList families = widget->font().families();
      const bool isDesktop =
          widget->windowType() == Qt::Desktop;  // which Qt makes for itself and never shows
      if (isDesktop || families.value(0) != u"Inter") continue;
      EXPECT_EQ(families.value(1).toStdString(), face.toStdString())
          << widget->metaObject()->className() << ' ' << widget->objectName().toStdString();
      ++looked;
    }
    EXPECT_GT(looked, 60);
  }

  QAction *entry(const QString &language) {
    for (QMenu *menu : window->menuBar()->findChildren<QMenu *>()) {
      for (QAction *action : menu->actions()) {
        if (action->objectName() == QStringLiteral("language_") + language) return action;
      }
    }
    return nullptr;
  }
  QMenu *languageMenu() {
    for (QMenu *menu : window->menuBar()->findChildren<QMenu *>()) {
      if (menu->title() == strings.text(u"language")) return menu;
    }
    return nullptr;
  }
  QStringList marked() {
    QStringList titles;
    const QList<QAction *> actions = languageMenu()->actions();
    for (const QAction *action : actions) {
      if (action->isChecked()) titles.append(action->text());
    }
    return titles;
  }

 private:
  QStringList keys_;
};

TEST_F(LanguageSwitch, WhenNotConnectedNoTextOfTheOldLanguageRemains) {
  tourTheLanguages();
  EXPECT_EQ(textOf("ConnectStatus"), strings.text(u"Not_connect"));
  EXPECT_EQ(textOf("errormsg"), strings.text(u"Please_choose_COM_Port_and_Connect_to_device"));
}

TEST_F(LanguageSwitch, WhenConnectedNoTextOfTheOldLanguageRemains) {
  connectToServo();
  controller().focusCame(u"NoticeMsg_kp");
  const QString value = textOf("sID_value");
  tourTheLanguages();
  ASSERT_TRUE(languageChoice.choose(QStringLiteral("zh-Hant")));
  EXPECT_EQ(textOf("ConnectStatus"), strings.text(u"COM_Connect_P1") + portName);
  EXPECT_EQ(find<QPlainTextEdit>("MsgView")->toPlainText(), strings.text(u"NoticeMsg_kp"));
  EXPECT_EQ(find<QWidget>("sID_value")->toolTip(), strings.text(u"ToolTip_sid"));
  EXPECT_EQ(textOf("sID_value"), value);
}

TEST_F(LanguageSwitch, TheLampShowsTheStateInEveryLanguage) {
  const auto expectEverywhere = [this](ConnectionState connection) {
    const QStringList languages = strings.languages();
    for (const QString &language : languages) {
      ASSERT_TRUE(languageChoice.choose(language));
      EXPECT_EQ(find<ConnectionLine>("ConnectStatus")->state(), connection) << qPrintable(language);
    }
  };
  expectEverywhere(ConnectionState::NotConnected);
  connectToServo();
  expectEverywhere(ConnectionState::Connected);
  servo.unplug();
  ASSERT_TRUE(waitFor([this] { return state.connection == ConnectionState::NotConnected; }));
  expectEverywhere(ConnectionState::NotConnected);
}

TEST_F(LanguageSwitch, WhileTheWaitPanelIsUpAndAfterItsTimeNoTextOfTheOldLanguageRemains) {
  servo.withOptions([](simulator::Options &options) { options.mute = true; });
  shortcut(Qt::Key_P, Qt::ControlModifier);
  press(dialog->findChild<QWidget *>(QStringLiteral("doneBT")));
  ASSERT_TRUE(waitFor([this] { return state.ToolbarFlag.isEmpty() && wait.waits.size() == 2; }));
  ASSERT_TRUE(find<QWidget>("ContrainerView_WaitView")->isVisible());
  tourTheLanguages();
  EXPECT_EQ(textOf("WaitContent"), strings.text(u"Serial_port_start_initialization"));
  for (int second = 0; second < 30; ++second) controller().ConnectTimeout();
  tourTheLanguages();
  EXPECT_EQ(textOf("WaitContent"), strings.text(u"Please_check_device_is_ready"));
  EXPECT_TRUE(find<QWidget>("CloseButtonView")->isVisible());
}

TEST_F(LanguageSwitch, WhileAQuestionIsUpNoTextOfTheOldLanguageRemainsAndOkStillReboots) {
  connectToServo();
  shortcut(Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_TRUE(waitFor([this] { return find<QWidget>("ContrainerView_MsgView")->isVisible(); }));
  tourTheLanguages();
  ASSERT_TRUE(languageChoice.choose(QStringLiteral("zh-Hant")));
  EXPECT_EQ(textOf("MsgContent"), strings.text(u"reboot"));
  EXPECT_TRUE(find<QWidget>("ContrainerView_MsgView")->isVisible());
  clearTraffic();
  press("ok_lab");
  ASSERT_TRUE(waitFor([this] { return !trafficLines().filter(QStringLiteral("-> FF 04 94 FE")).isEmpty(); }));
}

TEST_F(LanguageSwitch, WhileThePortDialogIsOpenNoTextOfTheOldLanguageRemains) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  ASSERT_NE(dialog, nullptr);
  tourTheLanguages();
  ASSERT_TRUE(languageChoice.choose(QStringLiteral("zh-Hant")));
  EXPECT_EQ(dialog->windowTitle(), strings.text(u"port_setting"));
  EXPECT_TRUE(dialog->isVisible());
}

TEST_F(LanguageSwitch, WhileAboutAndTheLicenceAreOpenNoTextOfTheOldLanguageRemains) {
  choose(strings.text(u"about_tavril"));
  auto *about = window->findChild<AboutWindow *>();
  ASSERT_NE(about, nullptr);
  press(about->findChild<QWidget *>(QStringLiteral("licence")));
  tourTheLanguages();
  ASSERT_TRUE(languageChoice.choose(QStringLiteral("zh-Hant")));
  EXPECT_EQ(about->windowTitle(), strings.text(u"about"));
  EXPECT_EQ(about->findChild<QPlainTextEdit *>(QStringLiteral("aboutContent"))->toPlainText(),
            strings.text(u"about_content"));
}

TEST_F(LanguageSwitch, ScreensThatComeLaterHaveTheNewTexts) {
  ASSERT_TRUE(languageChoice.choose(QStringLiteral("zh-Hant")));
  shortcut(Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_TRUE(waitFor([this] { return alert.contents.size() == 1; }));
  EXPECT_EQ(alert.contents[0].informativeText, strings.text(u"Not_connect"));
  shortcut(Qt::Key_P, Qt::ControlModifier);
  ASSERT_NE(dialog, nullptr);
  expectNothingIsLeftOf(QStringLiteral("en"));
}

TEST_F(LanguageSwitch, TheMenuOffersEveryTableByItsOwnNameInItsOwnFace) {
  ASSERT_NE(languageMenu(), nullptr);
  for (const QString &language : strings.languages()) {
    QAction *action = entry(language);
    ASSERT_NE(action, nullptr) << qPrintable(language);
    EXPECT_EQ(action->text(), strings.table(language).text(u"language_name"));
    EXPECT_EQ(action->font(), Style::languageFont(language));
    EXPECT_TRUE(languageMenu()->actions().contains(action));
  }
  EXPECT_EQ(languageMenu()->actions().size(), strings.languages().size() + 2);
}

TEST_F(LanguageSwitch, TheMenuSwitchesAndMarksWhatHolds) {
  EXPECT_EQ(marked(), QStringList{strings.text(u"system_language")});
  entry(QStringLiteral("zh-Hant"))->trigger();
  EXPECT_EQ(strings.language(), QStringLiteral("zh-Hant"));
  EXPECT_EQ(marked(), QStringList{strings.text(u"language_name")});
  EXPECT_EQ(preferences.values.value(QStringLiteral("language")), QStringLiteral("zh-Hant"));
  ASSERT_TRUE(languageChoice.choose(QStringLiteral("en")));
  EXPECT_EQ(marked(), QStringList{QStringLiteral("English")});
  languageMenu()->actions().constFirst()->trigger();
  EXPECT_EQ(marked(), QStringList{strings.text(u"system_language")});
  EXPECT_TRUE(preferences.values.isEmpty());
}

/// The picture without the room round what is drawn, for the line's height is the first face's.
QImage shapeOf(const QImage &picture) {
  QRect inked;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      if (picture.pixel(x, y) != picture.pixel(0, 0)) inked |= QRect(x, y, 1, 1);
    }
  }
  EXPECT_FALSE(inked.isEmpty());
  return picture.copy(inked);
}

/// One character that each region draws in its own way, on a label of the program.
QImage drawn(const QFont &font) {
  QLabel label(QStringLiteral("\u9aa8"));
  label.setFont(font);
  label.resize(80, 80);
  return label.grab().toImage();
}

TEST_F(LanguageSwitch, ChineseCharactersHaveTheShapesOfTheLanguagesRegion) {
  QFont regional = Style::textFont(48);
  for (const auto &[language, face] :
       {std::pair{"ja", "Noto Sans CJK JP"}, std::pair{"zh-Hans", "Noto Sans CJK SC"},
        std::pair{"ko", "Noto Sans CJK KR"}, std::pair{"zh-Hant", "Noto Sans CJK TC"},
        std::pair{"zh-Hant-HK", "Noto Sans CJK HK"}, std::pair{"zh-CN", "Noto Sans CJK SC"},
        std::pair{"ja", "Noto Sans CJK JP"}}) {
    Style::setLanguage(QString::fromLatin1(language));
    const QImage shown = drawn(Style::textFont(48));
    regional.setFamilies({QString::fromLatin1(face)});
    EXPECT_EQ(QFontInfo(regional).family(), QString::fromLatin1(face));
    EXPECT_EQ(shapeOf(shown), shapeOf(drawn(regional))) << language;
  }
}

TEST_F(LanguageSwitch, EachRegionHasAShapeOfItsOwn) {
  std::vector<QImage> shapes;
  for (const char *language : {"ja", "zh-Hans", "zh-Hant"}) {
    shapes.push_back(shapeOf(drawn(Style::languageFont(QString::fromLatin1(language)))));
    for (std::size_t i = 0; i + 1 < shapes.size(); ++i) EXPECT_NE(shapes[i], shapes.back()) << language;
  }
}

}  // namespace
}  // namespace tavril
