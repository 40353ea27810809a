#include "tests/gui/TextFit.h"

#include "editor/panels/PanelBackdrop.h"
#include "editor/screen/ButtonLabel.h"
#include "editor/screen/FrameField.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QStyleOptionFrame>

namespace tavril {

namespace {

constexpr int cursorRoom = 2;  ///< that a line edit keeps free on either side

QSize sizeOf(const QLabel &label, int width) {
  const int flags = label.wordWrap() ? int(Qt::TextWordWrap) : 0;
  return label.fontMetrics().boundingRect(QRect(0, 0, width, 10000), flags, label.text()).size();
}

QRect roomOf(const QPushButton &button) {
  QStyleOptionButton option;
  option.initFrom(&button);
  option.text = button.text();
  return button.style()->subElementRect(QStyle::SE_PushButtonContents, &option, &button);
}

QRect roomOf(const QLineEdit &line) {
  QStyleOptionFrame option;
  option.initFrom(&line);
  option.lineWidth = line.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &line);
  return line.style()
      ->subElementRect(QStyle::SE_LineEditContents, &option, &line)
      .adjusted(cursorRoom, 0, -cursorRoom, 0);
}

QRect roomOf(const QComboBox &box) {
  QStyleOptionComboBox option;
  option.initFrom(&box);
  return box.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box);
}

QSize sizeOnOneLine(const QWidget &element, const QString &text) {
  return element.fontMetrics().size(Qt::TextSingleLine, text);
}

/// What a menu shows of an item: its title without the mark of its mnemonic, and its shortcut.
QString shownText(const QAction &action) {
  return QString(action.text()).remove(u'&') + action.shortcut().toString(QKeySequence::NativeText);
}

}  // namespace

TextFit::TextFit(const QWidget &screen) : screen_(screen) {
  for (const QWidget *element : seen(screen)) look(*element);
  findOverlaps();
}

QList<QWidget *> TextFit::seen(const QWidget &screen) {
  const QWidget *top = &screen;
  for (const PanelBackdrop *panel : screen.findChildren<PanelBackdrop *>()) {
    if (panel->isVisible()) top = panel;
  }
  QList<QWidget *> elements = top->findChildren<QWidget *>();
  elements.prepend(const_cast<QWidget *>(top));
  elements.removeIf([](const QWidget *element) { return !element->isVisible(); });
  return elements;
}

void TextFit::look(const QWidget &element) {
  if (const auto *label = qobject_cast<const QLabel *>(&element)) {
    const QRect room = label->contentsRect();
    const QSize size = sizeOf(*label, room.width());
    note(element, label->text(), size, room.size(),
         QStyle::alignedRect(label->layoutDirection(), label->alignment(), size, room));
  } else if (const auto *push = qobject_cast<const QPushButton *>(&element)) {
    const QSize size = sizeOnOneLine(element, push->text());
    const QRect room = roomOf(*push);
    note(element, push->text(), size, room.size(), push->rect());
  } else if (const auto *button = qobject_cast<const QAbstractButton *>(&element)) {
    constexpr QSize edges{12, 4};
    note(element, button->text(), sizeOnOneLine(element, button->text()), button->size() - edges,
         button->rect());
  } else if (const auto *frame = qobject_cast<const FrameField *>(&element)) {
    note(element, frame->text(), {}, frame->size(), frame->rect());
    if (frame->lines().join(u' ') != frame->text())
      problems_.append(frame->text() + QStringLiteral(" is elided"));
  } else if (const auto *line = qobject_cast<const QLineEdit *>(&element)) {
    const QRect room = roomOf(*line);
    note(element, line->text(), sizeOnOneLine(element, line->text()), room.size(), line->rect());
  } else if (const auto *box = qobject_cast<const QComboBox *>(&element)) {
    note(element, box->currentText(), sizeOnOneLine(element, box->currentText()), roomOf(*box).size(),
         box->rect());
  } else if (const auto *view = qobject_cast<const QPlainTextEdit *>(&element)) {
    note(element, view->toPlainText(), {}, view->size(), view->rect());
    if (view->verticalScrollBar()->maximum() > 0)
      problems_.append(view->toPlainText() + QStringLiteral(" has to be scrolled"));
  } else if (const auto *menu = qobject_cast<const QMenu *>(&element)) {
    for (QAction *action : menu->actions()) {
      if (!action->isVisible()) continue;
      const QRect place = menu->actionGeometry(action);
      note(element, shownText(*action), sizeOnOneLine(element, shownText(*action)), place.size(), place);
    }
  } else if (const auto *bar = qobject_cast<const QMenuBar *>(&element)) {
    for (QAction *action : bar->actions()) {
      if (!action->isVisible()) continue;
      const QRect place = bar->actionGeometry(action);
      note(element, shownText(*action), sizeOnOneLine(element, shownText(*action)), place.size(), place);
    }
  }
}

void TextFit::note(const QWidget &element, const QString &text, const QSize &size, const QSize &room,
                   const QRect &takes) {
  if (text.isEmpty()) return;
  ++count_;
  const QString name = element.objectName() + QStringLiteral(" \"") + text + u'"';
  if (size.width() > room.width() || size.height() > room.height()) {
    problems_.append(QStringLiteral("%1 takes %2 x %3 and has %4 x %5")
                         .arg(name)
                         .arg(size.width())
                         .arg(size.height())
                         .arg(room.width())
                         .arg(room.height()));
  }
  if (!element.rect().contains(takes)) problems_.append(name + QStringLiteral(" leaves its element"));
  const QRect place(element.mapTo(&screen_, takes.topLeft()), takes.size());
  for (const QWidget *parent = element.parentWidget(); parent && parent != screen_.parentWidget();
       parent = parent->parentWidget()) {
    if (element.isWindow()) break;
    if (!parent->rect().contains(QRect(element.mapTo(parent, takes.topLeft()), takes.size()))) {
      problems_.append(name + QStringLiteral(" leaves ") + parent->objectName());
    }
    if (parent == &screen_) break;
  }
  places_.append({&element, place});
}

void TextFit::findOverlaps() {
  for (qsizetype i = 0; i < places_.size(); ++i) {
    for (qsizetype k = i + 1; k < places_.size(); ++k) {
      if (!places_[i].rect.intersects(places_[k].rect)) continue;
      const QWidget *one = places_[i].element;
      const QWidget *other = places_[k].element;
      if (one->isAncestorOf(other) || other->isAncestorOf(one)) continue;
      problems_.append(one->objectName() + QStringLiteral(" overlaps ") + other->objectName());
    }
  }
}

}  // namespace tavril
