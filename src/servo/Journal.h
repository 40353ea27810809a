#pragma once

#include "servo/Changes.h"

namespace tavril::servo {

struct PlanReport;

/// Where it is kept that a plan writes, so that it can be finished or undone after an interruption.
class Journal {
 public:
  virtual ~Journal() = default;

  /// A plan is about to write. Each has all fifteen values. Returns once this is kept; false if it cannot be.
  virtual bool begin(const Settings &before, const Settings &after) = 0;
  /// The plan that began last has ended. False if this cannot be kept.
  virtual bool end(const PlanReport &report) = 0;
};

}  // namespace tavril::servo
