#pragma once

#include "platform/ErrorPresenter.h"

namespace tavril {

class ModalAlert;

/// Shows an error as a modal alert with one button: its description, its reason, and what lay beneath it.
/// That solves nothing.
class AlertErrorPresenter final : public ErrorPresenter {
 public:
  /// `alert` must outlive the presenter.
  explicit AlertErrorPresenter(ModalAlert &alert) : alert_(alert) {}

  bool present(const Error &error) override;

 private:
  ModalAlert &alert_;
};

}  // namespace tavril
