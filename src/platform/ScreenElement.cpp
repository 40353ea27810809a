#include "platform/ScreenElement.h"

#include "platform/IntegerValue.h"

namespace tavril {

int ScreenElement::integerValue() const {
  return integerValueOf(text());
}

void ScreenElement::setIntegerValue(int value) {
  setText(QString::number(value));
}

}  // namespace tavril
