#pragma once

#include "app/AppDelegate.h"
#include "app/LanguageChoice.h"
#include "platform/Desktop.h"
#include "platform/NotificationCenter.h"
#include "program/SerialObjects.h"
#include "program/tavril/AppServices.h"
#include "protocol/SharedState.h"
#include "store/AlertErrorPresenter.h"
#include "store/StoreController.h"

#include <chrono>
#include <memory>

namespace tavril {

/// Puts the objects of the program together: all but its windows, which EditorObjects makes. They end in this
/// order: the ports, the application, the threads, and then what these used.
class AppObjects {
 public:
  /// `startUp`: how long the bridge behind a port needs after the port was opened.
  explicit AppObjects(const AppServices &given,
                      std::chrono::milliseconds startUp = AppDelegate::bridgeStartUp);
  ~AppObjects();
  AppObjects(const AppObjects &) = delete;
  AppObjects &operator=(const AppObjects &) = delete;

  const AppServices services;
  const std::chrono::milliseconds bridgeStartUp;
  NotificationCenter notifications;
  LanguageChoice language;
  const Desktop desktop;
  AlertErrorPresenter errors;
  StoreController store;
  SharedState state;
  SerialObjects serial;
  std::shared_ptr<AppDelegate> application;
};

}  // namespace tavril
