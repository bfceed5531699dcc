#include "app/qt/ImageChooser.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

namespace kestrav {

ImageChooserDialog::ImageChooserDialog(QWidget* parent, QStringList types, bool withFolders)
    : QFileDialog(parent),
      types_(std::move(types)) {
    // The desktop's own chooser lets a person choose either files or folders, and here both are allowed.
    setOption(DontUseNativeDialog);
    setFileMode(ExistingFile);
    setNameFilter(tr("Images (%1)").arg(QStringLiteral("*.") + types_.join(QStringLiteral(" *."))));
    auto* buttons = findChild<QDialogButtonBox*>();
    if (!withFolders || buttons == nullptr) return;
    QPushButton* folder = buttons->addButton(tr("Choose Fol&der"), QDialogButtonBox::ActionRole);
    folder->setAutoDefault(false);
    folder->setToolTip(tr("Take the selected folder itself, or the one shown if none is selected"));
    connect(folder, &QPushButton::clicked, this, &ImageChooserDialog::chooseFolder);
}

bool ImageChooserDialog::isAllowed(const QString& file) const {
    return types_.contains(QFileInfo(file).suffix(), Qt::CaseInsensitive);
}

void ImageChooserDialog::accept() {
    const QStringList files = selectedFiles();
    // The list shows files of the allowed types only, but a person can type the name of any other file.
    if (!files.isEmpty() && QFileInfo(files.first()).isFile() && !isAllowed(files.first())) {
        QMessageBox message(QMessageBox::Information, windowTitle(),
                            tr("%1 is no .%2 file.").arg(QFileInfo(files.first()).fileName(), types_.join(" or .")),
                            QMessageBox::Ok, this);
        message.setTextFormat(Qt::PlainText);
        message.exec();
        return;
    }
    if (!files.isEmpty()) chosenPath_ = files.first();
    QFileDialog::accept();
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

std::int32_t ImageChooser::runModal() {
    ImageChooserDialog dialog(parent_, types_, canChooseDirectories_);
    setUp(dialog);
    if (dialog.exec() != QDialog::Accepted) return 0;
    // A path that was typed may lead elsewhere than to the folder that was shown.
    const QFileInfo chosen(dialog.chosenPath());
    folder_ = chosen.isDir() ? dialog.directory().absolutePath() : chosen.absolutePath();
    path_ = dialog.chosenPath().toStdString();
    return kResponseOK;
}

}  // namespace kestrav
