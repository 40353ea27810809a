#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <string_view>

namespace tavril {

/// The diagnostic log. No behaviour depends on it. Thread-safe.
class Log {
 public:
  virtual ~Log() = default;

  virtual void write(const QString &line) = 0;
  /// Writes an error. A log without levels writes it like any line.
  virtual void warn(const QString &line) { write(line); }
  /// Whether lines are kept. Ask first if they are costly to make.
  virtual bool isEnabled() const { return true; }
};

/// The log for a room that knows no Qt.
inline std::function<void(std::string_view)> linesTo(Log &log) {
  return [&log](std::string_view line) {
    log.write(QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())));
  };
}

/// A list in a log line: "(255, 7, 145)".
inline QString listText(const QStringList &items) {
  return u'(' + items.join(QStringLiteral(", ")) + u')';
}

}  // namespace tavril
