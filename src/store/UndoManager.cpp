#include "store/UndoManager.h"

#include <utility>

namespace tavril {

void UndoManager::registerUndo(Step inverse) {
  if (doing_ == Doing::Undo) {
    redo_.push_back(std::move(inverse));
    return;
  }
  undo_.push_back(std::move(inverse));
  if (doing_ == Doing::Something) redo_.clear();
}

void UndoManager::undo() {
  take(undo_, Doing::Undo);
}

void UndoManager::redo() {
  take(redo_, Doing::Redo);
}

void UndoManager::take(std::vector<Step> &steps, Doing doing) {
  if (steps.empty() || doing_ != Doing::Something) return;
  const Step step = std::move(steps.back());
  steps.pop_back();
  doing_ = doing;
  step();
  doing_ = Doing::Something;
}

}  // namespace tavril
