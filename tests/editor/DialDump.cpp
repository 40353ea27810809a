// Presses the dial at every point with whole coordinates in its square and prints what that gives, a line a
// point: x y, the position shown, the two lines of frames, the knob's frame origin as the bits of single
// precision numbers, and the frame sent. A last part lists each position with the angle that the keys use for
// it.
#include "editor/dial/DialPointer.h"
#include "tests/editor/EditorBench.h"

#include <bit>
#include <cstdint>
#include <cstdio>

namespace {

unsigned bitsOf(double value) {
  return std::bit_cast<std::uint32_t>(static_cast<float>(value));
}

}  // namespace

int main() {
  using namespace tavril;
  TestDesktop fakes;
  SharedState state;
  FakeView view;
  FrameSender sender(state);
  ViewController controller(state, sender, view, fakes.desktop);
  controller.viewDidLoad();
  state.CanUseTavril = QStringLiteral("true");
  for (int x = 718; x < 917; ++x) {
    for (int y = 440; y < 639; ++y) {
      sender.sent.clear();
      controller.mouseDown(QPointF(x, y));
      if (sender.sent.size() != 1) return 1;
      std::printf("press %d %d %s %s %s %08x %08x %s\n", x, y, qPrintable(view["angle"].text()),
                  qPrintable(view["TXcmd"].text()), qPrintable(view["RXcmd"].text()), bitsOf(view.knob.x),
                  bitsOf(view.knob.y), sender.sent[0].toHex().constData());
    }
  }
  for (int position = 0; position <= dial::highestPosition; ++position) {
    std::printf("angle %d %08x\n", position, bitsOf(static_cast<double>(dial::angleFor(position))));
  }
  return 0;
}
