#pragma once

#include <QString>

#include <cstddef>

#include <sys/types.h>

namespace tavril::bench {

/// A pseudo-terminal at whose other end a process of its own answers: 7 bytes for each 50. To be made before
/// the program has threads.
class Answering {
 public:
  static constexpr std::size_t commandSize = 50;
  static constexpr std::size_t replySize = 7;

  Answering();
  ~Answering();
  Answering(const Answering &) = delete;
  Answering &operator=(const Answering &) = delete;

  const QString &path() const { return path_; }

 private:
  [[noreturn]] static void answer(int master);

  QString path_;
  pid_t process_ = -1;
};

}  // namespace tavril::bench
