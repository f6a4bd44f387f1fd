#include "tests/macos/standins/world.h"

#include <utility>

namespace purlock::standins {

namespace {

World* currentWorld = nullptr;

}  // namespace

World::World(RunLoop& itsMainLoop) : mainLoop(itsMainLoop), outer_(std::exchange(currentWorld, this)) {}

World::~World() {
    currentWorld = outer_;
}

World& World::current() {
    return *currentWorld;
}

void World::postNotification(const std::string& name) {
    for (const Observer& observer : observers) {
        if (observer.name == name) mainLoop.post(observer.block);
    }
}

}  // namespace purlock::standins
