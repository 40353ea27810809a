#include "editor/screen/AccessibleTexts.h"

#include "platform/StringTable.h"
#include "protocol/RegisterCatalogue.h"

#include <QString>
#include <QWidget>

namespace tavril {

namespace {

struct NameRow {
  const char16_t *element;
  const char16_t *key;
};

constexpr NameRow names[]{
    {u"servoPicture", u"motor_kx_90"},
    {u"TXcmd", u"sent_frame"},
    {u"RXcmd", u"received_frame"},
    {u"MsgView", u"detail_about"},
};

}  // namespace

void AccessibleTexts::put(QWidget &screen, const StringTable &strings) {
  for (const NameRow &row : names) {
    if (auto *element = screen.findChild<QWidget *>(QString::fromUtf16(row.element))) {
      element->setAccessibleName(strings.text(row.key));
    }
  }
  // Whoever hears a field hears what can be entered, as the tool tip says, and the notice.
  for (const RegisterRow &row : settingRegisters()) {
    if (auto *field = screen.findChild<QWidget *>(row.valueKey.toString())) {
      field->setAccessibleDescription(strings.text(row.toolTipKey()) + u'\n' + strings.text(row.noticeKey()));
    }
  }
}

}  // namespace tavril
