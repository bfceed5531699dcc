#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "app/qt/ImageChooser.h"
#include "base/UniqueFd.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

class Chooser : public ::testing::Test {
  protected:
    Chooser() {
        std::filesystem::create_directory(folder_.path() / "inner");
        for (const char* name : {"one.fds", "TWO.FDS", "three.fif"}) {
            std::ofstream(folder_.path() / name) << "x";
        }
        chooser_.setAllowedFileTypes(std::array<std::string_view, 1>{"fds"});
        chooser_.setTitle("Choose a firmware image");
        chooser_.setShowsResizeIndicator(true);
        chooser_.setCanChooseDirectories(true);
        chooser_.setCanCreateDirectories(true);
    }

    /// Runs the chooser and does `action` to it as soon as it is there. Ends it if the action left it open.
    std::int32_t run(const std::function<void(ImageChooserDialog&)>& action) {
        QTimer::singleShot(0, [&] {
            auto* dialog = dynamic_cast<ImageChooserDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            action(*dialog);
            stayedOpen_ = dialog->isVisible();
            if (stayedOpen_) dialog->reject();
        });
        return chooser_.runModal();
    }
    static void type(ImageChooserDialog& dialog, const QString& name) {
        dialog.findChild<QLineEdit*>("fileNameEdit")->setText(name);
    }
    /// Presses the only button of the message that the next action brings up.
    void expectMessage() {
        QTimer::singleShot(0, [this] {
            auto* message = dynamic_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (message == nullptr) return;
            message_ = message->text();
            message->accept();
        });
    }

    TemporaryFolder folder_;
    QString place_ = QString::fromStdString(folder_.path());
    ImageChooser chooser_{nullptr, place_};
    QString message_;
    bool stayedOpen_ = false;
};

TEST_F(Chooser, IsSetUpAsAskedFor) {
    run([&](ImageChooserDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Choose a firmware image");
        EXPECT_EQ(dialog.nameFilters(), QStringList("Images (*.fds)"));
        EXPECT_TRUE(dialog.isSizeGripEnabled());
        EXPECT_FALSE(dialog.filter() & QDir::Hidden);
        EXPECT_FALSE(dialog.testOption(QFileDialog::ReadOnly));
        EXPECT_TRUE(dialog.testOption(QFileDialog::DontUseNativeDialog));
        EXPECT_EQ(dialog.fileMode(), QFileDialog::ExistingFile);
        EXPECT_EQ(dialog.directory().absolutePath(), place_);
    });
}

TEST_F(Chooser, IsSetUpTheOtherWayToo) {
    chooser_.setShowsResizeIndicator(false);
    chooser_.setShowsHiddenFiles(true);
    chooser_.setCanChooseDirectories(false);
    chooser_.setCanCreateDirectories(false);
    chooser_.setAllowsMultipleSelection(true);
    run([&](ImageChooserDialog& dialog) {
        EXPECT_FALSE(dialog.isSizeGripEnabled());
        EXPECT_TRUE(dialog.filter() & QDir::Hidden);
        EXPECT_TRUE(dialog.testOption(QFileDialog::ReadOnly));
        EXPECT_EQ(dialog.fileMode(), QFileDialog::ExistingFiles);
        EXPECT_EQ(dialog.findChild<QPushButton*>("chooseFolder"), nullptr);
    });
}

TEST_F(Chooser, GivesThePathOfAConfirmedFile) {
    EXPECT_EQ(run([](ImageChooserDialog& dialog) {
                  type(dialog, "one.fds");
                  dialog.accept();
              }),
              OpenPanel::kResponseOK);
    EXPECT_EQ(chooser_.path(), (folder_.path() / "one.fds").string());
}

TEST_F(Chooser, TakesATypeInCapitalLetters) {
    EXPECT_EQ(run([](ImageChooserDialog& dialog) {
                  type(dialog, "TWO.FDS");
                  dialog.accept();
              }),
              OpenPanel::kResponseOK);
}

TEST_F(Chooser, IsNotConfirmedWhenItIsDismissed) {
    EXPECT_NE(run([](ImageChooserDialog& dialog) { type(dialog, "one.fds"); }), OpenPanel::kResponseOK);
    EXPECT_EQ(chooser_.path(), std::nullopt);
    EXPECT_EQ(place_, QString::fromStdString(folder_.path()));
}

TEST_F(Chooser, RefusesAnotherTypeThatWasTyped) {
    EXPECT_NE(run([this](ImageChooserDialog& dialog) {
                  type(dialog, "three.fif");
                  expectMessage();
                  dialog.accept();
              }),
              OpenPanel::kResponseOK);
    EXPECT_TRUE(stayedOpen_);
    EXPECT_EQ(message_, "three.fif is no .fds file.");
}

