#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/ActivityIndicator.h"
#include "app/Button.h"
#include "app/LogBox.h"
#include "app/LogText.h"
#include "app/MainView.h"
#include "app/OpenPanel.h"

namespace kestrav {

/// What was done to the parts of a view, in order.
using Journal = std::vector<std::string>;

inline std::string withState(const std::string& what, bool state) {
    return what + (state ? " yes" : " no");
}

class FakeButton final : public Button {
  public:
    FakeButton(Journal& journal, std::string name, std::optional<std::string> identifier)
        : name_(std::move(name)),
          identifier_(std::move(identifier)),
          journal_(journal) {}

    bool enabled = true;

    std::optional<std::string> identifier() const override { return identifier_; }
    void setIdentifier(std::optional<std::string> value) { identifier_ = std::move(value); }
    void setEnabled(bool value) override {
        enabled = value;
        journal_.push_back(withState(name_ + " enabled", value));
    }

  private:
    std::string name_;
    std::optional<std::string> identifier_;
    Journal& journal_;
};

class FakeIndicator final : public ActivityIndicator {
  public:
    explicit FakeIndicator(Journal& journal) : journal_(journal) {}

    bool turns = false;
    const Button* sender = nullptr;

    void startAnimation(const Button& by) override { turn(true, by); }
    void stopAnimation(const Button& by) override { turn(false, by); }

  private:
    void turn(bool value, const Button& by) {
        turns = value;
        sender = &by;
        journal_.push_back(withState("indicator turns", value));
    }

    Journal& journal_;
};

class FakeLogText final : public LogText {
  public:
    explicit FakeLogText(Journal& journal) : journal_(journal) {}

    bool readable = true;
    bool showsTheEnd = false;

    std::optional<std::string> string() const override { return readable ? std::optional(text_) : std::nullopt; }
    bool append(std::string_view text) override {
        if (!readable) return false;
        text_ += text;
        showsTheEnd = false;
        journal_.push_back("log " + std::string(text.substr(0, text.find('\r'))));
        return true;
    }
    void scrollToEndOfDocument() override { showsTheEnd = true; }

  private:
    std::string text_;
    Journal& journal_;
};

/// What the next choosers answer, and what the last one was asked with.
struct FakeChoice {
    std::int32_t response = 0;
    std::optional<std::string> path;
    std::function<void()> whileOpen = [] {};

    std::vector<std::string> types;
    std::string title;
    Journal setUp;  ///< the flags in the order in which they were set
};

class FakeOpenPanel final : public OpenPanel {
  public:
    explicit FakeOpenPanel(FakeChoice& choice) : choice_(choice) {
        choice_.types.clear();
        choice_.setUp.clear();
    }

    void setAllowedFileTypes(std::span<const std::string_view> types) override {
        choice_.types.assign(types.begin(), types.end());
    }
    void setTitle(std::string_view title) override { choice_.title = title; }
    void setShowsResizeIndicator(bool value) override { flag("shows resize indicator", value); }
    void setShowsHiddenFiles(bool value) override { flag("shows hidden files", value); }
    void setCanChooseDirectories(bool value) override { flag("can choose directories", value); }
    void setCanCreateDirectories(bool value) override { flag("can create directories", value); }
    void setAllowsMultipleSelection(bool value) override { flag("allows multiple selection", value); }

    std::int32_t runModal() override {
        choice_.whileOpen();
        return choice_.response;
    }
    std::optional<std::string> path() const override { return choice_.path; }

  private:
    void flag(const std::string& name, bool value) { choice_.setUp.push_back(withState(name, value)); }

    FakeChoice& choice_;
};

class FakeMainView final : public MainView {
  public:
    Journal journal;
    FakeChoice choice;
    int width = 0;
    int height = 0;
    bool busy = false;

    std::shared_ptr<LogBox> logBox = std::make_shared<LogBox>();
    std::shared_ptr<FakeLogText> logText = std::make_shared<FakeLogText>(journal);
    std::shared_ptr<FakeButton> firmwareButton = std::make_shared<FakeButton>(journal, "firmware", "firmwareBtn");
    std::shared_ptr<FakeButton> iconButton = std::make_shared<FakeButton>(journal, "icon", std::nullopt);
    std::shared_ptr<FakeIndicator> indicator = std::make_shared<FakeIndicator>(journal);

    void setPreferredContentSize(int newWidth, int newHeight) override {
        width = newWidth;
        height = newHeight;
    }
    std::unique_ptr<OpenPanel> makeOpenPanel() override { return std::make_unique<FakeOpenPanel>(choice); }
    void whileBusy(const std::function<void()>& task) override {
        journal.emplace_back("busy");
        busy = true;
        task();
        busy = false;
        journal.emplace_back("idle");
    }

    void whileAsking(const std::function<void()>& task) override { whileBusy(task); }

    /// A person picks this file whenever a chooser opens.
    void choose(std::string path) {
        choice.response = OpenPanel::kResponseOK;
        choice.path = std::move(path);
    }
};

}  // namespace kestrav
