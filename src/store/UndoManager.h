#pragma once

#include <functional>
#include <vector>

namespace tavril {

/// Steps that can be undone and redone.
class UndoManager {
 public:
  using Step = std::function<void()>;

  /// `inverse` undoes the last step, and registers a step that undoes this.
  void registerUndo(Step inverse);

  bool canUndo() const { return !undo_.empty(); }
  bool canRedo() const { return !redo_.empty(); }
  /// Both do nothing if there is no step.
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
