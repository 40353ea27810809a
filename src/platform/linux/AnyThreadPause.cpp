#include "platform/linux/AnyThreadPause.h"

#include "platform/BlockingWait.h"
#include "platform/MainQueue.h"

#include <thread>

namespace tavril {

std::function<void(std::chrono::milliseconds)> anyThreadPause(const MainQueue &mainQueue,
                                                              BlockingWait &blockingWait) {
  return [&mainQueue, &blockingWait](std::chrono::milliseconds duration) {
    if (mainQueue.isMainThread()) {
      blockingWait.wait(duration);
    } else {
      std::this_thread::sleep_for(duration);
    }
  };
}

}  // namespace tavril
