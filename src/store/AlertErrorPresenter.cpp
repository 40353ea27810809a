#include "store/AlertErrorPresenter.h"

#include "platform/Error.h"
#include "platform/ModalAlert.h"

#include <QString>
#include <QStringList>

namespace tavril {

bool AlertErrorPresenter::present(const Error &error) {
  QStringList details;
  if (!error.localizedFailureReason.isEmpty()) details.append(error.localizedFailureReason);
  for (const Error *cause = error.underlyingError.get(); cause; cause = cause->underlyingError.get()) {
    details.append(cause->localizedDescription);
    if (!cause->localizedFailureReason.isEmpty()) details.append(cause->localizedFailureReason);
  }
  alert_.run({error.localizedDescription, details.join(u'\n'), {QStringLiteral("OK")}});
  return false;
}

}  // namespace tavril
