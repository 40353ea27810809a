#include "platform/TextChange.h"

#include "platform/StringTable.h"

#include <QRegularExpression>

namespace tavril {

QString TextChange::whole(const QString &text, const QStringList &keys) const {
  return replaced(text, find(text, keys, Until::TextEnd));
}

QString TextChange::beginning(const QString &text, const QStringList &keys) const {
  return replaced(text, keyAtBeginning(text, keys));
}

std::optional<QString> TextChange::keyAtBeginning(const QString &text, const QStringList &keys) const {
  return find(text, keys, Until::Anything);
}

QString TextChange::numbered(const QString &text, const QStringList &keys) const {
  static const QRegularExpression number(QStringLiteral("^\\d+\\. "), QRegularExpression::MultilineOption);
  QString changed;
  qsizetype done = 0;
  for (auto match = number.match(text); match.hasMatch(); match = number.match(text, done)) {
    const qsizetype item = match.capturedEnd();
    changed += QStringView(text).mid(done, item - done);
    done = item;
    if (const auto key = find(QStringView(text).mid(item), keys, Until::LineEnd)) {
      changed += now_->text(*key);
      done += before_->text(*key).size();
    }
  }
  return changed + text.mid(done);
}

std::optional<QString> TextChange::find(QStringView text, const QStringList &keys, Until until) const {
  std::optional<QString> found;
  qsizetype longest = 0;
  for (const QString &key : keys) {
    const QString old = before_->text(key);
    if (old.size() <= longest || !text.startsWith(old)) continue;
    const QStringView rest = text.mid(old.size());
    if (until == Until::TextEnd && !rest.isEmpty()) continue;
    if (until == Until::LineEnd && !rest.isEmpty() && !rest.startsWith(u'\n')) continue;
    found = key;
    longest = old.size();
  }
  return found;
}

QString TextChange::replaced(const QString &text, const std::optional<QString> &key) const {
  return key ? now_->text(*key) + text.mid(before_->text(*key).size()) : text;
}

}  // namespace tavril
