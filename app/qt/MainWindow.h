#pragma once

#include <QCoreApplication>
#include <QMainWindow>
#include <functional>
#include <memory>

#include "app/MainView.h"

class QCloseEvent;

namespace kestrav {

class AccessoryLine;
class ActivityBar;
class ActivityIndicator;
class Button;
class HelpButton;
class ImageButton;
class LogBox;
class LogText;
class LogTextEdit;
class OutcomePanel;
class StatusLine;
class SupportRecord;
class ViewController;

/// The only window: the accessory, two buttons, how the newest update stands, and the log.
class MainWindow final : public QMainWindow, public MainView {
    Q_DECLARE_TR_FUNCTIONS(MainWindow)

  public:
    /// Brings the window up, unless `mayComeUp` says no; it is asked when the display has heard of the window.
    explicit MainWindow(const std::function<bool()>& mayComeUp = [] { return true; });
    ~MainWindow() override;

    /// Gives the controller the window's parts and the buttons their action. Both live as long as this object.
    void connectTo(ViewController& controller);
    /// Has the chooser that comes up next open on that file.
    void preselect(const std::string& path) { preselected_ = QString::fromStdString(path); }
    /// Shows the window, and what stands before it, in front of all others.
    void bringToFront();
    /// Asked when the person wants to close the window, which stays open on false.
    void setMayClose(std::function<bool()> mayClose) { mayClose_ = std::move(mayClose); }

    /// Called once, from the event loop, when the person can see the window.
    void setOnceVisible(std::function<void()> onceVisible) { onceVisible_ = std::move(onceVisible); }

    AccessoryLine& accessoryLine() { return *accessoryLine_; }
    OutcomePanel& panel() { return *panel_; }
    /// Takes the service's answers, too, for whoever helps.
    SupportRecord& supportRecord();
    /// The panel's part for what the service itself says.
    StatusLine& statusLine();

    void setPreferredContentSize(int width, int height) override;
    std::unique_ptr<OpenPanel> makeOpenPanel() override;
    /// Runs `task` on a thread of its own. Both buttons are shown as disabled meanwhile, and earlier
    /// messages have gone.
    void whileBusy(const std::function<void()>& task) override;
    void whileAsking(const std::function<void()>& task) override;
    /// Called when the window was closed while a person was asked elsewhere; ends the process.
    void setClosedWhileAsking(std::function<void()> closed) { closedWhileAsking_ = std::move(closed); }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    ImageButton* makeButton(const QString& name, const QString& text, const QString& description);
    void makeParts();
    void makeOutlets();
    void layOut();
    void runInTheBackground(const std::function<void()>& task);

    QWidget* buttons_ = nullptr;
    ImageButton* firmwareButton_ = nullptr;
    ImageButton* iconButton_ = nullptr;
    LogTextEdit* log_ = nullptr;
    ActivityBar* progress_ = nullptr;
    AccessoryLine* accessoryLine_ = nullptr;
    HelpButton* help_ = nullptr;
    OutcomePanel* panel_ = nullptr;
    QString folder_;
    QString preselected_;
    std::function<void()> onceVisible_;
    std::function<bool()> mayClose_ = [] { return true; };
    std::function<void()> closedWhileAsking_ = [] {};
    bool isAsking_ = false;

    std::shared_ptr<LogBox> logBoxOutlet_;
    std::shared_ptr<LogText> logTextOutlet_;
    std::shared_ptr<Button> firmwareOutlet_;
    std::shared_ptr<Button> iconOutlet_;
    std::shared_ptr<ActivityIndicator> indicatorOutlet_;
};

}  // namespace kestrav
