#include "simulator/ServoModel.h"
#include "simulator/StateFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tavril::simulator {
namespace {

class StateFile : public testing::Test {
 protected:
  QString path(const char *name) const { return folder_.filePath(QString::fromLatin1(name)); }
  QString file(const QByteArray &content) {
    QFile file(path("servo.json"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return file.fileName();
  }
  bool loads(const QByteArray &content) { return loadState(file(content), servo_, &error_); }

  QTemporaryDir folder_;
  ServoModel servo_;
  QString error_;
};

TEST_F(StateFile, KeepsAllSettings) {
  ServoModel other;
  for (int number = 1; number <= 14; ++number) {
    ASSERT_TRUE(other.write(number, number == 2 || number == 3 || number == 4 ? 1 : 40));
  }
  ASSERT_TRUE(other.write(15, 0xFFF6));
  ASSERT_TRUE(saveState(path("servo.json"), stateText(other), &error_)) << error_.toStdString();
  ASSERT_TRUE(loadState(path("servo.json"), servo_, &error_)) << error_.toStdString();
  for (int number = 1; number <= 15; ++number) EXPECT_EQ(servo_.read(number), other.read(number)) << number;
}

TEST_F(StateFile, MayBeOneThatWasDumpedAndHaveSomeSettingsOnly) {
  EXPECT_TRUE(
      loads("{\"format\": \"tavril-servo-settings\", \"version\": 1, \"settings\": {\"kp\": {\"value\": 441,"
            " \"unit\": \"\", \"range\": [0, 32766]}, \"max_temperature\": 75, \"calibration_angle\": -3}}"))
      << error_.toStdString();
  EXPECT_EQ(servo_.read(registers::kp), 441);
  EXPECT_EQ(servo_.read(registers::maxTemperature), 75);
  EXPECT_EQ(servo_.read(registers::calibrationAngle), 0xFFFD);
  EXPECT_EQ(servo_.read(registers::ki), 10);
}

TEST_F(StateFile, ThatIsNoneIsRefusedWithTheReason) {
  EXPECT_FALSE(loads("{\"settings\": {\"kq\": 1}}"));
  EXPECT_TRUE(error_.endsWith(QStringLiteral(": \"kq\" is not a setting"))) << error_.toStdString();
  for (const char *value : {"40000", "-1", "1.5", "\"5\"", "{}", "null"}) {
    EXPECT_FALSE(loads(QByteArray("{\"settings\": {\"kp\": ") + value + "}}")) << value;
    EXPECT_TRUE(error_.endsWith(QStringLiteral(": the value of \"kp\" is not valid")))
        << error_.toStdString();
  }
  for (const char *content : {"", "{", "[]", "{}", "{\"settings\": 5}"})
    EXPECT_FALSE(loads(content)) << content;
  EXPECT_FALSE(loadState(path("missing"), servo_, &error_));
  EXPECT_FALSE(loadState(folder_.path(), servo_, &error_));
}

TEST_F(StateFile, IsNotSavedOverWhatIsNoRegularFile) {
  ASSERT_EQ(::mkfifo(qPrintable(path("pipe")), 0600), 0);
  EXPECT_FALSE(saveState(path("pipe"), "{}", &error_));
  EXPECT_FALSE(loadState(path("pipe"), servo_, &error_));
  EXPECT_TRUE(error_.endsWith(QStringLiteral("is not a regular file"))) << error_.toStdString();
  struct stat status {};
  ASSERT_EQ(::stat(qPrintable(path("pipe")), &status), 0);
  EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

}  // namespace
}  // namespace tavril::simulator
