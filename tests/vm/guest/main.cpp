// The tests that run in the virtual machine. Tells the host the result of each.
#include "tests/vm/guest/HostControl.h"
#include "tests/vm/guest/KernelBench.h"

#include <QApplication>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <cstdio>

namespace tavril::vm {
namespace {

class TellHost final : public testing::EmptyTestEventListener {
 public:
  explicit TellHost(HostControl &host) : host_(host) {}

 private:
  void OnTestEnd(const testing::TestInfo &test) override {
    host_.tellResult(QStringLiteral("%1.%2").arg(QString::fromUtf8(test.test_suite_name()),
                                                 QString::fromUtf8(test.name())),
                     test.result()->Passed() && !test.result()->Skipped(),
                     std::chrono::milliseconds(test.result()->elapsed_time()));
  }

  HostControl &host_;
};

}  // namespace
}  // namespace tavril::vm

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
  QApplication application(argc, argv);
  // Qt paints large areas with threads that it keeps for half a minute; they are none that a test left
  // behind.
  QThreadPool::globalInstance()->setExpiryTimeout(0);
  tavril::vm::HostControl host;
  if (!host.open()) {
    std::fputs("there is no line to the host: these tests are for a virtual machine\n", stderr);
    return 1;
  }
  host.tellBegin();
  tavril::vm::KernelBench::host = &host;
  testing::UnitTest::GetInstance()->listeners().Append(new tavril::vm::TellHost(host));
  const int status = RUN_ALL_TESTS();
  host.tellEnd();
  return status;
}
