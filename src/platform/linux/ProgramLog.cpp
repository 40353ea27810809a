#include "platform/linux/ProgramLog.h"

namespace tavril {

ProgramLog::ProgramLog(const QByteArray &identifier, const QByteArray &path) {
  if (qgetenv("TAVRIL_LOG") == "0") return;
  system_.emplace(identifier, path);
  stream_.emplace();
}

void ProgramLog::write(const QString &line) {
  if (system_) system_->write(line);
  if (stream_) stream_->write(line);
}

void ProgramLog::warn(const QString &line) {
  if (system_) system_->warn(line);
  if (stream_) stream_->warn(line);
}

}  // namespace tavril
