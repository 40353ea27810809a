#include "tests/vm/guest/Residue.h"

#include <QDir>
#include <QFile>

#include <ctime>

namespace tavril::vm {

namespace {

QString folderOf(qint64 process) {
  return QStringLiteral("/proc/") + (process == 0 ? QStringLiteral("self") : QString::number(process));
}

}  // namespace

Residue Residue::now(qint64 process) {
  Residue residue;
  const QDir descriptors(folderOf(process) + QStringLiteral("/fd"));
  for (const QString &number :
       descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
    const QByteArray path = QFile::encodeName(descriptors.filePath(number));
    const QString target = QFile::symLinkTarget(QFile::decodeName(path));
    // The descriptor that lists them is gone by now.
    if (!target.isEmpty()) residue.descriptors_.insert(number, target);
  }
  const QDir threads(folderOf(process) + QStringLiteral("/task"));
  for (const QString &number : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
    QFile name(threads.filePath(number + QStringLiteral("/comm")));
    if (name.open(QIODevice::ReadOnly))
      residue.threadNames_.append(QString::fromUtf8(name.readAll()).trimmed());
  }
  return residue;
}

QString Residue::openedSince(const Residue &before) const {
  QStringList opened;
  for (auto [number, target] : descriptors_.asKeyValueRange()) {
    if (before.descriptors_.value(number) != target) opened.append(number + QStringLiteral(" -> ") + target);
  }
  return opened.join(QStringLiteral(", "));
}

std::chrono::milliseconds Residue::processorTime(qint64 process) {
  clockid_t clock = CLOCK_PROCESS_CPUTIME_ID;
  if (process != 0 && ::clock_getcpuclockid(static_cast<pid_t>(process), &clock) != 0) return {};
  timespec used{};
  ::clock_gettime(clock, &used);
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::seconds(used.tv_sec) +
                                                               std::chrono::nanoseconds(used.tv_nsec));
}

}  // namespace tavril::vm
