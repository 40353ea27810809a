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

/// The running programs, as far as this one may see them. Any thread may call it.
class Processes {
 public:
  virtual ~Processes() = default;

  /// Those that have the file open, in the order of their numbers. Links to the file are followed. The
  /// program at the other end of a pseudo-terminal does not count, even if it has this end open as well.
  virtual std::vector<RunningProcess> holding(const QString &path) const = 0;
  /// Those with one of these names.
  virtual std::vector<RunningProcess> named(const QStringList &names) const = 0;
  /// Whether the open files of other users' programs are visible as well.
  virtual bool seesAll() const = 0;
  /// The number of this program.
  virtual int own() const = 0;
};

}  // namespace tavril
