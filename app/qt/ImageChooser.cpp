#include "app/qt/ImageChooser.h"

#include <QApplication>
#include <QFileInfo>
#include <QGridLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

#include "app/qt/fitOnScreen.h"
#include "app/qt/imageProblem.h"
#include "app/qt/lastFolder.h"
#include "app/qt/setPlainTexts.h"

namespace kestrav {

ImageChooserDialog::ImageChooserDialog(QWidget* parent, QStringList types, bool withFolders)
    : QFileDialog(parent),
      types_(std::move(types)) {
    // The desktop's own chooser lets a person choose either files or folders, and here both are allowed.
    setOption(DontUseNativeDialog);
    setFileMode(ExistingFile);
    setNameFilter(tr("Images (%1)").arg(QStringLiteral("*.") + types_.join(QStringLiteral(" *."))));
    if (withFolders) addFolderButton();
}

/// Below everything else and without a frame. An image is a file as a rule; a folder is for those who know why.
void ImageChooserDialog::addFolderButton() {
    auto* folder = new QPushButton(tr("Choose Fol&der"), this);
    folder->setObjectName(QStringLiteral("chooseFolder"));
    folder->setAutoDefault(false);
    folder->setFlat(true);
    folder->setToolTip(tr("Take the selected folder itself, or the one shown if none is selected"));
    connect(folder, &QPushButton::clicked, this, &ImageChooserDialog::chooseFolder);
    if (auto* grid = qobject_cast<QGridLayout*>(layout())) {
        grid->addWidget(folder, grid->rowCount(), 0, 1, -1, Qt::AlignTrailing);
    } else {
        layout()->addWidget(folder);
    }
}

bool ImageChooserDialog::isAllowed(const QString& file) const {
    return types_.contains(QFileInfo(file).suffix(), Qt::CaseInsensitive);
}

/// Why that can't be taken; empty if it can, or if the dialog itself has to say something of it.
QString ImageChooserDialog::objectionTo(const QString& file) const {
    const QFileInfo info(file);
    if (!info.exists() || info.isDir()) return {};
    // The list shows files of the allowed types only, but a person can type the name of any other file.
    if (!isAllowed(file)) {
        return tr("%1 is no .%2 file.").arg(info.fileName(), types_.join(tr(" or .")));
    }
    return imageProblem(file);
}

void ImageChooserDialog::accept() {
    const QStringList files = selectedFiles();
    const QString objection = files.isEmpty() ? QString() : objectionTo(files.first());
    if (!objection.isEmpty()) {
        QMessageBox message(QMessageBox::Information, windowTitle(), {}, QMessageBox::Ok, this);
        setPlainTexts(message, objection);
        message.exec();
        return;
    }
    if (!files.isEmpty()) chosenPath_ = files.first();
    QFileDialog::accept();
}

/// Names that are offered below a name's beginning can still be there. The toolkit passes over the focus that comes
/// back to the window behind while such a list is shown, and the window would hear no key until it is clicked.
void ImageChooserDialog::done(int result) {
    if (QWidget* names = QApplication::activePopupWidget()) names->close();
    QFileDialog::done(result);
}

void ImageChooserDialog::chooseFolder() {
    const QStringList files = selectedFiles();
    const bool selected = !files.isEmpty() && QFileInfo(files.first()).isDir();
    chosenPath_ = selected ? files.first() : directory().absolutePath();
    done(Accepted);
}

void ImageChooser::setAllowedFileTypes(std::span<const std::string_view> types) {
    types_.clear();
    for (const std::string_view type : types) {
        types_.append(QString::fromUtf8(type.data(), static_cast<qsizetype>(type.size())));
    }
}

void ImageChooser::setTitle(std::string_view title) {
    title_ = QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()));
}

void ImageChooser::setUp(QFileDialog& dialog) const {
    dialog.setWindowTitle(title_);
    dialog.setSizeGripEnabled(showsResizeIndicator_);
    dialog.setFilter(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::AllDirs |
                     (showsHiddenFiles_ ? QDir::Hidden : QDir::Filters()));
    // Qt's read-only option means that the dialog makes no folders, and renames and deletes nothing.
    dialog.setOption(QFileDialog::ReadOnly, !canCreateDirectories_);
    if (allowsMultipleSelection_) dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setDirectory(folder_);
    if (!preselected_.isEmpty()) dialog.selectFile(preselected_);
}

/// Where images mostly are, below the toolkit's own places.
QList<QUrl> ImageChooser::sideBar(const QFileDialog& dialog) {
    QList<QUrl> places = dialog.sidebarUrls();
    for (const QString& folder : {QStandardPaths::writableLocation(QStandardPaths::DownloadLocation), lastFolder()}) {
        const QUrl place = QUrl::fromLocalFile(folder);
        if (!folder.isEmpty() && QFileInfo(folder).isDir() && !places.contains(place)) places.append(place);
    }
    return places;
}

std::int32_t ImageChooser::runModal() {
    ImageChooserDialog dialog(parent_, types_, canChooseDirectories_);
    setUp(dialog);
    const QList<QUrl> before = dialog.sidebarUrls();
    dialog.setSidebarUrls(sideBar(dialog));
    fitOnScreen(dialog);
    const int end = dialog.exec();
    // The toolkit keeps the side bar for all of the person's programs, and these places are ours alone.
    dialog.setSidebarUrls(before);
    if (end != QDialog::Accepted) return 0;
    // A path that was typed may lead elsewhere than to the folder that was shown.
    const QFileInfo chosen(dialog.chosenPath());
    folder_ = chosen.isDir() ? dialog.directory().absolutePath() : chosen.absolutePath();
    keepLastFolder(folder_);
    path_ = dialog.chosenPath().toStdString();
    return kResponseOK;
}

}  // namespace kestrav
