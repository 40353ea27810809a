#pragma once

#include <QString>
#include <QStringList>

namespace tavril {

/// The diagnostic log. Its lines carry no behaviour. Thread-safe.
class Log {
 public:
  virtual ~Log() = default;

  virtual void write(const QString &line) = 0;
  /// What has gone wrong. A log that does not tell it from the rest writes it like any line.
  virtual void warn(const QString &line) { write(line); }
  /// Whether lines are kept at all; where they are costly to make, ask first.
  virtual bool isEnabled() const { return true; }
};

/// How a list stands in a log line: "(255, 7, 145)".
inline QString listText(const QStringList &items) {
  return u'(' + items.join(QStringLiteral(", ")) + u')';
}

}  // namespace tavril
