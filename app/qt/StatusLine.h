#pragma once

#include <QPlainTextEdit>
#include <string_view>

namespace kestrav {

/// Shows one line of text, which can be selected and copied; a long one is folded in two, and scrolled beyond that.
/// Used on the main thread.
class StatusLine final : public QPlainTextEdit {
  public:
    explicit StatusLine(QWidget* parent = nullptr);

    /// Shows `sentence` instead of what was shown before. Control characters, line ends included, are shown escaped.
    void showSentence(std::string_view sentence);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void takeWindowColours();
    void countLines();

    int lines_ = 1;
};

}  // namespace kestrav
