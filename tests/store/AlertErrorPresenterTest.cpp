#include "platform/Error.h"
#include "store/AlertErrorPresenter.h"
#include "tests/support/AnsweringAlert.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

TEST(AlertErrorPresenter, ShowsDescriptionReasonAndCausesAndSolvesNothing) {
  AnsweringAlert alert;
  AlertErrorPresenter presenter(alert);
  const auto deepest = std::make_shared<const Error>(
      Error{QStringLiteral("POSIX"), 28, QStringLiteral("/x: No space left"), {}, nullptr});
  const auto middle = std::make_shared<const Error>(Error{
      QStringLiteral("store"), 1, QStringLiteral("Not saved."), QStringLiteral("Not written."), deepest});
  EXPECT_FALSE(presenter.present({QStringLiteral("app"), 2, QStringLiteral("It failed"),
                                  QStringLiteral("There was an error."), middle}));
  ASSERT_EQ(alert.contents.size(), 1u);
  EXPECT_EQ(alert.contents[0].messageText, QStringLiteral("It failed"));
  EXPECT_EQ(alert.contents[0].informativeText,
            QStringLiteral("There was an error.\nNot saved.\nNot written.\n/x: No space left"));
  EXPECT_EQ(alert.contents[0].buttons, QStringList{QStringLiteral("OK")});
}

TEST(AlertErrorPresenter, LeavesOutWhatAnErrorDoesNotSay) {
  AnsweringAlert alert;
  AlertErrorPresenter presenter(alert);
  EXPECT_FALSE(presenter.present({QStringLiteral("app"), 2, QStringLiteral("It failed"), {}, nullptr}));
  ASSERT_EQ(alert.contents.size(), 1u);
  EXPECT_EQ(alert.contents[0].informativeText, QString());
}

}  // namespace
}  // namespace tavril
