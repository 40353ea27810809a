#pragma once

namespace tavril {

struct Error;

/// Shows errors to the user.
class ErrorPresenter {
 public:
  virtual ~ErrorPresenter() = default;

  /// Returns when the user has seen the error. True if that has solved the problem.
  virtual bool present(const Error &error) = 0;
};

}  // namespace tavril
