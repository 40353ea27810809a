#pragma once

#include "platform/FilePanels.h"

#include <QString>

class QFileDialog;

namespace tavril {

class QtMainQueue;

/// The panels as Qt file dialogs, application modal, over the active window if there is one. They hold the
/// main queue while they are up, and begin in the folder in which the one before ended, the first in the
/// user's documents folder. For opening it is the desktop's own dialog where it offers one.
class QtFilePanels final : public FilePanels {
 public:
  /// `queue` must outlive the panels.
  explicit QtFilePanels(QtMainQueue &queue);

  Choice runOpenPanel(const Content &content) override;
  Choice runSavePanel(const Content &content) override;

 private:
  void prepare(QFileDialog &dialog, const Content &content) const;

  QtMainQueue &queue_;
  QString folder_;
};

}  // namespace tavril
