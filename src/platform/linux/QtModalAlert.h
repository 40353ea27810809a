#pragma once

#include "platform/ModalAlert.h"

namespace tavril {

class QtMainQueue;

/// The alert as a Qt message box, application modal, over the active window if there is one. It holds the
/// main queue while it is up. Escape, closing the box and quitting the program all answer with the last
/// button.
class QtModalAlert final : public ModalAlert {
 public:
  /// `queue` must outlive the alert service.
  explicit QtModalAlert(QtMainQueue &queue);

  int run(const AlertContent &content) override;

 private:
  QtMainQueue &queue_;
};

}  // namespace tavril
