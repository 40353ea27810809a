#include "program/tavril/LinuxServices.h"

#include "platform/Log.h"
#include "platform/LoggingAlert.h"
#include "platform/linux/QtModalAlert.h"

#include <QLocale>

namespace tavril {

LinuxServices::LinuxServices(bool interactive)
    : blockingWait(paintPendingWidgets),
      alert(interactive ? std::unique_ptr<ModalAlert>(std::make_unique<QtModalAlert>(mainQueue))
                        : std::make_unique<LoggingAlert>(log)),
      terminal(linesTo(log), anyThreadPause(mainQueue, blockingWait)) {}

AppServices LinuxServices::services() {
  return {log,
          mainQueue,
          timers,
          blockingWait,
          *alert,
          strings,
          QLocale().uiLanguages(),
          files,
          preferences,
          &userNotifications,
          terminal,
          devices,
          bus,
          nodes,
          processes};
}

}  // namespace tavril
