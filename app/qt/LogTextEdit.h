#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QTimer>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrav {

/// The log's widget: text that can be read, selected, copied and saved, but not changed by the person.
///
/// The content is kept byte for byte. What is shown differs from it in characters that mislead alone, which have
/// pictures instead, so that no text from outside can pretend to be lines of its own, or to read otherwise. Copying and
/// saving give the content.
///
/// A line is there for everybody who asks as soon as it is appended. It is painted at once if nothing was for a moment;
/// the lines that follow faster than a screen changes are painted together.
class LogTextEdit final : public QPlainTextEdit {
    Q_DECLARE_TR_FUNCTIONS(LogTextEdit)

  public:
    explicit LogTextEdit(QWidget* parent = nullptr);

    const std::string& content() const { return content_; }
    /// Costs what `text` costs. A line ends at kLogLineEnd.
    void append(std::string_view text);
    /// Brings the newest line into view, and paints it now or, from the event loop, a moment later.
    void scrollToEnd();

    /// Asks for a file's name and writes the content into it.
    void saveAs();
    /// Called with each text that is appended.
    void setAppended(std::function<void(std::string_view)> appended) { appended_ = std::move(appended); }

  protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    QMimeData* createMimeDataFromSelection() const override;

  private:
    QString lineText(int line) const;
    std::chrono::milliseconds untilPainting() const;
    void paintSoon();
    void paintNow();
    void takeVisibleFrame();

    std::function<void(std::string_view)> appended_ = [](std::string_view) {};
    std::string content_;
    std::vector<std::size_t> lineStarts_{0};  ///< where each shown line begins in the content
    QElapsedTimer sincePainted_;              ///< since lines were painted
    QTimer nextPainting_;                     ///< runs while lines wait for being painted
};

}  // namespace kestrav
