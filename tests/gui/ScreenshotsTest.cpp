// Takes a picture of everything that the program can show, in each language. The pictures go to the folder
// that the environment variable TAVRIL_SCREENSHOTS names, which is what tools/screenshots does; else nowhere.
#include "tests/gui/ScreenTour.h"

#include <QDir>
#include <QPainter>

#include <cmath>
#include <map>

namespace tavril {
namespace {

class Screenshots : public ScreenTour {
 protected:
  void take(const QString &name, QWidget &screen) {
    const QImage picture = screen.grab().toImage();
    ASSERT_FALSE(picture.isNull()) << name.toStdString();
    for (const auto &[other, taken] : pictures_) {
      EXPECT_NE(picture, taken) << name.toStdString() << " looks like " << other.toStdString();
    }
    pictures_[name] = picture;
  }

  /// All pictures of the language on one sheet, to be looked at at a glance.
  QImage contactSheet() const {
    constexpr int columns = 4;
    constexpr QSize cell{512, 396};
    constexpr int gap = 12;
    const int rows = int(std::ceil(double(pictures_.size()) / columns));
    QImage sheet(columns * (cell.width() + gap) + gap, rows * (cell.height() + gap) + gap,
                 QImage::Format_RGB32);
    sheet.fill(QColor(0x60, 0x60, 0x60));
    QPainter painter(&sheet);
    int place = 0;
    for (const auto &[name, picture] : pictures_) {
      QImage small = picture;
      small.setDevicePixelRatio(1);
      if (small.width() > cell.width() || small.height() > cell.height()) {
        small = small.scaled(cell, Qt::KeepAspectRatio, Qt::SmoothTransformation);
      }
      const int x = gap + place % columns * (cell.width() + gap);
      const int y = gap + place / columns * (cell.height() + gap);
      painter.drawImage(x + (cell.width() - small.width()) / 2, y + (cell.height() - small.height()) / 2,
                        small);
      ++place;
    }
    return sheet;
  }

  void save() const {
    const QString folder = qEnvironmentVariable("TAVRIL_SCREENSHOTS");
    if (folder.isEmpty()) return;
    const QDir ofLanguage(folder + u'/' + language());
    ASSERT_TRUE(ofLanguage.mkpath(QStringLiteral(".")));
    for (const auto &[name, picture] : pictures_) {
      EXPECT_TRUE(picture.save(ofLanguage.filePath(name + QStringLiteral(".png")))) << name.toStdString();
    }
    EXPECT_TRUE(contactSheet().save(folder + QStringLiteral("/all-") + language() + QStringLiteral(".png")));
  }

  std::map<QString, QImage> pictures_;
};

INSTANTIATE_TEST_SUITE_P(Languages, Screenshots, testing::ValuesIn(languageParameters()), languageTestName);

TEST_P(Screenshots, EverythingThatCanBeShownHasItsPicture) {
  tour([this](const QString &name, QWidget &screen) { take(name, screen); });
  EXPECT_GE(pictures_.size(), 18u);
  save();
}

}  // namespace
}  // namespace tavril
