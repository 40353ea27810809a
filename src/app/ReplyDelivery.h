#pragma once

#include "serial/DeliveryRule.h"

#include <memory>

namespace tavril {

/// The rule for deliveries on a line to the servo. USB adapters may cut a reply in two, or hand over two at
/// once; with this rule each delivery is one reply. Bytes that begin like a reply but do not continue as one,
/// or have a length that no reply has, are delivered as they came.
std::shared_ptr<const DeliveryRule> replyDeliveryRule();

}  // namespace tavril
