#include "tests/vm/guest/HostControl.h"

#include <gtest/gtest.h>

namespace tavril::vm {

bool HostControl::open() {
  line_.setFileName(QStringLiteral("/dev/virtio-ports/tavril.control"));
  return line_.open(QIODevice::ReadWrite | QIODevice::Unbuffered);
}

std::vector<int> HostControl::settings(int adapter) {
  std::vector<int> values;
  for (const QString &value : ask(QStringLiteral("settings %1").arg(adapter)))
    values.push_back(value.toInt());
  return values;
}

void HostControl::tellResult(const QString &test, bool passed, std::chrono::milliseconds took) {
  ask(QStringLiteral("result %1 %2 %3")
          .arg(test, passed ? QStringLiteral("pass") : QStringLiteral("fail"))
          .arg(took.count()));
}

QStringList HostControl::ask(const QString &request) {
  line_.write(request.toUtf8() + '\n');
  QByteArray answer;
  char byte = 0;
  while (line_.read(&byte, 1) == 1 && byte != '\n') answer.append(byte);
  QStringList words = QString::fromUtf8(answer).split(u' ');
  EXPECT_EQ(words.takeFirst(), QStringLiteral("ok")) << request.toStdString() << ": " << answer.toStdString();
  return words;
}

}  // namespace tavril::vm
