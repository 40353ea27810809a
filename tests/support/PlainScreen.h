#pragma once

#include "protocol/RegisterCatalogue.h"
#include "protocol/ValueStore.h"
#include "tests/support/PlainElement.h"

#include <QString>

#include <map>

namespace tavril {

/// The elements of a screen that nobody sees, by their keys.
using PlainScreen = std::map<QString, PlainElement>;

/// Makes an element for each value of a register and for each line that a reply or the link changes, and
/// registers them. The screen must outlive what the store is asked for.
inline void registerPlainScreen(ValueStore &store, PlainScreen &screen) {
  for (const RegisterRow &row : registerCatalogue()) screen[row.valueKey.toString()];
  for (const char16_t *key :
       {u"TXcmd", u"RXcmd", u"errormsg", u"ConnectStatus", u"ContrainerView_WaitView"}) {
    screen[QString::fromUtf16(key)];
  }
  for (auto &[key, element] : screen) store.set(key, element);
}

}  // namespace tavril
