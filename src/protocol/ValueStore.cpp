#include "protocol/ValueStore.h"

#include "platform/ScreenElement.h"

namespace tavril {

namespace {

class NoElement final : public ScreenElement {
 public:
  QString text() const override { return {}; }
  void setText(const QString &) override {}
  bool isEnabled() const override { return false; }
  void setEnabled(bool) override {}
  bool isHidden() const override { return true; }
  void setHidden(bool) override {}
  QString toolTip() const override { return {}; }
  void setToolTip(const QString &) override {}
  QString identifier() const override { return {}; }
};

}  // namespace

ScreenElement *ValueStore::find(QStringView key) const {
  return elements_.value(key.toString(), nullptr);
}

ScreenElement &ValueStore::element(QStringView key) const {
  static NoElement none;  // has no state, so it is safe to share
  ScreenElement *found = find(key);
  return found ? *found : none;
}

void ValueStore::show(QStringView key, const KeyedText &text, const StringTable &strings) {
  texts_[key.toString()] = text;
  element(key).setText(text.in(strings));
}

void ValueStore::showAgain(const StringTable &strings) const {
  for (auto text = texts_.cbegin(); text != texts_.cend(); ++text) {
    element(text.key()).setText(text.value().in(strings));
  }
}

}  // namespace tavril
