#pragma once

#include "platform/Log.h"

#include <QLoggingCategory>
#include <QString>

namespace tavril {

/// The log in Qt's logging category "tavril" at debug level. Silent unless TAVRIL_LOG is set in the
/// environment (to anything but "0") or Qt's logging rules switch the category on. Thread-safe.
class StreamLog final : public Log {
 public:
  StreamLog();

  void write(const QString &line) override;
  bool isEnabled() const override { return category_.isDebugEnabled(); }

  /// The line as it is printed: control characters escaped, so that a name which came from a device can
  /// neither steer the terminal nor pass for a line of its own. The later lines of an entry are indented.
  static QString printable(const QString &line);

 private:
  QLoggingCategory category_;
};

}  // namespace tavril
