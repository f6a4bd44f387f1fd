#pragma once

#include "ui/window_seams.h"

namespace purlock::host_linux {

/// The desktop's clipboard. A copied text can be pasted as long as the program runs. Main thread only.
class QtClipboard final : public Clipboard {
  public:
    void setText(const std::string& text) override;
};

}  // namespace purlock::host_linux
