#pragma once

#include <QString>

namespace tavril::simulator {

/// A symbolic link with a lasting name to a terminal with a passing one; taken away when this goes.
class PortLink {
 public:
  PortLink() = default;
  ~PortLink() { remove(); }
  PortLink(const PortLink &) = delete;
  PortLink &operator=(const PortLink &) = delete;

  /// Makes the link, in place of an older link if there is one; anything else of that name is left alone.
  /// False with the reason in `error`.
  bool create(const QString &path, const QString &target, QString *error);
  /// Takes the link away, unless it has come to point elsewhere.
  void remove();

 private:
  QString path_;
  QString target_;
};

}  // namespace tavril::simulator
