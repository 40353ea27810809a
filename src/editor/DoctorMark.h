#pragma once

#include "doctor/Result.h"

#include <QPaintEvent>
#include <QWidget>

#include <optional>

namespace tavril {

/// How a check went, as a sign that is told by its shape as well as by its colour.
class DoctorMark final : public QWidget {
  Q_OBJECT

 public:
  explicit DoctorMark(QWidget *parent = nullptr);

  /// Nothing for a check that is still to come.
  void setState(std::optional<doctor::State> state);
  void setRunning();

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  std::optional<doctor::State> state_;
  bool isRunning_ = false;
};

}  // namespace tavril
