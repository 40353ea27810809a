#include "protocol/PlainScreen.h"

#include "protocol/RegisterCatalogue.h"
#include "protocol/ValueStore.h"

namespace tavril {

void registerPlainScreen(ValueStore &store, PlainScreen &screen) {
  for (const RegisterRow &row : registerCatalogue()) screen[row.valueKey.toString()];
  for (const char16_t *key :
       {u"TXcmd", u"RXcmd", u"errormsg", u"ConnectStatus", u"ContrainerView_WaitView"}) {
    screen[QString::fromUtf16(key)];
  }
  for (auto &[key, element] : screen) store.set(key, element);
}

}  // namespace tavril
