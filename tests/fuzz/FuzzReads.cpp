#include "tests/app/DeliveryModel.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"

// However the bytes of a line are read: they come out once and in order, a whole reply that was a read of its
// own is a delivery of its own, and all deliveries are those of the model.
//
// Input: reads. The milliseconds since the read before, the number of bytes, and the bytes.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  FuzzInput input(data, size);
  std::vector<TimedRead> reads;
  QByteArray all;
  Deliveries wholeReads;
  while (!input.isEmpty()) {
    const std::chrono::milliseconds after{input.byte()};
    const QByteArray bytes = input.bytes(input.byte());
    if (bytes.isEmpty()) continue;
    reads.push_back({after, bytes});
    all += bytes;
    const int length = bytes.size() < 4 ? 0 : static_cast<unsigned char>(bytes[1]);
    if (bytes.startsWith('\xFF') && bytes.endsWith('\xFE') && length == bytes.size() && length <= 7) {
      wholeReads.push_back(bytes);
    }
  }

  const Deliveries deliveries = assembledDeliveries(reads);
  QByteArray delivered;
  for (const QByteArray &delivery : deliveries) {
    mustHold(!delivery.isEmpty(), "no delivery is empty");
    delivered += delivery;
  }
  mustHold(delivered == all, "the bytes come out once and in order");
  auto next = deliveries.begin();
  for (const QByteArray &whole : wholeReads) {
    next = std::find(next, deliveries.end(), whole);
    mustHold(next != deliveries.end(), "a whole reply that was read by itself is delivered by itself");
    ++next;
  }
  mustHold(deliveries == modelDeliveries(reads), "the deliveries are those of the model");
  return 0;
}
