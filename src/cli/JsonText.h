#pragma once

#include <QString>

namespace tavril::cli {

/// The text as JSON, quotes included. Documents are put together by hand because Qt's objects sort their
/// keys, and registers stand in the order of their numbers.
QString jsonText(const QString &text);

}  // namespace tavril::cli
