#include "app/qt/MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QIcon>
#include <QPointer>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>
#include <exception>
#include <thread>
#include <utility>

#include "app/LogBox.h"
#include "app/ViewController.h"
#include "app/qt/AccessoryLine.h"
#include "app/qt/ActivityBar.h"
#include "app/qt/ActivityBarOutlet.h"
#include "app/qt/FittingColumn.h"
#include "app/qt/HelpButton.h"
#include "app/qt/ImageButton.h"
#include "app/qt/ImageChooser.h"
#include "app/qt/InputBlocker.h"
#include "app/qt/LogTextEdit.h"
#include "app/qt/LogTextOutlet.h"
#include "app/qt/OutcomePanel.h"
#include "app/qt/PushButtonOutlet.h"
#include "app/qt/StatusLine.h"

namespace kestrav {
namespace {

constexpr int kReadableColumns = 120;
constexpr int kFewestLogLines = 4;
constexpr int kTextMargin = 4;  // what a text leaves free around itself

/// Disables a widget for as long as one exists, on top of what its parts are told; the focus comes back afterwards.
class Disabled {
  public:
    explicit Disabled(QWidget& widget) : widget_(widget), focus_(widget.window()->focusWidget()) {
        widget_.setEnabled(false);
    }
    ~Disabled() {
        widget_.setEnabled(true);
        if (focus_) focus_->setFocus();
    }
    Disabled(const Disabled&) = delete;
    Disabled& operator=(const Disabled&) = delete;

  private:
    QWidget& widget_;
    QPointer<QWidget> focus_;
};

}  // namespace

MainWindow::MainWindow(const std::function<bool()>& mayComeUp) : folder_(QDir::homePath()) {
    setWindowTitle(tr("Kestrav"));
    resize(480, 270);
    // The window manager takes as long to bring the window up as the toolkit to load its fonts. Asked first, it does so
    // while the parts are made; nothing is painted before the event loop runs.
    create();
    if (mayComeUp()) show();
    makeParts();
    makeOutlets();
    layOut();
    for (const auto key : {QKeySequence::Quit, QKeySequence::Close}) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, &QWidget::close);
    }
}

MainWindow::~MainWindow() = default;

void MainWindow::makeParts() {
    firmwareButton_ = makeButton("firmwareBtn", tr("Update &Firmware…"),
                                 tr("Choose a firmware image, an fds file, and write it to the accessory"));
    iconButton_ = makeButton("iconBtn", tr("Update &Icon…"),
                             tr("Choose an icon image, a fif file, and write it to the accessory"));
    log_ = new LogTextEdit(this);
    log_->setAccessibleName(tr("Log"));
    log_->setAccessibleDescription(tr("What was done, one line a step"));
    progress_ = new ActivityBar(this);
    progress_->setAccessibleName(tr("Update in progress"));
    progress_->hide();
    accessoryLine_ = new AccessoryLine(this);
    help_ = new HelpButton(this);
    panel_ = new OutcomePanel(this);
    panel_->takeIndicator(progress_);
    log_->setAppended([this](std::string_view text) { help_->record().logged(text); });
    help_->setSought([this] { return panel_->sentences(); });
    help_->setShown([this] {
        return QStringList{accessoryLine_->text(), panel_->words(), statusLine().toPlainText()}.join('\n');
    });
}

void MainWindow::makeOutlets() {
    logBoxOutlet_ = std::make_shared<LogBox>();
    logTextOutlet_ = std::make_shared<LogTextOutlet>(*log_);
    firmwareOutlet_ = std::make_shared<PushButtonOutlet>(*firmwareButton_);
    iconOutlet_ = std::make_shared<PushButtonOutlet>(*iconButton_);
    indicatorOutlet_ = std::make_shared<ActivityBarOutlet>(*progress_);
}

ImageButton* MainWindow::makeButton(const QString& name, const QString& text, const QString& description) {
    // In a window from right to left, the dots of a text that nobody has translated would come to stand before it; the
    // mark after them keeps them behind.
    constexpr char16_t kLeftToRightMark = 0x200e;
    auto* button = new ImageButton(text.isRightToLeft() ? text : text + QChar(kLeftToRightMark), this);
    button->setObjectName(name);
    button->setAccessibleName(QString(text).remove('&'));
    button->setAccessibleDescription(description);
    button->setToolTip(description);
    button->setAutoDefault(true);
    return button;
}

