// What a person expects of any program: files dropped onto buttons, double clicks, places in the side bar.

#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <array>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "app/qt/ImageButton.h"
#include "app/qt/ImageChooser.h"
#include "app/qt/SecondClickFilter.h"
#include "app/qt/lastFolder.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

class Drop : public ::testing::Test {
  protected:
    Drop() {
        std::ofstream(image_) << "x";
        button_.setDropped([this](const QString& path) { dropped_.append(path); });
    }
    /// Whether it was taken.
    bool drop(const QList<QUrl>& urls, Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction) {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter({5, 5}, offered, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&button_, &enter);
        QDropEvent event({5, 5}, offered, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&button_, &event);
        EXPECT_EQ(enter.isAccepted(), event.isAccepted());
        EXPECT_TRUE(!event.isAccepted() || event.dropAction() == Qt::CopyAction);
        EXPECT_TRUE(dropped_.isEmpty()) << "the other program waits meanwhile";
        QCoreApplication::processEvents();
        return event.isAccepted();
    }

    TemporaryFolder folder_;
    std::string image_ = folder_.path() / "an image.fds";
    QUrl url_ = QUrl::fromLocalFile(QString::fromStdString(image_));
    ImageButton button_{"Update", nullptr};
    QStringList dropped_;
};

TEST_F(Drop, GivesThePathOfOneFile) {
    EXPECT_TRUE(drop({url_}));
    EXPECT_EQ(dropped_, QStringList(QString::fromStdString(image_)));
}

TEST_F(Drop, TakesNothingElse) {
    const QUrl folder = QUrl::fromLocalFile(QString::fromStdString(folder_.path()));
    EXPECT_FALSE(drop({}));
    EXPECT_FALSE(drop({url_}, Qt::MoveAction)) << "the other program would remove the file";
    EXPECT_FALSE(drop({url_, url_}));
    EXPECT_FALSE(drop({folder}));
    EXPECT_FALSE(drop({QUrl("file:///not/there.fds")}));
    EXPECT_FALSE(drop({QUrl("file:relative.fds")}));
    EXPECT_FALSE(drop({QUrl("https://example.org/image.fds")}));
    EXPECT_EQ(dropped_, QStringList());
}

class Click : public ::testing::Test {
  protected:
    Click() {
        QObject::connect(&button_, &QPushButton::clicked, [this] { ++clicks_; });
    }
    /// A press and a release, `at` milliseconds by the display's clock.
    static void click(QWidget& widget, quint64 at, const QPoint& place = {5, 5}) {
        for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            const bool isPress = type == QEvent::MouseButtonPress;
            QMouseEvent event(type, place, place, Qt::LeftButton, isPress ? Qt::LeftButton : Qt::NoButton,
                              Qt::NoModifier);
            event.setTimestamp(at);
            QCoreApplication::sendEvent(&widget, &event);
        }
    }

    const quint64 interval_ = static_cast<quint64>(QApplication::doubleClickInterval());
    QPushButton button_;
    int clicks_ = 0;
    SecondClickFilter filter_;
};

TEST_F(Click, CountsOnceWhenItIsDouble) {
    click(button_, 1000);
    click(button_, 1000 + interval_ / 2);
    EXPECT_EQ(clicks_, 1);
    click(button_, 1000 + 2 * interval_);
    EXPECT_EQ(clicks_, 2);
}

TEST_F(Click, GoesNowhereInWhatHasComeUpBelowThePointer) {
    QPushButton other;
    int others = 0;
    QObject::connect(&other, &QPushButton::clicked, [&] { ++others; });
    click(button_, 1000);
    click(other, 1001);
    EXPECT_EQ(others, 0);
    click(other, 1002 + 2 * interval_);
    EXPECT_EQ(others, 1);
}

TEST_F(Click, CountsElsewhereAtOnce) {
    QPushButton other;
    int others = 0;
    QObject::connect(&other, &QPushButton::clicked, [&] { ++others; });
    click(button_, 1000);
    click(other, 1001, {5, 25});
    EXPECT_EQ(others, 1);
}

class SideBar : public ::testing::Test {
  protected:
    SideBar() {
        const QString folder =
            QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/com.corvatel.Kestrav";
        QDir().mkpath(folder);
        settings_ = (folder + "/last-folder").toStdString();
        std::filesystem::remove_all(settings_);
    }
    ~SideBar() override { std::filesystem::remove_all(settings_); }

    void write(const std::string& content) const { std::ofstream(settings_) << content; }
    /// The places that the chooser offers.
    QList<QUrl> places() {
        QList<QUrl> found;
        QTimer::singleShot(0, [&] {
            auto* dialog = dynamic_cast<ImageChooserDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            found = dialog->sidebarUrls();
            dialog->reject();
        });
        ImageChooser chooser(nullptr, place_);
        chooser.setAllowedFileTypes(std::array<std::string_view, 1>{"fds"});
        EXPECT_NE(chooser.runModal(), OpenPanel::kResponseOK);
        return found;
    }

    std::filesystem::path settings_;
    TemporaryFolder folder_;
    QString place_ = QString::fromStdString(folder_.path());
};

TEST_F(SideBar, HasTheFolderOfTheLastImage) {
    const QUrl url = QUrl::fromLocalFile(place_);
    EXPECT_FALSE(places().contains(url));
    keepLastFolder(place_);
    EXPECT_EQ(lastFolder(), place_);
    EXPECT_EQ(places().count(url), 1);
    std::filesystem::remove_all(settings_);
    EXPECT_FALSE(places().contains(url)) << "it was kept for all of the person's programs";
}

TEST_F(SideBar, HasTheDownloads) {
    const QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    EXPECT_EQ(places().contains(QUrl::fromLocalFile(downloads)), QFileInfo(downloads).isDir());
}

TEST_F(SideBar, TakesNoHarmFromItsSettings) {
    const std::string real = folder_.path();
    const std::string file = folder_.path() / "file";
    std::ofstream(file) << "x";
    for (const std::string& content :
         {std::string(), std::string("."), std::string(":/translations"), std::string("/not/there"), file,
          "file://" + real, real + '\0', real + "\n", std::string(100000, '/'), std::string("\xff\xfe")}) {
        write(content);
        EXPECT_EQ(lastFolder(), QString()) << content.substr(0, 30);
    }
    write(real);
    EXPECT_EQ(lastFolder(), place_);
    std::filesystem::remove(settings_);
    ASSERT_EQ(::mkfifo(settings_.c_str(), 0600), 0);
    EXPECT_EQ(lastFolder(), QString());
    std::filesystem::remove(settings_);
    std::filesystem::create_directories(settings_ / "full");
    EXPECT_EQ(lastFolder(), QString());
    keepLastFolder(place_);
    EXPECT_EQ(lastFolder(), QString());
}

}  // namespace
}  // namespace kestrav
