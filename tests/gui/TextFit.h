#pragma once

#include <QStringList>
#include <QWidget>

namespace tavril {

/// Finds texts that are cut, elided, have to be scrolled, leave their parent or run into each other, in what
/// can be seen of a window. Measured with the fonts that the widgets really use.
class TextFit {
 public:
  explicit TextFit(const QWidget &screen);

  /// One sentence for each text that does not fit; empty when all do.
  const QStringList &problems() const { return problems_; }
  /// How many texts were looked at, so that a check of nothing can be told from one that found nothing.
  int count() const { return count_; }

  /// Where a text is drawn, in the screen's coordinates; of what has a frame, all of it.
  struct Place {
    const QWidget *element;
    QRect rect;
  };
  const QList<Place> &places() const { return places_; }

  /// The elements that can be seen: with a panel up, those of the panel.
  static QList<QWidget *> seen(const QWidget &screen);

 private:
  void look(const QWidget &element);
  /// Notes a text of this size that has this room; `takes` is where it is drawn, in the element's
  /// coordinates.
  void note(const QWidget &element, const QString &text, const QSize &size, const QSize &room,
            const QRect &takes);
  void findOverlaps();

  const QWidget &screen_;
  QList<Place> places_;
  QStringList problems_;
  int count_ = 0;
};

}  // namespace tavril
