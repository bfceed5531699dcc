#pragma once

#include <QWidget>

namespace kestrav {

/// The sign of how an update stands: each differs from the others in its shape as well as in its colour. Drawn here, so
/// that it is there with every theme of icons, and sharp at every scale.
class OutcomeSign final : public QWidget {
  public:
    /// What is shown, and how it is drawn.
    enum class Kind {
        ready,        ///< a ring with an i
        working,      ///< a ring of dots
        success,      ///< a filled disc with a check mark
        notWritten,   ///< a filled octagon with a cross
        nobodyKnows,  ///< a filled triangle with a question mark
    };

    explicit OutcomeSign(QWidget* parent = nullptr);

    Kind kind() const { return kind_; }
    void setKind(Kind kind);

    /// The kind's colour before `background`: dark on a light one, light on a dark one.
    static QColor colourOf(Kind kind, const QPalette& palette);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Kind kind_ = Kind::ready;
};

}  // namespace kestrav
