#include "tools/TextFile.h"

#include "platform/UserFiles.h"

#include <QByteArray>
#include <QStringDecoder>

#include <utility>

namespace tavril {

TextFile TextFile::read(UserFiles &files, const QString &path) {
  QByteArray bytes;
  if (const auto error = files.read(path, largestSize, bytes)) return {{}, error->localizedDescription};
  if (auto text = decode(bytes)) return {std::move(text), {}};
  return {{}, QStringLiteral("%1: not valid UTF-8").arg(path)};
}

std::optional<QString> TextFile::decode(QByteArrayView bytes) {
  QStringDecoder decoder(QStringDecoder::Utf8);
  QString text = decoder(bytes);
  // One more character shows whether the last one before it was cut off.
  text += decoder(QByteArrayView("\n"));
  if (decoder.hasError()) return {};
  text.chop(1);
  return text;
}

}  // namespace tavril
