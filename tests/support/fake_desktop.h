#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "ui/window_seams.h"

namespace purlock::test {

/// A desktop without a screen: it remembers what it was asked, in order, and lets a test be the user.
///
/// Outlives what it hands out, as a host does.
class FakeDesktop final : public Application,
                          public StatusBar,
                          public PanelWindows,
                          public EventMonitor,
                          public Workspace,
                          public AccessibilityPrompt,
                          public Clipboard {
  public:
    // What a test may decide before the launch.
    bool givesStatusItem = true;
    bool givesButton = true;
    bool givesPanel = true;
    bool givesMonitorToken = true;
    bool hasClipboard = false;
    Rect buttonFrame{500, 876, 24, 24};

    // What there is now.
    std::optional<SymbolImage> image;
    std::optional<std::string> toolTip;
    std::optional<PanelStyle> style;
    std::optional<View> content;
    bool panelVisible = false;
    Rect panelFrame{0, 0, 360, 600};
    int contentsSet = 0;
    bool promptGiven = false;
    std::vector<std::filesystem::path> opened;
    std::vector<std::string> copied;
    bool terminated = false;

    /// Every call, in order, but those that set the content.
    std::vector<std::string> history;

    std::vector<std::string> takeHistory() { return std::exchange(history, {}); }

    WindowSeams seams() { return {*this, *this, *this, *this, *this, *this, hasClipboard ? this : nullptr}; }

    // What a user does.
    void clickStatusItem() const {
        if (onClick_) onClick_();
    }
    void use(const Action& action) const { panelEvents_.onAction(action); }
    void pressEscape() const { panelEvents_.onCancel(); }
    void clickOutside() const {
        if (const auto handler = monitor_.lock()) (*handler)();
    }
    bool monitorInstalled() const { return !monitor_.expired(); }

    // Application
    void setActivationPolicy(ActivationPolicy policy) override { add("policy ", static_cast<int>(policy)); }
    void activateIgnoringOtherApps() override { add("activate"); }
    void terminate() override {
        terminated = true;
        add("terminate");
    }

    // StatusBar
    std::unique_ptr<StatusItem> statusItemWithLength(double length) override {
        add("status item ", length);
        return givesStatusItem ? std::make_unique<Item>(*this) : nullptr;
    }

    // PanelWindows
    std::unique_ptr<PanelWindow> makePanel(const PanelStyle& wanted, PanelWindowEvents events) override {
        add("panel");
        style = wanted;
        panelEvents_ = std::move(events);
        return givesPanel ? std::make_unique<Panel>(*this) : nullptr;
    }

    // EventMonitor
    Cancellable addGlobalMonitor(Mask mask, std::function<void()> handler) override {
        add("monitor ", mask);
        if (!givesMonitorToken) return {};
        auto token = std::shared_ptr<std::function<void()>>(new std::function<void()>(std::move(handler)),
                                                            [this](auto* kept) {
                                                                delete kept;
                                                                add("no monitor");
                                                            });
        monitor_ = token;
        return Cancellable(std::move(token));
    }

    // Workspace
    void openURL(const std::filesystem::path& file) override { opened.push_back(file); }

    // AccessibilityPrompt
    void request() override { promptGiven = true; }

    // Clipboard
    void setText(const std::string& text) override { copied.push_back(text); }

  private:
    class Button final : public StatusButton {
      public:
        explicit Button(FakeDesktop& desktop) : desktop_(desktop) {}
        void setImage(const SymbolImage& symbol) override {
            desktop_.image = symbol;
            desktop_.add("image ", symbol.name);
        }
        void setAction(std::function<void()> onClick) override {
            desktop_.onClick_ = std::move(onClick);
            desktop_.add("action");
        }
        void setToolTip(const std::string& text) override {
            desktop_.toolTip = text;
            desktop_.add("tooltip ", text);
        }
        Rect windowFrame() const override { return desktop_.buttonFrame; }

      private:
        FakeDesktop& desktop_;
    };

    class Item final : public StatusItem {
      public:
        explicit Item(FakeDesktop& desktop) : desktop_(desktop), button_(desktop) {}
        StatusButton* button() override { return desktop_.givesButton ? &button_ : nullptr; }

      private:
        FakeDesktop& desktop_;
        Button button_;
    };

    class Panel final : public PanelWindow {
      public:
        explicit Panel(FakeDesktop& desktop) : desktop_(desktop) {}
        void setContent(const View& view) override {
            desktop_.content = view;
            ++desktop_.contentsSet;
        }
        bool isVisible() const override { return desktop_.panelVisible; }
        Rect frame() const override { return desktop_.panelFrame; }
        void setFrameOrigin(Point origin) override {
            desktop_.panelFrame.x = origin.x;
            desktop_.panelFrame.y = origin.y;
            desktop_.add("origin ", origin.x, ",", origin.y);
        }
        void makeKeyAndOrderFront() override {
            desktop_.panelVisible = true;
            desktop_.add(desktop_.content ? "front" : "front without content");
        }
        void orderOut() override {
            desktop_.panelVisible = false;
            desktop_.add("out");
        }

      private:
        FakeDesktop& desktop_;
    };

    template <typename... Parts>
    void add(const Parts&... parts) {
        std::ostringstream line;
        (line << ... << parts);
        history.push_back(line.str());
    }

    std::function<void()> onClick_;
    PanelWindowEvents panelEvents_;
    std::weak_ptr<std::function<void()>> monitor_;
};

}  // namespace purlock::test
