#include "platform/linux/dbus/bus_calls.h"

#include <utility>

namespace purlock::host_linux {

bool BusCalls::send(const BusCall& call, std::chrono::milliseconds timeLimit,
                    BusConnection::ReplyCallback onReply) {
    const auto slot = slots_.emplace(slots_.end());
    *slot = connection_.call(call, timeLimit,
                             [this, slot, onReply = std::move(onReply)](const BusIncoming& reply) {
                                 slots_.erase(slot);
                                 onReply(reply);
                             });
    const bool sent = static_cast<bool>(*slot);
    if (!sent) slots_.erase(slot);
    return sent;
}

}  // namespace purlock::host_linux
