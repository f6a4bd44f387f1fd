#include "tests/host-linux/session/accessible_reader.h"

#include <cstdint>
#include <cstdlib>
#include <functional>

namespace purlock::test {

namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr std::uint64_t longestWait = 2'000'000;  // microseconds
constexpr int deepest = 40;

// Bits of a state set.
constexpr int checkedState = 4;
constexpr int showingState = 25;

struct Unref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, Unref>;

struct Object {
    std::string name;
    std::string path;
};

/// The answer to a call without arguments; null when there is none.
Message ask(sd_bus* bus, const Object& object, const char* interface, const char* member) {
    sd_bus_message* call = nullptr;
    sd_bus_message* answer = nullptr;
    if (sd_bus_message_new_method_call(bus, &call, object.name.c_str(), object.path.c_str(), interface,
                                       member) < 0) {
        return nullptr;
    }
    const Message kept(call);
    if (sd_bus_call(bus, call, longestWait, nullptr, &answer) < 0) return nullptr;
    return Message(answer);
}

std::string textFrom(const Message& answer) {
    const char* text = "";
    if (answer) sd_bus_message_read(answer.get(), "s", &text);
    return text;
}

std::string property(sd_bus* bus, const Object& object, const char* name) {
    char* text = nullptr;
    if (sd_bus_get_property_string(bus, object.name.c_str(), object.path.c_str(), accessible, name, nullptr,
                                   &text) < 0) {
        return {};
    }
    std::string copy(text);
    std::free(text);
    return copy;
}

std::vector<Object> childrenOf(sd_bus* bus, const Object& object) {
    const Message answer = ask(bus, object, accessible, "GetChildren");
    std::vector<Object> children;
    if (!answer || sd_bus_message_enter_container(answer.get(), 'a', "(so)") < 0) return children;
    const char* name = nullptr;
    const char* path = nullptr;
    while (sd_bus_message_read(answer.get(), "(so)", &name, &path) > 0) children.push_back({name, path});
    return children;
}

std::uint32_t statesOf(sd_bus* bus, const Object& object) {
    const Message answer = ask(bus, object, accessible, "GetState");
    std::uint32_t first = 0;
    if (answer && sd_bus_message_enter_container(answer.get(), 'a', "u") > 0) {
        sd_bus_message_read(answer.get(), "u", &first);
    }
    return first;
}

ScreenArea areaOf(sd_bus* bus, const Object& object) {
    constexpr std::uint32_t ofTheScreen = 0;
    sd_bus_message* answer = nullptr;
    ScreenArea area;
    if (sd_bus_call_method(bus, object.name.c_str(), object.path.c_str(), "org.a11y.atspi.Component",
                           "GetExtents", nullptr, &answer, "u", ofTheScreen) < 0) {
        return area;
    }
    const Message kept(answer);
    sd_bus_message_read(answer, "(iiii)", &area.x, &area.y, &area.width, &area.height);
    return area;
}

pid_t processOf(sd_bus* bus, const std::string& name) {
    sd_bus_message* answer = nullptr;
    std::uint32_t pid = 0;
    if (sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                           "GetConnectionUnixProcessID", nullptr, &answer, "s", name.c_str()) < 0) {
        return -1;
    }
    const Message kept(answer);
    sd_bus_message_read(answer, "u", &pid);
    return static_cast<pid_t>(pid);
}

}  // namespace

bool AccessibleReader::connect() {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return false;
    const Bus session(opened);
    const Object service{"org.a11y.Bus", "/org/a11y/bus"};
    const std::string address = textFrom(ask(session.get(), service, "org.a11y.Bus", "GetAddress"));
    if (address.empty() || sd_bus_set_property(session.get(), service.name.c_str(), service.path.c_str(),
                                               "org.a11y.Status", "IsEnabled", nullptr, "b", 1) < 0) {
        return false;
    }
    if (sd_bus_new(&opened) < 0) return false;
    bus_.reset(opened);
    return sd_bus_set_address(opened, address.c_str()) >= 0 && sd_bus_set_bus_client(opened, 1) >= 0 &&
           sd_bus_start(opened) >= 0;
}

/// The program's connection to the accessibility bus; empty when it has none.
std::string AccessibleReader::applicationOf(pid_t pid) {
    if (pid == pid_) return application_;
    const Object registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
    for (const Object& application : childrenOf(bus_.get(), registry)) {
        if (processOf(bus_.get(), application.name) != pid) continue;
        pid_ = pid;
        application_ = application.name;
        return application_;
    }
    return {};
}

std::optional<Accessible> AccessibleReader::read(pid_t pid) {
    const std::string application = applicationOf(pid);
    if (application.empty()) return std::nullopt;
    Accessible root;
    const std::string path = "/org/a11y/atspi/accessible/root";
    for (const Object& window : childrenOf(bus_.get(), {application, path})) {
        Accessible found = element(application, window.path, deepest);
        if (found.isShowing) root.children.push_back(std::move(found));
    }
    return root;
}

std::string AccessibleReader::nameOf(pid_t pid, const std::string& path) {
    return property(bus_.get(), {applicationOf(pid), path}, "Name");
}

bool AccessibleReader::perform(const Accessible& element, const std::string& action) {
    constexpr const char* interface = "org.a11y.atspi.Action";
    const Object object{application_, element.path};
    const Message actions = ask(bus_.get(), object, interface, "GetActions");
    if (!actions || sd_bus_message_enter_container(actions.get(), 'a', "(sss)") < 0) return false;
    const char* name = nullptr;
    const char* description = nullptr;
    const char* key = nullptr;
    for (int index = 0; sd_bus_message_read(actions.get(), "(sss)", &name, &description, &key) > 0; ++index) {
        if (name != action) continue;
        sd_bus_message* answer = nullptr;
        int done = 0;
        if (sd_bus_call_method(bus_.get(), object.name.c_str(), object.path.c_str(), interface, "DoAction",
                               nullptr, &answer, "i", index) < 0) {
            return false;
        }
        const Message kept(answer);
        return sd_bus_message_read(answer, "b", &done) > 0 && done != 0;
    }
    return false;
}

Accessible AccessibleReader::element(const std::string& application, const std::string& path, int depth) {
    const Object object{application, path};
    Accessible result;
    result.path = path;
    const std::uint32_t states = statesOf(bus_.get(), object);
    result.isShowing = (states >> showingState & 1U) != 0;
    if (!result.isShowing || depth == 0) return result;
    result.isChecked = (states >> checkedState & 1U) != 0;
    result.role = textFrom(ask(bus_.get(), object, accessible, "GetRoleName"));
    result.name = property(bus_.get(), object, "Name");
    result.description = property(bus_.get(), object, "Description");
    result.area = areaOf(bus_.get(), object);
    for (const Object& child : childrenOf(bus_.get(), object)) {
        Accessible found = element(application, child.path, depth - 1);
        if (found.isShowing) result.children.push_back(std::move(found));
    }
    return result;
}

std::vector<std::string> textsOf(const Accessible& element) {
    std::vector<std::string> texts;
    const std::function<void(const Accessible&)> collect = [&](const Accessible& each) {
        if (each.role == "label") texts.push_back(each.name);
        for (const Accessible& child : each.children) collect(child);
    };
    collect(element);
    return texts;
}

const Accessible* elementNamed(const Accessible& element, const std::string& name, const std::string& role) {
    if (element.name == name && (role.empty() || element.role == role)) return &element;
    for (const Accessible& child : element.children) {
        if (const Accessible* found = elementNamed(child, name, role)) return found;
    }
    return nullptr;
}

}  // namespace purlock::test
