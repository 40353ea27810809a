#pragma once

#include <QDir>
#include <QStringList>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavril {

/// The languages that have a string table in the folder, found anew at every run, so that a table that is
/// added is tested without anybody naming it here. A folder without any is a failure of whoever asks.
inline std::vector<std::string> shippedLanguages(const QString &folder) {
  std::vector<std::string> languages;
  const QStringList files = QDir(folder).entryList({QStringLiteral("*.strings")}, QDir::Files, QDir::Name);
  for (const QString &file : files) languages.push_back(file.chopped(8).toStdString());
  return languages;
}

/// The language as part of a test's name.
inline std::string languageTestName(const testing::TestParamInfo<std::string> &parameter) {
  return QString::fromStdString(parameter.param).remove(u'-').toStdString();
}

}  // namespace tavril
