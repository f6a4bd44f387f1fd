#include "platform/linux/toolkit/display.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <xcb/xcb.h>

#include <QDir>
#include <QLibraryInfo>
#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

namespace {

QtMessageHandler printMessage = nullptr;  // the toolkit's own

bool isNoNews(const QString& message) {
    return message.startsWith(QStringLiteral("QStandardPaths: XDG_RUNTIME_DIR not set")) ||
           message.startsWith(QStringLiteral("This plugin does not support ")) ||
           message.startsWith(QStringLiteral("Detected locale ")) ||
           message.startsWith(QStringLiteral("Could not find accessible on path"));
}

void printNews(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (!isNoNews(message)) printMessage(type, context, message);
}

/// Sets a variable of the environment that is not set, until the end of the scope.
class TemporaryVariable {
  public:
    TemporaryVariable(const char* name, const char* value)
        : name_(name), isOurs_(!qEnvironmentVariableIsSet(name)) {
        if (isOurs_) qputenv(name_, value);
    }
    ~TemporaryVariable() {
        if (isOurs_) qunsetenv(name_);
    }
    TemporaryVariable(const TemporaryVariable&) = delete;
    TemporaryVariable& operator=(const TemporaryVariable&) = delete;

  private:
    const char* const name_;
    const bool isOurs_;
};

// Else a screen reader that starts after this program never meets it. The toolkit looks once, when the
// service for accessibility is there, which may be long after the start.
constexpr const char* alwaysAccessible = "QT_LINUX_ACCESSIBILITY_ALWAYS_ON";
bool speaksToLateReaders = false;

bool isXAnswering() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

/// The compositor's socket: a path, or a name in the session's own folder.
bool isWaylandAnswering() {
    const QByteArray name = qgetenv("WAYLAND_DISPLAY");
    const QByteArray path = name.startsWith('/') ? name : qgetenv("XDG_RUNTIME_DIR") + '/' + name;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (static_cast<std::size_t>(path.size()) >= sizeof address.sun_path) return false;
    std::ranges::copy(path, address.sun_path);
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return socket &&
           ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

/// Qt's part for Wayland is a package of its own.
bool canSpeakWayland() {
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !plugins.entryList({QStringLiteral("*wayland*")}, QDir::Files).isEmpty();
}

/// A display, and why it cannot be used; empty where it can.
struct Candidate {
    const char* platform;
    const char* variable;
    std::string trouble;
};

std::string troubleWithX() {
    return isXAnswering() ? "" : "does not answer, or is not yours";
}

std::string troubleWithWayland() {
    if (!isWaylandAnswering()) return "does not answer, or is not yours";
    return canSpeakWayland() ? "" : "needs Qt's part for Wayland (on Debian: qt6-wayland)";
}

/// The first display that can be used; the toolkit would end the program at one that cannot.
const char* usablePlatform() {
    std::vector<Candidate> candidates;
    if (!qEnvironmentVariableIsEmpty("DISPLAY")) candidates.push_back({"xcb", "DISPLAY", troubleWithX()});
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        (candidates.empty() || !candidates.front().trouble.empty())) {
        candidates.push_back({"wayland", "WAYLAND_DISPLAY", troubleWithWayland()});
    }
    for (const Candidate& each : candidates) {
        if (each.trouble.empty()) return each.platform;
    }
    for (const Candidate& each : candidates) {
        std::fprintf(stderr, "purlock: the display %s of $%s %s.\n", qgetenv(each.variable).constData(),
                     each.variable, each.trouble.c_str());
    }
    if (!candidates.empty()) {
        std::fputs("purlock: It runs without a screen and writes its files.\n", stderr);
    }
    return "offscreen";
}

}  // namespace

void quietenToolkit() {
    printMessage = qInstallMessageHandler(printNews);
}

std::unique_ptr<QApplication> startToolkit(int& argc, char** argv) {
    const QByteArray chosen = qgetenv("QT_QPA_PLATFORM");
    const TemporaryVariable platform("QT_QPA_PLATFORM",
                                     chosen.isEmpty() ? usablePlatform() : chosen.constData());
    const TemporaryVariable eventLoop("QT_NO_GLIB", "1");
    speaksToLateReaders = !qEnvironmentVariableIsSet(alwaysAccessible);
    if (speaksToLateReaders) qputenv(alwaysAccessible, "1");
    return std::make_unique<QApplication>(argc, argv);
}

void spareOtherPrograms() {
    if (std::exchange(speaksToLateReaders, false)) qunsetenv(alwaysAccessible);
}

}  // namespace purlock::host_linux
