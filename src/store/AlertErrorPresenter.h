#pragma once

#include "store/ErrorPresenter.h"

namespace tavril {

class ModalAlert;

/// Shows an error in a modal alert with one button: its description, its reason and the underlying errors.
/// This never solves the error.
class AlertErrorPresenter final : public ErrorPresenter {
 public:
  explicit AlertErrorPresenter(ModalAlert &alert) : alert_(alert) {}

  bool present(const Error &error) override;

 private:
  ModalAlert &alert_;
};

}  // namespace tavril
