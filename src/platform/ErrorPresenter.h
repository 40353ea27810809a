#pragma once

namespace tavril {

struct Error;

/// Shows errors to the user. Main thread only.
class ErrorPresenter {
 public:
  virtual ~ErrorPresenter() = default;

  /// Returns when the user has seen the error; true when the problem is solved thereby.
  virtual bool present(const Error &error) = 0;
};

}  // namespace tavril
