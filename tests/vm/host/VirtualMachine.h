#pragma once

#include "tests/vm/host/Adapter.h"
#include "tests/vm/host/Control.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <chrono>
#include <memory>
#include <vector>

namespace tavril::vm {

/// A computer that boots a real kernel, runs tests of ours and switches itself off, emulated in software. It
/// has a USB host controller with two places for adapters. Main thread only; the machine goes with the
/// object.
class VirtualMachine {
 public:
  static constexpr int adapterCount = 2;

  /// `image` is the folder that make-image filled.
  explicit VirtualMachine(const QString &image);
  ~VirtualMachine();
  VirtualMachine(const VirtualMachine &) = delete;
  VirtualMachine &operator=(const VirtualMachine &) = delete;

  /// Boots and runs the tests that the filter of GoogleTest names, until the machine is off. False when that
  /// is not within the time.
  bool run(const QString &tests, std::chrono::milliseconds timeLimit);

  const Control &control() const { return control_; }
  /// All that the machine wrote to its console, and what the emulator had to say.
  const QString &console() const { return console_; }

 private:
  QString socket(const QString &name) const { return sockets_.filePath(name); }
  QStringList arguments(const QString &tests) const;
  void hear();

  const QString image_;
  QTemporaryDir sockets_;
  std::vector<std::unique_ptr<Adapter>> adapters_;
  Control control_;
  QProcess emulator_;
  QString console_;
};

}  // namespace tavril::vm
