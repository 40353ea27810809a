#pragma once

#include <QString>

#include <functional>

namespace tavril {

/// A text that says when it is set.
class WatchedText : public QString {
 public:
  WatchedText &operator=(const QString &text) {
    QString::operator=(text);
    if (wasSet) wasSet();
    return *this;
  }
  void clear() { *this = QString(); }

  std::function<void()> wasSet;
};

}  // namespace tavril
