#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace purlock {

// The panel as data: a tree of plain values that says what is to be seen and what a click means. ui/ builds
// it; a host draws it with its own toolkit's layouts and controls. Lengths and font sizes are points, the
// logical pixels of a screen of normal density. Texts may come from anywhere and are shown as plain text,
// never as markup.

/// sRGB, components from 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double opacity = 1;

    bool operator==(const Color&) const = default;
};

constexpr Color white(double opacity = 1) {
    return {1, 1, 1, opacity};
}
constexpr Color gray(double brightness) {
    return {brightness, brightness, brightness, 1};
}
constexpr Color withOpacity(Color color, double opacity) {
    color.opacity = opacity;
    return color;
}

enum class FontWeight { regular, medium, semibold, bold };
enum class FontSlant { upright, italic };

/// The system's own font.
struct Font {
    double size = 0;
    FontWeight weight = FontWeight::regular;
    FontSlant slant = FontSlant::upright;

    bool operator==(const Font&) const = default;
};

// What a control asks for when it is used. The host hands it to the panel.

struct OpenLog {
    bool operator==(const OpenLog&) const = default;
};
struct RequestAccessibility {
    bool operator==(const RequestAccessibility&) const = default;
};
struct Quit {
    bool operator==(const Quit&) const = default;
};
struct TogglePanelPinned {
    bool operator==(const TogglePanelPinned&) const = default;
};
struct ToggleLogEnabled {
    bool operator==(const ToggleLogEnabled&) const = default;
};
/// Absent: follow the system's default device.
struct PinDevice {
    std::optional<std::string> uid;
    bool operator==(const PinDevice&) const = default;
};
/// Puts a text on the clipboard.
struct Copy {
    std::string text;
    bool operator==(const Copy&) const = default;
};
using Action =
    std::variant<OpenLog, RequestAccessibility, Quit, TogglePanelPinned, ToggleLogEnabled, PinDevice, Copy>;

// What one element shows.

/// How a text that is wider than its place is shown.
enum class Lines {
    one,       // cut off at the end, with an ellipsis
    asNeeded,  // wrapped, inside a word where it must be; never cut off
};

struct Text {
    std::string text;
    Font font;
    Color color;
    Lines lines = Lines::one;
    bool operator==(const Text&) const = default;
};

/// A drawing by its name, as large as a text of that font size, in one colour.
struct Symbol {
    std::string name;
    Font font;
    Color color;
    bool operator==(const Symbol&) const = default;
};

struct Stroke {
    Color color;
    double width = 0;  // centred on the outline
    bool operator==(const Stroke&) const = default;
};

/// How a change of opacity reaches the screen.
struct EaseOut {
    double seconds = 0;
    bool operator==(const EaseOut&) const = default;
};

struct Circle {
    double diameter = 0;
    std::optional<Color> fill;
    std::optional<Stroke> stroke;
    double opacity = 1;
    std::optional<EaseOut> animation;  // of `opacity`
    bool operator==(const Circle&) const = default;
};

struct Bar {
    double width = 0;
    std::optional<double> height;  // absent: as high as the row that it stands in
    Color color;
    bool joinsCircles = false;  // faint lines lead from it to the circles of the rows above and below
    bool operator==(const Bar&) const = default;
};

/// Room that stays empty; it also holds elements apart where a row says nothing of its own.
struct Space {
    double width = 0;
    double height = 0;
    bool operator==(const Space&) const = default;
};

/// Takes what room its row has to spare.
struct FlexibleSpace {
    bool operator==(const FlexibleSpace&) const = default;
};

/// A horizontal line across its column.
struct Divider {
    bool operator==(const Divider&) const = default;
};

/// Children from top to bottom, aligned at the leading edge.
struct Column {
    double spacing = 0;
    bool operator==(const Column&) const = default;
};

/// Children from the leading edge on, centred vertically.
struct Row {
    double spacing = 0;
    bool operator==(const Row&) const = default;
};

/// Children over one another, centred.
struct Overlay {
    bool operator==(const Overlay&) const = default;
};

/// A borderless button; its child is what it shows.
struct Button {
    Action action;
    bool operator==(const Button&) const = default;
};

/// A switch of the smallest control size; its child is the label that stands before it.
struct Switch {
    bool isOn = false;
    Action action;  // changes to the other state, whichever is shown
    bool operator==(const Switch&) const = default;
};

struct MenuItem {
    std::string title;
    Action action;
    bool isCurrent = false;  // what is chosen now: stands out by its weight, without a mark
    bool operator==(const MenuItem&) const = default;
};
struct MenuSeparator {
    bool operator==(const MenuSeparator&) const = default;
};
using MenuEntry = std::variant<MenuItem, MenuSeparator>;

/// A borderless pull-down menu; its child is what it shows.
struct Menu {
    std::vector<MenuEntry> entries;
    bool operator==(const Menu&) const = default;
};

/// Its child, which may be higher than it, with a visible vertical scroll bar.
struct Scroll {
    bool operator==(const Scroll&) const = default;
};

using Content = std::variant<Text, Symbol, Circle, Bar, Space, FlexibleSpace, Divider, Column, Row, Overlay,
                             Button, Switch, Menu, Scroll>;

// What every element may have around it.

/// Empty room on all sides, inside the background.
struct Padding {
    double vertical = 0;
    double horizontal = 0;
    bool operator==(const Padding&) const = default;
};

struct Background {
    Color color;
    double cornerRadius = 0;
    bool operator==(const Background&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

enum class Width {
    content,    // as wide as what it shows
    available,  // stretched to the width of its column
};

/// One element with what it holds.
struct View {
    Content content;
    std::vector<View> children;

    /// Tells siblings apart from one tree to the next: an element keeps its place on the screen, its focus
    /// and its open menu when siblings come and go. Empty where the order alone tells.
    std::string id;

    Padding padding;
    std::optional<Background> background;
    std::optional<Size> frame;  // absent: as large as it needs
    Width width = Width::content;

    std::string help;       // shown on hovering
    std::string label;      // what a screen reader says where the content has no words of its own, or others
    bool readLast = false;  // a screen reader comes to it after its siblings

    bool operator==(const View&) const = default;
};

}  // namespace purlock
