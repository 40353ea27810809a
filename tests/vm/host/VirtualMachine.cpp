#include "tests/vm/host/VirtualMachine.h"

#include "tests/support/WaitFor.h"

namespace tavril::vm {

namespace {

QStringList words(const char *text) {
  return QString::fromLatin1(text).split(u' ');
}

}  // namespace

VirtualMachine::VirtualMachine(const QString &image) : image_(image), control_(adapters_) {
  for (int i = 0; i < adapterCount; ++i) {
    adapters_.push_back(std::make_unique<Adapter>(socket(QStringLiteral("adapter%1").arg(i))));
  }
  emulator_.setProcessChannelMode(QProcess::MergedChannels);
  QObject::connect(&emulator_, &QProcess::readyRead, &emulator_, [this] { hear(); });
}

VirtualMachine::~VirtualMachine() {
  emulator_.kill();
  emulator_.waitForFinished();
}

QStringList VirtualMachine::arguments(const QString &tests) const {
  QStringList list = words("-accel tcg -smp 2 -m 768 -nodefaults -no-user-config -no-reboot -display none");
  list += words("-serial stdio -device qemu-xhci -device virtio-serial-pci");
  list += words("-device virtserialport,chardev=control,name=tavril.control");
  // The machine starts when we have connected, so that its first request is heard.
  list << QStringLiteral("-chardev")
       << QStringLiteral("socket,id=control,server=on,wait=on,path=") + socket(QStringLiteral("control"));
  for (int i = 0; i < adapterCount; ++i) {
    const QString name = QStringLiteral("adapter%1").arg(i);
    list << QStringLiteral("-chardev")
         << QStringLiteral("socket,id=%1,server=on,wait=off,path=%2").arg(name, socket(name))
         << QStringLiteral("-device") << QStringLiteral("usb-serial,chardev=") + name;
  }
  list << QStringLiteral("-kernel") << image_ + QStringLiteral("/vmlinuz");
  list << QStringLiteral("-initrd") << image_ + QStringLiteral("/initramfs");
  // Without no_timer_check the kernel gives up when a busy host does not let it have its first ticks in time.
  list << QStringLiteral("-append")
       << QStringLiteral(
              "console=ttyS0 quiet panic=-1 oops=panic no_timer_check tavril.tests=%1 tavril.seed=%2")
              .arg(tests, qEnvironmentVariable("TAVRIL_VM_SEED"));
  return list;
}

bool VirtualMachine::run(const QString &tests, std::chrono::milliseconds timeLimit) {
  emulator_.start(QStringLiteral("qemu-system-x86_64"), arguments(tests));
  if (!emulator_.waitForStarted() || !control_.connectTo(socket(QStringLiteral("control")))) return false;
  const bool isOff = waitFor([this] { return emulator_.state() == QProcess::NotRunning; }, timeLimit);
  hear();
  return isOff;
}

void VirtualMachine::hear() {
  console_ += QString::fromUtf8(emulator_.readAll()).remove(u'\r');
}

}  // namespace tavril::vm
