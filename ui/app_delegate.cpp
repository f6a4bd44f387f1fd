#include "ui/app_delegate.h"

#include <chrono>
#include <functional>

#include "ui/status_icon.h"

namespace purlock {

namespace {

constexpr std::chrono::milliseconds safetyInterval{800};

/// A closure that does nothing once its owner is gone.
template <typename Owner, typename... Arguments>
std::function<void(Arguments...)> weakly(const std::weak_ptr<Owner>& owner,
                                         void (Owner::*method)(Arguments...)) {
    return [owner, method](Arguments... arguments) {
        if (const auto self = owner.lock()) ((*self).*method)(arguments...);
    };
}

}  // namespace

AppDelegate::AppDelegate(const AppDelegateSeams& seams)
    : seams_(seams),
      settings_(SettingsStore::shared()),
      monitor_(std::make_shared<AudioMonitor>(seams.audio, settings_)),
      nowPlaying_(std::make_shared<NowPlayingMonitor>(seams.nowPlaying)),
      logger_(StateLogger::shared()) {}

const std::shared_ptr<ReportCoordinator>& AppDelegate::coordinator() {
    if (!coordinator_) coordinator_ = ReportCoordinator::make(seams_.coordinator, monitor_, nowPlaying_);
    return coordinator_;
}

void AppDelegate::applicationDidFinishLaunching() {
    seams_.windows.application.setActivationPolicy(ActivationPolicy::accessory);
    setupStatusItem();
    setupPanel();
    monitor_->start();
    nowPlaying_->start();
    followState();
    settings_->setOnPanelPinnedChange([weak = weak_from_this()](bool /*pinned*/) {
        if (const auto self = weak.lock()) self->panelPinnedChanged();
    });
    startSafetyNetTimer();
}

// The status item.

void AppDelegate::setupStatusItem() {
    statusItem_ = seams_.windows.statusBar.statusItemWithLength(StatusBar::variableLength);
    StatusButton* button = statusButton();
    if (!button) return;
    button->setImage(symbolImage(verdict::Unknown{}));
    button->setAction(weakly(weak_from_this(), &AppDelegate::togglePanel));
}

StatusButton* AppDelegate::statusButton() const {
    return statusItem_ ? statusItem_->button() : nullptr;
}

void AppDelegate::refreshStatusIcon() {
    StatusButton* button = statusButton();
    if (!button) return;
    // The device alone decides here, not the report: the icon is right before the report is.
    const Verdict verdict = deviceVerdict(monitor_->state().value());
    button->setImage(symbolImage(verdict));
    button->setToolTip(statusToolTip(verdict));
}

// What the monitors publish.

void AppDelegate::followState() {
    const auto weak = weak_from_this();
    stateSubscription_ = monitor_->state().subscribe([weak, &loop = seams_.mainLoop](const auto& state) {
        loop.post([weak, state] {
            if (const auto self = weak.lock()) self->stateDelivered(state);
        });
    });
}

void AppDelegate::stateDelivered(const std::optional<DeviceState>& state) {
    refreshStatusIcon();
    StateSnapshot::shared()->write(state);
    if (state) logger_->record(*state);
}

void AppDelegate::startSafetyNetTimer() {
    safetyTimer_ = seams_.mainLoop.repeat(safetyInterval, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        self->monitor_->refreshState();
        self->nowPlaying_->refresh();
        self->showPanelAgain();
    });
}

// The panel.

void AppDelegate::setupPanel() {
    const auto weak = weak_from_this();
    panelContent_ = std::make_unique<MenubarPanel>(
        MenubarPanelSeams{seams_.mainLoop, seams_.coordinator.clock,
                          seams_.coordinator.introspection.accessibility, seams_.coordinator.words},
        monitor_, coordinator(), settings_, panelActions(), weakly(weak, &AppDelegate::panelContentChanged));
    const auto perform = [weak](const Action& action) {
        if (const auto self = weak.lock()) self->panelContent_->perform(action);
    };
    panel_ = seams_.windows.panels.makePanel(
        PanelStyle{}, {.onAction = perform, .onCancel = weakly(weak, &AppDelegate::closePanel)});
}

MenubarPanelActions AppDelegate::panelActions() {
    return {.onOpenLog =
                [weak = weak_from_this()] {
                    const auto self = weak.lock();
                    if (self) self->seams_.windows.workspace.openURL(self->logger_->logURL());
                },
            .onRequestAccessibility = [&prompt = seams_.windows.accessibilityPrompt] { prompt.request(); },
            .onQuit = [&application = seams_.windows.application] { application.terminate(); },
            .onCopy = copyAction()};
}

std::function<void(const std::string&)> AppDelegate::copyAction() {
    Clipboard* const clipboard = seams_.windows.clipboard;
    if (!clipboard) return {};
    return [clipboard](const std::string& text) { clipboard->setText(text); };
}

void AppDelegate::togglePanel() {
    if (!panel_ || !statusButton()) return;
    if (panel_->isVisible()) {
        closePanel();
        return;
    }
    placePanel();
    panelContent_->appear();
    panel_->setContent(panelContent_->body());
    seams_.windows.application.activateIgnoringOtherApps();
    panel_->makeKeyAndOrderFront();
    removeClickOutsideMonitor();
    if (!settings_->panelPinned().value()) installClickOutsideMonitor();
    monitor_->refreshState();
    nowPlaying_->refresh();
}

/// Centred under the status item. Where the screen ends is the host's concern.
void AppDelegate::placePanel() {
    const Rect item = statusButton()->windowFrame();
    const Rect panel = panel_->frame();
    panel_->setFrameOrigin({item.x + item.width * 0.5 - panel.width * 0.5, item.y - panel.height});
}

void AppDelegate::closePanel() {
    if (panel_) panel_->orderOut();
    if (panelContent_) panelContent_->disappear();
    removeClickOutsideMonitor();
}

/// Several announcements in a row, some of them ahead of the change, lead to one new picture.
void AppDelegate::panelContentChanged() {
    if (renderingIsDue_) return;
    renderingIsDue_ = true;
    seams_.mainLoop.post(weakly(weak_from_this(), &AppDelegate::renderPanel));
}

void AppDelegate::renderPanel() {
    renderingIsDue_ = false;
    if (!panel_) return;
    if (panel_->isVisible()) {
        panel_->setContent(panelContent_->body());
    } else {
        panelContent_->disappear();  // the desktop has hidden it, or has not shown it yet
    }
}

/// The desktop shows a panel that it has hidden, and one that waited for the program to become active,
/// without a word: the safety net looks after it.
void AppDelegate::showPanelAgain() {
    if (!panel_ || !panel_->isVisible() || panelContent_->isOnScreen()) return;
    panelContent_->appear();
    panel_->setContent(panelContent_->body());
}

void AppDelegate::panelPinnedChanged() {
    if (!panel_ || !panel_->isVisible()) return;
    removeClickOutsideMonitor();
    if (!settings_->panelPinned().value()) installClickOutsideMonitor();
}

void AppDelegate::installClickOutsideMonitor() {
    clickOutsideMonitor_ =
        seams_.windows.events.addGlobalMonitor(EventMonitor::leftMouseDown | EventMonitor::rightMouseDown,
                                               weakly(weak_from_this(), &AppDelegate::closePanel));
}

void AppDelegate::removeClickOutsideMonitor() {
    clickOutsideMonitor_.cancel();
}

}  // namespace purlock
