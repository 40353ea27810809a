#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril {
struct RegisterRow;
}

namespace tavril::cli {

class Console;
struct Session;

/// A value for a setting, within its range.
struct Assignment {
  const RegisterRow *row = nullptr;
  int value = 0;
};

/// The registers with these names or numbers; all twenty for none. Throws a Failure for what is no register.
std::vector<const RegisterRow *> registersNamed(const QStringList &names);
/// The assignments "kp=440", all of them checked. Throws a Failure that names every one that is wrong.
std::vector<Assignment> assignmentsFrom(const QStringList &texts);

/// The commands themselves; each throws a Failure when it fails.
void tellDetection(Session &session);
void readRegisters(Session &session, const std::vector<const RegisterRow *> &rows, bool json);
void writeRegisters(Session &session, const std::vector<Assignment> &assignments);
/// What writeRegisters() would send.
void showFrames(Console &console, const std::vector<Assignment> &assignments);

}  // namespace tavril::cli
