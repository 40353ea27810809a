#include "serial/config/Config.h"

#include "platform/Desktop.h"
#include "platform/KeyedText.h"
#include "platform/Languages.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/PlainTitle.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/SharedState.h"
#include "serial/LinkOpener.h"
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"
#include "serial/config/PortListModel.h"
#include "ui_PortDialog.h"

#include <QComboBox>
#include <QPushButton>

#include <QLatin1String>

namespace tavril {

namespace {

QString identifierOf(const QComboBox &comboBox) {
  return comboBox.property("identifier").toString();
}

}  // namespace

Config::Config(SharedState &state, LinkOpener &appdelegate, const Desktop &desktop,
               const SerialEnvironment &serial, const DeviceNodes &nodes, const Processes &processes,
               QWidget *parent)
    : QDialog(parent),
      state_(state),
      appdelegate_(appdelegate),
      desktop_(desktop),
      serial_(serial),
      nodes_(nodes),
      processes_(processes),
      ui_(std::make_unique<Ui::PortDialog>()) {
  ui_->setupUi(this);
  viewDidLoad();
  model_ = new PortListModel([this] { return numberOfItemsInComboBox(*ui_->portCombo); },
                             [this](int index) { return objectValueForItemAtIndex(*ui_->portCombo, index); },
                             [this](int index) { return detailsOf(index); }, this);
  ui_->portCombo->setModel(model_);
  reload();
  ui_->portCombo->setFocus();
  connect(ui_->portCombo, &QComboBox::currentIndexChanged, this, [this] { showSights(); });
  connect(ui_->portCombo, &PortCombo::opening, this, [this] {
    lookAtPorts();
    model_->refresh();
    showSights();
  });
  // `activated` is sent only for what the user chooses.
  connect(ui_->portCombo, &QComboBox::activated, this,
          [this] { comboBoxSelectionDidChange(*ui_->portCombo); });
  connect(ui_->doneBT, &QPushButton::clicked, this, [this] { done(); });
  connect(ui_->cancel, &QPushButton::clicked, this, &Config::cancel);
  desktop_.notifications.addObserver(this, QString::fromUtf16(LanguageDidChangeNotification),
                                     [this](const Notification &) {
                                       viewDidLoad();
                                       model_->refresh();
                                       showSights();
                                     });
  // The link observes these notifications too. It registered first, so it has already changed the list.
  for (const char16_t *name :
       {SerialPortsWereConnectedNotification, SerialPortsWereDisconnectedNotification}) {
    desktop_.notifications.addObserver(this, QString::fromUtf16(name),
                                       [this](const Notification &) { reload(); });
  }
}

Config::~Config() {
  desktop_.notifications.removeObserver(this);
}

void Config::viewDidLoad() {
  setWindowTitle(desktop_.strings.text(u"port_setting"));
  ui_->parameter->setText(desktop_.strings.text(u"config_parameter"));
  ui_->serialport->setText(plainTitle(desktop_.strings.text(u"config_serialport")));
  ui_->doneBT->setText(plainTitle(desktop_.strings.text(u"Confirm")));
  ui_->cancel->setText(plainTitle(desktop_.strings.text(u"CancelBT")));
}

int Config::numberOfItemsInComboBox(const QComboBox &) {
  const auto count = static_cast<int>(state_.allSerialPortsInfo.size());
  ui_->doneBT->setEnabled(count >= 1);
  return count;
}

QString Config::objectValueForItemAtIndex(const QComboBox &comboBox, int index) {
  const auto place = static_cast<std::size_t>(index);
  if (place >= state_.allSerialPortsInfo.size()) return {};  // gone, and the box has not been told yet
  QString name = state_.allSerialPortsInfo[place]->name();
  desktop_.log.write(QStringLiteral("ID=") + identifierOf(comboBox));
  desktop_.log.write(QStringLiteral("PortName"));
  desktop_.log.write(QStringLiteral("comboBox=%1,Name=%2").arg(QString::number(index), name));
  return name;
}

void Config::comboBoxSelectionDidChange(const QComboBox &comboBox) {
  const int index = comboBox.currentIndex();
  if (index < 0 || static_cast<std::size_t>(index) >= state_.allSerialPortsInfo.size()) return;
  const auto port = state_.allSerialPortsInfo[static_cast<std::size_t>(index)];
  desktop_.log.write(QStringLiteral("ID=") + identifierOf(comboBox));
  desktop_.log.write(QStringLiteral("select=%1,Value=%2").arg(QString::number(index), port->description()));
  desktop_.log.write(port->description());
  state_.SelectSerial = port;
  state_.selectPort = index;
}

void Config::done() {
  // The user has confirmed the port that is shown, even without picking it.
  if (!state_.SelectSerial) comboBoxSelectionDidChange(*ui_->portCombo);
  state_.ObjectDictionaryArray.element(u"ContrainerView_WaitView").setHidden(false);
  state_.ObjectDictionaryArray.show(u"WaitContent", KeyedText(u"Serial_port_start_initialization"),
                                    desktop_.strings);
  state_.ToolbarFlag = QStringLiteral("InitSerialPort");
  state_.CancelConnectFlag = QLatin1String("");
  appdelegate_.serialFormat();
  accept();
}

void Config::cancel() {
  reject();
}

QString Config::detailsOf(int index) const {
  const auto place = static_cast<std::size_t>(index);
  return place < statuses_.size() ? statuses_[place].details(desktop_.strings) : QString();
}

void Config::lookAtPorts() {
  statuses_.clear();
  for (const auto &port : state_.allSerialPortsInfo)
    statuses_.push_back(PortStatus::of(*port, serial_, nodes_, processes_));
}

/// Shows what is known about the current port, and which port will be opened.
void Config::showSights() {
  const QString details = detailsOf(ui_->portCombo->currentIndex());
  ui_->details->setText(details);
  ui_->portCombo->setAccessibleDescription(details);
  if (statuses_.empty()) {
    ui_->first->setText(desktop_.strings.text(u"port_none"));
    return;
  }
  const PortStatus &first = statuses_.front();
  ui_->first->setText(desktop_.strings.text(u"port_first")
                          .replace(QStringLiteral("%@"), first.name + QStringLiteral(" (") +
                                                             first.stateText(desktop_.strings) + u')'));
}

void Config::reload() {
  lookAtPorts();
  model_->reload();
  const int count = model_->rowCount();
  ui_->portCombo->setCurrentIndex(state_.selectPort < count ? state_.selectPort : count - 1);
  showSights();
}

}  // namespace tavril
