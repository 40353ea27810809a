#include "platform/linux/ProcProcesses.h"

#include "platform/PrintableText.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileInfoList>
#include <QIODevice>

#include <algorithm>

#include <unistd.h>

namespace tavril {

namespace {

QString nameOf(const QString &processFolder) {
  QFile file(processFolder + QStringLiteral("/comm"));
  return file.open(QIODevice::ReadOnly) ? printableText(QString::fromLocal8Bit(file.readAll()).trimmed())
                                        : QString();
}

/// Whether the descriptor is the other end of the pseudo-terminal. Having it open keeps nobody from using
/// this end.
bool isOtherEnd(const QString &processFolder, const QFileInfo &descriptor, const QString &terminal) {
  if (!descriptor.symLinkTarget().endsWith(u"/ptmx")) return false;
  QFile file(processFolder + QStringLiteral("/fdinfo/") + descriptor.fileName());
  if (!file.open(QIODevice::ReadOnly)) return false;
  const QString index = QStringLiteral("tty-index:\t") + terminal.section(u'/', -1);
  return QString::fromLatin1(file.readAll()).split(u'\n').contains(index);
}

bool holds(const QString &processFolder, const QString &file) {
  const QFileInfoList open = QDir(processFolder + QStringLiteral("/fd"))
                                 .entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
  const bool hasIt = std::ranges::any_of(
      open, [&](const QFileInfo &descriptor) { return descriptor.symLinkTarget() == file; });
  return hasIt && std::ranges::none_of(open, [&](const QFileInfo &descriptor) {
           return isOtherEnd(processFolder, descriptor, file);
         });
}

}  // namespace

std::vector<RunningProcess> ProcProcesses::all() const {
  std::vector<RunningProcess> processes;
  for (const QString &entry : QDir(folder_).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort)) {
    bool isProcess = false;
    const int id = entry.toInt(&isProcess);
    if (isProcess) processes.push_back({id, {}});
  }
  std::ranges::sort(processes, {}, &RunningProcess::id);
  return processes;
}

std::vector<RunningProcess> ProcProcesses::holding(const QString &path) const {
  std::vector<RunningProcess> holders;
  const QString wanted = QFileInfo(path).canonicalFilePath();
  if (wanted.isEmpty()) return holders;
  for (RunningProcess &process : all()) {
    const QString folder = folder_ + u'/' + QString::number(process.id);
    if (!holds(folder, wanted)) continue;
    process.name = nameOf(folder);
    holders.push_back(process);
  }
  return holders;
}

std::vector<RunningProcess> ProcProcesses::named(const QStringList &names) const {
  std::vector<RunningProcess> found;
  for (RunningProcess &process : all()) {
    process.name = nameOf(folder_ + u'/' + QString::number(process.id));
    if (names.contains(process.name)) found.push_back(process);
  }
  return found;
}

bool ProcProcesses::seesAll() const {
  return ::geteuid() == 0;
}

int ProcProcesses::own() const {
  return ::getpid();
}

}  // namespace tavril
