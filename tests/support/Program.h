#pragma once

#include "tests/support/WaitFor.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include <signal.h>

namespace tavril {

/// One of the system's programs, started as a user starts it. It runs from construction on, and no longer
/// than the object lives.
class Program {
 public:
  struct Outcome {
    int status = -1;  ///< -1: crashed, never started, or did not end
    std::string out;
    std::string err;
  };

  Program(const QString &path, const QStringList &arguments) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    environment.remove(QStringLiteral("LANGUAGE"));
    // Nor by what the user of this machine has chosen: no such folder.
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), QStringLiteral("/nonexistent"));
    // Nothing of a test is to stand in the log of this machine.
    environment.insert(QStringLiteral("TAVRIL_LOG"), QStringLiteral("0"));
    process_.setProcessEnvironment(environment);
    process_.start(path, arguments);
  }
  ~Program() {
    if (process_.state() == QProcess::NotRunning) return;
    process_.kill();
    process_.waitForFinished();
  }
  Program(const Program &) = delete;
  Program &operator=(const Program &) = delete;

  /// The first line on the standard output, empty when none comes.
  QString firstLine() {
    while (!process_.canReadLine()) {
      if (!process_.waitForReadyRead()) return {};
    }
    return QString::fromLocal8Bit(process_.readLine()).trimmed();
  }

  /// The same of the standard error output.
  QString firstErrorLine() {
    process_.setReadChannel(QProcess::StandardError);
    return firstLine();
  }

  qint64 processId() const { return process_.processId(); }
  /// Gives this to the standard input.
  void type(const QByteArray &bytes) { process_.write(bytes); }
  /// Waits until this has come on the standard output, behind what was waited for before.
  bool showsNext(const std::string &text) {
    return waitFor([&] {
      outcome_.out += process_.readAllStandardOutput().toStdString();
      const std::size_t found = outcome_.out.find(text, shown_);
      if (found != std::string::npos) shown_ = found + text.size();
      return found != std::string::npos;
    });
  }

  bool isRunning() const { return process_.state() != QProcess::NotRunning; }
  void terminate() { process_.terminate(); }
  void kill() { process_.kill(); }
  /// As Ctrl-C does.
  void interrupt() { ::kill(static_cast<pid_t>(process_.processId()), SIGINT); }

  /// Waits for the end. The longest run is a countdown, so this long without an end is a failure.
  const Outcome &outcome() {
    const bool ended = waitFor([this] { return !isRunning(); }, std::chrono::seconds(100));
    if (ended && process_.error() != QProcess::FailedToStart &&
        process_.exitStatus() == QProcess::NormalExit) {
      outcome_.status = process_.exitCode();
    }
    outcome_.out += process_.readAllStandardOutput().toStdString();
    outcome_.err += process_.readAllStandardError().toStdString();
    return outcome_;
  }

 private:
  QProcess process_;
  Outcome outcome_;
  std::size_t shown_ = 0;
};

/// The application.
class TavrilProgram : public Program {
 public:
  explicit TavrilProgram(const QStringList &arguments) : Program(QStringLiteral(TAVRIL_PROGRAM), arguments) {}

  static QStringList reportOf(const QString &port) {
    return {QStringLiteral("--report"), QStringLiteral("--json"), QStringLiteral("--port"), port};
  }

  /// What to have the shell run so that the program gets the streams named by `redirections`, such as ">&-".
  static QStringList redirected(const QString &redirections, const QStringList &arguments) {
    return QStringList{QStringLiteral("-c"), QStringLiteral("exec \"$0\" \"$@\" ") + redirections,
                       QStringLiteral(TAVRIL_PROGRAM)} +
           arguments;
  }
};

/// The virtual servo as a program of its own.
class ServoProgram : public Program {
 public:
  explicit ServoProgram(const QStringList &arguments)
      : Program(QStringLiteral(TAVRIL_SERVO_PROGRAM), arguments), path_(firstLine()) {}

  QString path() const { return path_; }

 private:
  QString path_;
};

/// The name that a terminal named by the user has in the list of ports.
inline std::string portName(const QString &path) {
  return "usbport-" + path.mid(5).replace(u'/', u'-').toStdString();
}

inline void expectSuccess(const Program::Outcome &outcome, const std::string &out) {
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

inline void expectComplaint(const Program::Outcome &outcome, const std::string &text, int status = 1) {
  EXPECT_EQ(outcome.err, "tavril: " + text + "\n");
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.status, status);
}

/// Makes an object of the kind named before the first test and keeps it until the last has run: what takes
/// seconds is under way meanwhile, and all of it at the same time.
template <typename Runs>
class StartedFirst {
 public:
  StartedFirst() { testing::AddGlobalTestEnvironment(new Keeper(runs_)); }
  Runs *operator->() { return runs_.get(); }

 private:
  struct Keeper : testing::Environment {
    explicit Keeper(std::unique_ptr<Runs> &kept) : runs(kept) {}
    void SetUp() override { runs = std::make_unique<Runs>(); }
    void TearDown() override { runs.reset(); }
    std::unique_ptr<Runs> &runs;
  };
  std::unique_ptr<Runs> runs_;
};

}  // namespace tavril
