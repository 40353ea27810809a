#include "editor/MsgPanel.h"

#include "look/Style.h"
#include "platform/PlainToolTip.h"
#include "platform/StringTable.h"
#include "ui_MsgPanel.h"

namespace tavril {

MsgPanel::MsgPanel(QWidget *parent) : QWidget(parent), ui_(std::make_unique<Ui::MsgPanel>()) {
  ui_->setupUi(this);
  Style::softenBold(*this);
}

MsgPanel::~MsgPanel() = default;

void MsgPanel::setTexts(const StringTable &strings) {
  ui_->close->setAccessibleName(strings.text(u"close"));
  ui_->close->setToolTip(plainToolTip(strings.text(u"close")));
}

}  // namespace tavril
