#pragma once

#include <QStringView>

#include <span>

namespace tavril {

/// A label of the main screen and the key of its text.
struct ScreenLabel {
  QStringView name;
  QStringView key;
};

/// All labels of the main screen whose text is looked up on every layout pass, in the order of the pass.
std::span<const ScreenLabel> screenLabels();

}  // namespace tavril
