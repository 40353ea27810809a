#pragma once

#include "tests/support/Program.h"

namespace tavril {

/// The command line tool. Its arguments may be given in one text, with blanks between them.
class CtlProgram : public Program {
 public:
  explicit CtlProgram(const QStringList &arguments) : Program(QStringLiteral(TAVRILCTL_PROGRAM), arguments) {}
  explicit CtlProgram(const QString &arguments) : CtlProgram(arguments.split(u' ', Qt::SkipEmptyParts)) {}

  /// What has the bridge at this path answer soon: it needs no time to start.
  static QString at(const QString &path) { return QStringLiteral(" --boot-wait 0 --port ") + path; }
  /// The same for replies that come in any case: with all the time that a busy machine may need for them.
  static QString patientlyAt(const QString &path) { return at(path) + QStringLiteral(" --timeout 60000"); }
};

}  // namespace tavril
