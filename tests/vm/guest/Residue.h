#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <chrono>

namespace tavril::vm {

/// What a process holds: its descriptors with what they lead to, and its threads.
class Residue {
 public:
  /// Of this process, or of the one with this number, as it is now.
  static Residue now(qint64 process = 0);

  int threads() const { return static_cast<int>(threadNames_.size()); }
  QString threadNames() const { return threadNames_.join(QStringLiteral(", ")); }
  /// A descriptor leads to this path.
  bool holds(const QString &path) const { return descriptors_.values().contains(path); }
  /// The descriptors that are open here and not there, with what they lead to.
  QString openedSince(const Residue &before) const;

  /// The processor time that a process has used, all threads together.
  static std::chrono::milliseconds processorTime(qint64 process = 0);

 private:
  QMap<QString, QString> descriptors_;
  QStringList threadNames_;
};

}  // namespace tavril::vm
