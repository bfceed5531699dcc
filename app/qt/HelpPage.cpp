#include "app/qt/HelpPage.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <initializer_list>
#include <string_view>

#include "app/qt/fitOnScreen.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

// With fewer words than this a sentence could be any.
constexpr qsizetype kFewestWords = 3;

/// The sentence as the page has it: what tells a refusal from a failure stands in the page's headings.
QString withoutPrefix(const QString& sentence) {
    for (const std::string_view prefix : {kRefusedPrefix, kFailedPrefix}) {
        const QLatin1String start(prefix.data(), static_cast<qsizetype>(prefix.size()));
        if (sentence.startsWith(start)) return sentence.mid(start.size());
    }
    return sentence;
}

}  // namespace

HelpPage::HelpPage(QWidget* parent, const QString& title, const QString& resource, const QStringList& sought)
    : QDialog(parent),
      browser_(new QTextBrowser(this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(title);
    resize(560, 420);
    QFile file(resource);
    if (file.open(QIODevice::ReadOnly)) browser_->document()->setMarkdown(QString::fromUtf8(file.readAll()));
    // Reading leaves the cursor behind the last word, and the page is shown where that is.
    browser_->moveCursor(QTextCursor::Start);
    // Its links lead to pages that are not here.
    browser_->setOpenLinks(false);
    browser_->setAccessibleName(title);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto* column = new QVBoxLayout(this);
    column->addWidget(browser_);
    column->addWidget(buttons);
    fitOnScreen(*this);
    for (const QString& sentence : sought) {
        if (goTo(sentence)) return;
    }
}

/// The page has a placeholder where a sentence has a name or a number, so the beginning of it has to do.
bool HelpPage::goTo(const QString& sentence) {
    QStringList words = withoutPrefix(sentence.simplified()).split(' ');
    for (; words.size() >= kFewestWords; words.removeLast()) {
        const QTextCursor found = browser_->document()->find(words.join(' '), 0, QTextDocument::FindCaseSensitively);
        if (found.isNull()) continue;
        browser_->setTextCursor(found);
        browser_->ensureCursorVisible();
        return true;
    }
    return false;
}

}  // namespace kestrav
