#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string>

#include "tests/support/child_process.h"

namespace purlock::test {

/// An X server of the test's own, with one screen that nobody sees.
class VirtualDisplay {
  public:
    /// Returns when the server is ready; it picks a free number itself.
    explicit VirtualDisplay(const std::string& screen = "800x600x24") {
        std::array<int, 2> ends{-1, -1};
        if (pipe(ends.data()) != 0) return;
        fcntl(ends[0], F_SETFD, FD_CLOEXEC);
        server_ = ChildProcess({"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", screen,
                                "-nolisten", "tcp", "-noreset"},
                               {"PATH=/usr/bin:/bin"},
                               {.group = ChildOptions::Group::own, .keptDescriptor = ends[1]});
        close(ends[1]);
        char digit = 0;
        std::string number;
        while (read(ends[0], &digit, 1) == 1 && digit != '\n') number += digit;
        close(ends[0]);
        name_ = ":" + number;
    }

    /// As $DISPLAY takes it.
    const std::string& name() const { return name_; }

    void kill() { server_.kill(); }

  private:
    std::string name_;
    ChildProcess server_;
};

}  // namespace purlock::test
