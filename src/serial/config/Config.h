#pragma once

#include "serial/config/PortStatus.h"

#include <QDialog>
#include <QString>
#include <QWidget>

#include <memory>
#include <vector>

class QComboBox;

namespace Ui {
class PortDialog;
}

namespace tavril {

class DeviceNodes;
class LinkOpener;
class PortListModel;
class Processes;
struct Desktop;
struct SerialEnvironment;
struct SharedState;

/// The dialog in which the user picks a port and starts the connection. It lists the ports, follows those
/// that come and go, and shows what can be found out without opening one. Kept: C57.
class Config final : public QDialog {
  Q_OBJECT

 public:
  Config(SharedState &state, LinkOpener &appdelegate, const Desktop &desktop, const SerialEnvironment &serial,
         const DeviceNodes &nodes, const Processes &processes, QWidget *parent = nullptr);
  ~Config() override;

  /// Sets the texts, also when the language has changed.
  void viewDidLoad();

  /// How many ports there are; with none the confirm button is disabled.
  int numberOfItemsInComboBox(const QComboBox &comboBox);
  /// The name of the port at this place.
  QString objectValueForItemAtIndex(const QComboBox &comboBox, int index);
  /// The user has chosen the entry that the combo box shows.
  void comboBoxSelectionDidChange(const QComboBox &comboBox);

  /// Shows the wait panel and asks the link to open.
  void done();
  using QDialog::done;
  void cancel();

 private:
  QString detailsOf(int index) const;
  void lookAtPorts();
  void showSights();
  void reload();

  SharedState &state_;
  LinkOpener &appdelegate_;
  const Desktop &desktop_;
  const SerialEnvironment &serial_;
  const DeviceNodes &nodes_;
  const Processes &processes_;
  std::vector<PortStatus> statuses_;  ///< of the listed ports, in their order
  std::unique_ptr<Ui::PortDialog> ui_;
  PortListModel *model_ = nullptr;
};

}  // namespace tavril
