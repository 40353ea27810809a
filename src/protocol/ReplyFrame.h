#pragma once

#include <QByteArrayView>

namespace tavril {

/// How long the whole, well-formed reply at the front of the bytes is; 0 when there is none. Well-formed: the
/// marks, a known code, exactly the length that replies of this code have, and data that the protocol allows.
qsizetype replyLengthAt(QByteArrayView bytes);

}  // namespace tavril
