#include "editor/windows/About.h"
#include "tests/support/PlainElement.h"
#include "tests/support/TestDesktop.h"

#include <QColor>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace tavril {
namespace {

using testing::ElementsAre;

/// Notes each text in the order in which it is set.
class NotedElement final : public ScreenElement {
 public:
  NotedElement(QString name, QStringList &notes) : name_(std::move(name)), notes_(notes) {}
  QString text() const override { return text_; }
  void setText(const QString &text) override {
    text_ = text;
    notes_.append(name_ + u'=' + text);
  }
  bool isEnabled() const override { return true; }
  void setEnabled(bool) override {}
  bool isHidden() const override { return false; }
  void setHidden(bool) override {}
  QString toolTip() const override { return {}; }
  void setToolTip(const QString &) override {}
  QString identifier() const override { return {}; }

 private:
  QString name_;
  QString text_;
  QStringList &notes_;
};

class FakeAboutView final : public AboutView {
 public:
  ScreenElement &element(QStringView name) override {
    return elements_.try_emplace(name.toString(), name.toString(), notes).first->second;
  }
  void setTitle(const QString &title) override { notes.append(QStringLiteral("title=") + title); }
  void setWindowBackground(const QColor &color) override { background = color; }

  QStringList notes;
  QColor background = Qt::white;

 private:
  std::map<QString, NotedElement> elements_;
};

class AboutTest : public testing::Test {
 protected:
  QStringList filledWith(const InformationDictionary &information) {
    About about(view_, fakes_.desktop, information);
    about.viewDidLoad();
    return view_.notes;
  }

  TestDesktop fakes_;
  FakeAboutView view_;
};

TEST_F(AboutTest, FillsItsTitleItsVersionAndItsContentInThisOrder) {
  EXPECT_THAT(filledWith({{"CFBundleShortVersionString", "1.2.3"}, {"CFBundleName", "no"}}),
              ElementsAre("title=[about]", "abouttitle=[about]", "versionlab=Version 1.2.3",
                          "aboutContent=[about_content]"));
}

TEST_F(AboutTest, WithoutAVersionInTheDictionaryTheLabelShowsVersionAndTheTextForAMissingObject) {
  EXPECT_THAT(filledWith({}), ElementsAre("title=[about]", "abouttitle=[about]", "versionlab=Version (null)",
                                          "aboutContent=[about_content]"));
}

TEST_F(AboutTest, TheWordVersionIsNotLookedUp) {
  fakes_.strings.texts.insert("Version", "no");
  EXPECT_TRUE(filledWith({{"CFBundleShortVersionString", "%@ 1"}}).contains("versionlab=Version %@ 1"));
}

TEST_F(AboutTest, TheWindowIsBlackAfterEveryLayoutPassWhateverWasSetBefore) {
  About about(view_, fakes_.desktop, {});
  for (const QColor before : {Qt::white, Qt::red, Qt::transparent}) {
    view_.background = before;
    about.viewWillLayout();
    EXPECT_EQ(view_.background, QColor(Qt::black));
  }
}

TEST_F(AboutTest, LoadingAloneDoesNotPaintTheWindow) {
  About(view_, fakes_.desktop, {}).viewDidLoad();
  EXPECT_EQ(view_.background, QColor(Qt::white));
}

}  // namespace
}  // namespace tavril
