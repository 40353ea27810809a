#include "tests/vm/host/VirtualMachine.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>

namespace tavril::vm {
namespace {

constexpr int consoleTail = 6000;

/// The tests of the program that runs in the machine, by its own list.
QStringList testsOf(const QString &suite) {
  QProcess guest;
  guest.start(QStringLiteral(TAVRIL_VM_GUEST),
              {QStringLiteral("--gtest_list_tests"), QStringLiteral("--gtest_filter=%1.*").arg(suite)});
  EXPECT_TRUE(guest.waitForFinished()) << guest.errorString().toStdString();
  QStringList tests;
  for (const QString &line : QString::fromUtf8(guest.readAllStandardOutput()).split(u'\n')) {
    if (line.startsWith(u"  ")) tests.append(suite + u'.' + line.section(u'#', 0, 0).trimmed());
  }
  return tests;
}

/// One boot for each suite of tests in the machine.
class Kernel : public testing::TestWithParam<const char *> {};

TEST_P(Kernel, PassesEveryTestInTheMachine) {
  const QString suite = QString::fromLatin1(GetParam());
  const QStringList tests = testsOf(suite);
  ASSERT_FALSE(tests.isEmpty()) << "there are no tests named " << GetParam();

  VirtualMachine machine(QStringLiteral(TAVRIL_VM_IMAGE));
  EXPECT_TRUE(machine.run(suite + QStringLiteral(".*"), std::chrono::minutes(8))) << "the machine is not off";
  EXPECT_TRUE(machine.control().hasEnded()) << "the tests in the machine did not come to their end";
  QStringList passed;
  for (const Control::Result &result : machine.control().results()) {
    if (result.passed) passed.append(result.name);
  }
  EXPECT_EQ(passed.join(u'\n').toStdString(), tests.join(u'\n').toStdString());
  const bool all = qEnvironmentVariableIsSet("TAVRIL_VM_CONSOLE");
  if (all || HasFailure()) {
    const QString &console = machine.console();
    std::printf("The console:\n%s\n", qPrintable(all ? console : console.right(consoleTail)));
  }
}

// Every name is a suite in guest/.
INSTANTIATE_TEST_SUITE_P(Boots, Kernel, testing::Values(TAVRIL_VM_SUITES),
                         [](const auto &suite) { return std::string(suite.param); });

}  // namespace
}  // namespace tavril::vm
