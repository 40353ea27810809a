#pragma once

#include "doctor/Result.h"

#include <QWidget>

#include <optional>

class QLabel;
class QPushButton;

namespace tavril {

class DoctorMark;
class StringTable;

/// One check in the doctor's window: how it went, what was found, what to do, and a command to copy.
class DoctorRow final : public QWidget {
  Q_OBJECT

 public:
  explicit DoctorRow(doctor::CheckId check, QWidget *parent = nullptr);

  /// Not checked yet.
  void clear();
  void setRunning();
  void setResult(const doctor::Result &result);
  const std::optional<doctor::Result> &result() const { return result_; }
  /// Sets all texts. Called again when the language has changed.
  void setTexts(const StringTable &strings);

 private:
  const doctor::CheckId check_;
  std::optional<doctor::Result> result_;
  bool isRunning_ = false;
  DoctorMark *mark_;
  QLabel *title_;
  QLabel *state_;
  QLabel *finding_;
  QLabel *advice_;
  QWidget *remedy_;
  QLabel *command_;
  QPushButton *copy_;
};

}  // namespace tavril
