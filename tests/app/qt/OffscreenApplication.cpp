// The toolkit for this program's cases: a real application whose screen is memory.

#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

namespace kestrav {
namespace {

class OffscreenApplication final : public ::testing::Environment {
  public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        // What the system says of its errors is compared; it says it in the person's language.
        qputenv("LC_ALL", "C.UTF-8");
        // The toolkit's choosers keep their history in the person's settings.
        qputenv("XDG_CONFIG_HOME", settings_.path().toUtf8());
        application_ = std::make_unique<QApplication>(count_, arguments_);
    }
    void TearDown() override { application_.reset(); }

  private:
    QTemporaryDir settings_;
    int count_ = 1;
    char name_[8] = "kestrav";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] ::testing::Environment* const kApplication =
    ::testing::AddGlobalTestEnvironment(new OffscreenApplication);

}  // namespace
}  // namespace kestrav