void MainWindow::layOut() {
    auto* content = new QWidget;
    auto* column = new FittingColumn;
    buttons_ = new QWidget;
    auto* row = new QHBoxLayout(buttons_);
    row->setContentsMargins({});
    row->addWidget(firmwareButton_);
    row->addWidget(iconButton_);
    auto* all = new QVBoxLayout(column);
    all->setContentsMargins(8, 4, 8, 8);
    all->setSpacing(4);
    auto* top = new QHBoxLayout;
    top->addWidget(accessoryLine_, 1);
    top->addWidget(help_);
    all->addLayout(top);
    all->addWidget(buttons_);
    all->addWidget(panel_);
    all->addWidget(log_, 1);
    // Lines across a whole wide screen are hard to read.
    log_->setMinimumHeight(fontMetrics().lineSpacing() * kFewestLogLines + 2 * (log_->frameWidth() + kTextMargin));
    column->setMaximumWidth(fontMetrics().averageCharWidth() * kReadableColumns);
    auto* middle = new QHBoxLayout(content);
    middle->setContentsMargins({});
    middle->addWidget(column, 1);
    setCentralWidget(content);
    // Above everything, and yet what a person needs last.
    setTabOrder(log_, help_);
    content->show();
    firmwareButton_->setFocus();
}

void MainWindow::connectTo(ViewController& controller) {
    controller.setLogBox(logBoxOutlet_);
    controller.setLogText(logTextOutlet_);
    controller.setProcessFirmwareBtn(firmwareOutlet_);
    controller.setProcessIconBtn(iconOutlet_);
    controller.setLoaderBar(indicatorOutlet_);
    const auto give = [this, &controller](ImageButton* button, const Button& sender) {
        const auto act = [&controller, &sender, button] {
            controller.browseFile(sender);
            // The button lost the keyboard focus when it was disabled; a person without a mouse needs it back.
            button->setFocus();
        };
        connect(button, &QPushButton::clicked, this, act);
        button->setDropped([this, act](const QString& path) {
            // Something else has come up since.
            if (QApplication::activeModalWidget() != nullptr || !buttons_->isEnabled()) return;
            preselected_ = path;
            bringToFront();
            act();
        });
    };
    give(firmwareButton_, *firmwareOutlet_);
    give(iconButton_, *iconOutlet_);
}

void MainWindow::bringToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    QWidget* front = QApplication::activeModalWidget();
    if (front == nullptr) front = this;
    front->raise();
    front->activateWindow();
}

void MainWindow::setPreferredContentSize(int width, int height) {
    resize(width, height);
}

std::unique_ptr<OpenPanel> MainWindow::makeOpenPanel() {
    return std::make_unique<ImageChooser>(this, folder_, std::exchange(preselected_, {}));
}

SupportRecord& MainWindow::supportRecord() {
    return help_->record();
}

StatusLine& MainWindow::statusLine() {
    return panel_->statusLine();
}

void MainWindow::whileBusy(const std::function<void()>& task) {
    // Enabled again after the blocker has gone, so that a person who sees the buttons enabled can use them at once.
    const Disabled disabled(*buttons_);
    const InputBlocker blocker;
    // The service may write no entry at all. The entry of the previous update must not be taken for its answer.
    statusLine().clear();
    runInTheBackground(task);
}

void MainWindow::whileAsking(const std::function<void()>& task) {
    const Disabled disabled(*buttons_);
    const InputBlocker blocker(InputBlocker::Closing::allowed);
    isAsking_ = true;
    runInTheBackground(task);
    isAsking_ = false;
}

void MainWindow::runInTheBackground(const std::function<void()>& task) {
    QEventLoop loop;
    std::exception_ptr failure;
    std::thread worker([&] {
        try {
            task();
        } catch (...) {
            failure = std::current_exception();
        }
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    worker.join();
    if (failure) std::rethrow_exception(failure);
}

void MainWindow::paintEvent(QPaintEvent* event) {
    QMainWindow::paintEvent(event);
    if (onceVisible_) QTimer::singleShot(0, this, std::exchange(onceVisible_, nullptr));
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->setAccepted(mayClose_());
    if (event->isAccepted() && isAsking_) closedWhileAsking_();
}

}  // namespace kestrav
