#pragma once

#include <functional>
#include <vector>

namespace tavril {

/// Steps that can be taken back, and taken again. Main thread only.
class UndoManager {
 public:
  using Step = std::function<void()>;

  /// `inverse` takes back what was just done and in its turn registers what undoes that.
  void registerUndo(Step inverse);

  bool canUndo() const { return !undo_.empty(); }
  bool canRedo() const { return !redo_.empty(); }
  /// Both do nothing when there is nothing to take back, or again.
  void undo();
  void redo();

 private:
  enum class Doing { Something, Undo, Redo };

  void take(std::vector<Step> &steps, Doing doing);

  std::vector<Step> undo_;
  std::vector<Step> redo_;
  Doing doing_ = Doing::Something;
};

}  // namespace tavril
