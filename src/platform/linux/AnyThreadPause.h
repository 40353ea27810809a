#pragma once

#include <chrono>
#include <functional>

namespace tavril {

class BlockingWait;
class MainQueue;

/// Pauses the thread that calls it: the main thread through the one blocking wait, which paints first, any
/// other by sleeping. The function names both, which must outlive it.
std::function<void(std::chrono::milliseconds duration)> anyThreadPause(const MainQueue &mainQueue,
                                                                       BlockingWait &blockingWait);

}  // namespace tavril
