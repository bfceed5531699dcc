#pragma once

#include <QHash>
#include <QLabel>
#include <QString>

namespace kestrav {

/// Plain text, never markup, that is folded where it has to be and takes no more height than its lines at the width it
/// gets: Qt's own asks for the height that it would need in a narrow window.
class WrappedLabel final : public QLabel {
  public:
    explicit WrappedLabel(QWidget* parent = nullptr);

    /// Qt's own folds the text several times to find a pleasing width; this one takes what it is given.
    QSize sizeHint() const override { return minimumSizeHint(); }
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

  protected:
    void changeEvent(QEvent* event) override;

  private:
    // Layouts ask for the same few widths many times over, and each answer costs a folding.
    mutable QHash<int, int> heights_;  ///< by width, of the text below
    mutable QString measured_;
};

}  // namespace kestrav
