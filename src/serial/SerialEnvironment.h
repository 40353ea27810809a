#pragma once

namespace tavril {

class Background;
class DeviceRegistry;
class Log;
class MainQueue;
class NotificationCenter;
class PortRegistry;
class ProcessExit;
class TerminalCalls;

/// What the serial layer stands on. Owns nothing; must outlive every port and the manager.
struct SerialEnvironment {
  MainQueue &mainQueue;
  Background &background;
  TerminalCalls &terminal;
  DeviceRegistry &devices;
  NotificationCenter &notifications;
  ProcessExit &processExit;
  Log &log;
  PortRegistry &ports;
};

}  // namespace tavril
