#pragma once

#include "servo/Changes.h"
#include "servo/PlanRules.h"
#include "servo/Problem.h"

#include <atomic>
#include <functional>
#include <variant>
#include <vector>

namespace tavril::servo {

class Journal;
class Servo;

/// What is to be looked at before a plan writes.
struct Proposal {
  Settings held = {};                 ///< all fifteen
  std::vector<Change> changes = {};   ///< in the order of writing; take out what is not agreed to
  std::vector<Danger> warnings = {};  ///< about all the changes
};

/// How far a plan is.
struct PlanProgress {
  enum class Stage { Reading, Checking, Writing, ReadingBack, RollingBack };
  Stage stage = Stage::Reading;
  int done = 0;
  int all = 0;
};

/// The one way to change settings: read, compare, review by the caller, write what differs, read back, roll
/// back if something was not kept. docs/plan.md describes it. Calls block; one object makes one plan.
class SettingsPlan {
 public:
  using Progress = std::function<void(const PlanProgress &progress)>;

  /// Without a journal nothing is written, unless the caller insists.
  explicit SettingsPlan(Servo &servo, Journal *journal = nullptr, Progress progress = nullptr);

  /// Detects one servo, reads, compares, and writes nothing. The report tells why there is no proposal.
  std::variant<Proposal, PlanReport> propose(const Settings &wanted);
  /// For a servo that answers detection and no reads (PlanReason::ReadsUnanswered), if somebody agrees:
  /// detects one servo and sends the reply policy 2 one time. Whether it has arrived is found out by
  /// propose().
  Outcome<Done> writeReplyPolicyBlind();

  enum class WithoutJournal { WriteNothing, Insist };
  /// Writes what was agreed to.
  PlanReport carryOut(const Proposal &agreed, WithoutJournal withoutJournal = WithoutJournal::WriteNothing);

  /// Nothing more is written; what was written is rolled back. On any thread. Line::cancel(), in contrast,
  /// also ends the rolling back.
  void cancel() { cancelled_ = true; }

 private:
  Servo &servo_;
  Journal *journal_;
  const Progress progress_;
  std::atomic<bool> cancelled_ = false;
};

}  // namespace tavril::servo
