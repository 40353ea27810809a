#pragma once

#include "platform/Log.h"
#include "platform/linux/StreamLog.h"
#include "platform/linux/SystemLog.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace tavril {

/// The log of a program. It goes to the log of the machine; with TAVRIL_LOG=1 in the environment (anything
/// but "0") to the standard error output as well, with TAVRIL_LOG=0 nowhere. Thread-safe.
class ProgramLog final : public Log {
 public:
  /// `identifier` and `path` as for SystemLog.
  explicit ProgramLog(const QByteArray &identifier, const QByteArray &path = SystemLog::standardPath);

  void write(const QString &line) override;
  void warn(const QString &line) override;
  bool isEnabled() const override { return system_.has_value(); }

 private:
  std::optional<SystemLog> system_;
  std::optional<StreamLog> stream_;
};

}  // namespace tavril
