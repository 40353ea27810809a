#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QString>

#include <gtest/gtest.h>

namespace tavril {

/// Makes a file with this content, and the folders above it.
inline void writeFile(const QString &path, const QByteArray &bytes) {
  ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path())) << qPrintable(path);
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
  ASSERT_EQ(file.write(bytes), bytes.size()) << qPrintable(path);
}

/// "(unreadable)" if there is no file or it cannot be read.
inline QByteArray contentOf(const QString &path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

}  // namespace tavril
