#include "platform/linux/ThreadBackground.h"

#include "platform/linux/ThreadQueue.h"
#include "platform/linux/ThreadRepeat.h"
#include "platform/linux/WorkerThreads.h"

#include <utility>

namespace tavril {

ThreadBackground::ThreadBackground(std::chrono::milliseconds idleTime)
    : idleTime_(idleTime), threads_(std::make_shared<WorkerThreads>()) {}

ThreadBackground::~ThreadBackground() {
  threads_->close();
}

void ThreadBackground::run(Job job) {
  threads_->start("tavril-run", std::move(job));
}

std::shared_ptr<RepeatingWork> ThreadBackground::repeat(std::chrono::milliseconds interval, Job tick) {
  auto repeat = std::make_shared<ThreadRepeat>(interval, std::move(tick));
  threads_->start("tavril-repeat", [repeat, closing = threads_->closing()] { repeat->run(closing); });
  return repeat;
}

std::shared_ptr<SerialQueue> ThreadBackground::serialQueue(const QString &label) {
  return std::make_shared<ThreadQueue>(threads_, label, idleTime_);
}

}  // namespace tavril