TEST_F(Chooser, RefusesAFileThatIsNotThere) {
    EXPECT_NE(run([this](ImageChooserDialog& dialog) {
                  type(dialog, "missing.fds");
                  expectMessage();
                  dialog.accept();
              }),
              OpenPanel::kResponseOK);
    EXPECT_TRUE(stayedOpen_);
    EXPECT_TRUE(message_.contains("missing.fds"));
}

/// What can't be an image, and a part of what is said of it.
struct NoImage {
    const char* name;
    std::function<void(const std::filesystem::path&)> make;
    const char* said;
};

void makeSocket(const std::filesystem::path& path) {
    const UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.native().size(), sizeof address.sun_path);
    std::ranges::copy(path.native(), std::begin(address.sun_path));
    ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

TEST_F(Chooser, SaysWhyItTakesNothingButAReadableFileAndStaysOpen) {
    const std::vector<NoImage> cases{
        {"pipe.fds", [](const auto& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); },
         "pipe.fds is a pipe. Choose a file that holds the image."},
        {"socket.fds", makeSocket, "socket.fds is a socket. Choose a file that holds the image."},
        {"endless.fds", [](const auto& path) { std::filesystem::create_symlink("/dev/zero", path); },
         "endless.fds is a device. Choose a file that holds the image."},
        {"sick.fds", [](const auto& path) { std::filesystem::create_symlink("/proc/self/mem", path); },
         "sick.fds can't be read: Input/output error. Check your rights to it, or choose another file."},
    };
    for (const NoImage& no : cases) {
        SCOPED_TRACE(no.name);
        no.make(folder_.path() / no.name);
        message_.clear();
        EXPECT_NE(run([&](ImageChooserDialog& dialog) {
                      type(dialog, no.name);
                      expectMessage();
                      dialog.accept();
                  }),
                  OpenPanel::kResponseOK);
        EXPECT_TRUE(stayedOpen_);
        EXPECT_EQ(message_, no.said);
    }
}

TEST_F(Chooser, TakesAnEmptyImageForTheLogToSay) {
    std::ofstream(folder_.path() / "empty.fds");
    EXPECT_EQ(run([](ImageChooserDialog& dialog) {
                  type(dialog, "empty.fds");
                  dialog.accept();
              }),
              OpenPanel::kResponseOK);
}

TEST_F(Chooser, ShowsTheButtonForFoldersLastAndQuietly) {
    run([](ImageChooserDialog& dialog) {
        const auto* folder = dialog.findChild<QPushButton*>("chooseFolder");
        ASSERT_NE(folder, nullptr);
        EXPECT_TRUE(folder->isFlat());
        EXPECT_FALSE(folder->isDefault());
        for (const auto* other : dialog.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
            const bool matters = other != folder && other->isVisible() && !other->inherits("QSizeGrip");
            EXPECT_TRUE(!matters || other->geometry().bottom() <= folder->geometry().top());
        }
    });
}

TEST_F(Chooser, LooksIntoAFolderThatIsOpened) {
    EXPECT_NE(run([this](ImageChooserDialog& dialog) {
                  type(dialog, "inner");
                  dialog.accept();
                  EXPECT_EQ(dialog.directory().absolutePath(), place_ + "/inner");
              }),
              OpenPanel::kResponseOK);
    EXPECT_TRUE(stayedOpen_);
}

TEST_F(Chooser, TakesTheSelectedFolderItself) {
    EXPECT_EQ(run([](ImageChooserDialog& dialog) {
                  dialog.selectFile("inner");
                  dialog.chooseFolder();
              }),
              OpenPanel::kResponseOK);
    EXPECT_EQ(chooser_.path(), (folder_.path() / "inner").string());
}

TEST_F(Chooser, TakesTheShownFolderWhenNoneIsSelected) {
    EXPECT_EQ(run([](ImageChooserDialog& dialog) { dialog.chooseFolder(); }), OpenPanel::kResponseOK);
    EXPECT_EQ(chooser_.path(), folder_.path().string());
}

TEST_F(Chooser, LeavesTheFolderOfTheChoiceForTheNextOne) {
    std::ofstream(folder_.path() / "inner" / "deep.fds") << "x";
    run([this](ImageChooserDialog& dialog) {
        dialog.setDirectory(place_ + "/inner");
        type(dialog, "deep.fds");
        dialog.accept();
    });
    EXPECT_EQ(place_, QString::fromStdString(folder_.path() / "inner"));
}

TEST_F(Chooser, LeavesTheFolderOfATypedPathForTheNextOne) {
    std::ofstream(folder_.path() / "inner" / "deep.fds") << "x";
    run([this](ImageChooserDialog& dialog) {
        type(dialog, place_ + "/inner/deep.fds");
        dialog.accept();
    });
    EXPECT_EQ(place_, QString::fromStdString(folder_.path() / "inner"));
}

}  // namespace
}  // namespace kestrav
