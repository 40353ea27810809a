#pragma once

#include <QCoreApplication>
#include <QDir>

#include <gtest/gtest.h>

namespace tavril {

/// Where the string tables lie that come with the program. Needs the application object.
inline QDir shippedStringsFolder() {
  return QDir(QCoreApplication::applicationDirPath() + QStringLiteral("/strings"));
}

/// The languages of the tables that come with the program, in the order of their names.
inline QStringList shippedLanguages() {
  QStringList languages;
  for (const QString &name :
       shippedStringsFolder().entryList({QStringLiteral("*.strings")}, QDir::Files, QDir::Name)) {
    languages.append(name.section(u'.', 0, 0));
  }
  return languages;
}

/// Names a test after the language that is its parameter, within the letters that GoogleTest allows there.
inline std::string languageTestName(const testing::TestParamInfo<QString> &language) {
  return QString(language.param).remove(u'-').toStdString();
}

}  // namespace tavril
