#include "tour/panel_reader.h"

#include "tests/support/wait_until.h"

namespace purlock::tour {

namespace {

using test::Accessible;
using test::ScreenArea;
using Lines = std::vector<std::string>;

bool standInOneRow(const ScreenArea& left, const ScreenArea& right) {
    const int leftMiddle = left.y + left.height / 2;
    return right.y <= leftMiddle && leftMiddle < right.y + right.height;
}

/// Gathers the names of the innermost elements, in reading order.
class LineMaker {
  public:
    void add(const Accessible& element) {
        for (const Accessible& child : element.children) add(child);
        if (!element.children.empty() || element.name.empty()) return;
        if (!lines.empty() && standInOneRow(last_, element.area)) {
            lines.back() += "   " + element.name;
        } else {
            lines.push_back(element.name);
        }
        last_ = element.area;
    }

    Lines lines;

  private:
    ScreenArea last_;
};

}  // namespace

bool PanelReader::enable() {
    return test::waitUntil([this] { return reader_.connect(); });
}

std::vector<std::string> PanelReader::lines(std::int32_t pid) {
    LineMaker maker;
    if (const auto window = reader_.read(pid)) maker.add(*window);
    return std::move(maker.lines);
}

}  // namespace purlock::tour
