#pragma once

#include <QString>

namespace tavril::simulator {

/// A symbolic link with a fixed name to a terminal whose name changes. The destructor removes it.
class PortLink {
 public:
  PortLink() = default;
  ~PortLink() { remove(); }
  PortLink(const PortLink &) = delete;
  PortLink &operator=(const PortLink &) = delete;

  /// Makes the link, and replaces an older link. It is an error if another file has this name. False with the
  /// reason in `error`.
  bool create(const QString &path, const QString &target, QString *error);
  /// Removes the link, unless it points elsewhere by now.
  void remove();

 private:
  QString path_;
  QString target_;
};

}  // namespace tavril::simulator
