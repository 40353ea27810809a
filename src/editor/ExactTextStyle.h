#pragma once

#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QRect>
#include <QString>

namespace tavril {

/// Draws texts in exactly the size of their font. By itself this Qt draws a font between two whole pixel
/// sizes in the nearer one.
class ExactTextStyle final : public QProxyStyle {
  Q_OBJECT

 public:
  using QProxyStyle::QProxyStyle;

  void drawItemText(QPainter *painter, const QRect &place, int flags, const QPalette &palette, bool enabled,
                    const QString &text, QPalette::ColorRole role) const override;
};

}  // namespace tavril
