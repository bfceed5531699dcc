#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>

class QTextBrowser;

namespace kestrav {

/// A page of the documentation, which the program brings along, in a window beside the main one. It is deleted when it
/// is closed.
class HelpPage final : public QDialog {
  public:
    /// `resource` is a text in Markdown. The page opens at the first of the sentences in `sought` that it explains, or
    /// at its beginning.
    HelpPage(QWidget* parent, const QString& title, const QString& resource, const QStringList& sought = {});

    QTextBrowser& browser() { return *browser_; }

  private:
    bool goTo(const QString& sentence);

    QTextBrowser* browser_ = nullptr;
};

}  // namespace kestrav
