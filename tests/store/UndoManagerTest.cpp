#include "store/UndoManager.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

class UndoManagerOfANumber : public testing::Test {
 protected:
  void set(int value) {
    undoManager.registerUndo([this, former = number] { set(former); });
    number = value;
  }

  UndoManager undoManager;
  int number = 0;
};

TEST_F(UndoManagerOfANumber, HasNothingToUndoOrRedoAtFirst) {
  EXPECT_FALSE(undoManager.canUndo());
  EXPECT_FALSE(undoManager.canRedo());
  undoManager.undo();
  undoManager.redo();
  EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerOfANumber, UndoesAndRedoesStepByStep) {
  set(1);
  set(2);
  undoManager.undo();
  EXPECT_EQ(number, 1);
  undoManager.undo();
  EXPECT_EQ(number, 0);
  EXPECT_FALSE(undoManager.canUndo());
  undoManager.redo();
  EXPECT_EQ(number, 1);
  undoManager.redo();
  EXPECT_EQ(number, 2);
  EXPECT_FALSE(undoManager.canRedo());
  undoManager.undo();
  EXPECT_EQ(number, 1);
}

TEST_F(UndoManagerOfANumber, ForgetsWhatWasUndoneWhenSomethingNewIsDone) {
  set(1);
  undoManager.undo();
  ASSERT_TRUE(undoManager.canRedo());
  set(5);
  EXPECT_FALSE(undoManager.canRedo());
  undoManager.undo();
  EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerOfANumber, IgnoresAnUndoWithinAnUndo) {
  set(1);
  set(2);
  undoManager.registerUndo([this] { undoManager.undo(); });
  undoManager.undo();
  EXPECT_EQ(number, 2);
  undoManager.undo();
  EXPECT_EQ(number, 1);
}

}  // namespace
}  // namespace tavril
