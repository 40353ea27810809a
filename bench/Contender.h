#pragma once

#include <QString>

#include <memory>

namespace tavril::bench {

/// One way of talking to a terminal: sends 50 bytes, and again as soon as 7 bytes have come back.
class Contender {
 public:
  virtual ~Contender() = default;
  virtual void run(int trips) = 0;
};

std::unique_ptr<Contender> bareLoop(const QString &path);
std::unique_ptr<Contender> bareHop(const QString &path);
std::unique_ptr<Contender> throughSerialPort(const QString &path);
std::unique_ptr<Contender> throughQtSerialPort(const QString &path);
std::unique_ptr<Contender> throughAsio(const QString &path);

}  // namespace tavril::bench
