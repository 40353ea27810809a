#include "editor/screen/FrameField.h"

#include "look/Style.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPalette>
#include <QStyle>
#include <QStyleOptionFrame>

#include <algorithm>

namespace tavril {

namespace {

// Space around the text for the focus ring.
constexpr int sideInset = 4;
constexpr int topInset = 2;

/// The words in this many lines. Each line but the last has the same number of words.
QStringList inLines(const QStringList &words, qsizetype count) {
  const qsizetype perLine = (words.size() + count - 1) / count;
  QStringList lines;
  for (qsizetype first = 0; first < words.size(); first += perLine)
    lines.append(words.mid(first, perLine).join(u' '));
  return lines;
}

}  // namespace

FrameField::FrameField(QWidget *parent) : QLineEdit(parent) {
  setReadOnly(true);
  setCursor(Qt::ArrowCursor);
}

bool FrameField::fits(const QString &line) const {
  return fontMetrics().horizontalAdvance(line) <= textArea().width();
}

QRect FrameField::textArea() const {
  return rect().adjusted(sideInset, topInset, -sideInset, -topInset);
}

QStringList FrameField::lines() const {
  const qsizetype room = qMax(1, textArea().height() / fontMetrics().lineSpacing());
  if (room == 1 || fits(text())) {
    return {fontMetrics().elidedText(text(), Qt::ElideRight, textArea().width())};
  }
  const QStringList words = text().split(u' ', Qt::SkipEmptyParts);
  if (words.isEmpty()) return {};
  const QString afterLabel = words.mid(1).join(u' ');
  // A reply has its bytes twice, decimal and hexadecimal. They read best one above the other.
  const bool isReply = words.front() == u"RX:";
  if (!isReply && words.front().endsWith(u':') && fits(words.front()) && fits(afterLabel)) {
    return {words.front(), afterLabel};
  }
  for (qsizetype count = 2; count <= room; ++count) {
    QStringList lines = inLines(words, count);
    if (std::all_of(lines.begin(), lines.end(), [this](const QString &line) { return fits(line); })) {
      return lines;
    }
  }
  // It does not fit: each line gets as many words as it can hold, and the last line is cut.
  QStringList lines{QString()};
  for (const QString &word : words) {
    const QString longer = lines.back().isEmpty() ? word : lines.back() + u' ' + word;
    if (fits(longer) || lines.size() == room) {
      lines.back() = longer;
    } else {
      lines.append(word);
    }
  }
  lines.back() = fontMetrics().elidedText(lines.back(), Qt::ElideRight, textArea().width());
  return lines;
}

QVariant FrameField::inputMethodQuery(Qt::InputMethodQuery query) const {
  // The cursor rectangle of QLineEdit would be that of its one line, not of the lines drawn here.
  // NOLINTNEXTLINE(bugprone-parent-virtual-call)
  if (query == Qt::ImCursorRectangle) return QWidget::inputMethodQuery(query);
  return QLineEdit::inputMethodQuery(query);
}

void FrameField::paintEvent(QPaintEvent *) {
  QStyleOptionFrame option;
  initStyleOption(&option);
  QPainter painter(this);
  style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
  if (hasFocus()) Style::drawFocusRing(painter, rect());

  int top = textArea().top();
  for (const QString &line : lines()) {
    const QRect band(textArea().left(), top, fontMetrics().horizontalAdvance(line),
                     fontMetrics().lineSpacing());
    if (hasSelectedText()) painter.fillRect(band, palette().color(QPalette::Highlight));
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(band, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, line);
    top += band.height();
  }
}

// A frame is selected as a whole, because positions in the text do not match the broken lines.

void FrameField::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) selectAll();
}

void FrameField::mouseMoveEvent(QMouseEvent *event) {
  event->ignore();
}

void FrameField::mouseDoubleClickEvent(QMouseEvent *) {
  selectAll();
}

void FrameField::focusInEvent(QFocusEvent *event) {
  QLineEdit::focusInEvent(event);
  if (event->reason() != Qt::PopupFocusReason) selectAll();
}

}  // namespace tavril
