#pragma once

#include <QObject>
#include <QPointF>

class QMouseEvent;

namespace kestrav {

/// While one exists, the second click of a double click on a push button goes nowhere: a button acts at the first one,
/// and what comes to stand below the pointer then is not what the person meant.
class SecondClickFilter final : public QObject {
  public:
    SecondClickFilter();

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    bool isSecond(const QMouseEvent& press) const;

    bool hasFirst_ = false;
    quint64 firstAt_ = 0;  ///< by the display's clock, in milliseconds: a busy program gets its events late
    QPointF firstPlace_;   ///< on the screen
    bool isSwallowing_ = false;
};

}  // namespace kestrav
