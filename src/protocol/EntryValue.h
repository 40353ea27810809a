#pragma once

#include "platform/ScreenElement.h"

#include <QString>

#include <variant>

namespace tavril {

/// What a rejected entry is put back to: the text last read from the servo. Before the first read it is the
/// field itself. Kept: C24.
class EntryValue {
 public:
  EntryValue() = default;
  explicit EntryValue(const QString &text) : value_(text) {}
  explicit EntryValue(ScreenElement &field) : value_(&field) {}

  QString text() const {
    if (const auto *field = std::get_if<ScreenElement *>(&value_)) return (*field)->text();
    return std::get<QString>(value_);
  }
  bool isSeed() const { return std::holds_alternative<ScreenElement *>(value_); }

 private:
  std::variant<QString, ScreenElement *> value_;
};

}  // namespace tavril
