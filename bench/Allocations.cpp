#include "bench/Allocations.h"

#include <cstddef>

// The C library looks for these names in the program first, and so do Qt's libraries and operator new.
extern "C" {

void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *old, std::size_t size);

namespace {
thread_local long counted = 0;
}

void *malloc(std::size_t size) {
  ++counted;
  return __libc_malloc(size);
}

void *calloc(std::size_t count, std::size_t size) {
  ++counted;
  return __libc_calloc(count, size);
}

void *realloc(void *old, std::size_t size) {
  ++counted;
  return __libc_realloc(old, size);
}

}  // extern "C"

namespace tavril::bench {

long allocations() {
  return counted;
}

}  // namespace tavril::bench
