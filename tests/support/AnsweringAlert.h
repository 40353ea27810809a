#pragma once

#include "platform/ModalAlert.h"

#include <deque>
#include <functional>
#include <vector>

namespace tavril {

/// Answers alerts with what was put into `answers`, in that order, then with the first button; notes what
/// they showed.
class AnsweringAlert final : public ModalAlert {
 public:
  int run(const AlertContent &content) override {
    contents.push_back(content);
    if (whileUp) whileUp();
    if (answers.empty()) return firstButton;
    const int answer = answers.front();
    answers.pop_front();
    return answer;
  }

  std::deque<int> answers;
  std::vector<AlertContent> contents;
  /// Called while each alert is up, if set.
  std::function<void()> whileUp;
};

}  // namespace tavril
