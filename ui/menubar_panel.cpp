#include "ui/menubar_panel.h"

#include <algorithm>
#include <utility>

#include "base/overloaded.h"
#include "base/text.h"
#include "ui/now_playing_card.h"
#include "ui/signal_path_panel.h"
#include "ui/view_parts.h"

namespace purlock {

namespace {

constexpr double betweenItems = 14;
constexpr Padding aroundContent{16, 16};
constexpr double belowBadge = 4;

// While nothing plays everything is to be seen without scrolling, also below the banner.
constexpr double closeStages = 0;
constexpr double apartStages = 4;

View named(std::string id, View view) {
    view.id = std::move(id);
    return view;
}

View divider() {
    View line = element(Divider{});
    line.background = Background{white(0.15), 0};
    return line;
}

View accessibilityBanner(const SystemWords& words) {
    View texts = column(
        2, {paragraph("Enable Accessibility for full source detection", {12, FontWeight::medium}, white()),
            paragraph(words.bannerReason, {10}, white(0.55))});
    View content =
        onCard(row(defaultSpacing, {symbol("info.circle.fill", {13}, accentAmber), std::move(texts),
                                    flexibleSpace(), symbol("chevron.right", {10}, white(0.5))}),
               {10, 10}, 0.06);
    return container(Button{RequestAccessibility{}}, {std::move(content)});
}

View textButton(std::string title, Action action) {
    return container(Button{std::move(action)}, {line(std::move(title), {11}, white(0.7))});
}

/// `current` is the UID of the device whose name stands on the menu's label.
std::vector<MenuEntry> deviceEntries(const std::vector<AvailableDevice>& devices,
                                     const std::optional<std::string>& current) {
    std::vector<MenuEntry> entries{MenuItem{"System default", PinDevice{}}, MenuSeparator{}};
    for (const AvailableDevice& device : devices) {
        entries.emplace_back(MenuItem{device.name, PinDevice{device.uid}, device.uid == current});
    }
    return entries;
}

}  // namespace

MenubarPanel::MenubarPanel(const MenubarPanelSeams& seams, std::shared_ptr<AudioMonitor> monitor,
                           std::shared_ptr<ReportCoordinator> coordinator,
                           std::shared_ptr<SettingsStore> settings, MenubarPanelActions actions,
                           std::function<void()> onChange)
    : seams_(seams),
      monitor_(std::move(monitor)),
      coordinator_(std::move(coordinator)),
      settings_(std::move(settings)),
      actions_(std::move(actions)),
      onChange_(std::move(onChange)),
      pulse_(seams.mainLoop, coordinator_->lastTick().value(), onChange_) {}

void MenubarPanel::appear() {
    if (!subscriptions_.empty()) return;
    pulse_.noteTick(coordinator_->lastTick().value());
    const auto changed = [this](const auto& /*value*/) { onChange_(); };
    subscriptions_.push_back(monitor_->state().subscribe(changed));
    subscriptions_.push_back(monitor_->availableDevices().subscribe(changed));
    subscriptions_.push_back(settings_->pinnedDeviceUID().subscribe(changed));
    subscriptions_.push_back(settings_->logEnabled().subscribe(changed));
    subscriptions_.push_back(settings_->panelPinned().subscribe(changed));
    subscriptions_.push_back(coordinator_->objectWillChange().subscribe([this] { onChange_(); }));
    subscriptions_.push_back(
        coordinator_->lastTick().subscribe([this](const WallTime& tick) { pulse_.setLastTick(tick); }));
}

void MenubarPanel::disappear() {
    subscriptions_.clear();
    pulse_.rest();
}

View MenubarPanel::body() const {
    View content = column(betweenItems, {named("header", header())});
    auto& items = content.children;
    const bool hasBanner = !seams_.accessibility.isProcessTrusted();
    if (hasBanner) items.push_back(named("banner", accessibilityBanner(seams_.words)));
    if (const auto& info = coordinator_->nowPlaying()) {
        items.push_back(named("card", NowPlayingCard{*info}.body()));
    }
    items.push_back(named("divider above verdict", divider()));
    items.push_back(named("verdict", verdictSummary()));
    items.push_back(named("divider above path", divider()));
    const bool canCopy = static_cast<bool>(actions_.onCopy);
    const double betweenStages = hasBanner ? closeStages : apartStages;
    items.push_back(named("path", SignalPathPanel{coordinator_->report(), canCopy, betweenStages}.body()));
    items.push_back(named("divider above picker", divider()));
    items.push_back(named("picker", devicePicker()));
    items.push_back(named("divider above footer", divider()));
    items.push_back(named("footer", footer()));
    content.padding = aroundContent;
    View panel = container(Scroll{}, {std::move(content)});
    panel.frame = Size{360, 600};
    return panel;
}

View MenubarPanel::header() const {
    return row(8, {line("Purlock", {16, FontWeight::bold}, white()), pulse_.body(seams_.clock.now()),
                   flexibleSpace(), pinButton(), line("v1.1", {11}, white(0.5))});
}

View MenubarPanel::pinButton() const {
    const bool pinned = settings_->panelPinned().value();
    View button = container(Button{TogglePanelPinned{}},
                            {symbol(pinned ? "pin.fill" : "pin", {12}, pinned ? accentAmber : white(0.4))});
    button.help = pinned ? "Unpin (close on outside click)" : "Pin (keep panel open)";
    return button;
}

View MenubarPanel::verdictSummary() const {
    const Verdict& verdict = coordinator_->report().verdict;
    return column(belowBadge, {VerdictBadge{verdict}.body(),
                               paragraph(verdictDetail(verdict, seams_.words), {11}, white(0.6))});
}

View MenubarPanel::devicePicker() const {
    View label = onCard(row(defaultSpacing, {line(currentDeviceLabel(), {12}, white()), flexibleSpace(),
                                             symbol("chevron.up.chevron.down", {9}, white(0.5))}),
                        {6, 10}, 0.08);
    View menu = container(Menu{deviceEntries(monitor_->availableDevices().value(), currentDevice())},
                          {std::move(label)});
    menu.label = "Output device";
    return column(6, {captionLine("Output device", white(0.4)), std::move(menu)});
}

std::optional<std::string> MenubarPanel::currentDevice() const {
    const auto& pinned = settings_->pinnedDeviceUID().value();
    if (pinned && !pinned->empty()) return pinned;
    const auto& state = monitor_->state().value();
    return state ? std::optional(state->uid) : std::nullopt;
}

std::string MenubarPanel::currentDeviceLabel() const {
    const auto& pinned = settings_->pinnedDeviceUID().value();
    if (pinned && !pinned->empty()) {
        const auto& devices = monitor_->availableDevices().value();
        const auto device = std::ranges::find(devices, *pinned, &AvailableDevice::uid);
        return "📌 " + (device != devices.end() ? device->name : "(pinned device unplugged)");
    }
    const auto& state = monitor_->state().value();
    return state ? state->name : "—";
}

View MenubarPanel::footer() const {
    View logSwitch = container(Switch{settings_->logEnabled().value(), ToggleLogEnabled{}},
                               {line("Log to file", {11}, white(0.7))});
    return row(defaultSpacing, {std::move(logSwitch), flexibleSpace(), textButton("Show log", OpenLog{}),
                                textButton("Quit", Quit{})});
}

void MenubarPanel::perform(const Action& action) {
    std::visit(
        Overloaded{
            [this](const OpenLog&) { actions_.onOpenLog(); },
            [this](const RequestAccessibility&) { actions_.onRequestAccessibility(); },
            [this](const Quit&) { actions_.onQuit(); },
            [this](const TogglePanelPinned&) {
                settings_->setPanelPinned(!settings_->panelPinned().value());
            },
            [this](const ToggleLogEnabled&) { settings_->setLogEnabled(!settings_->logEnabled().value()); },
            [this](const PinDevice& pin) { settings_->setPinnedDeviceUID(pin.uid); },
            [this](const Copy& copy) {
                if (actions_.onCopy) actions_.onCopy(copy.text);
            },
        },
        action);
}

std::string verdictDetail(const Verdict& verdict, const SystemWords& words) {
    return std::visit(
        Overloaded{
            [](const verdict::Idle& idle) {
                return "Output ready at " + idle.format.summary() + ". Nothing playing.";
            },
            [](const verdict::BitPerfect& perfect) {
                return "Source matches device at " + perfect.format.summary() + ". No conversion in path.";
            },
            [&words](const verdict::Resampling& resampling) {
                return fill(words.convertingDetail, {{"from", resampling.virtualFormat.summary()},
                                                     {"to", resampling.physicalFormat.summary()}});
            },
            [&words](const verdict::Unknown& unknown) {
                return unknown.program ? fill(words.unseenDetail, {{"app", *unknown.program}})
                                       : std::string("No output device detected.");
            },
            [](const verdict::Altered&) {
                return std::string(
                    "The mixer changes the samples on their way to the device. See findings below.");
            },
        },
        verdict);
}

}  // namespace purlock
