#pragma once

#include "doctor/Result.h"

#include <QString>
#include <QStringList>

namespace tavril {
class StringTable;
}

namespace tavril::doctor {

/// What to show of a result, in the language of the table.
struct ResultTexts {
  QString title;
  QString finding;
  QString advice;  ///< empty when there is nothing to do

  static ResultTexts of(const Result &result, const StringTable &strings);
};

/// The text with its places %1$@, %2$@ ... filled. What is filled in is never taken for a place itself.
QString filled(const QString &text, const QStringList &values);

}  // namespace tavril::doctor
