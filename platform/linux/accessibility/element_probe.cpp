#include "platform/linux/accessibility/element_probe.h"

#include <utility>

#include "platform/linux/accessibility/element_rules.h"
#include "platform/linux/accessibility/object_walker.h"

namespace purlock::host_linux {

ElementProbe::ElementProbe(BusConnection& connection, std::string busName, FoundElement element,
                           Finish onFinish)
    : connection_(connection),
      busName_(std::move(busName)),
      element_(std::move(element)),
      onFinish_(std::move(onFinish)) {
    ask(connection_.newCall({busName_, element_.path, "org.a11y.atspi.Accessible", "GetState"}),
        [](const BusIncoming& reply) {
            const auto states = reply.reader().next();
            return states && isOnScreen(&*states);
        });
    ask(newTextCall(), [this](const BusIncoming& reply) {
        const auto text = reply.reader().next();
        return text && text->text() != nullptr && *text->text() == element_.text;
    });
}

BusCall ElementProbe::newTextCall() const {
    if (element_.attribute == SnapshotText::value) {
        auto call = connection_.newCall({busName_, element_.path, "org.a11y.atspi.Text", "GetText"});
        call.append(std::int32_t{0}).append(firstTextCharacters);
        return call;
    }
    auto call = connection_.newCall({busName_, element_.path, propertiesInterface, "Get"});
    const char* property = element_.attribute == SnapshotText::title ? "Name" : "Description";
    call.append("org.a11y.atspi.Accessible").append(property);
    return call;
}

/// A question that cannot be sent is answered when the connection's loss drops this.
void ElementProbe::ask(const BusCall& call, std::function<bool(const BusIncoming&)> isAsExpected) {
    calls_.send(call, elementTimeLimit,
                [this, isAsExpected = std::move(isAsExpected)](const BusIncoming& reply) {
                    if (reply.isError() || !isAsExpected(reply)) return finish(false);
                    if (--open_ == 0) finish(true);
                });
}

void ElementProbe::finish(bool isUnchanged) {
    calls_.clear();
    const Finish onFinish = onFinish_;  // may drop this
    onFinish(isUnchanged);
}

}  // namespace purlock::host_linux
