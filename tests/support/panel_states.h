#pragma once

#include <string>
#include <vector>

#include "core/system_words.h"
#include "ui/view.h"

namespace purlock::test {

/// What the panel shows on a machine in a certain state: made by the whole portable program on a fake one.
struct PanelState {
    std::string name;  // also the name of its picture
    View view;
};

/// `words` speak of the system.
std::vector<PanelState> panelStates(const SystemWords& words = {});

}  // namespace purlock::test
