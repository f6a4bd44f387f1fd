#pragma once

#include <cstdint>

#include "platform/linux/pipewire/hardware/answers.h"
#include "platform/linux/pipewire/hardware/client_identity.h"
#include "platform/linux/pipewire/hardware/object_ids.h"
#include "platform/linux/pipewire/rules/card_facts.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// Makes the devices, streams and processes of the hardware layer from the server's objects. Only
/// `identities` does input and output. The loop's thread.
///
/// `connection` is the number of the connection on which the mirror was filled. Ids of objects that are no
/// longer there are forgotten.
Answers buildAnswers(const AudioGraph& graph, const CardFacts& cards, std::uint64_t connection,
                     ClientIdentities& identities, ObjectIDs& ids);

}  // namespace purlock::host_linux
