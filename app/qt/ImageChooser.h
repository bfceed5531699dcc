#pragma once

#include <QCoreApplication>
#include <QFileDialog>
#include <QString>
#include <QStringList>
#include <QUrl>

#include "app/OpenPanel.h"

class QPushButton;

namespace kestrav {

/// The toolkit's own chooser, in which a folder can be chosen as well as a file of the allowed types. Opening a folder
/// looks into it; choosing one takes a button of its own.
class ImageChooserDialog final : public QFileDialog {
    Q_DECLARE_TR_FUNCTIONS(ImageChooserDialog)

  public:
    ImageChooserDialog(QWidget* parent, QStringList types, bool withFolders);

    const QString& chosenPath() const { return chosenPath_; }

    /// Takes what is named in the dialog, if it may be taken.
    void accept() override;
    void done(int result) override;
    /// Takes the folder that is selected, or else the one that is shown.
    void chooseFolder();

  private:
    void addFolderButton();
    bool isAllowed(const QString& file) const;
    QString objectionTo(const QString& file) const;

    QStringList types_;
    QString chosenPath_;
};

class ImageChooser final : public OpenPanel {
  public:
    /// `folder` is where the chooser opens; a confirmed choice leaves its own folder there. Outlives this object.
    /// A `preselected` file is the one that is chosen at first, if it is still there.
    ImageChooser(QWidget* parent, QString& folder, QString preselected = {})
        : parent_(parent),
          folder_(folder),
          preselected_(std::move(preselected)) {}

    void setAllowedFileTypes(std::span<const std::string_view> types) override;
    void setTitle(std::string_view title) override;
    void setShowsResizeIndicator(bool value) override { showsResizeIndicator_ = value; }
    void setShowsHiddenFiles(bool value) override { showsHiddenFiles_ = value; }
    void setCanChooseDirectories(bool value) override { canChooseDirectories_ = value; }
    void setCanCreateDirectories(bool value) override { canCreateDirectories_ = value; }
    void setAllowsMultipleSelection(bool value) override { allowsMultipleSelection_ = value; }

    std::int32_t runModal() override;
    std::optional<std::string> path() const override { return path_; }

  private:
    void setUp(QFileDialog& dialog) const;
    static QList<QUrl> sideBar(const QFileDialog& dialog);

    QWidget* parent_;
    QString& folder_;
    QString preselected_;
    QStringList types_;
    QString title_;
    bool showsResizeIndicator_ = false;
    bool showsHiddenFiles_ = false;
    bool canChooseDirectories_ = false;
    bool canCreateDirectories_ = false;
    bool allowsMultipleSelection_ = false;
    std::optional<std::string> path_;
};

}  // namespace kestrav
