#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril::wire {
struct Register;
}

namespace tavril::cli {

class Console;
struct Session;

/// A value for a setting, within its range.
struct Assignment {
  const wire::Register *row = nullptr;
  int value = 0;
};

/// How the changes of a command are made and told.
struct WriteMode {
  bool dryRun = false;  ///< only told
  bool force = false;   ///< also where it may hurt
  bool json = false;    ///< told as JSON
};

/// The registers with these names or numbers, each once; all twenty for none. Throws a Failure for what is no
/// register.
std::vector<const wire::Register *> registersNamed(const QStringList &names);
/// The assignments "kp=440", all of them checked. Throws a Failure that names every one that is wrong.
std::vector<Assignment> assignmentsFrom(const QStringList &texts);

/// The commands themselves; each throws a Failure when it fails.
void tellDetection(Session &session, bool json);
void readRegisters(Session &session, const std::vector<const wire::Register *> &rows, bool json);
/// Prints what has been changed, and that only once all of it is done.
void writeRegisters(Session &session, const std::vector<Assignment> &assignments, const WriteMode &mode);
/// Gives the servo this ID, and looks whether it can be found under it.
void setServoId(Session &session, const Assignment &id, const WriteMode &mode);
/// What writeRegisters() would send.
void showFrames(Console &console, const std::vector<Assignment> &assignments, bool json);

}  // namespace tavril::cli
