#pragma once

#include <QDir>
#include <QStringList>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavril {

/// The folder with the string tables that come with the program, or another one to try out.
inline QString stringsFolder() {
  return qEnvironmentVariable("TAVRIL_TEST_STRINGS", QStringLiteral(TAVRIL_STRINGS));
}

/// The languages that have a string table in the folder, found anew at every run, so that a table that is
/// added is tested without anybody naming it here. A folder without any is a failure of whoever asks.
inline std::vector<std::string> shippedLanguages() {
  std::vector<std::string> languages;
  const QStringList files =
      QDir(stringsFolder()).entryList({QStringLiteral("*.strings")}, QDir::Files, QDir::Name);
  for (const QString &file : files) languages.push_back(file.chopped(8).toStdString());
  return languages;
}

/// The language as part of a test's name.
inline std::string languageTestName(const testing::TestParamInfo<std::string> &parameter) {
  return QString::fromStdString(parameter.param).remove(u'-').toStdString();
}

}  // namespace tavril
