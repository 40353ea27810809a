#pragma once

#include "serial/DeliveryRule.h"

#include <memory>

namespace tavril {

/// The rule for a line on which the servo replies. USB adapters cut a reply in two, or hand over two at once,
/// as their timer falls; with this rule a delivery is one reply again. What begins like a reply and goes on
/// differently, or does not go on, or has a length that no reply has, is left as it came.
std::shared_ptr<const DeliveryRule> replyDeliveryRule();

}  // namespace tavril
