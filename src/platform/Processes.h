#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril {

struct RunningProcess {
  int id = 0;
  QString name;

  /// "brltty (1234)"
  QString label() const { return QStringLiteral("%1 (%2)").arg(name).arg(id); }
  bool operator==(const RunningProcess &) const = default;
};

/// The programs that run on the machine, as far as this one is allowed to see them. Any thread.
class Processes {
 public:
  virtual ~Processes() = default;

  /// Those that have the file open, by their numbers. Links to the file are followed. Who serves the other
  /// end of a pseudo-terminal does not count, though he may keep this one open, too.
  virtual std::vector<RunningProcess> holding(const QString &path) const = 0;
  /// Those of one of these names.
  virtual std::vector<RunningProcess> named(const QStringList &names) const = 0;
  /// Whether it can also be seen what other users' programs have open.
  virtual bool seesAll() const = 0;
  /// The number of this program.
  virtual int own() const = 0;
};

}  // namespace tavril
