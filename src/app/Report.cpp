#include "app/Report.h"

#include "app/AppDelegate.h"
#include "platform/JsonText.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "serial/SerialPort.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace tavril {

Report::Report(SharedState &state, AppDelegate &application, const Desktop &desktop, ReportFormat format,
               Finished finished)
    : state_(state),
      format_(format),
      finished_(std::move(finished)),
      readOut_(state, application, desktop, [this](const QString &problem) {
        if (!problem.isEmpty()) {
          finished_({false, problem});
        } else {
          finished_({true, format_ == ReportFormat::Json ? json() : table()});
        }
      }) {
  registerPlainScreen(state_.ObjectDictionaryArray, elements_);
  application.takeExactRepliesOnly();
}

Report::~Report() {
  for (const auto &[key, element] : elements_) state_.ObjectDictionaryArray.remove(key);
}

QString Report::table() const {
  qsizetype widest = 0;
  for (const RegisterRow &row : registerCatalogue()) widest = std::max(widest, row.nameKey.size());
  QString text;
  for (const RegisterRow &row : registerCatalogue()) {
    text +=
        QStringLiteral("%1  %2  %3\n")
            .arg(QString::number(row.number).rightJustified(2), row.nameKey.toString().leftJustified(widest),
                 elements_.at(row.valueKey.toString()).text());
  }
  return text;
}

QString Report::json() const {
  QStringList registers;
  for (const RegisterRow &row : registerCatalogue()) {
    const QString value = elements_.at(row.valueKey.toString()).text();
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    registers.append(QStringLiteral("    \"%1\": %2")
                         .arg(row.nameKey.toString(), isNumber ? QString::number(number) : jsonText(value)));
  }
  return QStringLiteral("{\n  \"port\": %1,\n  \"registers\": {\n%2\n  }\n}\n")
      .arg(jsonText(readOut_.port()->name()), registers.join(QStringLiteral(",\n")));
}

}  // namespace tavril
