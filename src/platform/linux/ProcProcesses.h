#pragma once

#include "platform/Processes.h"

#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace tavril {

/// The programs as /proc shows them.
class ProcProcesses final : public Processes {
 public:
  explicit ProcProcesses(QString folder = QStringLiteral("/proc")) : folder_(std::move(folder)) {}

  std::vector<RunningProcess> holding(const QString &path) const override;
  std::vector<RunningProcess> named(const QStringList &names) const override;
  bool seesAll() const override;
  int own() const override;

 private:
  std::vector<RunningProcess> all() const;

  const QString folder_;
};

}  // namespace tavril
