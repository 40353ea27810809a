#pragma once

#include "platform/FilePanels.h"

#include <deque>
#include <vector>

namespace tavril {

/// Answers file panels with what was put into `answers`, in that order, then with Cancel; notes what they
/// were asked to show.
class AnsweringFilePanels final : public FilePanels {
 public:
  Choice runOpenPanel(const Content &content) override { return answer(opened, content); }
  Choice runSavePanel(const Content &content) override { return answer(saved, content); }

  std::deque<Choice> answers;
  std::vector<Content> opened;
  std::vector<Content> saved;

 private:
  Choice answer(std::vector<Content> &shown, const Content &content) {
    shown.push_back(content);
    if (answers.empty()) return {};
    Choice choice = answers.front();
    answers.pop_front();
    return choice;
  }
};

}  // namespace tavril
