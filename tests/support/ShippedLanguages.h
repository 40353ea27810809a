#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QStringList>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavril {

/// The folder with the string tables that come with the program, or another one to try out. Needs the
/// application object.
inline QString stringsFolder() {
  return qEnvironmentVariable("TAVRIL_TEST_STRINGS",
                              QCoreApplication::applicationDirPath() + QStringLiteral("/strings"));
}

/// The languages that have a string table in the folder, by name, found anew at every run, so that a table
/// that is added is tested without anybody naming it here. A folder without any is a failure of whoever asks.
inline QStringList shippedLanguages() {
  QStringList languages;
  const QStringList files =
      QDir(stringsFolder()).entryList({QStringLiteral("*.strings")}, QDir::Files, QDir::Name);
  for (const QString &file : files) languages.append(file.section(u'.', 0, 0));
  return languages;
}

/// The same as parameters of a test, which GoogleTest prints readably only so.
inline std::vector<std::string> languageParameters() {
  std::vector<std::string> languages;
  for (const QString &language : shippedLanguages()) languages.push_back(language.toStdString());
  return languages;
}

/// The language as part of a test's name, within the letters that GoogleTest allows there.
inline std::string languageTestName(const testing::TestParamInfo<std::string> &parameter) {
  return QString::fromStdString(parameter.param).remove(u'-').toStdString();
}

}  // namespace tavril
