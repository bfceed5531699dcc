#pragma once

#include <QLabel>

namespace kestrav {

/// Plain text, never markup, that is folded where it has to be and takes no more height than its lines at the width it
/// gets: Qt's own asks for the height that it would need in a narrow window.
class WrappedLabel final : public QLabel {
  public:
    explicit WrappedLabel(QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;
};

}  // namespace kestrav
