#pragma once

namespace tavril::bench {

/// How often this thread has asked for memory so far, wherever in the program and its libraries.
long allocations();

}  // namespace tavril::bench
