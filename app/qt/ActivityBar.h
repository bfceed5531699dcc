#pragma once

#include <QElapsedTimer>
#include <QProgressBar>
#include <QTimer>

namespace kestrav {

/// A thin bar with a piece that runs to and fro as long as the bar is shown. Styles paint a bar without an end in ways
/// of their own, some of them hardly moving; a person who waits a minute has to see at a glance that it goes on. For
/// whoever wants no motion it is a still pattern.
class ActivityBar final : public QProgressBar {
  public:
    explicit ActivityBar(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void keepStill();

    bool isStill_ = false;
    QTimer frames_;
    QElapsedTimer running_;
};

}  // namespace kestrav
